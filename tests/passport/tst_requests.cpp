#include "common/HandOver_p.h"
#include "passport/PassportNubelo.h"
#include "support/LogCapture.h"

#include <ScriptedCloud.h>

#include <QtCore/QJsonArray>
#include <QtTest/QtTest>

using namespace VelqorPassPort;
using Code = CommunityErrorCode;
using Record = PassportCommunityError;
using Call = std::function<Record(PassportNubelo &)>;

Q_DECLARE_METATYPE(Call)

namespace {

const QVariantMap none;
const QRegularExpression uuid("[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}");

// With the types of the values, which QVariant's comparison would convert.
QString shown(const QVariantMap &map)
{
    QString text;
    QDebug(&text) << map;
    return text;
}

} // namespace

/// What every operation of the client asks the cloud, what it makes of the answer and what it
/// leaves alone when there is none.
class tst_Requests : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void asksTheCloud_data();
    void asksTheCloud();
    void namesItsParameters();
    void replacesTheCaptchaWithEveryRequest();
    void linksBeforeAnyCaptcha();
    void bringsTheCaptcha_data();
    void bringsTheCaptcha();
    void bringsWhateverAnswersACodeRequest();
    void signsInWithACode();
    void reportsTheProfileOfACodeSignIn_data();
    void reportsTheProfileOfACodeSignIn();
    void changesNothingWhenACodeSignInFails();
    void survivesItsDestructionInASignIn_data();
    void survivesItsDestructionInASignIn();

    void keepsThePrivacyTextOnFailure();

private:
    ScriptedCloud &cloud = ScriptedCloud::instance();
    std::unique_ptr<PassportNubelo> client;
    QVariant data;
    QVariantMap map;
    QString text;
};

void tst_Requests::init()
{
    cloud.reset();
    client = std::make_unique<PassportNubelo>();
    data = "before";
    map = {{"old", 1}};
    text = "before";
}

void tst_Requests::asksTheCloud_data()
{
    QTest::addColumn<Call>("call");
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("append");
    QTest::addColumn<QVariantMap>("body");
    QTest::addColumn<QVariantMap>("params");
    QTest::addColumn<QVariantMap>("headers");
    const auto row = [](const char *label, const Call &call, const char *name, int type,
                        const QVariantMap &body, const QVariantMap &params = none,
                        const QVariantMap &headers = none, const QString &append = {}) {
        QTest::newRow(label) << call << name << type << append << body << params << headers;
    };
    const QVariantMap withAll{{"withPerms", true}, {"withDentals", true}};

    row(
        "password sign-in", [this](auto &c) { return c.logIn("user", "pw", "86", map, true); },
        "userLogin", 0,
        {{"username", "user"},
         {"password", "pw"},
         {"phoneArea", "86"},
         {"loginType", "VelqorPassPort"}},
        withAll);
    row("profile", [this](auto &c) { return c.reqGetUserInfo(map, "unsent"); }, "getPassInfo", 0,
        none, {{"userID", "42"}}, {{"X-Auth-Token", "T"}});
    row(
        "code sign-in",
        [this](auto &c) { return c.reqCodeLogIn("user", "86", "cap", "123", map, "unsent"); },
        "userCodeLogin", 0,
        {{"username", "user"},
         {"validCode", "123"},
         {"phoneArea", "86"},
         {"loginType", "VelqorPassPort"},
         {"captcha", "cap"},
         {"uuid", "login-ID"}},
        withAll);
    row(
        "captcha",
        [this](auto &c) { return c.reqCaptcha(data, "80", "30", "60", "4", "bpwd", "unsent"); },
        "captcha", 1, none, {{"w", "80"}, {"h", "30"}, {"l", "4"}, {"e", "60"}, {"p", "bpwd"}},
        none, "/ID");
    row("code",
        [this](auto &c) {
            return c.reqValidCode(data, "cap", "user", "86", "en", "login", "unsent");
        },
        "userInfoValid", 0,
        {{"captcha", "cap"},
         {"username", "user"},
         {"uuid", "login-ID"},
         {"lang", "en"},
         {"phoneArea", "86"},
         {"source", "login"}});
    row("existence", [](auto &c) { return c.isUserExisted("reg", "cap", "user", "86"); },
        "userExistCheck", 0,
        {{"captcha", "cap"}, {"username", "user"}, {"uuid", "reg-ID"}, {"phoneArea", "86"}});
    row("existence without source",
        [](auto &c) { return c.isUserExisted("", "cap", "user", "86"); }, "userExistCheck", 0,
        {{"captcha", "cap"}, {"username", "user"}, {"uuid", "-ID"}, {"phoneArea", "86"}});
    row("new password",
        [](auto &c) {
            return c.reqResetPassword("user", "86", "cap", "123", "p\"w\xc3\xa4", "login");
        },
        "rbpwd", 0,
        {{"captcha", "cap"},
         {"username", "user"},
         {"uuid", "bpwd-ID"},
         {"password", "p\"w\xc3\xa4"},
         {"validCode", "123"},
         {"phoneArea", "86"}});
    row(
        "countries",
        [](auto &c) {
            QVariantList list;
            return c.reqCountries(list);
        },
        "fetchCountries", 1, none);
    row(
        "phone area", [this](auto &c) { return c.getCurrentPhoneArea(text); }, "ipCountry", 1,
        none);
    row(
        "privacy", [this](auto &c) { return c.reqGetPrivacy(text, "b%4", "a%2", "unsent", "t"); },
        "getOEMPrivacyColorInfoByType", 1, none, none, none, "/a%2/b%4/t/%4");
    row(
        "privacy of nothing", [this](auto &c) { return c.reqGetPrivacy(text); },
        "getOEMPrivacyColorInfoByType", 1, none, none, none, "////%4");
    row(
        "status", [](auto &c) { return c.getNetByStatus(); }, "status", 1, none);
}

void tst_Requests::asksTheCloud()
{
    QFETCH(Call, call);
    QFETCH(QString, append);
    client->setUserInfo({{"userID", 42}});
    client->setToken("T");
    client->reqCaptcha(data);
    QString id = cloud.lastCall().appendToUrl.mid(1);
    cloud.play(Script::refusing("dberr"));
    QCOMPARE(call(*client).errorCode, Code::DbErr);
    QCOMPARE(cloud.calls().size(), 2u); // a failure ends the operation

    const auto asked = cloud.lastCall();
    QTEST(asked.name, "name");
    QTEST(asked.type, "type");
    QCOMPARE(asked.operation, append.isEmpty() ? "request/6" : "request/7");
    QCOMPARE(asked.encryption, 0);
    QCOMPARE(asked.authentication, 0);
    QCOMPARE(asked.extra, none);
    if (asked.name == "captcha")
        id = asked.appendToUrl.mid(1);
    QVERIFY(QRegularExpression('^' + uuid.pattern() + '$').match(id).hasMatch());
    QCOMPARE(QString(asked.appendToUrl).replace(id, "ID"), append);
    for (const QString part : {"body", "params", "headers"}) {
        QFETCH(const QVariantMap, body);
        QFETCH(const QVariantMap, params);
        QFETCH(const QVariantMap, headers);
        const QVariantMap &expected = part == "body" ? body : part == "params" ? params : headers;
        QCOMPARE(shown(asked.envelope.value(part).toMap()).replace(id, "ID"), shown(expected));
    }
    QCOMPARE(asked.envelope.value("source"), QVariant("cloud"));
    QCOMPARE(asked.envelope.size(), 4);
}

void tst_Requests::namesItsParameters()
{
    QStringList forms;
    const QMetaObject *meta = client->metaObject();
    for (int i = meta->methodOffset(); i < meta->methodCount(); ++i) {
        const QMetaMethod method = meta->method(i);
        const QStringList known{"requestNubelo", "replyConnect", "setErrorCode", "setConfigData"};
        if (!known.contains(method.name()) && !(method.attributes() & QMetaMethod::Cloned))
            forms << method.name() + ' ' + method.parameterNames().join(' ');
    }
    forms.sort();
    QCOMPARE(forms, QStringList({
                        "configData ",
                        "getCurrentPhoneArea phoneArea",
                        "getNetByStatus ",
                        "isUserExisted source captcha username phoneArea",
                        "linkUuid prefix identifier",
                        "logIn username password phoneArea userInfo isRemember",
                        "logOut ",
                        "reqCaptcha data width height expire length source uSource",
                        "reqCodeLogIn username phoneArea captcha validCode userInfo source",
                        "reqCountries countries",
                        "reqCurrentCountry country cCountryInfoMap mode",
                        "reqGetPrivacy privacy language oemurl source target",
                        "reqGetUserInfo map sourceStr",
                        "reqResetPassword username phoneArea captcha validCode password source",
                        "reqValidCode data captcha username phoneArea lang source uSource",
                        "setConfigPath path",
                        "setToken token",
                        "setUserInfo info",
                        "token ",
                    }));

    cloud.play(Script::answering("86"));
    Record record{Code::UrlErr, {}, {}, {}};
    QVERIFY(QMetaObject::invokeMethod(client.get(), "getCurrentPhoneArea",
                                      Q_RETURN_ARG(VelqorPassPort::PassportCommunityError, record),
                                      Q_ARG(QString &, text)));
    QCOMPARE(record.errorCode, Code::NoError);
    QCOMPARE(text, "86");
}

void tst_Requests::replacesTheCaptchaWithEveryRequest()
{
    QStringList sent, linked;
    for (const Script &script : {Script::answering("x"), Script::refusing("dberr"),
                                 Script::withoutReply(), Script::failing(Nubelo::Error::Refused)}) {
        cloud.play(script);
        client->reqCaptcha(data);
        sent << cloud.lastCall().appendToUrl.mid(1);
        client->isUserExisted("p", {}, {}, {});
        linked << cloud.lastCall().envelope.value("body").toMap().value("uuid").toString().mid(2);
    }
    QCOMPARE(linked, sent);
    QCOMPARE(sent.removeDuplicates(), 0);
}

void tst_Requests::linksBeforeAnyCaptcha()
{
    client->reqValidCode(data, {}, {}, {}, {});
    client->reqCodeLogIn({}, {}, {}, {}, map);
    client->reqResetPassword({}, {}, {}, {}, {});
    QStringList linked;
    for (const auto &call : cloud.calls())
        linked << call.envelope.value("body").toMap().value("uuid").toString();
    QCOMPARE(linked, QStringList({"-", "login-", "bpwd-"}));
}

void tst_Requests::bringsTheCaptcha_data()
{
    QTest::addColumn<QVariant>("answer");
    QTest::addColumn<QString>("picture");
    QTest::newRow("text") << QVariant("iVBOR/+==") << "iVBOR/+==";
    QTest::newRow("bytes") << QVariant(QByteArray("abc")) << "abc";
    QTest::newRow("a number") << QVariant(7) << "7";
    QTest::newRow("a map") << QVariant(QVariantMap{{"data", "x"}}) << "";
    QTest::newRow("nothing") << QVariant() << "";
}

void tst_Requests::bringsTheCaptcha()
{
    QFETCH(QVariant, answer);
    QFETCH(QString, picture);
    cloud.play(Script::answering(answer));
    QCOMPARE(client->reqCaptcha(data, {}, {}, {}, {}, "reg").errorCode, Code::NoError);
    const QString expected = shown({{"data", picture}, {"source", "reg"}});
    QCOMPARE(shown(data.toMap()), expected);

    cloud.play(Script::refusing("illegalerr"));
    QCOMPARE(client->reqCaptcha(data, {}, {}, {}, {}, "other").errorCode, Code::IllegalErr);
    QCOMPARE(shown(data.toMap()), expected);
}

void tst_Requests::bringsWhateverAnswersACodeRequest()
{
    const QVariant list(QVariantList{1, "x"});
    cloud.play(Script::answering(list));
    QCOMPARE(client->reqValidCode(data, {}, {}, {}, {}).errorCode, Code::NoError);
    QCOMPARE(data, list);
    cloud.play(Script::withoutReply());
    QCOMPARE(client->reqValidCode(data, {}, {}, {}, {}).errorCode, Code::UnknownErr);
    QCOMPARE(data, list);
    cloud.play(Script::refusing("no such user"));
    QCOMPARE(client->reqValidCode(data, {}, {}, {}, {}).errorMessage, "no such user");
    QCOMPARE(data, QVariant("no such user"));
}

void tst_Requests::signsInWithACode()
{
    cloud.play(Script::answering(QVariantMap{
        {"token", "T1"}, {"user_id", 42}, {"source", "server"}, {"status", "no"}, {"more", 1}}));
    cloud.play(Script::answering(QVariantMap{{"companyName", "N"}}));
    const LogCapture log;
    QCOMPARE(client->reqCodeLogIn("user", {}, {}, {}, map).errorCode, Code::NoError);
    QCOMPARE(cloud.names(), QStringList({"userCodeLogin", "getPassInfo"}));
    const QVariantMap profile = cloud.lastCall().envelope;
    QCOMPARE(profile.value("headers").toMap(), (QVariantMap{{"X-Auth-Token", "T1"}}));
    QCOMPARE(profile.value("params").toMap(), (QVariantMap{{"userID", "42"}}));
    QCOMPARE(client->token(), "T1");
    QCOMPARE(log.lines().filter("token"), QStringList("debug token changed \"T1\""));
    QVERIFY(!map.contains("old"));
    QCOMPARE(map.value("more"), QVariant(1));
    QCOMPARE(map.value("source"), QVariant("product"));
    QCOMPARE(map.value("status"), QVariant(true));
    QCOMPARE(map.value("status").type(), QVariant::Bool);
}

void tst_Requests::reportsTheProfileOfACodeSignIn_data()
{
    QTest::addColumn<QVariant>("answer");
    QTest::addColumn<int>("code");
    QTest::addColumn<QVariantMap>("stored");
    QTest::addColumn<int>("requests");
    const QVariantMap fixed{{"source", "product"}, {"status", true}};
    QTest::newRow("without token")
        << QVariant(QVariantMap{{"more", 1}}) << int(Code::AuthErr)
        << QVariantMap{{"source", "product"}, {"status", true}, {"more", 1}} << 1;
    QTest::newRow("no account at all") << QVariant("text") << int(Code::AuthErr) << fixed << 1;
    QTest::newRow("profile refused")
        << QVariant(QVariantMap{{"token", "T1"}}) << int(Code::DbErr) << fixed << 2;
}

void tst_Requests::reportsTheProfileOfACodeSignIn()
{
    QFETCH(QVariant, answer);
    QFETCH(QVariantMap, stored);
    cloud.play(Script::answering(answer));
    cloud.play(Script::refusing("dberr"));
    client->setToken("T0");
    const LogCapture log;
    QTEST(int(client->reqCodeLogIn({}, {}, {}, {}, map).errorCode), "code");
    QTEST(int(cloud.calls().size()), "requests");
    const QString token = answer.toMap().value("token").toString();
    QCOMPARE(client->token(), token);
    QCOMPARE(log.lines().filter("token"), QStringList("debug token changed \"" + token + '"'));
    for (auto it = stored.begin(); it != stored.end(); ++it)
        QCOMPARE(map.value(it.key()), it.value());
    QVERIFY(!map.contains("old"));
}

void tst_Requests::changesNothingWhenACodeSignInFails()
{
    client->setUserInfo({{"userID", 42}});
    client->setToken("T0");
    cloud.play(Script::refusing("pwderr"));
    QCOMPARE(client->reqCodeLogIn({}, {}, {}, {}, map).errorCode, Code::AuthErr);
    QCOMPARE(map, (QVariantMap{{"old", 1}}));
    QCOMPARE(client->token(), "T0");
    QCOMPARE(cloud.calls().size(), 1u);
    client->reqGetUserInfo(map, {});
    QCOMPARE(map, (QVariantMap{{"userID", 42}}));
}

void tst_Requests::survivesItsDestructionInASignIn_data()
{
    QTest::addColumn<bool>("byCode");
    QTest::addColumn<int>("request");
    QTest::newRow("password") << false << 1;
    QTest::newRow("password, in the profile query") << false << 2;
    QTest::newRow("code") << true << 1;
    QTest::newRow("code, in the profile query") << true << 2;
}

void tst_Requests::survivesItsDestructionInASignIn()
{
    QFETCH(bool, byCode);
    QFETCH(int, request);
    const QVariantMap account{{"token", "T1"}};
    if (request == 2)
        cloud.play(Script::answering(account));
    // The answer is there, but a slot of the waiting thread runs before the wait has ended.
    Gate gate;
    QSemaphore answered;
    Script script;
    script.then([&](Nubelo::Reply *) {
        handOver();
        QMetaObject::invokeMethod(
            qApp,
            [&] {
                takeOver();
                gate.awaitArrival();
                gate.open();
                answered.acquire();
                client.reset();
            },
            Qt::QueuedConnection);
        gate.hold();
    });
    script.then([&](Nubelo::Reply *reply) {
        Q_EMIT reply->finished({{"status", "ok"}, {"result", account}});
    });
    script.then([&](Nubelo::Reply *) { answered.release(); });
    cloud.play(script);

    const auto record =
        byCode ? client->reqCodeLogIn({}, {}, {}, {}, map) : client->logIn({}, {}, {}, map, false);
    QCOMPARE(record.errorCode, Code::EC_IsAborted);
    QVERIFY(!client);
    QCOMPARE(map, (QVariantMap{{"old", 1}}));
}

void tst_Requests::keepsThePrivacyTextOnFailure()
{
    cloud.play(Script::refusing("dberr"));
    QCOMPARE(client->reqGetPrivacy(text, "en").errorCode, Code::DbErr);
    QCOMPARE(text, "before");
    cloud.play(Script::answering(QVariantMap{{"a", 1}})); // no text
    QCOMPARE(client->reqGetPrivacy(text, "en").errorCode, Code::NoError);
    QCOMPARE(text, "");
}

QTEST_GUILESS_MAIN(tst_Requests)
#include "tst_requests.moc"
