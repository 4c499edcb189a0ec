#include "support/ScriptedClient.h"

#include <QtTest/QtTest>

using VelqorPassPort::PassportNubelo;
using Call = std::function<VelqorPassPort::PassportCommunityError(PassportNubelo &)>;

Q_DECLARE_METATYPE(Call)

namespace {

const QVariantMap none;

} // namespace

/// What every operation of the client asks the cloud, what it leaves alone when that fails, and
/// what captchas and codes make of the answer.
class tst_Requests : public ScriptedClient
{
    Q_OBJECT

private Q_SLOTS:
    void asksTheCloud_data();
    void asksTheCloud();
    void replacesTheCaptchaWithEveryRequest();
    void bringsTheAnswer();
    void linksWithoutSubstitutingTwice();
};

void tst_Requests::asksTheCloud_data()
{
    QTest::addColumn<Call>("call");
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("append");
    QTest::addColumn<QVariantMap>("body");
    QTest::addColumn<QVariantMap>("params");
    QTest::addColumn<QVariantMap>("headers");
    // Tagged with the name of the request.
    const auto row = [](const char *name, int type, const QVariantMap &body, const Call &call,
                        const QVariantMap &params = none, const QVariantMap &headers = none,
                        const QString &append = {}) {
        QTest::newRow(name) << call << name << type << append << body << params << headers;
    };
    const auto get = [&](const char *name, const QString &append, const QVariantMap &params,
                         const Call &call) { row(name, 1, none, call, params, none, append); };
    const QVariantMap withAll{{"withPerms", true}, {"withDentals", true}};
    const QVariantMap user{{"username", "user"}, {"phoneArea", "86"}};
    const QVariantMap solved = with(user, {{"captcha", "cap"}});

    row(
        "userLogin", 0, with(user, {{"password", "pw"}, {"loginType", "VelqorPassPort"}}),
        [this](auto &c) { return c.logIn("user", "pw", "86", map, true); }, withAll);
    row("getPassInfo", 0, none, [this](auto &c) { return c.reqGetUserInfo(map, "unsent"); },
        {{"userID", "42"}}, {{"X-Auth-Token", "T"}});
    row(
        "userCodeLogin", 0,
        with(solved, {{"validCode", "123"}, {"loginType", "VelqorPassPort"}, {"uuid", "login-ID"}}),
        [this](auto &c) { return c.reqCodeLogIn("user", "86", "cap", "123", map, "unsent"); },
        withAll);
    row("userInfoValid", 0, with(solved, {{"uuid", "any-ID"}, {"lang", "en"}, {"source", "any"}}),
        [this](auto &c) {
            return c.reqValidCode(data, "cap", "user", "86", "en", "any", "unsent");
        });
    row("userExistCheck", 0, with(solved, {{"uuid", "reg-ID"}}),
        [](auto &c) { return c.isUserExisted("reg", "cap", "user", "86"); });
    row("rbpwd", 0,
        with(solved, {{"uuid", "bpwd-ID"}, {"password", "p\"w\xc3\xa4"}, {"validCode", "123"}}),
        [](auto &c) {
            return c.reqResetPassword("user", "86", "cap", "123", "p\"w\xc3\xa4", "login");
        });
    get("captcha", "/ID", {{"w", "80"}, {"h", "30"}, {"l", "4"}, {"e", "60"}, {"p", "bpwd"}},
        [this](auto &c) { return c.reqCaptcha(data, "80", "30", "60", "4", "bpwd", "unsent"); });
    get("fetchCountries", {}, none, [](auto &c) {
        QVariantList list;
        return c.reqCountries(list);
    });
    get("ipCountry", {}, none, [this](auto &c) { return c.getCurrentPhoneArea(text); });
    get("getOEMPrivacyColorInfoByType", "/a%2/b%4/t/%4", none,
        [this](auto &c) { return c.reqGetPrivacy(text, "b%4", "a%2", "unsent", "t"); });
    get("status", {}, none, [](auto &c) { return c.getNetByStatus(); });
}

void tst_Requests::asksTheCloud()
{
    QFETCH(Call, call);
    QFETCH(QString, append);
    QFETCH(QString, name);
    client->setUserInfo({{"userID", 42}});
    client->setToken("T");
    QVariant ignored;
    client->reqCaptcha(ignored);
    QString id = cloud.lastCall().appendToUrl.mid(1);
    cloud.play(Script::refusing("dberr"));
    QCOMPARE(call(*client).errorCode, Code::DbErr);

    const auto asked = cloud.lastCall();
    QCOMPARE(asked.name, name);
    QTEST(asked.type, "type");
    QCOMPARE(asked.operation, append.isEmpty() ? "request/6" : "request/7");
    QCOMPARE(asked.encryption, 0);
    QCOMPARE(asked.authentication, 0);
    QCOMPARE(asked.extra, none);
    if (name == "captcha")
        id = asked.appendToUrl.mid(1);
    QCOMPARE(QUuid(id).toString(QUuid::WithoutBraces), id);
    QCOMPARE(QString(asked.appendToUrl).replace(id, "ID"), append);
    QFETCH(QVariantMap, body);
    QFETCH(QVariantMap, params);
    QFETCH(QVariantMap, headers);
    const QVariantMap envelope{
        {"body", body}, {"params", params}, {"headers", headers}, {"source", "cloud"}};
    QCOMPARE(shown(asked.envelope).replace(id, "ID"), shown(envelope));

    // The failure ended the operation and left everything as it was.
    QCOMPARE(cloud.calls().size(), 2u);
    QCOMPARE(data, QVariant(name == "userInfoValid" ? "dberr" : "before"));
    QCOMPARE(map, mapBefore);
    QCOMPARE(text, "before");
    QCOMPARE(client->token(), "T");
    client->reqGetUserInfo(map, {});
    QCOMPARE(map, (QVariantMap{{"userID", 42}}));
}

void tst_Requests::replacesTheCaptchaWithEveryRequest()
{
    client->reqValidCode(data, {}, {}, {}, {}); // before any captcha
    client->reqCodeLogIn({}, {}, {}, {}, map);
    client->reqResetPassword({}, {}, {}, {}, {});
    QStringList linked, sent{"-", "login-", "bpwd-"};
    for (const auto &call : cloud.calls())
        linked << call.envelope.value("body").toMap().value("uuid").toString();
    for (const Script &script : {Script::answering("x"), Script::refusing("dberr"),
                                 Script::withoutReply(), Script::failing(Nubelo::Error::Refused)}) {
        cloud.play(script);
        client->reqCaptcha(data);
        sent << cloud.lastCall().appendToUrl.replace(0, 1, "p-");
        client->isUserExisted("p", {}, {}, {});
        linked << cloud.lastCall().envelope.value("body").toMap().value("uuid").toString();
    }
    QCOMPARE(linked, sent);
    QCOMPARE(sent.removeDuplicates(), 0);
}

void tst_Requests::bringsTheAnswer()
{
    // A picture is text, whatever comes in its place.
    cloud.play(Script::answering(7));
    QCOMPARE(client->reqCaptcha(data, {}, {}, {}, {}, "reg").errorCode, Code::NoError);
    QCOMPARE(shown(data.toMap()), shown({{"data", "7"}, {"source", "reg"}}));
    // What answers to a code request is the host's business.
    const QVariant list(QVariantList{1, "x"});
    cloud.play(Script::answering(list));
    QCOMPARE(client->reqValidCode(data, {}, {}, {}, {}).errorCode, Code::NoError);
    QCOMPARE(data, list);
    cloud.play(Script::withoutReply());
    QCOMPARE(client->reqValidCode(data, {}, {}, {}, {}).errorCode, Code::UnknownErr);
    QCOMPARE(data, list);
    cloud.play(Script::answering(QVariantMap{{"a", 1}}));
    QCOMPARE(client->reqGetPrivacy(text, "en").errorCode, Code::NoError);
    QCOMPARE(text, "");
}

void tst_Requests::linksWithoutSubstitutingTwice()
{
    QCOMPARE(client->linkUuid("%2", "%1"), "%2-%1");
}

QTEST_GUILESS_MAIN(tst_Requests)
#include "tst_requests.moc"
