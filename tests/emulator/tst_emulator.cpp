// SPDX-License-Identifier: MIT
#include "http/RequestLog.h"
#include "support/AccountClient.h"
#include "support/Rows.h"

#include <QtNetwork/QTcpSocket>

#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using VelqorPassPort::Testing::Emulator;
using Client = AccountClient;
using Reply = Emulator::Answer;

// Root may write everything, others see what is read-only.
class UnprivilegedProcess : public QProcess
{
    void setupChildProcess() override
    {
        if (::geteuid() == 0 && ::setuid(65534) != 0)
            ::_exit(127);
    }
};

std::unique_ptr<QTcpSocket> connectedTo(const Emulator &emulator)
{
    auto socket = std::make_unique<QTcpSocket>();
    socket->connectToHost(QHostAddress::LocalHost, emulator.port());
    socket->waitForConnected();
    return socket;
}

/// The process itself: starting and ending, what it refuses, its faults.
class EmulatorTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_emulator.start()); }
    void cleanupTestCase() { QVERIFY(m_emulator.stop()); } // a sanitizer's finding shows here

    void refusesBadRequests_data()
    {
        const auto row = columns<QByteArray, QByteArray, QByteArray, int, QString>(
            "method", "target", "body", "code", "complaint");
        const QByteArray login = "/v1/user/login", faults = "/_dev/faults", import = "/_dev/import";
        const QByteArray accounts = "/_dev/accounts", ada = "/_dev/accounts/10001";
        const QByteArray settings = "/_dev/settings";
        const QByteArray captcha = "/v1/captcha/0f8fad5b-d9cb-469f-a165-70867728950e";
        row("unknown path", "GET", "/v1/nothing", {}, 404, "there is nothing at /v1/nothing");
        row("path of odd bytes", "GET", "/%0A%00%ff", {}, 404, "there is nothing at");
        row("wrong method", "GET", login, {}, 405, "answers POST, not GET");
        row("not JSON", "POST", login, "{", 400, "the body is not JSON");
        row("field missing", "POST", login, R"({"username":"a"})", 400, "\"password\" is missing");
        row("field of wrong type", "POST", login, R"({"username":1})", 400, "must be a string");
        row("huge body", "POST", login, QByteArray(1024 * 1024 + 1, ' '), 413, "1 MiB");
        row("huge seed", "POST", import, QByteArray((16 << 20) + 1, ' '), 413, "16 MiB");
        row("number too small", "GET", captcha + "?w=0", {}, 400, "whole number from 40");
        row("short identifier", "GET", captcha.chopped(1), {}, 400, "captcha identifier");
        row("text of another kind", "GET", "/v1/privacy/a/en-us/terms/%254", {}, 404, "no text");
        row("fault of no request", "POST", faults, R"({"request":"logIn","kind":"drop"})", 400,
            "request \"logIn\" is not known; known are");
        row("fault of no kind", "POST", faults, R"({"request":"*","kind":"fire"})", 400,
            "kind \"fire\" is not known; known are delay,");
        row("fault misspelt", "POST", faults, R"({"request":"*","kind":"drop","time":1})", 400,
            "\"time\" is not known");
        row("fault without times", "POST", faults, R"({"request":"*","kind":"drop","times":0})",
            400, "whole number from 1");
        row("fault that splits the answer", "POST", faults,
            R"({"request":"*","kind":"redirect","location":"a\r\nX: y"})", 400, "control");
        row("name of another", "PATCH", ada, R"({"phone":"carol@example.com"})", 409, "another");
        row("account without password", "POST", accounts, R"({"username":"a"})", 400, "missing");
        row("empty password", "PATCH", ada, R"({"password":""})", 400, "empty");
        row("endless hash", "PATCH", ada, R"({"passwordHash":"pbkdf2-sha256$999999999$AA==$x"})",
            400, "exported");
        row("no account's path", "DELETE", ada + "/10001", {}, 404, "no such account");
        row("no country", "POST", settings, R"({"country":"ZZ"})", 400, "two capital letters");
        row("long code", "POST", settings, R"({"fixedCode":"1234567"})", 400, "6 digits");
        row("time runs back", "POST", "/_dev/clock", R"({"advanceSeconds":-1})", 400, "from 1");
        row("import of a bad setting", "POST", import, R"({"accounts":[],"settings":{"x":1}})", 400,
            "settings: field \"x\" is not known");
    }

    void refusesBadRequests()
    {
        QFETCH(QByteArray, target);
        QFETCH(QByteArray, method);
        QFETCH(QByteArray, body);
        QFETCH(QString, complaint);
        const QJsonValue before = m_emulator.devGet("export");
        const Reply reply =
            m_emulator.http(method, target, body, {"Content-Type: application/json"});
        QTEST(reply.httpStatus, "code");
        QCOMPARE(reply.json().value("status").toString(), "fail");
        QVERIFY2(reply.json().value("result").toString().contains(complaint),
                 reply.body.constData());
        QCOMPARE(m_emulator.devGet("faults").toArray(), QJsonArray());
        QCOMPARE(m_emulator.devGet("export"), before);
    }

    void refusesCallersFromElsewhere_data()
    {
        const auto row = columns<QByteArray, int>("header", "code");
        row("other loopback address", "Host: 127.8.8.8", 200);
        row("name", "Host: LocalHost:1", 200);
        row("version 6", "Host: [::1]:8787", 200);
        row("empty", "Host:", 403);
        row("like ours", "Host: localhost.evil.example", 403);
        row("with a user", "Host: evil.example@localhost", 403);
        row("foreign address", "Host: 192.0.2.1", 403);
        row("page of ours", "Origin: http://127.0.0.1:8787", 200);
        row("foreign page", "Origin: https://evil.example", 403);
        row("page of no origin", "Origin: null", 403);
        row("page of another port", "Sec-Fetch-Site: same-site", 200);
        row("foreign picture", "Sec-Fetch-Site: cross-site", 403);
        row("foreign link", "Sec-Fetch-Site: cross-site\r\nSec-Fetch-Mode: navigate", 403);
    }

    void refusesCallersFromElsewhere()
    {
        QFETCH(QByteArray, header);
        QFETCH(int, code);
        for (const char *target : {"/v1/status", "/_dev/requests", "/web/sign-in"}) {
            const bool leadsToPage = header.endsWith("navigate") && target[1] == 'w';
            QCOMPARE(m_emulator.http("GET", target, {}, {header}).httpStatus,
                     leadsToPage ? 200 : code);
        }
    }

    void takesOnlyJson()
    {
        for (const char *type : {"Accept: */*", "Content-Type: text/plain"})
            QCOMPARE(m_emulator.http("POST", "/_dev/reset", "{}", {type}).httpStatus, 415);
        const QByteArray json = "content-type: Application/JSON; charset=utf-8";
        QCOMPARE(m_emulator.http("POST", "/_dev/reset", "{}", {json}).httpStatus, 200);
    }

    void countsFaultsDown()
    {
        m_emulator.addFault({{"request", "status"}, {"kind", "word"}, {"word", "a"}, {"times", 2}});
        m_emulator.addFault({{"request", "*"}, {"kind", "word"}, {"word", "b"}, {"times", 1}});
        m_emulator.http("GET", "/v1/nothing");
        QStringList words; // of the last there is none: the rules' own answer is an object
        for (int i = 0; i < 4; ++i)
            words << m_emulator.http("GET", "/v1/status").json().value("result").toString();
        QCOMPARE(words, QStringList({"a", "a", "b", ""}));
    }

    // As many as are served at a time; they would wait for longer than the last call does.
    void givesUpClientsThatAreGone()
    {
        QVERIFY(m_emulator.addFault({{"request", "status"}, {"kind", "delay"}, {"ms", 3600000}}));
        std::vector<std::unique_ptr<QTcpSocket>> clients;
        for (int i = 0; i < 64; ++i) {
            clients.push_back(connectedTo(m_emulator));
            clients.back()->write(
                i % 2 == 0 ? "GET /v1/status HTTP/1.1\r\nHost: localhost\r\n\r\n"
                           : "GET /_dev/inbox?wait=600000 HTTP/1.1\r\nHost: localhost\r\n\r\n");
            QVERIFY(clients.back()->waitForBytesWritten());
        }
        clients.clear();
        QCOMPARE(m_emulator.http("DELETE", "/_dev/faults").httpStatus, 200);
    }

    void keepsLittleOfMuch()
    {
        RequestLog log;
        const auto countKept = [&log](int added, const RequestLog::Entry &entry) {
            log.clear();
            for (int i = 0; i < added; ++i)
                log.add(entry);
            RequestLog::Selection first;
            first.after = 0;
            const QJsonArray newest = log.toJson({}), oldest = log.toJson(first);
            return newest.last()["id"].toInt() - oldest.first()["id"].toInt() + 1;
        };
        RequestLog::Entry large;
        large.request.body = QByteArray(100000, 'x');
        large.request.headers = {{"A", "1"}, {"B", QString(8000, 'b')}, {QString(200, 'C'), "cut"}};
        large.answer.body = QByteArray(100000, '\1'); // six characters each in a listing
        countKept(60, large);                         // forgotten, room and all
        const int kept = countKept(100, large);
        const QJsonArray list = log.toJson({});
        const QJsonObject last = list.last().toObject(), sent = last["headers"].toObject();
        const int size = QJsonDocument(last).toJson(QJsonDocument::Compact).size();
        QVERIFY(size > 7 * 64 * 1024 && qAbs(kept - (32 << 20) / size) <= 1);
        QCOMPARE(list.size(), (4 << 20) / size);
        QCOMPARE(last["body"].toString().size(), 64 * 1024);
        QVERIFY(sent["B"].toString().size() == 8000 && sent[QString(189, 'C')] == "");
        QVERIFY(last["headersCut"].toBool() && last["bodyCut"].toBool());
        QCOMPARE(countKept(10001, {}), 10000);
        const QJsonObject small = log.toJson({}).last().toObject();
        QVERIFY(!small["headersCut"].toBool() && !small["bodyCut"].toBool());
    }

    // An idle connection is kept for longer than stop() waits, the delay is an hour.
    void endsWithConnectionsOpen()
    {
        const auto idle = connectedTo(m_emulator);
        QVERIFY(m_emulator.addFault({{"request", "status"}, {"kind", "delay"}, {"ms", 3600000}}));
        const int before = m_emulator.requests().size();
        const auto delayed = connectedTo(m_emulator);
        delayed->write("GET /v1/status HTTP/1.1\r\nHost: localhost\r\n\r\n");
        QVERIFY(delayed->waitForBytesWritten());
        QTRY_COMPARE(m_emulator.requests().size(), before + 1);
        QCOMPARE(m_emulator.http("GET", "/v1/ip-country").httpStatus,
                 200); // who waits holds up nobody
        QVERIFY(QFile::exists(m_emulator.path("ready")));
        QVERIFY(m_emulator.stop());
        QVERIFY(!QFile::exists(m_emulator.path("ready")));
        QVERIFY(m_emulator.start());
    }

    void refusesToStart_data()
    {
        // The value of --seed and --data is what their file holds.
        const auto row = columns<QString, QByteArray, int, QByteArray>("option", "value",
                                                                       "exitCode", "complaint");
        row("any address", "--host", "0.0.0.0", 2, "0.0.0.0 is not a loopback address");
        row("port too high", "--port", "65536", 2, "0 to 65535");
        row("seed not JSON", "--seed", "{", 2, "is not JSON");
        row("seed with a name twice", "--seed",
            R"({"accounts":[{"username":"a","password":"b"},
                            {"username":"c","password":"b","email":"a"}]})",
            2, "account 1: \"a\" also belongs to account 0");
        row("empty data", "--data", "", 1, "is not a data file");
        row("foreign data", "--data", "SQLite format 3" + QByteArray(4096, '\0'), 1,
            "is not a data file");
        if (QFile::exists("/dev/full"))
            row("unreadable", "--version", "", 1, "standard output: No space left");
        row("damaged data", "--data",
            "SQLite format 3" + QByteArray(53, '\0') + "LPAC" + QByteArray(4096, 'x'), 1,
            "is damaged");
    }

    void refusesToStart()
    {
        QFETCH(QString, option);
        QFETCH(QByteArray, value);
        QFETCH(QByteArray, complaint);
        QTemporaryFile file;
        const bool byFile = option == "--seed" || option == "--data";
        QVERIFY(file.open() && file.write(value) == value.size() && file.flush());
        QProcess process;
        if (option == "--version")
            process.setStandardOutputFile("/dev/full");
        process.start(Emulator::defaultProgram(),
                      {option, byFile ? file.fileName() : QString::fromUtf8(value)});
        QVERIFY(process.waitForFinished());
        QTEST(process.exitCode(), "exitCode");
        const QByteArray message = process.readAllStandardError();
        QVERIFY2(message.contains(complaint), message.constData());
        QVERIFY(file.seek(0));
        QCOMPARE(file.readAll(), value);
    }

    void saysWhatOneNeeds()
    {
        QTemporaryDir directory;
        const QString seed = QFINDTESTDATA("../../emulator/storage/seed.json");
        const QStringList options{"--verbose", "--data", directory.filePath("data")};
        QString name = "ada@example.com";
        for (const QStringList &more : {QStringList(), QStringList{"--seed", seed}}) {
            Emulator emulator(options + more);
            QVERIFY(emulator.start());
            emulator.http("GET", "/v1/nothing");
            const QString address = emulator.baseUrl(), output = emulator.output();
            QVERIFY(output.contains("echo 'correct horse 1' | passportctl --cloud " + address +
                                    " sign-in " + name + '\n'));
            QVERIFY(output.contains(
                QString::fromUtf8("\n  李明                пароль-密码-ß 3   name")));
            QCOMPARE(output.contains("waits for a reset"), !more.isEmpty());
            QTRY_VERIFY(emulator.output().contains("Z /v1/nothing 404 "));
            emulator.devPatch("accounts/10001", {{"username", "Ada's"}});
            name = "'Ada'\\''s'";
        }
    }

    void refusesWhatIsInUse()
    {
        QTemporaryDir directory;
        const QStringList data{"--data", directory.filePath("accounts.db")};
        Emulator first(data);
        QVERIFY(first.start());
        for (const QStringList &options : {QStringList{"--port", QString::number(first.port())},
                                           QStringList{"--port", "0"} + data}) {
            QProcess second;
            second.start(Emulator::defaultProgram(), options);
            QVERIFY(second.waitForFinished());
            QCOMPARE(second.exitCode(), 1);
            QVERIFY(second.readAllStandardError().contains("in use"));
        }
    }

    void leavesAlone_data()
    {
        const auto row = columns<QString, QString, QByteArray>("option", "name", "complaint");
        row("FIFO", "--data", "fifo", "is not a regular file");
        row("device", "--data", "device", "is not a regular file");
        row("link to a device", "--data", "link", "is not a regular file");
        row("link to nothing", "--data", "dangling", "is a link that leads nowhere");
        row("directory", "--data", ".", "is not a regular file");
        row("FIFO as a log", "--data", "new", "where something else is");
        row("foreign file as a log", "--data", "novel", "where something else is");
        row("read-only", "--data", "ours", "is read-only");
        row("of another version", "--data", "older", "by another version of passport-emulator");
        row("ready FIFO", "--ready-file", "fifo", "is not a regular file");
        row("ready link to nothing", "--ready-file", "dangling", "is not a regular file");
    }

    void leavesAlone()
    {
        QFETCH(QString, option);
        QFETCH(QString, name);
        QFETCH(QByteArray, complaint);
        QTemporaryDir directory;
        const auto path = [&](const QString &file) { return directory.filePath(file); };
        const auto native = [&](const QString &file) { return QFile::encodeName(path(file)); };
        struct stat info = {};
        QVERIFY(Emulator({"--data", path("ours")}).start());
        QFile older(path("older")); // SQLite keeps the version's last byte there
        QVERIFY(QFile::copy(path("ours"), path("older")) && older.open(QIODevice::ReadWrite));
        QVERIFY(older.seek(63) && older.putChar('\2'));
        older.close();
        QVERIFY(::chmod(native("ours"), 0444) == 0 && ::chmod(native("."), 0755) == 0);
        QVERIFY(::mkfifo(native("fifo"), 0666) == 0 && ::mkfifo(native("new-wal"), 0666) == 0);
        QVERIFY(QFile::copy(path("ours"), path("novel-journal")));
        QVERIFY(QFile::link(path("device"), path("link")) && QFile::link("none", path("dangling")));
        const bool known = ::stat("/dev/null", &info) == 0; // the number for a device of our own
        const bool made = known && ::mknod(native("device"), info.st_mode, info.st_rdev) == 0;
        if (!made && (name == "device" || name == "link"))
            QSKIP("only root makes devices");
        const auto all = [&] {
            QVector<quint64> identities; // inode, kind and size of each, of a link its own
            for (const QString &file : QDir(path(".")).entryList(QDir::AllEntries | QDir::System)) {
                ::lstat(native(file), &info);
                identities << info.st_ino << info.st_mode << quint64(info.st_size);
            }
            return identities;
        };
        QString program = Emulator::defaultProgram();
        const bool isUnprivileged = name == "ours";
        if (isUnprivileged) { // others may not reach the build folder
            QVERIFY(QFile::copy(program, path("program")));
            program = path("program");
        }
        const auto before = all();
        const std::unique_ptr<QProcess> process(isUnprivileged ? new UnprivilegedProcess
                                                               : new QProcess);
        process->start(program, {"--port", "0", option, path(name)});
        QVERIFY(process->waitForFinished());
        QCOMPARE(process->exitCode(), 1);
        const QByteArray message = process->readAllStandardError();
        QVERIFY2(message.contains(complaint), message.constData());
        QCOMPARE(all(), before);
    }

    // Killed at work again and again; the file is there by its own name and by a link's.
    void keepsWhatItAcknowledged()
    {
        QTemporaryDir directory;
        const QString name = directory.filePath("accounts.db"), link = directory.filePath("link");
        QStringList tokens;
        QVERIFY(QFile::link(name, link));
        for (const QString &path : {name, link, name}) {
            Emulator emulator({"--data", path});
            const Client client(emulator);
            QVERIFY(emulator.start());
            for (const QString &token : qAsConst(tokens))
                QCOMPARE(Client::word(client.profile(token, "10001")), "ok");
            std::atomic<int> acknowledged{0};
            std::thread signingIn([&] {
                for (;; ++acknowledged) {
                    const QString token =
                        Client::token(client.logIn("ada@example.com", "correct horse 1"));
                    if (token.isEmpty())
                        return;
                    tokens << token;
                }
            });
            const bool busy = QTest::qWaitFor([&] { return acknowledged > 20; }, 30000);
            emulator.kill();
            signingIn.join();
            QVERIFY(busy);
        }
        // Who deletes the file wants a new one, whatever its log still holds.
        QVERIFY(QFile::exists(name + "-wal") && QFile::remove(name));
        Emulator emulator({"--data", name});
        QVERIFY(emulator.start());
        QCOMPARE(Client::word(Client(emulator).profile(tokens[0], "10001")), "authErr");
    }

private:
    Emulator m_emulator;
};

QTEST_GUILESS_MAIN(EmulatorTest)
#include "tst_emulator.moc"
