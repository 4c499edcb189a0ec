// SPDX-License-Identifier: MIT
#include <passport/Passport.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QLoggingCategory>
#include <QtCore/QTextStream>

using namespace VelqorPassPort;

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    // Debug lines carry passwords and tokens.
    QLoggingCategory::setFilterRules(QStringLiteral("velqor.passport.lib.debug=false"));
    QTextStream in(stdin);
    QTextStream out(stdout);

    Passport passport;
    passport.initial(QStringLiteral("passport-dir"));
    passport.setConfigData(QStringLiteral("local"));

    QVariantMap profile;
    const PassportCommunityError outcome =
        passport.logIn(QStringLiteral("ada@example.com"), in.readLine(), QString(), profile, false);
    if (!outcome.isError()) {
        out << "Welcome, " << profile.value(QStringLiteral("nickName")).toString() << "!\n";
    } else if (outcome.errorMessage == QLatin1String("pwdErr")) {
        out << "Wrong user name or password.\n";
    } else {
        out << "Not signed in: " << outcome.errorName << '\n';
    }
    passport.exitModule();
    return outcome.isError() ? 1 : 0;
}
