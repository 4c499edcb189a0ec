// SPDX-License-Identifier: MIT
#include "Emulator.h"
#include "TerminationSignals.h"
#include "http/HttpServer.h"
#include "http/Loopback.h"
#include "storage/Seed.h"
#include "storage/Store.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QFileInfo>
#include <QtCore/QRegularExpression>
#include <QtCore/QSaveFile>
#include <QtCore/QTextStream>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <iostream>
#include <string>

namespace {

enum ExitCode { Success = 0, CannotServe = 1, WrongUsage = 2 };

struct Options
{
    std::string host = "127.0.0.1";
    std::string port = "8787";
    std::string data = ":memory:";
    std::string seed;
    std::string readyFile;
    bool verbose = false;
};

// Ends the program with a message; carries the exit code from where the failure is to main().
struct Failure
{
    ExitCode exitCode;
    QString message;
};

std::string complaintAboutHost(const std::string &host)
{
    return loopbackAddress(QString::fromStdString(host)).isNull()
               ? host + " is not a loopback address; the emulator serves this machine alone"
               : std::string();
}

std::string complaintAboutPort(const std::string &port)
{
    bool isNumber = false;
    QString::fromStdString(port).toUShort(&isNumber);
    return isNumber ? std::string() : "must be a number from 0 to 65535";
}

void declare(CLI::App &app, Options &options)
{
    app.set_version_flag("--version", "passport-emulator " PASSPORT_VERSION);
    app.footer("At its address: /v1 the account API, / the developer's console, /web/sign-in and\n"
               "further pages, /_dev/ the developer's calls, which /_dev/openapi.json describes.\n"
               "Exit codes: 0 ended by a signal, 1 it cannot serve, 2 wrong options or seed.");
    app.add_option("--host", options.host, "Loopback address")
        ->check(complaintAboutHost)
        ->type_name("ADDRESS")
        ->capture_default_str();
    app.add_option("--port", options.port, "Port; 0 takes a free one")
        ->check(complaintAboutPort)
        ->type_name("NUMBER")
        ->capture_default_str();
    app.add_option("--data", options.data, "Where accounts are kept")
        ->type_name("FILE")
        ->capture_default_str();
    app.add_option("--seed", options.seed, "Accounts and settings of a new data file, as JSON")
        ->type_name("FILE=built-in accounts");
    app.add_option("--ready-file", options.readyFile, "Written with the address once it is served")
        ->type_name("FILE");
    app.add_flag("--verbose", options.verbose, "Print a line for each API request");
}

QString origin(const QHostAddress &host, int port)
{
    const bool bracketed = host.protocol() == QAbstractSocket::IPv6Protocol;
    return (bracketed ? QStringLiteral("http://[%1]:%2") : QStringLiteral("http://%1:%2"))
        .arg(host.toString())
        .arg(port);
}

// In columns of a terminal, where characters of East Asia take two.
int widthOf(const QString &text)
{
    int width = 0;
    const QVector<uint> characters = text.toUcs4();
    for (const uint character : characters) {
        const bool wide = (character >= 0x1100 && character <= 0x115F) ||
                          (character >= 0x2E80 && character <= 0xA4CF) ||
                          (character >= 0xAC00 && character <= 0xD7A3) ||
                          (character >= 0xF900 && character <= 0xFAFF) ||
                          (character >= 0xFE30 && character <= 0xFE6F) ||
                          (character >= 0xFF00 && character <= 0xFF60) ||
                          (character >= 0x20000 && character <= 0x3FFFD);
        if (QChar::category(character) != QChar::Mark_NonSpacing)
            width += wide ? 2 : 1;
    }
    return width;
}

QString padded(const QString &text, int width)
{
    return text + QString(std::max(width - widthOf(text), 0), QLatin1Char(' '));
}

// A line of a shell, of which the text is one word.
QString shellWord(QString text)
{
    static const QRegularExpression plain(QStringLiteral("^[A-Za-z0-9@%+=:,./_-]+\\z"));
    if (plain.match(text).hasMatch())
        return text;
    return QLatin1Char('\'') + text.replace(QLatin1Char('\''), QStringLiteral("'\\''")) +
           QLatin1Char('\'');
}

void announce(const QString &origin, const Store::Accounts &accounts)
{
    QTextStream out(stdout);
    out.setCodec("UTF-8");
    out << "service  " << origin << "/v1\nconsole  " << origin << "/\n\n";
    const auto row = [&](const QString &name, const QString &password, const QString &note) {
        out << "  " << padded(name, 20) << padded(password, 18) << note << '\n';
    };
    row(QStringLiteral("account"), QStringLiteral("password"), QStringLiteral("note"));
    const Account *first = nullptr;
    for (const Account &account : accounts) {
        if (account.publicPassword.isEmpty())
            continue;
        first = first ? first : &account;
        row(account.userName, account.publicPassword, account.note);
    }
    if (!first) {
        out << "  " << accounts.size() << " of a seed or data file, with passwords of its own\n";
        return;
    }
    out << "\n  echo " << shellWord(first->publicPassword) << " | passportctl --cloud " << origin
        << "/v1 sign-in " << shellWord(first->userName) << '\n';
}

// A data file that is there keeps its accounts; whoever starts the program again by the same line
// has meant that.
void sayThatSeedIsForLater(const Options &options)
{
    std::printf("seed %s waits for a reset: data file %s has accounts already\n",
                options.seed.c_str(), options.data.c_str());
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
    const QHostAddress host = loopbackAddress(QString::fromStdString(options.host));
    const int wantedPort = QString::fromStdString(options.port).toInt();
    const QString readyFile = QFile::decodeName(options.readyFile.c_str());
    const Seed seed(QFile::decodeName(options.seed.c_str()));
    bool isNew = false;
    Store store(QFile::decodeName(options.data.c_str()), [&] {
        isNew = true;
        return seed.contents();
    });
    Emulator emulator(store, seed);
    emulator.setVerbose(options.verbose);
    HttpServer server([&](const Request &request) { return emulator.answer(request); });
    server.setBodyLimit(QStringLiteral("/_dev/import"), 16); // an export of many accounts
    const TerminationSignals signals_;
    QObject::connect(&signals_, &TerminationSignals::received, &server, &HttpServer::stop);
    QObject::connect(&server, &HttpServer::stopped, QCoreApplication::instance(),
                     &QCoreApplication::quit);

    const int port = server.listen(host, wantedPort);
    if (port == 0) {
        throw Failure{CannotServe, QStringLiteral("cannot listen on %1 port %2; is it in use?")
                                       .arg(host.toString())
                                       .arg(wantedPort)};
    }
    const QString address = origin(host, port) + QStringLiteral("/v1");
    announce(origin(host, port), store.accounts());
    if (!options.seed.empty() && !isNew)
        sayThatSeedIsForLater(options);
    std::fflush(stdout);
    if (!readyFile.isEmpty())
        writeReadyFile(readyFile, address);
    QCoreApplication::exec();
    if (!readyFile.isEmpty())
        QFile::remove(readyFile);
}

int failWith(ExitCode exitCode, const QString &message)
{
    QTextStream err(stderr);
    err.setCodec("UTF-8");
    err << "passport-emulator: " << message << '\n';
    return exitCode;
}

int run(int argc, char **argv)
{
    Options options;
    CLI::App app("An account cloud for one machine, for development and tests.",
                 "passport-emulator");
    declare(app, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        if (app.exit(error) != 0)
            return WrongUsage;
        if (!std::cout.flush())
            throw Failure{CannotServe, QStringLiteral("standard output: ") + qt_error_string()};
        return Success;
    }
    const QCoreApplication application(argc, argv);
    serve(options);
    return Success;
}

} // namespace

int main(int argc, char **argv)
{
    try {
        return run(argc, argv);
    } catch (const Failure &failure) {
        return failWith(failure.exitCode, failure.message);
    } catch (const SeedError &error) {
        return failWith(WrongUsage, QString::fromUtf8(error.what()));
    } catch (const std::exception &error) {
        return failWith(CannotServe, QString::fromUtf8(error.what()));
    }
}
