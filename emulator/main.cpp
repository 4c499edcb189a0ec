#include "Emulator.h"
#include "TerminationSignals.h"
#include "http/HttpServer.h"
#include "http/Loopback.h"
#include "storage/Seed.h"
#include "storage/Store.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>
#include <QtCore/QFileInfo>
#include <QtCore/QSaveFile>
#include <QtCore/QTextStream>

namespace {

enum ExitCode { Success = 0, CannotServe = 1, WrongUsage = 2 };

struct Options
{
    QHostAddress host;
    int port = 0;
    QString data;
    QString seed;
    QString readyFile;
};

// Ends the program with a message; carries the exit code from where the failure is to main().
struct Failure
{
    ExitCode code;
    QString message;
};

[[noreturn]] void showAndExit(const QString &text)
{
    QTextStream(stdout) << text;
    std::exit(Success);
}

Options readOptions(const QCoreApplication &application)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("An account cloud for one machine, for development and tests."));
    const QCommandLineOption help = parser.addHelpOption();
    const QCommandLineOption version = parser.addVersionOption();
    const QCommandLineOption host(QStringLiteral("host"), QStringLiteral("Loopback address."),
                                  QStringLiteral("address"), QStringLiteral("127.0.0.1"));
    const QCommandLineOption port(QStringLiteral("port"),
                                  QStringLiteral("Port; 0 takes a free one."),
                                  QStringLiteral("number"), QStringLiteral("8787"));
    const QCommandLineOption data(QStringLiteral("data"),
                                  QStringLiteral("Where accounts are kept."),
                                  QStringLiteral("file"), QStringLiteral(":memory:"));
    const QCommandLineOption seed(QStringLiteral("seed"),
                                  QStringLiteral("Accounts of a new data file, as JSON."),
                                  QStringLiteral("file"));
    const QCommandLineOption ready(QStringLiteral("ready-file"),
                                   QStringLiteral("Written with the address once it is served."),
                                   QStringLiteral("file"));
    parser.addOptions({host, port, data, seed, ready});
    if (!parser.parse(application.arguments()))
        throw Failure{WrongUsage, parser.errorText()};
    if (parser.isSet(help))
        showAndExit(parser.helpText());
    if (parser.isSet(version))
        showAndExit(QStringLiteral("passport-emulator " PASSPORT_VERSION "\n"));
    if (!parser.positionalArguments().isEmpty()) {
        throw Failure{WrongUsage, QStringLiteral("unexpected argument ") +
                                      parser.positionalArguments().constFirst()};
    }
    Options options;
    options.host = loopbackAddress(parser.value(host));
    if (options.host.isNull()) {
        throw Failure{WrongUsage, QStringLiteral("--host %1 is not a loopback address; the emulator"
                                                 " serves this machine alone")
                                      .arg(parser.value(host))};
    }
    bool isNumber = false;
    options.port = parser.value(port).toUShort(&isNumber);
    if (!isNumber)
        throw Failure{WrongUsage, QStringLiteral("--port must be a number from 0 to 65535")};
    options.data = parser.value(data);
    options.seed = parser.value(seed);
    options.readyFile = parser.value(ready);
    return options;
}

QString origin(const QHostAddress &host, int port)
{
    const bool bracketed = host.protocol() == QAbstractSocket::IPv6Protocol;
    return (bracketed ? QStringLiteral("http://[%1]:%2") : QStringLiteral("http://%1:%2"))
        .arg(host.toString())
        .arg(port);
}

void announce(const QString &address, const QString &pages, const Store::Accounts &accounts)
{
    QTextStream out(stdout);
    out.setCodec("UTF-8");
    out << "passport-emulator: " << address << "\nweb pages: " << pages << "\n\n";
    const auto row = [&](const QString &name, const QString &area, const QString &note) {
        out << "  " << name.leftJustified(24) << area.leftJustified(8) << note << '\n';
    };
    row(QStringLiteral("user name"), QStringLiteral("area"), QStringLiteral("note"));
    for (const Account &account : accounts)
        row(account.userName, account.phoneArea, account.note);
    out << "\n  The passwords of the built-in accounts are in emulator/README.md.\n";
}

// A reader never sees half of the file: it is written aside and renamed, which would also replace a
// FIFO or a device.
void writeReadyFile(const QString &path, const QString &address)
{
    const QFileInfo info(path);
    if ((info.exists() || info.isSymLink()) && !info.isFile()) {
        throw Failure{CannotServe,
                      QStringLiteral("ready file %1: is not a regular file").arg(path)};
    }
    QSaveFile file(path);
    const QByteArray line = address.toUtf8() + '\n';
    if (!file.open(QIODevice::WriteOnly) || file.write(line) != line.size() || !file.commit()) {
        throw Failure{CannotServe,
                      QStringLiteral("ready file %1: %2").arg(path, file.errorString())};
    }
}

void serve(const Options &options)
{
    const Seed seed(options.seed);
    Store store(options.data, [&] { return seed.accounts(); });
    Emulator emulator(store, seed);
    HttpServer server([&](const Request &request) { return emulator.answer(request); });
    const TerminationSignals signals_;
    QObject::connect(&signals_, &TerminationSignals::received, &server, &HttpServer::stop);
    QObject::connect(&server, &HttpServer::stopped, QCoreApplication::instance(),
                     &QCoreApplication::quit);

    const int port = server.listen(options.host, options.port);
    if (port == 0) {
        throw Failure{CannotServe, QStringLiteral("cannot listen on %1 port %2; is it in use?")
                                       .arg(options.host.toString())
                                       .arg(options.port)};
    }
    const QString address = origin(options.host, port) + QStringLiteral("/v1");
    announce(address, origin(options.host, port) + QStringLiteral("/web/sign-in"),
             store.accounts());
    if (!options.readyFile.isEmpty())
        writeReadyFile(options.readyFile, address);
    QCoreApplication::exec();
    if (!options.readyFile.isEmpty())
        QFile::remove(options.readyFile);
}

int failWith(ExitCode code, const QString &message)
{
    QTextStream err(stderr);
    err.setCodec("UTF-8");
    err << "passport-emulator: " << message << '\n';
    return code;
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    try {
        serve(readOptions(application));
        return Success;
    } catch (const Failure &failure) {
        return failWith(failure.code, failure.message);
    } catch (const SeedError &error) {
        return failWith(WrongUsage, QString::fromUtf8(error.what()));
    } catch (const StoreError &error) {
        return failWith(CannotServe, QString::fromUtf8(error.what()));
    }
}
