#include "passport/Passport.h"
#include "support/Rows.h"
#include "support/ScriptedClient.h"

using VelqorPassPort::Passport;
using Call = std::function<VelqorPassPort::PassportCommunityError(Passport &)>;

Q_DECLARE_METATYPE(Call)

/// What every operation, called on the facade, asks the cloud, logs, and leaves alone when that
/// fails; and what captchas and codes make of the answer.
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
    const auto row = columns<Call, QString, int, QString, QVariantMap, QVariantMap, QVariantMap>(
        "call", "name", "type", "append", "body", "params", "headers");
    const auto post = [&](const char *operation, const char *name, const Call &call,
                          const QVariantMap &body, const QVariantMap &params = {},
                          const QVariantMap &headers = {}) {
        row(operation, call, name, 0, {}, body, params, headers);
    };
    const auto get = [&](const char *operation, const char *name, const Call &call,
                         const QString &append = {}, const QVariantMap &params = {}) {
        row(operation, call, name, 1, append, {}, params, {});
    };
    const QVariantMap withAll{{"withPerms", true}, {"withDentals", true}};
    const QVariantMap user{{"username", "user"}, {"phoneArea", "86"}};
    const QVariantMap solved = with(user, {{"captcha", "cap"}});
    const QVariantMap code = with(solved, {{"validCode", "123"}});
    const QVariantMap size{{"w", "80"}, {"h", "30"}, {"l", "4"}, {"e", "60"}, {"p", "bpwd"}};
    const Record unknown{Code::JsonErr, {}, {}, {}}; // where the facade returns no record

    post(
        "login", "userLogin", [this](auto &p) { return p.logIn("user", "pw", "86", map, false); },
        with(user, {{"password", "pw"}, {"loginType", "VelqorPassPort"}}), withAll);
    post("reqGetUserInfo", "getPassInfo", [this](auto &p) { return p.reqGetUserInfo(map, "no"); },
         {}, {{"userID", "42"}}, {{"X-Auth-Token", "T"}});
    post(
        "reqCodeLogIn", "userCodeLogin",
        [this](auto &p) { return p.reqCodeLogIn("user", "86", "cap", "123", map, "no", false); },
        with(code, {{"loginType", "VelqorPassPort"}, {"uuid", "login-ID"}}), withAll);
    post(
        "reqValidCode", "userInfoValid",
        [this](auto &p) { return p.reqValidCode(data, "cap", "user", "86", "en", "any", "no"); },
        with(solved, {{"uuid", "any-ID"}, {"lang", "en"}, {"source", "any"}}));
    post(
        "isUserExisted", "userExistCheck",
        [](auto &p) { return p.isUserExisted("reg", "cap", "user", "86"); },
        with(solved, {{"uuid", "reg-ID"}}));
    post(
        "reqResetPassword", "rbpwd",
        [](auto &p) {
            return p.reqResetPassword("user", "86", "cap", "123", "p\"w\xc3\xa4", "no");
        },
        with(code, {{"uuid", "bpwd-ID"}, {"password", "p\"w\xc3\xa4"}}));
    get(
        "reqCaptcha", "captcha",
        [this](auto &p) { return p.reqCaptcha(data, "80", "30", "60", "4", "bpwd", "no"); }, "/ID",
        size);
    get("reqCountries", "fetchCountries", [](auto &p) {
        QVariantList list;
        return p.reqCountries(list);
    });
    get("reqCurrentCountry", "ipCountry",
        [this](auto &p) { return p.reqCurrentCountry(text, map); });
    get(
        "reqGetPrivacy", "getOEMPrivacyColorInfoByType",
        [=](auto &p) {
            p.reqGetPrivacy(text, "b%4", "no", false, "a%2", "no", "no");
            return unknown;
        },
        "/a%2/b%4/privacy/%4");
    get("hasVelqorNet", "status", [=](auto &p) {
        p.hasVelqorNet();
        return unknown;
    });
}

void tst_Requests::asksTheCloud()
{
    QFETCH(Call, call);
    QFETCH(QString, append);
    QFETCH(QString, name);
    const QString operation = QTest::currentDataTag();
    Passport facade;
    QVariantMap ignored;
    QVariant picture;
    cloud.play(Script::answering(QVariantMap{{"token", "T"}, {"user_id", 42}}));
    cloud.play(Script::refusing("dberr"));
    facade.logIn({}, {}, {}, ignored, false);
    facade.reqCaptcha(picture, {}, {}, {}, {}, {}, {});
    QString id = cloud.lastCall().appendToUrl.mid(1);
    cloud.play(Script::refusing(R"({"a":1})"));
    LogCapture log;
    QCOMPARE(call(facade).errorCode, Code::JsonErr);
    QStringList lines{"debug replyConnect current thread-1",
                      "debug replyConnect current thread-2.1", "debug request success true",
                      "debug " + operation +
                          R"( error... 84344833 "{\"a\":1}" QJsonDocument({"a":1}) "{\"a\":1}")"};
    if (operation == "reqCountries")
        lines.prepend("debug reqCountries  0 0");
    if (operation == "reqGetPrivacy")
        lines.append("debug reqGetPrivacy passPortDir... \"\"");
    QCOMPARE(withoutThreads(log.lines()), lines);

    const auto asked = cloud.lastCall();
    QCOMPARE(asked.name, name);
    QTEST(asked.type, "type");
    QCOMPARE(asked.operation, append.isEmpty() ? "request/6" : "request/7");
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
    QCOMPARE(cloud.calls().size(), 4u);
    QCOMPARE(data, QVariant(name == "userInfoValid" ? R"({"a":1})" : "before"));
    QCOMPARE(map, mapBefore);
    QCOMPARE(text, "before");
    QCOMPARE(facade.token(), "T");

    cloud.play(Script::answering(QVariantMap{{"token", "T"}}));
    log.clear();
    call(facade);
    QString success = "debug " + operation + " success...";
    if (name == "getPassInfo")
        success += ' ' + shown(map).trimmed();
    else if (operation == "reqCurrentCountry" || operation == "reqGetPrivacy")
        success += " \"" + text + '"';
    QCOMPARE(log.lines().contains(success), name != "status");
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
