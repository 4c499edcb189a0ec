#include "passport/PassportNubelo.h"
#include "passport/testing/Emulator.h"
#include "support/Rows.h"

using namespace VelqorPassPort;
using Testing::Emulator;
using Code = CommunityErrorCode;

namespace {

const QString ada = "ada@example.com", locked = "locked@example.com", nobody = "nobody@example.com";
const QString password = "correct horse 1";

} // namespace

/// Every flow of the real client over real HTTP, up to the emulator's rules.
class tst_Flows : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(emulator.start()); }
    void init();
    void signsSeededAccountsIn_data();
    void signsSeededAccountsIn();
    void showsEveryFaultToTheHost_data();
    void showsEveryFaultToTheHost();
    void signsInWithACode();
    void refusesCodeSignIns_data();
    void refusesCodeSignIns();
    void countsWrongTries();
    void knowsWhoExists();
    void resetsThePassword();
    void tellsTheCountry();
    void bringsThePrivacyPage();
    void asksForTheStatus();

private:
    QString captcha(const QString &purpose);
    PassportCommunityError signIn(const QString &user, const QString &with,
                                  const QString &area = {})
    {
        return client->logIn(user, with, area, profile, false);
    }
    PassportCommunityError sendCode(const QString &user, const QString &purpose,
                                    const QString &answer)
    {
        QVariant data;
        return client->reqValidCode(data, answer, user, "86", "en-us", purpose);
    }
    PassportCommunityError codeSignIn(const QString &user, const QString &answer,
                                      const QString &code)
    {
        return client->reqCodeLogIn(user, "86", answer, code, profile);
    }

    Emulator emulator;
    std::unique_ptr<PassportNubelo> client;
    QVariantMap profile;
};

void tst_Flows::init()
{
    QLoggingCategory::setFilterRules("nubelo=false\nvelqor.passport.lib=false");
    emulator.reset();
    QVERIFY(emulator.setSettings({{"codeIntervalSeconds", 0}}));
    profile.clear();
    client = std::make_unique<PassportNubelo>();
    client->setConfigData(emulator.cloudConfiguration());
}

// Fetches one and returns its answer.
QString tst_Flows::captcha(const QString &purpose)
{
    QVariant data;
    if (client->reqCaptcha(data, "120", "40", "300", "4", purpose).errorCode != Code::NoError)
        return {};
    const QByteArray picture = QByteArray::fromBase64(data.toMap()["data"].toString().toLatin1());
    return picture.startsWith("\x89PNG") ? emulator.latestCaptchaAnswer() : QString();
}

void tst_Flows::signsSeededAccountsIn_data()
{
    const auto row = columns<QString, QString, QString, int, QString, bool>(
        "user", "area", "typed", "code", "nickName", "company");
    row("by phone", "13800000001", "86", password, Code::NoError, "Ada", true);
    row("not ASCII", QString::fromUtf8("李明"), "", QString::fromUtf8("пароль-密码-ß 3"),
        Code::NoError, QString::fromUtf8("Lǐ Míng"), true);
    row("without company", "carol@example.com", "", "correct horse 4", Code::NoError, "Carol",
        false);
    row("locked", locked, "", "correct horse 2", Code::IllegalErr, "", false);
    row("wrong password", ada, "", "correct horse", Code::AuthErr, "", false);
    row("unknown user", nobody, "", password, Code::AuthErr, "", false);
}

void tst_Flows::signsSeededAccountsIn()
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

void tst_Flows::showsEveryFaultToTheHost_data()
{
    const auto row = columns<QString, QJsonObject, int>("kind", "fault", "code");
    row("known word", "word", {{"word", "dbErr"}}, Code::DbErr);
    row("other word", "word", {{"word", "quota"}}, Code::JsonErr);
    row("HTTP status", "httpStatus", {{"code", 503}, {"body", "busy"}},
        Code::EC_ServiceUnavailableError);
    row("dropped", "drop", {}, Code::EC_RemoteHostClosedError);
    row("half a body", "halfBody", {}, Code::EC_RemoteHostClosedError);
    row("malformed", "malformed", {}, Code::EC_ProtocolFailure);
    row("redirect that would take the password along", "redirect",
        {{"location", "http://localhost:1/"}, {"code", 307}}, Code::EC_InsecureRedirectError);
    row("too late", "delay", {{"ms", 5000}}, Code::NetErr);
    row("too slow", "drip", {{"bytesPerSecond", 20}}, Code::NetErr);
    row("late, but in time", "delay", {{"ms", 100}}, Code::NoError);
}

void tst_Flows::showsEveryFaultToTheHost()
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

void tst_Flows::signsInWithACode()
{
    const QString answer = captcha("login");
    QCOMPARE(sendCode(ada, "login", answer).errorCode, Code::NoError);
    QCOMPARE(codeSignIn(ada, answer, emulator.latestCode()).errorCode, Code::NoError);
    QCOMPARE(profile["nickName"].toString(), "Ada");
    QVERIFY(!client->token().isEmpty());
    // Spent by its use.
    QCOMPARE(codeSignIn(ada, answer, emulator.latestCode()).errorMessage, "codeExpired");
}

void tst_Flows::refusesCodeSignIns_data()
{
    const auto row = columns<QString, QString, QString, QString>("purpose", "user", "code", "word");
    row("captcha of another purpose", "bpwd", ada, "", "captchaErr");
    row("unknown user", "login", nobody, "", "notExistErr");
    row("locked account", "login", locked, "", "illegalErr");
    row("wrong code", "login", ada, "x", "codeErr");
    row("expired code", "login", ada, "", "codeExpired");
}

void tst_Flows::refusesCodeSignIns()
{
    QFETCH(QString, purpose);
    QFETCH(QString, user);
    QFETCH(QString, code);
    QFETCH(QString, word);
    if (word == "codeExpired")
        QVERIFY(emulator.setSettings({{"codeLifetimeSeconds", 0}}));
    const QString answer = captcha(purpose);
    PassportCommunityError record = sendCode(user, "login", answer);
    if (record.errorCode == Code::NoError)
        record = codeSignIn(user, answer, code.isEmpty() ? emulator.latestCode() : code);
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
    const auto word = [this](const QString &user, const QString &answer) {
        return client->isUserExisted("register", answer, user, "86").errorMessage;
    };
    QCOMPARE(word(ada, captcha("register")), "");
    QCOMPARE(word(nobody, captcha("register")), "notExistErr");
    QCOMPARE(word(ada, "!!!!"), "captchaErr");
}

void tst_Flows::resetsThePassword()
{
    const QString secret = QString::fromUtf8("neues Paßwort 密码");
    QString answer;
    const auto reset = [&](const QString &code, const QString &to) {
        return client->reqResetPassword(ada, "86", answer, code, to).errorMessage;
    };
    QCOMPARE(signIn(ada, password).errorCode, Code::NoError);
    answer = captcha("login");
    QCOMPARE(sendCode(ada, "login", answer).errorCode, Code::NoError);
    QCOMPARE(reset(emulator.latestCode(), secret), "codeErr"); // for another purpose
    answer = captcha("bpwd");
    QCOMPARE(sendCode(ada, "bpwd", answer).errorCode, Code::NoError);
    QCOMPARE(reset("x", secret), "codeErr");
    QCOMPARE(reset(emulator.latestCode(), "12345"), "pwdTooShort");
    QCOMPARE(client->reqGetUserInfo(profile, {}).errorCode, Code::NoError);
    QCOMPARE(reset(emulator.latestCode(), secret), "");
    // Every session has ended, the old password too.
    QCOMPARE(client->reqGetUserInfo(profile, {}).errorCode, Code::AuthErr);
    QCOMPARE(signIn(ada, password).errorMessage, "pwdErr");
    QCOMPARE(signIn(ada, secret).errorCode, Code::NoError);
}

void tst_Flows::tellsTheCountry()
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

void tst_Flows::bringsThePrivacyPage()
{
    QString chinese, english;
    client->reqGetPrivacy(chinese, "zh-cn", "a<b", {}, "privacy");
    client->reqGetPrivacy(english, "en-us", "velqor", {}, "privacy");
    QVERIFY(english.contains("<html") && english.contains("velqor") && english != chinese);
    QVERIFY(chinese.contains("<html") && chinese.contains("a&lt;b"));
}

void tst_Flows::asksForTheStatus()
{
    QCOMPARE(client->getNetByStatus().errorCode, Code::NoError);
    emulator.stop();
    QCOMPARE(client->getNetByStatus().errorCode, Code::EC_ConnectionRefusedError);
    QVERIFY(emulator.start());
}

QTEST_GUILESS_MAIN(tst_Flows)
#include "tst_flows.moc"
