// The smallest host. Usage: minimal PASSPORT-DIRECTORY CLOUD-CONFIGURATION USER < password
#include <passport/Passport.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QTextStream>

using namespace VelqorPassPort;

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = application.arguments();
    QTextStream in(stdin);
    QTextStream out(stdout);
    if (arguments.size() != 4) {
        out << "usage: minimal PASSPORT-DIRECTORY CLOUD-CONFIGURATION USER < password\n";
        return 2;
    }

    Passport passport;
    passport.initial(arguments[1]);
    PassportCommunityError outcome = passport.setConfigPath(arguments[2]);

    QVariantMap profile;
    if (!outcome.isError())
        outcome = passport.logIn(arguments[3], in.readLine(), QString(), profile, true);
    if (outcome.isError()) {
        out << "Sorry: " << outcome.errorName << ' ' << outcome.errorMessage << '\n';
        return 1;
    }
    out << "Welcome, " << profile.value(QStringLiteral("nickName")).toString() << "! Next time as "
        << passport.getAccountInfo().value(QStringLiteral("name")).toString() << '\n';
    passport.logOut();
    passport.exitModule();
}
