// A desktop host. Usage: signin-window PASSPORT-DIRECTORY [CLOUD], where CLOUD is the address of an
// account cloud or the name of an environment, "local" when it is left out.
#include "SignInWindow.h"

#include <passport/Passport.h>

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
    const QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments();
    if (arguments.size() != 2 && arguments.size() != 3) {
        QTextStream(stderr) << "usage: signin-window PASSPORT-DIRECTORY [CLOUD]\n";
        return 2;
    }

    // Outlives the window and the event loop: a call that a closed window left behind ends in it.
    Passport passport;
    passport.initial(arguments[1]);
    const PassportCommunityError outcome =
        passport.setConfigData(cloudConfiguration(arguments.value(2, QStringLiteral("local"))));
    if (outcome.isError()) {
        QTextStream(stderr) << "This is no account cloud: " << outcome.errorName << '\n';
        return 2;
    }

    SignInWindow window(passport);
    window.show();
    const int exitCode = QApplication::exec();
    passport.exitModule();
    return exitCode;
}
