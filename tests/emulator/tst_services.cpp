// SPDX-License-Identifier: MIT
#include "support/AccountClient.h"
#include "support/Rows.h"

#include <QtCore/QtEndian>

#include <thread>

using VelqorPassPort::Testing::Emulator;

namespace {

const QString ada = "ada@example.com", adasPassword = "correct horse 1";

} // namespace

/// The rules of the account service.
class ServicesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_emulator.start()); }
    void cleanupTestCase() { QVERIFY(m_emulator.stop()); }
    void init() { QVERIFY(m_emulator.reset()); }

    void signsIn_data()
    {
        const auto row =
            columns<QString, QString, QString, QString>("user", "area", "password", "expected");
        row("by phone", "13800000001", "86", adasPassword, "ok");
        row("by phone of another area", "13800000001", "49", adasPassword, "pwdErr");
        row("unknown user", "nobody@example.com", "", adasPassword, "pwdErr");
        row("wrong password", ada, "", "correct horse", "pwdErr");
        row("locked", "locked@example.com", "", "correct horse 2", "illegalErr");
    }

    void signsIn()
    {
        QFETCH(QString, user);
        QFETCH(QString, area);
        QFETCH(QString, password);
        QTEST(AccountClient::word(m_client.logIn(user, password, area)), "expected");
    }

    void answersProfileToItsSessionOnly()
    {
        const QJsonObject first = signedIn(), second = signedIn();
        const QString token = first.value("token").toString();
        QVERIFY(second.value("token") != token);
        QCOMPARE(first.value("lastLogin").toString(), "");
        QVERIFY(QDateTime::fromString(second.value("lastLogin").toString(), Qt::ISODate).isValid());
        QCOMPARE(second.value("lastIP").toString(), "127.0.0.1");
        // Asked for by flags alone.
        QVERIFY(!first.contains("perms") && !first.contains("oems"));

        QCOMPARE(AccountClient::token(m_client.profile(token, "10001")), token);
        for (const auto &reply : {m_client.profile(token, "10002"), m_client.profile({}, "10001"),
                                  m_client.profile(token.toUpper(), "10001")})
            QCOMPARE(AccountClient::word(reply), "authErr");
    }

    void judgesCaptchas_data()
    {
        // The words are those of one check after the other.
        const auto row =
            columns<QByteArray, QString, QString, QStringList>("query", "key", "value", "words");
        const QString bad = "captchaErr";
        row("right, then spent", "", "lang", "en", {"ok", bad});
        row("right, user unknown", "", "username", "nobody", {"notExistErr", bad});
        row("wrong", "", "captcha", "?", {bad});
        row("expired", "&e=0", "lang", "en", {"captchaExpired", "captchaExpired"});
        row("unknown identifier", "", "uuid", "login-00000000-0000-0000-0000-000000000000", {bad});
        row("no identifier", "", "uuid", "login-", {bad});
    }

    void judgesCaptchas()
    {
        QFETCH(QByteArray, query);
        QFETCH(QString, key);
        QFETCH(QString, value);
        QFETCH(QStringList, words);
        const QJsonObject solved = m_client.solvedCaptcha("login", ada, "86", query);
        for (const QString &expected : words)
            QCOMPARE(word("exists", AccountClient::with(solved, {{key, value}})), expected);
        // A wrong answer is the only one.
        if (key == "captcha")
            QCOMPARE(word("exists", solved), "captchaErr");
    }

    void comparesPurposeAndLetters()
    {
        QJsonObject fields = m_client.solvedCaptcha("any-purpose", ada);
        const QString uuid = fields["uuid"].toString();
        fields["captcha"] = fields["captcha"].toString().toLower();
        fields["uuid"] = QString(uuid).replace("any-purpose", "login");
        QCOMPARE(word("exists", fields), "captchaErr");
        fields["uuid"] = uuid;
        QCOMPARE(word("exists", fields), "ok");
    }

    void sendsCodes_data()
    {
        const auto row = columns<QString, QString, QString>("purpose", "userName", "expected");
        row("by phone", "bpwd", "13800000001", "ok");
        row("to nobody", "login", "nobody", "notExistErr");
        row("to no name", "bpwd", "", "notExistErr");
        row("to a locked user", "login", "locked@example.com", "illegalErr");
        row("to a new user", "register", "new@example.com", "ok");
        row("to a known one as new", "register", ada, "existErr");
        row("for a new phone", "supply", "13900000099", "ok");
    }

    void sendsCodes()
    {
        QFETCH(QString, purpose);
        QFETCH(QString, userName);
        QFETCH(QString, expected);
        const int printed = m_emulator.output().size();
        const QJsonObject fields = m_client.solvedCaptcha(purpose, userName);
        QCOMPARE(word("code", fields), expected);
        // Whoever sends a code may ask for the account with the same picture, but once each.
        QVERIFY(word("exists", fields) != "captchaErr");
        QCOMPARE(word("code", fields), "captchaErr");

        const QJsonArray inbox = m_emulator.inbox();
        QCOMPARE(inbox.size(), expected == "ok" ? 1 : 0);
        if (inbox.isEmpty())
            return;
        const QJsonObject message = inbox.first().toObject();
        const QString code = message.value("code").toString();
        QVERIFY(QRegularExpression("^[0-9]{6}$").match(code).hasMatch());
        QTRY_COMPARE(m_emulator.output().mid(printed),
                     QString("code %1 for %2, purpose %3\n").arg(code, userName, purpose).toUtf8());
    }

    void limitsCodes()
    {
        const auto send = [this](const char *purpose, const char *user) {
            return word("code", m_client.solvedCaptcha(purpose, user));
        };
        const QJsonObject old = m_client.sentCode("login", ada);
        QCOMPARE(send("login", "13800000001"), "tooFrequent"); // also Ada
        QCOMPARE(send("bpwd", "ada@example.com"), "ok");
        QCOMPARE(send("login", "carol@example.com"), "ok");
        m_emulator.devPost("clock", {{"advanceSeconds", 3600}});
        QCOMPARE(send("login", "ada@example.com"), "ok");
        m_emulator.devDelete("clock");
        QCOMPARE(send("login", "ada@example.com"), "ok"); // the hour has not been
        QVERIFY(m_emulator.setSettings({{"codeIntervalSeconds", 0}}));
        const QJsonObject fresh = m_client.sentCode("login", ada);
        QCOMPARE(word("code-login", old), "captchaErr");
        QCOMPARE(word("code-login", fresh), "ok");
    }

    void judgesCodes_data()
    {
        const auto row =
            columns<int, QString, QString, QString>("lifetime", "key", "value", "expected");
        const QString none = "-00000000-0000-0000-0000-000000000000";
        row("right", 60, "lang", "en", "ok");
        row("another name of the account", 60, "username", "13800000001", "ok");
        row("expired", 0, "lang", "en", "codeExpired");
        row("wrong", 60, "validCode", "?", "codeErr");
        row("wrong captcha", 60, "captcha", "?", "captchaErr");
        row("another captcha", 60, "uuid", "%" + none, "captchaErr");
        row("captcha of another purpose", 60, "uuid", "supply" + none, "captchaErr");
        row("another account", 60, "username", "carol@example.com", "codeErr");
        row("unknown account", 60, "username", "nobody", "notExistErr");
        row("locked account", 60, "username", "locked@example.com", "illegalErr");
    }

    void judgesCodes()
    {
        QFETCH(int, lifetime);
        QFETCH(QString, key);
        QFETCH(QString, value);
        QFETCH(QString, expected);
        QVERIFY(m_emulator.setSettings({{"codeLifetimeSeconds", lifetime}}));
        for (const auto &[purpose, path] :
             {std::pair("login", "code-login"), std::pair("bpwd", "reset-password")}) {
            const QJsonObject fields =
                AccountClient::with(m_client.sentCode(purpose, ada), {{"password", "secret"}});
            const QString changed = QString(value).replace("%", purpose);
            QCOMPARE(word(path, AccountClient::with(fields, {{key, changed}})), expected);
            // Spent by its use, and by nothing else.
            const bool over = expected == "ok" || lifetime == 0;
            QCOMPARE(word(path, fields), over ? "codeExpired" : "ok");
        }
    }

    void countsWrongTries()
    {
        const QJsonObject right = m_client.sentCode("login", ada);
        for (int i = 0; i < 5; ++i)
            QCOMPARE(word("code-login", AccountClient::with(right, {{"validCode", "?"}})),
                     "codeErr");
        QCOMPARE(word("code-login", right), "tooManyTries");
    }

    void resetsThePassword()
    {
        const QString token = signedIn()["token"].toString();
        const auto reset = [this](const QJsonObject &fields, const QString &password) {
            return word("reset-password", AccountClient::with(fields, {{"password", password}}));
        };
        QCOMPARE(reset(m_client.sentCode("login", ada), "secret"), "codeErr");
        const QJsonObject fields = m_client.sentCode("bpwd", ada);
        QCOMPARE(reset(fields, "12345"), "pwdTooShort");
        QCOMPARE(AccountClient::word(m_client.profile(token, "10001")), "ok");
        QCOMPARE(reset(fields, "secret"), "ok");
        // Every session has ended, the old password too.
        QCOMPARE(AccountClient::word(m_client.profile(token, "10001")), "authErr");
        QCOMPARE(AccountClient::word(m_client.logIn(ada, adasPassword)), "pwdErr");
        QCOMPARE(AccountClient::word(m_client.logIn(ada, "secret")), "ok");
    }

    void wakesWhoWaitsForACode()
    {
        QCOMPARE(m_emulator.inbox(0, 20).size(), 0);
        m_client.sentCode("login", ada);
        const int first = m_emulator.inbox().last().toObject().value("id").toInt();
        QJsonArray received[2];
        std::thread waiting[2];
        for (int i : {0, 1}) // who is not woken waits beyond the deadline of inbox()
            waiting[i] = std::thread([&, i] { received[i] = m_emulator.inbox(first, 600000); });
        m_client.sentCode("bpwd", "carol@example.com");
        for (std::thread &thread : waiting)
            thread.join();
        for (const QJsonArray &messages : received) {
            QCOMPARE(messages.size(), 1);
            QCOMPARE(messages.first().toObject().value("username").toString(), "carol@example.com");
        }
    }

    void drawsAndServes()
    {
        const QString picture = "captcha/0f8fad5b-d9cb-469f-a165-70867728950e?w=40&h=20&l=8";
        const QString first = get(picture).toString();
        // Portable Network Graphics, RFC 2083: the size is in the first chunk.
        const QByteArray png = QByteArray::fromBase64(first.toLatin1());
        QCOMPARE(qFromBigEndian<qint32>(png.constData() + 16), 40);
        QCOMPARE(qFromBigEndian<qint32>(png.constData() + 20), 20);
        QCOMPARE(m_emulator.captchaAnswer(picture.mid(8, 36)).size(), 8);
        QVERIFY(get(picture).toString() != first);

        const auto page = [this](const QString &path) {
            return get("privacy/" + path + "/privacy/%254").toString();
        };
        QVERIFY(page("northside/x-zh-cn-y").contains(QString::fromUtf8("隐私政策")));
        QVERIFY(page("northside/ZH-CN").contains("<p>Product line: northside</p>"));
        QVERIFY(!page("/").contains("Product line"));
        QVERIFY(page("%3Cb%3E%22&%251/en-us").contains("&lt;b&gt;&quot;&amp;%1<"));
        QVERIFY(page("https://a.example/b/en-us").contains(": https://a.example/b<"));
    }

    void resetsEverything()
    {
        const QString token = signedIn()["token"].toString();
        const QJsonObject fields = m_client.sentCode("login", ada);
        m_emulator.setSettings({{"codeIntervalSeconds", 7}});
        m_emulator.addFault({{"request", "*"}, {"kind", "drop"}});
        m_emulator.reset();
        QCOMPARE(m_emulator.requests(), QJsonArray());
        QCOMPARE(AccountClient::word(m_client.profile(token, "10001")), "authErr");
        QCOMPARE(word("code-login", fields), "codeErr");
        QCOMPARE(m_emulator.inbox(), QJsonArray());
        QCOMPARE(word("exists", fields), "captchaErr");
        QCOMPARE(m_emulator.devGet("settings").toObject().value("codeIntervalSeconds").toInt(), 60);
    }

private:
    QString word(const QString &path, const QJsonObject &fields) const
    {
        return AccountClient::word(m_client.post(path, fields));
    }
    QJsonValue get(const QString &target)
    {
        return AccountClient::result(m_emulator.http("GET", "/v1/" + target.toUtf8()));
    }
    QJsonObject signedIn() const
    {
        return AccountClient::result(m_client.logIn(ada, adasPassword)).toObject();
    }

    Emulator m_emulator;
    const AccountClient m_client{m_emulator};
};

QTEST_GUILESS_MAIN(ServicesTest)
#include "tst_services.moc"
