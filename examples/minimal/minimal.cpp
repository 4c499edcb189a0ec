// SPDX-License-Identifier: MIT
// The least that is right. Usage: minimal PASSPORT-DIRECTORY CLOUD-CONFIGURATION USER < password
#include <passport/Passport.h>

#include <QtCore/QtCore>

using namespace VelqorPassPort;

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    QTextStream in(stdin), out(stdout);
    if (argc != 4) {
        out << "usage: minimal PASSPORT-DIRECTORY CLOUD-CONFIGURATION USER < password\n";
        return 2;
    }
    // The library's debug lines carry tokens and profiles: off before the first call.
    QLoggingCategory::setFilterRules(QStringLiteral("velqor.passport.lib.debug=false"));

    Passport passport;
    const QString directory = application.arguments().at(1);
    const QString configuration = directory + QStringLiteral("/config/");
    QDir().mkpath(configuration);
    // Both files must be there and hold something; what an administrator wrote stays.
    for (const auto *name : {"SystemCfg.cfg", "PassPortCfg.cfg"}) {
        const QString path = configuration + QLatin1String(name);
        const QString content = QStringLiteral(R"({"nubelo": {}})");
        if (!QFile::exists(path) && !passport.setFileContent(path, content)) {
            out << "Cannot write " << path << '\n';
            return 1;
        }
    }
    passport.initial(directory);

    const QString user = application.arguments().at(3);
    QVariantMap profile;
    PassportCommunityError outcome = passport.setConfigPath(application.arguments().at(2));
    if (!outcome.isError())
        // true: name and password are kept, in clear, in config/account.json.
        outcome = passport.logIn(user, in.readLine(), QString(), profile, true);
    if (outcome.isError())
        out << "Sorry: " << outcome.errorName << ' ' << outcome.errorMessage << '\n';
    else
        out << "Welcome, " << profile.value(QStringLiteral("nickName")).toString() << '\n';
    // The outcome does not say whether the account is remembered: look.
    if (!outcome.isError() && passport.getAccountInfo().value(QStringLiteral("name")) != user)
        out << "You will have to type your name again: it could not be remembered\n";
    passport.exitModule();
    return outcome.isError() ? 1 : 0;
}
