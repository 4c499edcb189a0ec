#include "support/EmulatorProcess.h"

#include <QtCore/QFile>
#include <QtCore/QJsonDocument>
#include <QtCore/QProcess>
#include <QtNetwork/QTcpSocket>
#include <QtTest/QtTest>

#include <vector>

namespace {

using Reply = EmulatorProcess::HttpReply;

const QString resultKey = QStringLiteral("result");
const QString ada = QStringLiteral("ada@example.com");
const QString adasPassword = QStringLiteral("correct horse 1");

QJsonObject object(const char *json)
{
    return QJsonDocument::fromJson(json).object();
}

QByteArray credentials(const QString &name, const QString &phoneArea, const QString &password)
{
    return QJsonDocument(
               QJsonObject{{QStringLiteral("username"), name},
                           {QStringLiteral("phoneArea"), phoneArea},
                           {QStringLiteral("password"), password},
                           {QStringLiteral("loginType"), QStringLiteral("VelqorPassPort")}})
        .toJson();
}

QJsonObject record(const Reply &reply)
{
    return reply.json().value(resultKey).toObject();
}

QString text(const QJsonObject &object, const char *key)
{
    return object.value(QLatin1String(key)).toString();
}

QJsonObject signIn(EmulatorProcess &emulator, const QByteArray &query = {})
{
    return record(emulator.http("POST", "/v1/user/login" + query,
                                credentials(ada, QStringLiteral("86"), adasPassword)));
}

Reply profile(EmulatorProcess &emulator, const QString &token, const QString &userId)
{
    return emulator.http("POST", "/v1/user/info?userID=" + userId.toUtf8(), {},
                         {"X-Auth-Token: " + token.toUtf8()});
}

} // namespace

class EmulatorTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void init();

    void answersTheRecordAsAsked();
    void answersProfileToItsSessionOnly();
    void refusesBadRequests_data();
    void refusesBadRequests();
    void outlivesRequestsThatAreNotHttp();
    void refusesCallersFromElsewhere_data();
    void refusesCallersFromElsewhere();

    void breaksTheDelivery_data();
    void breaksTheDelivery();
    void oneSlowAnswerBlocksNobodyElse();
    void countsFaultsDown();
    void refusesUnknownFaults_data();
    void refusesUnknownFaults();
    void resetsToTheSeed();

    void endsWithConnectionsOpen();
    void refusesToStart_data();
    void refusesToStart();
    void refusesWhatIsInUse();

private:
    void addFault(const char *fields);

    EmulatorProcess m_emulator;
};

void EmulatorTest::initTestCase()
{
    QVERIFY(m_emulator.start());
}

void EmulatorTest::cleanupTestCase()
{
    QVERIFY(m_emulator.stop()); // a sanitizer's finding shows in the exit code
}

void EmulatorTest::init()
{
    QVERIFY(!m_emulator.devPost(QStringLiteral("reset")).isUndefined());
}

void EmulatorTest::addFault(const char *fields)
{
    QVERIFY(m_emulator.addFault(object(fields)));
}

void EmulatorTest::answersTheRecordAsAsked()
{
    const QJsonObject bare = signIn(m_emulator);
    QVERIFY(!bare.contains(QStringLiteral("perms")) && !bare.contains(QStringLiteral("oems")));
    QCOMPARE(text(bare, "lastLogin"), QString());
    QCOMPARE(text(bare, "companyName"), QStringLiteral("Northside Dental Lab"));

    const QJsonObject full = signIn(m_emulator, "?withPerms=true&withDentals=true");
    QCOMPARE(full.value(QStringLiteral("perms")).toArray().size(), 2);
    QCOMPARE(full.value(QStringLiteral("oems")).toArray().size(), 2);
    const QDateTime lastLogin = QDateTime::fromString(text(full, "lastLogin"), Qt::ISODateWithMs);
    QCOMPARE(lastLogin.timeSpec(), Qt::UTC);
    QCOMPARE(text(full, "lastIP"), QStringLiteral("127.0.0.1"));
    QVERIFY(text(full, "token") != text(bare, "token"));

    const QJsonObject carol =
        record(m_emulator.http("POST", "/v1/user/login",
                               credentials(QStringLiteral("carol@example.com"), QString(),
                                           QStringLiteral("correct horse 4"))));
    for (const char *key : {"companyName", "companyPurpose", "companyType"})
        QVERIFY2(!carol.contains(QLatin1String(key)), key);
}

void EmulatorTest::answersProfileToItsSessionOnly()
{
    const QJsonObject first = signIn(m_emulator, "?withPerms=true&withDentals=true");
    const QString token = text(first, "token");
    const QString userId = text(first, "user_id");
    QCOMPARE(record(profile(m_emulator, token, userId)), first);
    signIn(m_emulator);
    QCOMPARE(text(record(profile(m_emulator, token, userId)), "token"), token);

    for (const Reply &reply :
         {profile(m_emulator, token, QStringLiteral("10002")), profile(m_emulator, {}, userId),
          profile(m_emulator, token.toUpper(), userId), profile(m_emulator, token, {}),
          m_emulator.http("POST", "/v1/user/info?userID=" + userId.toUtf8())}) {
        QCOMPARE(reply.code, 200);
        QCOMPARE(text(reply.json(), "result"), QStringLiteral("authErr"));
    }
}

void EmulatorTest::refusesBadRequests_data()
{
    QTest::addColumn<QByteArray>("target");
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QByteArray>("header");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("complaint");
    const auto row = [](const char *name, const QByteArray &method, const QByteArray &target,
                        const QByteArray &body, int code, const char *complaint,
                        const QByteArray &header = "X-Row: 1") {
        QTest::newRow(name) << target << method << body << header << code
                            << QString::fromUtf8(complaint);
    };
    const QByteArray login = "/v1/user/login";
    const QByteArray good = credentials(ada, {}, adasPassword);
    row("unknown path", "GET", "/v1/nothing", {}, 404, "there is nothing at /v1/nothing");
    row("path of odd bytes", "GET", "/%0A%00%ff", {}, 404, "there is nothing at");
    row("long path", "GET", "/" + QByteArray(8000, 'a'), {}, 404, "there is nothing at");
    row("wrong method", "GET", login, {}, 405, "answers POST, not GET");
    row("no body", "POST", login, {}, 400, "the body is not JSON");
    row("not JSON", "POST", login, "{", 400, "the body is not JSON");
    row("not an object", "POST", login, "[1]", 400, "not a JSON object");
    row("field missing", "POST", login, "{\"username\":\"a\"}", 400, "\"password\" is missing");
    row("field of wrong type", "POST", login, "{\"username\":1}", 400,
        "\"username\" must be a string");
    row("login type", "POST", login, QByteArray(good).replace("VelqorPassPort", "x"), 400,
        "\"loginType\" must be \"VelqorPassPort\"");
    row("query value", "POST", login + "?withPerms=1", good, 400, "must be true or false");
    row("not UTF-8", "POST", login, "{\"username\":\"\xff\xfe\"}", 400, "UTF8");
    row("deep nesting", "POST", login, QByteArray(100000, '['), 400, "deep");
    row("huge body", "POST", login, QByteArray(1024 * 1024 + 1, ' '), 413, "1 MiB");
    row("huge chunked body", "POST", login,
        "110000\r\n" + QByteArray(0x110000, ' ') + "\r\n0\r\n\r\n", 413, "1 MiB",
        "Transfer-Encoding: chunked");
    row("multipart without boundary", "POST", login, "x", 400, "HTTP",
        "Content-Type: multipart/form-data");
    row("developer path", "GET", "/_dev/nothing", {}, 404, "there is nothing at");
    row("developer method", "PUT", "/_dev/faults", {}, 405, "answers GET, POST, DELETE, not PUT");
}

void EmulatorTest::refusesBadRequests()
{
    QFETCH(QByteArray, target);
    QFETCH(QByteArray, method);
    QFETCH(QByteArray, body);
    QFETCH(QByteArray, header);
    QFETCH(int, code);
    QFETCH(QString, complaint);
    const Reply reply = m_emulator.http(method, target, body, {header});
    QCOMPARE(reply.code, code);
    QCOMPARE(text(reply.json(), "status"), QStringLiteral("fail"));
    QVERIFY2(text(reply.json(), "result").contains(complaint), reply.body.constData());
    QCOMPARE(m_emulator.http("GET", "/v1/status").code, 200);
}

void EmulatorTest::outlivesRequestsThatAreNotHttp()
{
    const QByteArray tooLong = "GET /" + QByteArray(9000, 'a') + " HTTP/1.1\r\n\r\n";
    for (const QByteArray &bytes :
         {QByteArray("\r\n\r\n"), QByteArray("GET\r\n\r\n"), QByteArray("GET / HTTP/9\r\n\r\n"),
          QByteArray("GET /v1/status HTTP/1.1\r\nRange: bytes=9-2,-1,900-\r\n\r\n"), tooLong}) {
        const auto socket = m_emulator.connectSocket();
        socket->write(bytes);
        QVERIFY(socket->waitForReadyRead());
        QVERIFY(socket->readAll().startsWith("HTTP/1.1 4"));
        QCOMPARE(m_emulator.http("GET", "/v1/status").code, 200);
    }
}

void EmulatorTest::refusesCallersFromElsewhere_data()
{
    QTest::addColumn<QByteArray>("header");
    QTest::addColumn<int>("code");
    QTest::newRow("address") << QByteArray("Host: 127.0.0.1:8787") << 200;
    QTest::newRow("other loopback address") << QByteArray("Host: 127.8.8.8") << 200;
    QTest::newRow("name") << QByteArray("Host: LocalHost:1") << 200;
    QTest::newRow("version 6") << QByteArray("Host: [::1]:8787") << 200;
    QTest::newRow("foreign name") << QByteArray("Host: evil.example:8787") << 403;
    QTest::newRow("like ours") << QByteArray("Host: localhost.evil.example") << 403;
    QTest::newRow("behind a user") << QByteArray("Host: localhost@evil.example") << 403;
    QTest::newRow("foreign address") << QByteArray("Host: 192.0.2.1") << 403;
    QTest::newRow("page of ours") << QByteArray("Origin: http://127.0.0.1:8787") << 200;
    QTest::newRow("foreign page") << QByteArray("Origin: https://evil.example") << 403;
    QTest::newRow("page of no origin") << QByteArray("Origin: null") << 403;
}

void EmulatorTest::refusesCallersFromElsewhere()
{
    QFETCH(QByteArray, header);
    QFETCH(int, code);
    QCOMPARE(m_emulator.http("GET", "/v1/status", {}, {header}).code, code);
    QCOMPARE(m_emulator.http("GET", "/_dev/requests", {}, {header}).code, code);
}

void EmulatorTest::breaksTheDelivery_data()
{
    QTest::addColumn<QByteArray>("fault");
    QTest::addColumn<bool>("wholeHead");
    QTest::addColumn<double>("partOfBody");
    QTest::newRow("delay") << QByteArray(R"("kind":"delay","ms":20)") << true << 1.0;
    QTest::newRow("drip") << QByteArray(R"("kind":"drip","bytesPerSecond":1000)") << true << 1.0;
    QTest::newRow("half a body") << QByteArray(R"("kind":"halfBody")") << true << 0.5;
    QTest::newRow("drop") << QByteArray(R"("kind":"drop")") << false << 0.0;
}

void EmulatorTest::breaksTheDelivery()
{
    QFETCH(QByteArray, fault);
    QFETCH(bool, wholeHead);
    QFETCH(double, partOfBody);
    const int length = m_emulator.http("GET", "/v1/status").body.size();
    addFault("{\"request\":\"status\"," + fault + "}");
    // Where the body does not get through whole, it is the fault that ends the connection.
    const QByteArray end = partOfBody == 1.0 ? "Connection: close\r\n\r\n" : "\r\n";
    const QByteArray answer = m_emulator.exchange("GET /v1/status HTTP/1.1\r\n" + end);
    QVERIFY2(answer.startsWith("HTTP/1.1 200 OK\r\n"), answer.constData());
    QVERIFY(answer.contains("Content-Length: " + QByteArray::number(length) + "\r\n"));
    const int headEnd = answer.indexOf("\r\n\r\n");
    QCOMPARE(headEnd >= 0, wholeHead);
    if (wholeHead)
        QCOMPARE(answer.size() - headEnd - 4, int(length * partOfBody));
}

void EmulatorTest::oneSlowAnswerBlocksNobodyElse()
{
    addFault(R"({"request":"userLogin","kind":"delay","ms":3600000})");
    const auto slow = m_emulator.connectSocket();
    const QByteArray body = credentials(ada, {}, adasPassword);
    slow->write("POST /v1/user/login HTTP/1.1\r\nContent-Length: " +
                QByteArray::number(body.size()) + "\r\n\r\n" + body);
    QVERIFY(slow->waitForBytesWritten());
    QTRY_COMPARE(m_emulator.requests().size(), 1);
    QCOMPARE(m_emulator.http("GET", "/v1/status").code, 200);
    QCOMPARE(slow->bytesAvailable(), 0);
    QVERIFY(m_emulator.stop());
    QVERIFY(m_emulator.start());
}

void EmulatorTest::countsFaultsDown()
{
    addFault(R"({"request":"status","kind":"word","word":"first","times":2})");
    addFault(R"({"request":"*","kind":"word","word":"second","times":1})");
    QStringList words;
    const auto ask = [&] { words << text(m_emulator.http("GET", "/v1/status").json(), "result"); };
    m_emulator.http("GET", "/v1/nothing");
    ask();
    const QJsonArray left = m_emulator.devGet(QStringLiteral("faults")).toArray();
    QCOMPARE(left.size(), 2);
    QCOMPARE(left.at(0).toObject().value(QStringLiteral("times")).toInt(), 1);
    ask();
    ask();
    ask();
    QCOMPARE(words.mid(0, 3), QStringList({QStringLiteral("first"), QStringLiteral("first"),
                                           QStringLiteral("second")}));
    QCOMPARE(words.at(3), QString()); // the rules' own answer is an object
    addFault(R"({"request":"*","kind":"drop"})");
    m_emulator.devDelete(QStringLiteral("faults"));
    QCOMPARE(m_emulator.http("GET", "/v1/status").code, 200);
}

void EmulatorTest::refusesUnknownFaults_data()
{
    QTest::addColumn<QByteArray>("fault");
    QTest::addColumn<QString>("complaint");
    const auto row = [](const char *name, const char *fault, const char *complaint) {
        QTest::newRow(name) << QByteArray(fault) << QString::fromLatin1(complaint);
    };
    row("request", R"({"request":"logIn","kind":"drop"})",
        "request \"logIn\" is not known; known are");
    row("kind", R"({"request":"*","kind":"fire"})", "kind \"fire\" is not known; known are delay,");
    row("no kind", R"({"request":"*"})", "field \"kind\" is missing");
    row("field missing", R"({"request":"*","kind":"word"})", "field \"word\" is missing");
    row("misspelt field", R"({"request":"*","kind":"drop","time":1})", "\"time\" is not known");
    row("field of wrong type", R"({"request":"*","kind":"delay","ms":"9"})", "whole number");
    row("no times", R"({"request":"*","kind":"drop","times":0})", "whole number from 1");
    row("half a byte", R"({"request":"*","kind":"drip","bytesPerSecond":0.5})", "whole number");
    row("no redirect", R"({"request":"*","kind":"redirect","location":"/","code":304})", "301,");
    row("split answer", R"({"request":"*","kind":"redirect","location":"a\r\nX: y"})", "control");
}

void EmulatorTest::refusesUnknownFaults()
{
    QFETCH(QByteArray, fault);
    QFETCH(QString, complaint);
    const Reply reply = m_emulator.http("POST", "/_dev/faults", fault);
    QCOMPARE(reply.code, 400);
    QVERIFY2(text(reply.json(), "result").contains(complaint), reply.body.constData());
    QCOMPARE(m_emulator.devGet(QStringLiteral("faults")).toArray(), QJsonArray());
}

void EmulatorTest::resetsToTheSeed()
{
    const QJsonObject before = signIn(m_emulator);
    addFault(R"({"request":"userLogin","kind":"word","word":"dbErr"})");
    m_emulator.devPost(QStringLiteral("reset"));
    QCOMPARE(m_emulator.requests(), QJsonArray());
    const Reply reply = profile(m_emulator, text(before, "token"), text(before, "user_id"));
    QCOMPARE(text(reply.json(), "result"), QStringLiteral("authErr"));
    const QJsonObject after = signIn(m_emulator);
    QCOMPARE(text(after, "lastLogin"), QString());
    QCOMPARE(text(after, "user_id"), text(before, "user_id"));
}

// An idle connection is kept for longer than stop() waits, the delay is an hour.
void EmulatorTest::endsWithConnectionsOpen()
{
    EmulatorProcess emulator;
    QVERIFY(emulator.start());
    const auto idle = emulator.connectSocket();
    const auto kept = emulator.connectSocket();
    kept->write("GET /v1/status HTTP/1.1\r\n\r\n");
    QVERIFY(kept->waitForReadyRead());
    QVERIFY(emulator.addFault(object(R"({"request":"status","kind":"delay","ms":3600000})")));
    const auto delayed = emulator.connectSocket();
    delayed->write("GET /v1/status HTTP/1.1\r\n\r\n");
    QVERIFY(delayed->waitForBytesWritten());
    QTRY_COMPARE(emulator.requests().size(), 2);
    QVERIFY(QFile::exists(emulator.path(QStringLiteral("ready"))));
    QVERIFY(emulator.stop());
    QVERIFY(!QFile::exists(emulator.path(QStringLiteral("ready"))));
}

void EmulatorTest::refusesToStart_data()
{
    QTest::addColumn<QString>("option");
    QTest::addColumn<QByteArray>("value"); // of --seed and --data: what the file holds
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QByteArray>("complaint");
    const auto row = [](const char *name, const char *option, const QByteArray &value, int code,
                        const char *complaint) {
        QTest::newRow(name) << QString::fromLatin1(option) << value << code
                            << QByteArray(complaint);
    };
    row("any address", "--host", "0.0.0.0", 2, "0.0.0.0 is not a loopback address");
    row("any address, version 6", "--host", "::", 2, "not a loopback address");
    row("name", "--host", "example.com", 2, "not a loopback address");
    row("port too high", "--port", "65536", 2, "0 to 65535");
    row("unknown option", "--colour", "red", 2, "colour");
    row("seed not JSON", "--seed", "{", 2, "is not JSON");
    row("seed of another form", "--seed", "[]", 2, "\"accounts\"");
    row("seed without password", "--seed", R"({"accounts":[{"username":"a"}]})", 2,
        "account 0: field \"password\" is missing");
    row("seed with a wrong type", "--seed",
        R"({"accounts":[{"username":"a","password":"b","perms":[1]}]})", 2,
        "account 0: field \"perms\" must be a list of strings");
    row("seed with a name twice", "--seed",
        R"({"accounts":[{"username":"a","password":"b"},
                        {"username":"c","password":"b","email":"a"}]})",
        2, "account 1: \"a\" also belongs to account 0");
    row("text as data", "--data", "not a data file", 1, "is not a data file");
    row("foreign data", "--data", "SQLite format 3" + QByteArray(4096, '\0'), 1,
        "is not a data file");
    row("damaged data", "--data",
        "SQLite format 3" + QByteArray(53, '\0') + "LPAC" + QByteArray(4096, 'x'), 1, "is damaged");
}

void EmulatorTest::refusesToStart()
{
    QFETCH(QString, option);
    QFETCH(QByteArray, value);
    QFETCH(int, exitCode);
    QFETCH(QByteArray, complaint);
    QTemporaryDir directory;
    QFile file(directory.filePath(QStringLiteral("file")));
    const bool byFile = option == QLatin1String("--seed") || option == QLatin1String("--data");
    QVERIFY(file.open(QIODevice::ReadWrite) && file.write(value) == value.size() && file.flush());
    QProcess process;
    process.start(EmulatorProcess::program(),
                  {option, byFile ? file.fileName() : QString::fromUtf8(value)});
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitCode(), exitCode);
    const QByteArray message = process.readAllStandardError();
    QVERIFY2(message.contains(complaint), message.constData());
    QVERIFY(file.seek(0));
    QCOMPARE(file.readAll(), value);
}

void EmulatorTest::refusesWhatIsInUse()
{
    QTemporaryDir directory;
    const QString data = directory.filePath(QStringLiteral("accounts.db"));
    EmulatorProcess first({QStringLiteral("--data"), data});
    QVERIFY(first.start());
    const QString port = QString::number(first.port());
    for (const QStringList &options : {QStringList{QStringLiteral("--port"), port},
                                       QStringList{QStringLiteral("--port"), QStringLiteral("0"),
                                                   QStringLiteral("--data"), data}}) {
        QProcess second;
        second.start(EmulatorProcess::program(), options);
        QVERIFY(second.waitForFinished());
        QCOMPARE(second.exitCode(), 1);
        QVERIFY(second.readAllStandardError().contains("in use"));
    }
}

QTEST_GUILESS_MAIN(EmulatorTest)
#include "tst_emulator.moc"
