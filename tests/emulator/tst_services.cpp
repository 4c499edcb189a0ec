#include "support/EmulatorProcess.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QTimeZone>
#include <QtCore/QUuid>
#include <QtCore/QtEndian>
#include <QtTest/QtTest>

#include <thread>

namespace {

using Reply = EmulatorProcess::HttpReply;

QByteArray json(const QJsonObject &object)
{
    return QJsonDocument(object).toJson();
}

QJsonObject merged(QJsonObject object, const QJsonObject &changes)
{
    for (auto it = changes.begin(); it != changes.end(); ++it)
        object.insert(it.key(), it.value());
    return object;
}

// The word of a failed answer, "ok" for a good one.
QString word(const Reply &reply)
{
    const QJsonObject answer = reply.json();
    return answer.value("status") == "ok" ? "ok" : answer.value("result").toString();
}

} // namespace

class ServicesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_emulator.start()); }
    void cleanupTestCase() { QVERIFY(m_emulator.stop()); }
    void init();

    void drawsCaptchas_data();
    void drawsCaptchas();
    void refusesBadCaptchaRequests_data();
    void refusesBadCaptchaRequests();
    void judgesCaptchas_data();
    void judgesCaptchas();
    void sendsCodes_data();
    void sendsCodes();
    void refusesBadPurpose();
    void limitsCodes();
    void newCodeReplacesTheOld();
    void wakesWhoWaitsForACode();
    void listsCountries();
    void servesPrivacyPages_data();
    void servesPrivacyPages();
    void printsCodesAlone();
    void resetsEverything();

private:
    // The fields that a client sends after a person has solved a new captcha.
    QJsonObject solvedCaptcha(const QString &purpose, const QString &userName,
                              const QByteArray &query = {});
    QJsonObject sentCode(const QString &purpose, const QString &userName);
    Reply post(const QByteArray &path, const QJsonObject &body)
    {
        return m_emulator.http("POST", "/v1/user/" + path, json(body));
    }
    Reply logIn(const QString &userName, const QString &password);

    EmulatorProcess m_emulator;
};

void ServicesTest::init()
{
    QVERIFY(!m_emulator.devPost("reset").isUndefined());
}

QJsonObject ServicesTest::solvedCaptcha(const QString &purpose, const QString &userName,
                                        const QByteArray &query)
{
    const QString id = QUuid::createUuid().toString(QUuid::WithoutBraces);
    const Reply reply =
        m_emulator.http("GET", "/v1/captcha/" + id.toLatin1() + "?p=" + purpose.toLatin1() + query);
    return {{"captcha", reply.code == 200 ? m_emulator.captchaAnswer(id) : QString()},
            {"uuid", purpose + "-" + id},
            {"username", userName},
            {"phoneArea", "86"},
            {"lang", "en"},
            {"source", purpose},
            {"loginType", "VelqorPassPort"}};
}

QJsonObject ServicesTest::sentCode(const QString &purpose, const QString &userName)
{
    QJsonObject fields = solvedCaptcha(purpose, userName);
    if (const QString refused = word(post("code", fields)); refused != "ok")
        qWarning() << "no code:" << refused;
    fields.insert("validCode", m_emulator.latestCode());
    return fields;
}

Reply ServicesTest::logIn(const QString &userName, const QString &password)
{
    return post("login", {{"username", userName},
                          {"password", password},
                          {"phoneArea", ""},
                          {"loginType", "VelqorPassPort"}});
}

void ServicesTest::drawsCaptchas_data()
{
    QTest::addColumn<QByteArray>("query");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<int>("length");
    QTest::newRow("nothing asked") << QByteArray() << QSize(120, 40) << 4;
    QTest::newRow("empty values") << QByteArray("w=&h=&l=&e=&p=") << QSize(120, 40) << 4;
    QTest::newRow("all asked") << QByteArray("w=200&h=60&l=6&e=30&p=login") << QSize(200, 60) << 6;
    QTest::newRow("smallest") << QByteArray("w=40&h=20&l=8") << QSize(40, 20) << 8;
    QTest::newRow("largest") << QByteArray("w=1000&h=500&l=1") << QSize(1000, 500) << 1;
}

void ServicesTest::drawsCaptchas()
{
    QFETCH(QByteArray, query);
    QFETCH(QSize, size);
    QFETCH(int, length);
    const QString id = QUuid::createUuid().toString(QUuid::WithoutBraces);
    const QByteArray target = "/v1/captcha/" + id.toLatin1() + "?" + query;
    const QString first = m_emulator.http("GET", target).json().value("result").toString();
    const QString answer = m_emulator.captchaAnswer(id);
    QCOMPARE(answer.size(), length);
    // Portable Network Graphics, RFC 2083: the size is in the first chunk.
    const QByteArray png = QByteArray::fromBase64(first.toLatin1());
    QVERIFY(png.startsWith("\x89PNG\r\n\x1A\n") && png.contains("IEND"));
    QCOMPARE(qFromBigEndian<qint32>(png.constData() + 16), size.width());
    QCOMPARE(qFromBigEndian<qint32>(png.constData() + 20), size.height());
    QVERIFY(m_emulator.http("GET", target).json().value("result").toString() != first);
}

void ServicesTest::refusesBadCaptchaRequests_data()
{
    QTest::addColumn<QByteArray>("path");
    QTest::addColumn<QString>("complaint");
    const QByteArray id = "/0f8fad5b-d9cb-469f-a165-70867728950e";
    QTest::newRow("width zero") << id + "?w=0"
                                << "\"w\" must be a whole number from 40";
    QTest::newRow("width huge") << id + "?w=99999999999"
                                << "\"w\" must be a whole number";
    QTest::newRow("height negative") << id + "?h=-40"
                                     << "\"h\" must be a whole number";
    QTest::newRow("length a word") << id + "?l=four"
                                   << "\"l\" must be a whole number";
    QTest::newRow("lifetime a fraction") << id + "?e=1.5"
                                         << "\"e\" must be a whole number";
    QTest::newRow("no identifier") << QByteArray("/") << "captcha identifier";
    QTest::newRow("short identifier") << id.left(36) << "captcha identifier";
    QTest::newRow("no hexadecimal") << QByteArray(id).replace('f', 'g') << "captcha identifier";
    QTest::newRow("something below") << id + id << "captcha identifier";
}

void ServicesTest::refusesBadCaptchaRequests()
{
    QFETCH(QByteArray, path);
    QFETCH(QString, complaint);
    const Reply reply = m_emulator.http("GET", "/v1/captcha" + path);
    QCOMPARE(reply.code, 400);
    QVERIFY2(word(reply).contains(complaint), reply.body);
}

void ServicesTest::judgesCaptchas_data()
{
    QTest::addColumn<QByteArray>("query");
    QTest::addColumn<QJsonObject>("changes");
    QTest::addColumn<QStringList>("words"); // of one check after the other
    const QJsonObject asItIs;
    const QString bad = "captchaErr";
    const QString unknown = "login-00000000-0000-0000-0000-000000000000";
    const auto row = [](const char *name, const QJsonObject &changes, const QStringList &words,
                        const QByteArray &query = {}) {
        QTest::newRow(name) << query << changes << words;
    };
    row("right, then spent", asItIs, {"ok", bad});
    row("right, user unknown", {{"username", "nobody"}}, {"notExistErr", bad});
    row("right, user locked", {{"username", "locked@example.com"}}, {"ok"});
    row("right, phone", {{"username", "13800000001"}}, {"ok"});
    row("right, phone of another area", {{"username", "15100000003"}}, {"notExistErr"});
    row("wrong", {{"captcha", "?"}}, {bad});
    row("empty", {{"captcha", ""}}, {bad});
    row("expired", asItIs, {"captchaExpired", "captchaExpired"}, "&e=0");
    row("unknown identifier", {{"uuid", unknown}}, {bad});
    row("no identifier", {{"uuid", "login-"}}, {bad});
    row("nothing", {{"uuid", ""}}, {bad});
}

void ServicesTest::judgesCaptchas()
{
    QFETCH(QByteArray, query);
    QFETCH(QJsonObject, changes);
    QFETCH(QStringList, words);
    const QJsonObject fields = solvedCaptcha("login", "ada@example.com", query);
    for (const QString &expected : words)
        QCOMPARE(word(post("exists", merged(fields, changes))), expected);

    // With a captcha of its own, each of these would have been "ok".
    const QString id = fields.value("uuid").toString().mid(6);
    const bool spent = changes.contains("captcha");
    QCOMPARE(m_emulator.http("GET", "/_dev/captcha/" + id.toLatin1()).code, spent ? 404 : 200);
    const QJsonObject fresh = solvedCaptcha("any-purpose", "ada@example.com");
    const QString otherPurpose = fresh.value("uuid").toString().replace("any-purpose", "login");
    QCOMPARE(word(post("exists", merged(fresh, {{"uuid", otherPurpose}}))), "captchaErr");
    const QString lower = fresh.value("captcha").toString().toLower();
    QCOMPARE(word(post("exists", merged(fresh, {{"captcha", lower}}))), "ok");
}

void ServicesTest::sendsCodes_data()
{
    QTest::addColumn<QString>("purpose");
    QTest::addColumn<QString>("userName");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *purpose, const char *userName, const char *expected) {
        QTest::addRow("%s %s", purpose, userName)
            << QString(purpose) << QString(userName) << QString(expected);
    };
    row("login", "ada@example.com", "ok");
    row("bpwd", "13800000001", "ok");
    row("login", "nobody", "notExistErr");
    row("bpwd", "", "notExistErr");
    row("login", "locked@example.com", "illegalErr");
    row("register", "new@example.com", "ok");
    row("register", "ada@example.com", "existErr");
    row("supply", "13900000099", "ok");
}

void ServicesTest::sendsCodes()
{
    QFETCH(QString, purpose);
    QFETCH(QString, userName);
    QFETCH(QString, expected);
    const QJsonObject fields = solvedCaptcha(purpose, userName);
    const Reply reply = post("code", fields);
    QCOMPARE(word(reply), expected);
    QCOMPARE(word(post("code", fields)), "captchaErr");
    // Whoever sends a code may ask for the account with the same picture, and the other way round.
    const bool known = expected == "illegalErr" || expected == "existErr" ||
                       (expected == "ok" && purpose != "register" && purpose != "supply");
    QCOMPARE(word(post("exists", fields)), known ? "ok" : "notExistErr");

    const QJsonArray inbox = m_emulator.inbox();
    QCOMPARE(inbox.size(), expected == "ok" ? 1 : 0);
    if (inbox.isEmpty())
        return;
    QCOMPARE(reply.json().value("result").toObject().value("expire").toInt(), 300);
    const QJsonObject message = inbox.first().toObject();
    QCOMPARE(message.value("username").toString(), userName);
    QCOMPARE(message.value("purpose").toString(), purpose);
    QCOMPARE(message.value("lang").toString(), "en");
    static const QRegularExpression sixDigits("^[0-9]{6}$");
    QVERIFY(sixDigits.match(message.value("code").toString()).hasMatch());
    QVERIFY(QDateTime::fromString(message.value("time").toString(), Qt::ISODateWithMs).isValid());
}

void ServicesTest::refusesBadPurpose()
{
    const QJsonObject fields = solvedCaptcha("shopping", "ada@example.com");
    const Reply reply = post("code", fields);
    QCOMPARE(reply.code, 400);
    QVERIFY2(word(reply).contains("known are login, bpwd, register, supply"), reply.body);
    QCOMPARE(word(post("exists", fields)), "ok"); // nothing is spent
}

void ServicesTest::limitsCodes()
{
    sentCode("login", "ada@example.com");
    QCOMPARE(word(post("code", solvedCaptcha("login", "13800000001"))), "tooFrequent"); // also Ada
    QCOMPARE(word(post("code", solvedCaptcha("bpwd", "ada@example.com"))), "ok");
    QCOMPARE(word(post("code", solvedCaptcha("login", "carol@example.com"))), "ok");
    QVERIFY(m_emulator.setSettings({{"codeIntervalSeconds", 0}}));
    QCOMPARE(word(post("code", solvedCaptcha("login", "ada@example.com"))), "ok");
    for (const QJsonObject &bad :
         {QJsonObject{{"codeIntervalSeconds", -1}}, QJsonObject{{"codeLifetimeSeconds", "5"}},
          QJsonObject{{"codeLiftimeSeconds", 5}}})
        QCOMPARE(m_emulator.http("POST", "/_dev/settings", json(bad)).code, 400);
}

void ServicesTest::newCodeReplacesTheOld()
{
    QVERIFY(m_emulator.setSettings({{"codeIntervalSeconds", 0}}));
    const QJsonObject old = sentCode("login", "ada@example.com");
    const QJsonObject fresh = sentCode("login", "ada@example.com");
    QCOMPARE(word(post("code-login", old)), "captchaErr");
    QCOMPARE(word(post("code-login", fresh)), "ok");
}

void ServicesTest::wakesWhoWaitsForACode()
{
    QCOMPARE(m_emulator.inbox(0, 20).size(), 0);
    sentCode("login", "ada@example.com");
    const qint64 first = m_emulator.inbox().last().toObject().value("id").toVariant().toLongLong();
    QJsonArray received[2];
    std::thread waiting[2];
    for (int i : {0, 1}) // who is not woken waits beyond the deadline of inbox()
        waiting[i] = std::thread([&, i] { received[i] = m_emulator.inbox(first, 600000); });
    sentCode("bpwd", "carol@example.com");
    for (std::thread &thread : waiting)
        thread.join();
    for (const QJsonArray &messages : received) {
        QCOMPARE(messages.size(), 1);
        QCOMPARE(messages.first().toObject().value("username").toString(), "carol@example.com");
    }

    const auto forgotten = m_emulator.connectSocket(); // must not hold up the end
    forgotten->write("GET /_dev/inbox?after=999&wait=600000 HTTP/1.1\r\n\r\n");
    QVERIFY(forgotten->waitForBytesWritten());
    QVERIFY(m_emulator.stop());
    QVERIFY(m_emulator.start());
}

void ServicesTest::listsCountries()
{
    const QJsonArray list =
        m_emulator.http("GET", "/v1/countries").json().value("result").toArray();
    QVERIFY(list.size() > 230);
    QMap<QString, QJsonObject> byCode;
    QSet<QString> ids;
    const auto textList = [](const QJsonValue &text) {
        return QJsonDocument::fromJson(text.toString().toUtf8()).array();
    };
    for (const QJsonValue &value : list) {
        const QJsonObject country = value.toObject();
        byCode.insert(country.value("code").toString(), country);
        ids.insert(country.value("id").toString());
        for (const char *key : {"id", "name", "nativeName", "code", "phoneArea"})
            QVERIFY2(!country.value(key).toString().isEmpty(), qPrintable(byCode.lastKey()));
        QVERIFY(country.value("phoneArea").toString().toInt() > 0);
        QVERIFY2(!textList(country.value("languages")).isEmpty(), qPrintable(byCode.lastKey()));
    }
    QCOMPARE(ids.size(), list.size());
    QCOMPARE(byCode.size(), list.size());

    const QJsonObject germany = byCode.value("DE");
    QCOMPARE(germany.value("name").toString(), "Germany");
    QCOMPARE(germany.value("nativeName").toString(), "Deutschland");
    QCOMPARE(germany.value("phoneArea").toString(), "49");
    QCOMPARE(textList(germany.value("languages")).first().toString(), "de");
    if (QTimeZone::availableTimeZoneIds().size() > 1)
        QVERIFY(textList(germany.value("timezones")).contains("Europe/Berlin"));
    QCOMPARE(textList(byCode.value("BE").value("languages")).contains("fr-BE"), true);
}

void ServicesTest::servesPrivacyPages_data()
{
    QTest::addColumn<QByteArray>("path");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("part");
    const auto row = [](const char *name, const QByteArray &path, int code, const char *part) {
        QTest::newRow(name) << path << code << QString(part);
    };
    row("English", "northside/en-us/privacy/%254", 200, "<p>Product line: northside</p>");
    row("Chinese", "northside/zh-cn/privacy/%254", 200, "隐私政策");
    row("Chinese among others", "northside/x-zh-cn-y/privacy/%254", 200, "隐私政策");
    row("capitals", "northside/ZH-CN/privacy/%254", 200, "Privacy policy");
    row("no oem", "/en-us/privacy/%254", 200, "Product line: <");
    row("no language", "northside//privacy/%254", 200, "Product line: northside<");
    row("markup", "%3Cb%3E%22&%251/en-us/privacy/%254", 200, "&lt;b&gt;&quot;&amp;%1<");
    row("address", "https://a.example/b/en-us/privacy/%254", 200, ": https://a.example/b<");
    row("not ASCII", "m%C3%BCller/en-us/privacy/%254", 200, ": müller<");
    row("unknown target", "northside/en-us/terms/%254", 404, "there is no text \"terms\"");
    row("too short", "en-us/privacy/%254", 404, "{language}");
}

void ServicesTest::servesPrivacyPages()
{
    QFETCH(QByteArray, path);
    QFETCH(int, code);
    QFETCH(QString, part);
    const Reply reply = m_emulator.http("GET", "/v1/privacy/" + path);
    QCOMPARE(reply.code, code);
    QVERIFY2(reply.json().value("result").toString().contains(part), reply.body);
}

void ServicesTest::printsCodesAlone()
{
    const QByteArray before = m_emulator.output();
    const QJsonObject fields = sentCode("login", "李明");
    QCOMPARE(word(post("code-login", fields)), "ok");
    logIn("ada@example.com", "correct horse 1");
    QTRY_COMPARE(m_emulator.output().mid(before.size()),
                 QString("code %1 for 李明, purpose login\n")
                     .arg(fields.value("validCode").toString())
                     .toUtf8());
}

void ServicesTest::resetsEverything()
{
    const QJsonObject fields = sentCode("login", "ada@example.com");
    m_emulator.setSettings({{"codeIntervalSeconds", 7}});
    m_emulator.devPost("ip-country", {{"code", "DE"}});
    m_emulator.devPost("reset");
    QCOMPARE(word(post("code-login", fields)), "codeErr");
    QCOMPARE(m_emulator.inbox(), QJsonArray());
    QCOMPARE(word(post("exists", fields)), "captchaErr");
    QCOMPARE(m_emulator.devGet("settings").toObject().value("codeIntervalSeconds").toInt(), 60);
    QCOMPARE(m_emulator.http("GET", "/v1/ip-country").json().value("result").toString(), "156");
}

QTEST_GUILESS_MAIN(ServicesTest)
#include "tst_services.moc"
