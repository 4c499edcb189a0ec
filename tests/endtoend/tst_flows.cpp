// SPDX-License-Identifier: MIT
#include "passport/PassportNubelo.h"
#include "passport/testing/Emulator.h"
#include "support/Rows.h"

using namespace VelqorPassPort;
using Testing::Emulator;
using Code = CommunityErrorCode;

namespace {

const QString ada = "ada@example.com", password = "correct horse 1";

} // namespace

/// Every flow of the real client over real HTTP, up to the emulator's rules.
class tst_Flows : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(emulator.start()); }

    void init()
    {
        QLoggingCategory::setFilterRules("nubelo=false\nvelqor.passport.lib=false");
        emulator.reset();
        profile.clear();
        client = std::make_unique<PassportNubelo>();
        client->setConfigData(emulator.cloudConfiguration());
    }

    void signsSeededAccountsIn_data()
    {
        const auto row = columns<QString, QString, QString, int, QString, bool>(
            "user", "area", "typed", "code", "nickName", "company");
        row("by phone", "13800000001", "86", password, Code::NoError, "Ada", true);
        row("not ASCII", QString::fromUtf8("李明"), "", QString::fromUtf8("пароль-密码-ß 3"),
            Code::NoError, QString::fromUtf8("Lǐ Míng"), true);
        row("without company", "carol@example.com", "", "correct horse 4", Code::NoError, "Carol",
            false);
        row("wrong password", ada, "", "correct horse", Code::AuthErr, "", false);
    }

    void signsSeededAccountsIn()
    {
        QFETCH(QString, user);
        QFETCH(QString, typed);
        QFETCH(QString, area);
        QFETCH(int, code);
        QCOMPARE(int(signIn(user, typed, area).errorCode), code);
        QTEST(profile.value("nickName").toString(), "nickName");
        QTEST(profile.contains("companyName"), "company");
        QCOMPARE(client->token().isEmpty(), code != Code::NoError);
        if (code != Code::NoError)
            return;
        QVERIFY(!profile.value("perms").toStringList().isEmpty());
        // A session that has ended.
        emulator.reset();
        QCOMPARE(client->reqGetUserInfo(profile, {}).errorCode, Code::AuthErr);
    }

    void showsEveryFaultToTheHost_data()
    {
        const auto row = columns<QString, QJsonObject, int>("kind", "fault", "code");
        row("known word", "word", {{"word", "dbErr"}}, Code::DbErr);
        row("other word", "word", {{"word", "quota"}}, Code::JsonErr);
        row("HTTP status", "httpStatus", {{"code", 503}, {"body", "busy"}},
            Code::EC_ServiceUnavailableError);
        row("dropped", "drop", {}, Code::EC_RemoteHostClosedError);
        row("half a body", "halfBody", {}, Code::EC_RemoteHostClosedError);
        row("malformed", "malformed", {}, Code::EC_ProtocolFailure);
        row("not an object", "notObject", {}, Code::EC_ProtocolFailure);
        row("redirect that would take the password along", "redirect",
            {{"location", "http://localhost:1/"}, {"code", 307}}, Code::EC_InsecureRedirectError);
        row("too late", "delay", {{"ms", 5000}}, Code::NetErr);
        row("too slow", "drip", {{"bytesPerSecond", 20}}, Code::NetErr);
        row("late, but in time", "delay", {{"ms", 100}}, Code::NoError);
    }

    void showsEveryFaultToTheHost()
    {
        QFETCH(QString, kind);
        QFETCH(QJsonObject, fault);
        client->setConfigData(QVariantMap{{"timeouts", QVariantMap{{"totalMs", 1000}}}});
        fault["request"] = "userLogin";
        fault["kind"] = kind;
        QVERIFY(emulator.addFault(fault));
        QTEST(int(signIn(ada, password).errorCode), "code");
        emulator.clearFaults();
        QCOMPARE(signIn(ada, password).errorCode, Code::NoError);
    }

    void signsInWithACode()
    {
        const QString answer = sendCode("login");
        const auto codeSignIn = [&](const QString &code) {
            return client->reqCodeLogIn(ada, "86", answer, code, profile).errorName;
        };
        QCOMPARE(codeSignIn("x"), "codeErr");
        QVERIFY(client->token().isEmpty() && profile.isEmpty());
        QCOMPARE(codeSignIn(emulator.latestCode()), "");
        QVERIFY(!client->token().isEmpty());
        QCOMPARE(profile["nickName"].toString(), "Ada");
        QCOMPARE(codeSignIn(emulator.latestCode()), "codeExpired");
    }

    void knowsWhoExists()
    {
        const auto word = [this](const QString &user, const QString &answer) {
            return client->isUserExisted("register", answer, user, "86").errorMessage;
        };
        QCOMPARE(word(ada, captcha("register")), "");
        QCOMPARE(word("nobody@example.com", captcha("register")), "notExistErr");
        QCOMPARE(word(ada, "!!!!"), "captchaErr");
    }

    void resetsThePassword()
    {
        const QString secret = QString::fromUtf8("neues Paßwort 密码");
        const QString answer = sendCode("bpwd");
        const auto reset = [&](const QString &to) {
            return client->reqResetPassword(ada, "86", answer, emulator.latestCode(), to);
        };
        QCOMPARE(reset("12345").errorMessage, "pwdTooShort");
        QCOMPARE(reset(secret).errorCode, Code::NoError);
        QCOMPARE(signIn(ada, secret).errorCode, Code::NoError);
    }

    void tellsTheCountry()
    {
        emulator.devPost("ip-country", {{"code", "DE"}});
        QString name;
        QVariantMap country;
        QCOMPARE(client->reqCurrentCountry(name, country).errorCode, Code::NoError);
        QCOMPARE(name, "Germany");
        QCOMPARE(country["phoneArea"].toString(), "49");
        QVERIFY(country["languages"].toJsonArray().contains("de"));
        QVERIFY(country["timezones"].toJsonArray().contains("Europe/Berlin"));
    }

    void bringsThePrivacyPage()
    {
        QString chinese, english;
        client->reqGetPrivacy(chinese, "zh-cn", "a<b", {}, "privacy");
        client->reqGetPrivacy(english, "en-us", "velqor", {}, "privacy");
        QVERIFY(english.contains("<html") && english.contains("velqor") && english != chinese);
        QVERIFY(chinese.contains("<html") && chinese.contains("a&lt;b"));
    }

    void asksForTheStatus()
    {
        QCOMPARE(client->getNetByStatus().errorCode, Code::NoError);
        emulator.stop();
        QCOMPARE(client->getNetByStatus().errorCode, Code::EC_ConnectionRefusedError);
        QVERIFY(emulator.start());
    }

private:
    PassportCommunityError signIn(const QString &user, const QString &with,
                                  const QString &area = {})
    {
        return client->logIn(user, with, area, profile, false);
    }

    // Fetches one and returns its answer.
    QString captcha(const QString &purpose)
    {
        QVariant data;
        if (client->reqCaptcha(data, "120", "40", "300", "4", purpose).errorCode != Code::NoError)
            return {};
        const QByteArray picture =
            QByteArray::fromBase64(data.toMap()["data"].toString().toLatin1());
        return picture.startsWith("\x89PNG") ? emulator.latestCaptchaAnswer() : QString();
    }

    // Has a code sent to Ada and returns the answer to its captcha.
    QString sendCode(const QString &purpose)
    {
        QVariant data;
        const QString answer = captcha(purpose);
        const auto record = client->reqValidCode(data, answer, ada, "86", "en-us", purpose);
        return record.errorCode == Code::NoError ? answer : QString();
    }

    Emulator emulator;
    std::unique_ptr<PassportNubelo> client;
    QVariantMap profile;
};

QTEST_GUILESS_MAIN(tst_Flows)
#include "tst_flows.moc"
