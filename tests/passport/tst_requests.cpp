// SPDX-License-Identifier: MIT
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
    // The tags stand in the log and in requests.json. An argument "no" is not sent.
    void asksTheCloud_data()
    {
        const auto row = columns<Call>("call");
        row("login", [this](Passport &p) { return p.logIn("user", "pw", "86", map, false); });
        row("reqGetUserInfo", [this](Passport &p) { return p.reqGetUserInfo(map, "no"); });
        row("reqCodeLogIn", [this](Passport &p) {
            return p.reqCodeLogIn("user", "86", "cap", "123", map, "no", false);
        });
        row("reqValidCode", [this](Passport &p) {
            return p.reqValidCode(data, "cap", "user", "86", "en", "any", "no");
        });
        row("isUserExisted",
            [](Passport &p) { return p.isUserExisted("reg", "cap", "user", "86"); });
        row("reqResetPassword", [](Passport &p) {
            return p.reqResetPassword("user", "86", "cap", "123", "p\"w\xc3\xa4", "no");
        });
        row("reqCaptcha", [this](Passport &p) {
            return p.reqCaptcha(data, "80", "30", "60", "4", "bpwd", "no");
        });
        row("reqCountries", [](Passport &p) {
            QVariantList list;
            return p.reqCountries(list);
        });
        row("reqCurrentCountry", [this](Passport &p) { return p.reqCurrentCountry(text, map); });
        row("reqGetPrivacy", [this](Passport &p) {
            p.reqGetPrivacy(text, "b%4", "no", false, "a%2", "no", "no");
            return Record{Code::JsonErr, {}, {}, {}}; // where the facade returns no record
        });
        row("hasVelqorNet", [](Passport &p) {
            p.hasVelqorNet();
            return Record{Code::JsonErr, {}, {}, {}};
        });
    }

    void asksTheCloud()
    {
        QFETCH(Call, call);
        const QString operation = QTest::currentDataTag();
        Passport facade;
        QVariantMap profile;
        QVariant picture;
        cloud.play(Script::answering(QVariantMap{{"token", "T"}, {"user_id", 42}}));
        cloud.play(Script::refusing("dberr"));
        facade.logIn({}, {}, {}, profile, false);
        facade.reqCaptcha(picture, {}, {}, {}, {}, {}, {});
        QString id = cloud.lastCall().appendToUrl.mid(1);
        cloud.play(Script::refusing("gone"));
        LogCapture log;
        QCOMPARE(call(facade).errorCode, Code::JsonErr);
        QVERIFY(log.lines().contains("debug " + operation +
                                     " error... 84344833 \"gone\" QJsonDocument() \"gone\""));

        const auto asked = cloud.lastCall();
        if (operation == "reqCaptcha")
            id = asked.appendToUrl.mid(1);
        QCOMPARE(QUuid(id).toString(QUuid::WithoutBraces), id);
        const QVariantMap request = with(asked.envelope, {{"name", asked.name},
                                                          {"type", asked.type ? "get" : "post"},
                                                          {"append", asked.appendToUrl}});
        const QJsonDocument expected =
            QJsonDocument::fromJson(textOf(QFINDTESTDATA("requests.json")).toUtf8());
        QCOMPARE(QString(QJsonDocument::fromVariant(request).toJson()).replace(id, "ID"),
                 QString(QJsonDocument(expected[operation].toObject()).toJson()));

        // The failure ended the operation and left everything as it was.
        QCOMPARE(cloud.calls().size(), 4u);
        QCOMPARE(data, QVariant(operation == "reqValidCode" ? "gone" : "before"));
        QCOMPARE(map, mapBefore);
        QCOMPARE(text, "before");
        QCOMPARE(facade.token(), "T");

        cloud.play(Script::answering(QVariantMap{{"token", "T"}}));
        log.clear();
        call(facade);
        QString success = "debug " + operation + " success...";
        if (operation == "reqGetUserInfo")
            success += ' ' + shown(map).trimmed();
        else if (operation == "reqCurrentCountry" || operation == "reqGetPrivacy")
            success += " \"" + text + '"';
        QCOMPARE(log.lines().contains(success), operation != "hasVelqorNet");
    }

    void replacesTheCaptchaWithEveryRequest()
    {
        const auto linked = [this] {
            return cloud.lastCall().envelope.value("body").toMap().value("uuid").toString();
        };
        client->reqValidCode(data, {}, {}, {}, {});
        QCOMPARE(linked(), "-"); // before any captcha
        QStringList used;
        for (const Script &script :
             {Script::answering("x"), Script::refusing("dberr"), Script::withoutReply(),
              Script::failing(Nubelo::Error::Refused)}) {
            cloud.play(script);
            client->reqCaptcha(data);
            used << cloud.lastCall().appendToUrl.mid(1);
            client->isUserExisted("p", {}, {}, {});
            QCOMPARE(linked(), "p-" + used.last());
        }
        QCOMPARE(used.removeDuplicates(), 0);
    }

    void bringsTheAnswer()
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
        cloud.play(Script::answering(QVariantMap{{"a", 1}}));
        QCOMPARE(client->reqGetPrivacy(text, "en").errorCode, Code::NoError);
        QCOMPARE(text, "");
        QCOMPARE(client->linkUuid("%2", "%1"), "%2-%1");
    }
};

QTEST_GUILESS_MAIN(tst_Requests)
#include "tst_requests.moc"
