#include "support/EmulatorProcess.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QUuid>
#include <QtTest/QtTest>

namespace {

using Reply = EmulatorProcess::HttpReply;

const QJsonObject company{{"companyName", "Harbour Lab"},
                          {"companyType", "laboratory"},
                          {"companyPurpose", "production"}};

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

class WebPagesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_emulator.start()); }
    void cleanupTestCase() { QVERIFY(m_emulator.stop()); }
    void init() { QVERIFY(!m_emulator.devPost("reset").isUndefined()); }

    void registers_data();
    void registers();
    void numbersOfTwoAreasAreTwoUsers();
    void supplies_data();
    void supplies();

private:
    Reply post(const QByteArray &path, const QJsonObject &body, const QByteArray &token = {});
    QJsonObject sentCode(const QString &purpose, const QString &userName, const QString &phoneArea);
    QJsonObject logIn(const QString &userName, const QString &phoneArea, const QString &password);

    EmulatorProcess m_emulator;
};

Reply WebPagesTest::post(const QByteArray &path, const QJsonObject &body, const QByteArray &token)
{
    return m_emulator.http("POST", "/v1/user/" + path, QJsonDocument(body).toJson(),
                           {"X-Auth-Token: " + token});
}

QJsonObject WebPagesTest::sentCode(const QString &purpose, const QString &userName,
                                   const QString &phoneArea)
{
    const QString id = QUuid::createUuid().toString(QUuid::WithoutBraces);
    m_emulator.http("GET", "/v1/captcha/" + id.toLatin1() + "?p=" + purpose.toLatin1());
    QJsonObject fields{{"captcha", m_emulator.captchaAnswer(id)},
                       {"uuid", purpose + "-" + id},
                       {"username", userName},
                       {"phoneArea", phoneArea},
                       {"lang", "en"},
                       {"source", "web"}};
    if (word(post("code", fields)) == "ok")
        fields.insert("validCode", m_emulator.latestCode());
    else
        fields.insert("validCode", "");
    return fields;
}

QJsonObject WebPagesTest::logIn(const QString &userName, const QString &phoneArea,
                                const QString &password)
{
    return post("login", {{"username", userName},
                          {"password", password},
                          {"phoneArea", phoneArea},
                          {"loginType", "VelqorPassPort"}})
        .json()
        .value("result")
        .toObject();
}

void WebPagesTest::registers_data()
{
    QTest::addColumn<QString>("userName");
    QTest::addColumn<QString>("phoneArea");
    QTest::addColumn<QJsonObject>("changes");
    QTest::addColumn<QString>("expected"); // a word, or a part of a sentence
    const auto row = [](const char *name, const char *userName, const char *phoneArea,
                        const QJsonObject &changes, const char *expected) {
        QTest::newRow(name) << QString(userName) << QString(phoneArea) << changes
                            << QString(expected);
    };
    const char *mail = "new@example.com";
    row("e-mail", mail, "", {}, "ok");
    row("phone", "17000000009", "49", {}, "ok");
    row("phone without area", "17000000009", "", {}, "\"phoneArea\" must be");
    row("name where no code can go", "newcomer", "", {}, "\"username\" must be");
    row("known e-mail", "ada@example.com", "", {}, "existErr");
    row("known phone", "13800000001", "86", {}, "existErr");
    row("password short", mail, "", {{"password", "12345"}}, "pwdTooShort");
    row("captcha other", mail, "", {{"captcha", "?"}}, "captchaErr");
    row("code for another", mail, "", {{"username", "else@example.com"}}, "codeErr");
    row("code wrong", mail, "", {{"validCode", "x"}}, "codeErr");
}

void WebPagesTest::registers()
{
    QFETCH(QString, userName);
    QFETCH(QString, phoneArea);
    QFETCH(QJsonObject, changes);
    QFETCH(QString, expected);
    const QJsonObject fields =
        merged(sentCode("register", userName, phoneArea), {{"password", "secret 1"}});
    const Reply reply = post("register", merged(fields, changes));
    QVERIFY2(word(reply).contains(expected), reply.body);
    QCOMPARE(reply.code, expected.contains(' ') ? 400 : 200);
    if (!changes.isEmpty()) // nothing is spent by what was denied
        QCOMPARE(word(post("register", fields)), "ok");
    const bool registered = !changes.isEmpty() || expected == "ok";
    const QJsonObject record = logIn(userName, phoneArea, "secret 1");
    QCOMPARE(record.isEmpty(), !registered);
    if (!registered)
        return;
    QCOMPARE(record.value(phoneArea.isEmpty() ? "email" : "phone").toString(), userName);
    QCOMPARE(record.value("phone_area").toString(), phoneArea);
    QCOMPARE(record.value("nick_name"), QJsonValue(""));
    QCOMPARE(word(post("register", fields)), "existErr");
}

void WebPagesTest::numbersOfTwoAreasAreTwoUsers()
{
    const QJsonObject password{{"password", "secret 1"}};
    const QString number = "13800000001"; // Ada's in the area 86
    QCOMPARE(word(post("register", merged(sentCode("register", number, "49"), password))), "ok");
    QCOMPARE(logIn(number, "86", "correct horse 1").value("user_id"), QJsonValue("10001"));
    QCOMPARE(logIn(number, "49", "secret 1").value("user_id"), QJsonValue("10005"));
}

void WebPagesTest::supplies_data()
{
    QTest::addColumn<QString>("contact");
    QTest::addColumn<QString>("phoneArea");
    QTest::addColumn<QJsonObject>("changes");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const char *contact, const char *phoneArea,
                        const QJsonObject &changes, const char *expected) {
        QTest::newRow(name) << QString(contact) << QString(phoneArea) << changes
                            << QString(expected);
    };
    row("company alone", "", "", {}, "ok");
    row("e-mail", "carol@lab.example", "", {}, "ok");
    row("phone", "17000000009", "49", {}, "ok");
    row("contact kept", "2025550104", "1", {}, "ok");
    row("contact of another", "ada@example.com", "", {}, "existErr");
    row("captcha other", "carol@lab.example", "", {{"captcha", "?"}}, "captchaErr");
    row("code wrong", "carol@lab.example", "", {{"validCode", "x"}}, "codeErr");
    row("blank field", "", "", {{"companyType", " "}}, "\"companyType\" must not be blank");
    row("half a contact", "", "", {{"username", "carol@lab.example"}}, "\"phoneArea\" is missing");
}

void WebPagesTest::supplies()
{
    QFETCH(QString, contact);
    QFETCH(QString, phoneArea);
    QFETCH(QJsonObject, changes);
    QFETCH(QString, expected);
    const QByteArray token =
        logIn("carol@example.com", "", "correct horse 4").value("token").toString().toLatin1();
    const QJsonObject fields =
        merged(contact.isEmpty() ? QJsonObject() : sentCode("supply", contact, phoneArea), company);
    QCOMPARE(word(post("supply", fields, "nobody's")), "authErr");
    const Reply reply = post("supply", merged(fields, changes), token);
    QVERIFY2(word(reply).contains(expected), reply.body);
    const QJsonObject record =
        post("info?userID=10004", {}, token).json().value("result").toObject();
    const bool done = expected == "ok";
    for (auto it = company.begin(); it != company.end(); ++it)
        QCOMPARE(record.value(it.key()), done ? it.value() : QJsonValue(QJsonValue::Undefined));
    QCOMPARE(logIn(contact, phoneArea, "correct horse 4").isEmpty(), !done || contact.isEmpty());
}

QTEST_GUILESS_MAIN(WebPagesTest)
#include "tst_webpages.moc"
