// SPDX-License-Identifier: MIT
// A desktop host. Usage: signin-window PASSPORT-DIRECTORY [CLOUD], where CLOUD is the address of an
// account cloud or the name of an environment, "local" when it is left out.
#include "SignInWindow.h"
#include "Translations.h"

#include <passport/Passport.h>

#include <QtCore/QDir>
#include <QtCore/QLoggingCategory>
#include <QtCore/QTextStream>
#include <QtWidgets/QApplication>

using namespace VelqorPassPort;

namespace {

QVariantMap cloudConfiguration(const QString &cloud)
{
    const QString environmentKey = QStringLiteral("cloudEnvironment");
    if (!cloud.contains(QLatin1String("://")))
        return {{environmentKey, cloud}};
    const QVariantMap addresses{{QStringLiteral("cloud"), cloud}};
    return {{environmentKey, QStringLiteral("given")},
            {QStringLiteral("environments"), QVariantMap{{QStringLiteral("given"), addresses}}}};
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    const QApplication application(argc, argv);
    // The library's debug lines carry tokens, passwords and profiles: off before the first call.
    QLoggingCategory::setFilterRules(QStringLiteral("velqor.passport.lib.debug=false"));
    const Translations translations;
    const QStringList arguments = QApplication::arguments();
    const bool asksForHelp = arguments.value(1).startsWith(QLatin1Char('-'));
    if (asksForHelp || arguments.size() < 2 || arguments.size() > 3) {
        QTextStream(stderr)
            << "usage: signin-window PASSPORT-DIRECTORY [CLOUD]\n"
               "CLOUD is an address or the name of an environment; without it, \"local\"\n";
        return 2;
    }
    const HostSettings settings{QDir(arguments[1]).absolutePath(),
                                cloudConfiguration(arguments.value(2, QStringLiteral("local")))};

    // Outlives the window and the event loop: a call that a closed window left behind ends in it.
    Passport passport;
    passport.initial(settings.passportDirectory);
    const PassportCommunityError outcome = passport.setConfigData(settings.cloud);
    if (outcome.isError()) {
        QTextStream(stderr) << "This is no account cloud: " << outcome.errorName << '\n';
        return 2;
    }

    SignInWindow window(passport, settings);
    window.show();
    const int exitCode = QApplication::exec();
    passport.exitModule();
    return exitCode;
}
