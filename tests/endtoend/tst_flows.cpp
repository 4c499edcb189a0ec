#include "passport/PassportNubelo.h"
#include "support/EmulatorProcess.h"

#include <QtTest/QtTest>

using namespace VelqorPassPort;
using Code = CommunityErrorCode;

namespace {

const QString ada = "ada@example.com", locked = "locked@example.com", nobody = "nobody@example.com";

} // namespace

/// The flows with captchas and codes, countries and the privacy page, from the client to the
/// emulator's rules.
class tst_Flows : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(emulator.start()); }
    void init();
    void signsInWithACode();
    void refusesCodeSignIns_data();
    void refusesCodeSignIns();
    void countsWrongTries();
    void knowsWhoExists();
    void resetsThePassword();
    void refusesResets_data();
    void refusesResets();
    void asksNotTooOften();
    void tellsTheCountry();
    void bringsThePrivacyPage();
    void asksForTheStatus();

private:
    QString captcha(const QString &purpose);
    PassportCommunityError sendCode(const QString &user, const QString &purpose,
                                    const QString &answer);
    PassportCommunityError codeSignIn(const QString &user, const QString &answer,
                                      const QString &code);

    EmulatorProcess emulator;
    std::unique_ptr<PassportNubelo> client;
    QVariantMap profile;
};

void tst_Flows::init()
{
    QLoggingCategory::setFilterRules("nubelo=false\nvelqor.passport.lib=false");
    emulator.devPost("reset");
    QVERIFY(emulator.setSettings({{"codeIntervalSeconds", 0}}));
    profile.clear();
    client = std::make_unique<PassportNubelo>();
    const QVariantMap sources{{"cloud", emulator.baseUrl()}};
    client->setConfigData(QVariantMap{{"cloudEnvironment", "here"},
                                      {"environments", QVariantMap{{"here", sources}}}});
}

// Fetches one and returns its answer.
QString tst_Flows::captcha(const QString &purpose)
{
    QVariant data;
    if (client->reqCaptcha(data, "120", "40", "300", "4", purpose).errorCode != Code::NoError)
        return {};
    const QByteArray picture = QByteArray::fromBase64(data.toMap()["data"].toString().toLatin1());
    const QString path = emulator.requests().last().toObject()["path"].toString();
    return picture.startsWith("\x89PNG") ? emulator.captchaAnswer(path.section('/', -1))
                                         : QString();
}

PassportCommunityError tst_Flows::sendCode(const QString &user, const QString &purpose,
                                           const QString &answer)
{
    QVariant data;
    return client->reqValidCode(data, answer, user, "86", "en-us", purpose);
}

PassportCommunityError tst_Flows::codeSignIn(const QString &user, const QString &answer,
                                             const QString &code)
{
    return client->reqCodeLogIn(user, "86", answer, code, profile);
}

void tst_Flows::signsInWithACode()
{
    const QString answer = captcha("login");
    QVERIFY(!answer.isEmpty());
    QCOMPARE(sendCode(ada, "login", answer).errorCode, Code::NoError);
    QCOMPARE(codeSignIn(ada, answer, emulator.latestCode()).errorCode, Code::NoError);
    QCOMPARE(profile["nickName"].toString(), "Ada");
    QVERIFY(!client->token().isEmpty());
    // Spent by its use.
    QCOMPARE(codeSignIn(ada, answer, emulator.latestCode()).errorMessage, "codeExpired");
}

void tst_Flows::refusesCodeSignIns_data()
{
    QTest::addColumn<QString>("what");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("word");
    QTest::newRow("wrong captcha") << "captcha" << int(Code::JsonErr) << "captchaErr";
    QTest::newRow("captcha of another purpose") << "purpose" << int(Code::JsonErr) << "captchaErr";
    QTest::newRow("captcha used twice") << "twice" << int(Code::JsonErr) << "captchaErr";
    QTest::newRow("unknown user") << "unknown" << int(Code::JsonErr) << "notExistErr";
    QTest::newRow("locked account") << "locked" << int(Code::IllegalErr) << "illegalErr";
    QTest::newRow("wrong code") << "code" << int(Code::JsonErr) << "codeErr";
    QTest::newRow("expired code") << "expired" << int(Code::JsonErr) << "codeExpired";
}

void tst_Flows::refusesCodeSignIns()
{
    QFETCH(QString, what);
    QFETCH(int, code);
    QFETCH(QString, word);
    if (what == "expired")
        QVERIFY(emulator.setSettings({{"codeLifetimeSeconds", 0}}));
    QString answer = captcha(what == "purpose" ? "bpwd" : "login");
    if (what == "captcha")
        answer = "!!!!";
    const QString user = what == "unknown" ? nobody : what == "locked" ? locked : ada;
    PassportCommunityError record = sendCode(user, "login", answer);
    if (what == "twice")
        record = sendCode(user, "login", answer);
    if (record.errorCode == Code::NoError)
        record = codeSignIn(user, answer, what == "code" ? "x" : emulator.latestCode());
    QCOMPARE(int(record.errorCode), code);
    QCOMPARE(record.errorName, word);
    QVERIFY(client->token().isEmpty() && profile.isEmpty());
}

void tst_Flows::countsWrongTries()
{
    const QString answer = captcha("login");
    sendCode(ada, "login", answer);
    for (int i = 0; i < 5; ++i)
        QCOMPARE(codeSignIn(ada, answer, "wrong").errorMessage, "codeErr");
    QCOMPARE(codeSignIn(ada, answer, emulator.latestCode()).errorMessage, "tooManyTries");
}

void tst_Flows::knowsWhoExists()
{
    QCOMPARE(client->isUserExisted("register", captcha("register"), ada, "86").errorCode,
             Code::NoError);
    QCOMPARE(client->isUserExisted("register", captcha("register"), nobody, "86").errorMessage,
             "notExistErr");
    QCOMPARE(client->isUserExisted("register", "!!!!", ada, "86").errorMessage, "captchaErr");
}

void tst_Flows::resetsThePassword()
{
    const auto logIn = [&](const QString &password) {
        return client->logIn(ada, password, "86", profile, false);
    };
    QCOMPARE(logIn("correct horse 1").errorCode, Code::NoError);
    const QString answer = captcha("bpwd");
    QCOMPARE(sendCode(ada, "bpwd", answer).errorCode, Code::NoError);
    const QString secret = QString::fromUtf8("neues Paßwort 密码");
    QCOMPARE(client->reqResetPassword(ada, "86", answer, emulator.latestCode(), secret).errorCode,
             Code::NoError);
    // Every session has ended, the old password too.
    QCOMPARE(client->reqGetUserInfo(profile, {}).errorCode, Code::AuthErr);
    QCOMPARE(logIn("correct horse 1").errorMessage, "pwdErr");
    QCOMPARE(logIn(secret).errorCode, Code::NoError);
}

void tst_Flows::refusesResets_data()
{
    QTest::addColumn<QString>("what");
    QTest::addColumn<QString>("word");
    QTest::newRow("code for another purpose") << "purpose"
                                              << "codeErr";
    QTest::newRow("wrong code") << "code"
                                << "codeErr";
    QTest::newRow("short password") << "password"
                                    << "pwdTooShort";
}

void tst_Flows::refusesResets()
{
    QFETCH(QString, what);
    const QString purpose = what == "purpose" ? "login" : "bpwd";
    const QString answer = captcha(purpose);
    QCOMPARE(sendCode(ada, purpose, answer).errorCode, Code::NoError);
    const QString code = what == "code" ? "x" : emulator.latestCode();
    const auto record = client->reqResetPassword(ada, "86", answer, code,
                                                 what == "password" ? "12345" : "long enough");
    QTEST(record.errorMessage, "word");
    QCOMPARE(client->logIn(ada, "correct horse 1", "86", profile, false).errorCode, Code::NoError);
}

void tst_Flows::asksNotTooOften()
{
    QVERIFY(emulator.setSettings({{"codeIntervalSeconds", 60}}));
    QCOMPARE(sendCode(ada, "login", captcha("login")).errorCode, Code::NoError);
    QCOMPARE(sendCode(ada, "login", captcha("login")).errorMessage, "tooFrequent");
    QCOMPARE(sendCode(ada, "bpwd", captcha("bpwd")).errorCode, Code::NoError);
}

void tst_Flows::tellsTheCountry()
{
    QVariantList countries;
    QCOMPARE(client->reqCountries(countries).errorCode, Code::NoError);
    QVERIFY(countries.size() > 200);
    emulator.devPost("ip-country", {{"code", "DE"}});
    QString name;
    QVariantMap country;
    QCOMPARE(client->reqCurrentCountry(name, country).errorCode, Code::NoError);
    QCOMPARE(name, "Germany");
    QCOMPARE(country["phoneArea"].toString(), "49");
    QVERIFY(country["languages"].toJsonArray().contains("de"));
    QVERIFY(country["timezones"].toJsonArray().contains("Europe/Berlin"));

    // From the caches, until the caller asks for the truth.
    emulator.devPost("ip-country", {{"code", "FR"}});
    const int before = emulator.requests().size();
    client->reqCurrentCountry(name, country);
    QCOMPARE(name, "Germany");
    QCOMPARE(emulator.requests().size(), before);
    client->reqCurrentCountry(name, country, "online");
    QCOMPARE(name, "France");
}

void tst_Flows::bringsThePrivacyPage()
{
    QString chinese, english;
    QCOMPARE(client->reqGetPrivacy(chinese, "zh-cn", "a<b", {}, "privacy").errorCode,
             Code::NoError);
    QCOMPARE(client->reqGetPrivacy(english, "en-us", "velqor", {}, "privacy").errorCode,
             Code::NoError);
    QVERIFY(english.contains("<html") && chinese.contains("<html") && english != chinese);
    QVERIFY(chinese.contains("a&lt;b") && !chinese.contains("a<b"));
    QVERIFY(emulator.requests().last().toObject()["path"].toString().endsWith(
        "/velqor/en-us/privacy/%4"));
}

void tst_Flows::asksForTheStatus()
{
    QCOMPARE(client->getNetByStatus().errorCode, Code::NoError);
    emulator.stop();
    QCOMPARE(client->getNetByStatus().errorCode, Code::EC_ConnectionRefusedError);
    QVERIFY(emulator.restart());
}

QTEST_GUILESS_MAIN(tst_Flows)
#include "tst_flows.moc"
