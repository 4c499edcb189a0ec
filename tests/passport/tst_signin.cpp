// SPDX-License-Identifier: MIT
#include "common/RunOnThread_p.h"
#include "support/Rows.h"
#include "support/ScriptedClient.h"

namespace {

const QVariantMap account{{"companyName", "Velqor"},
                          {"companyPurpose", "test"},
                          {"companyType", 3},
                          {"country", "CN"},
                          {"defaultDentalOrderReceive", 1},
                          {"email", "a@b.c"},
                          {"factory_objs", QVariantList{"x", "y"}},
                          {"lastIP", "::1"},
                          {"lastLogin", "yesterday"},
                          {"nick_name", "Ada"},
                          {"oems", QVariantList{"o1", "o2"}},
                          {"perms", QVariantList{"p"}},
                          {"phone", 12345},
                          {"phone_area", "86"},
                          {"source", "server"},
                          {"status", true},
                          {"token", "T1"},
                          {"user_id", 42},
                          {"more", "kept"}};

// Those that an answer with a token sets anew, as they are stored.
const QStringList renewed =
    QString("country defaultDentalOrderReceive email factoryObjs lastIP lastLogin nickName oems "
            "perms phone phoneArea source status userID")
        .split(' ');

} // namespace

/// Both sign-ins, the profile and how answers are merged into it.
class tst_SignIn : public ScriptedClient
{
    Q_OBJECT

private Q_SLOTS:
    void signsInAndFetchesTheProfile_data()
    {
        const auto row = columns<bool, bool, int>("byCode", "fails", "code");
        row("password", false, false, Code::NoError);
        row("password succeeds without the profile", false, true, Code::NoError);
        row("code", true, false, Code::NoError);
        row("code reports the profile", true, true, Code::DbErr);
    }

    void signsInAndFetchesTheProfile()
    {
        QFETCH(bool, byCode);
        QFETCH(bool, fails);
        cloud.play(Script::answering(with(account, {{"status", false}})));
        cloud.play(fails
                       ? Script::refusing("dberr")
                       : Script::answering(with(account, {{"token", "T2"}, {"nick_name", "A."}})));
        QTEST(int(signIn(byCode).errorCode), "code");

        QCOMPARE(cloud.names(),
                 QStringList({byCode ? "userCodeLogin" : "userLogin", "getPassInfo"}));
        const QVariantMap query = cloud.lastCall().envelope;
        QCOMPARE(query.value("headers").toMap(), (QVariantMap{{"X-Auth-Token", "T1"}}));
        QCOMPARE(query.value("params").toMap(), (QVariantMap{{"userID", "42"}}));
        // The profile's token is data; the session's is the sign-in's.
        QCOMPARE(client->token(), "T1");
        if (fails && !byCode)
            QCOMPARE(map, mapBefore);
        const QVariantMap kept = !fails || byCode ? map : stored();
        QVERIFY(!kept.contains("old"));
        QCOMPARE(kept.value("token"), QVariant(fails ? "T1" : "T2"));
        QCOMPARE(kept.value("nickName"), QVariant(fails ? "Ada" : "A."));
        if (fails) {
            QCOMPARE(kept.value("source"), QVariant("product"));
            QCOMPARE(kept.value("status"), QVariant(true));
        }
    }

    void needsAToken()
    {
        client->setToken("T0");
        for (const QVariant &answer :
             {QVariant(QVariantMap{{"more", 1}}), QVariant("no account")}) {
            cloud.play(Script::answering(answer));
            QCOMPARE(signIn(true).errorCode, Code::AuthErr);
            QCOMPARE(client->token(), "");
            QCOMPARE(map.value("status").type(), QVariant::Bool);
        }
        QCOMPARE(cloud.calls().size(), 2u);
    }

    void survivesItsDestruction_data()
    {
        const auto row = columns<bool, bool>("byCode", "inTheProfileQuery");
        row("password", false, false);
        row("password, in the profile query", false, true);
        row("code", true, false);
        row("code, in the profile query", true, true);
    }

    void survivesItsDestruction()
    {
        QFETCH(bool, byCode);
        QFETCH(bool, inTheProfileQuery);
        if (inTheProfileQuery)
            cloud.play(Script::answering(account));
        // The answer is there, but a slot of the waiting thread runs before the wait has ended.
        Gate gate;
        QSemaphore answered;
        Script script;
        script.then([&](Nubelo::Reply *) {
            postToThreadOf(qApp, [&] {
                gate.awaitArrival();
                gate.open();
                answered.acquire();
                client.reset();
            });
            gate.hold();
        });
        script.then([&](Nubelo::Reply *reply) {
            Q_EMIT reply->finished({{"status", "ok"}, {"result", account}});
        });
        script.then([&](Nubelo::Reply *) { answered.release(); });
        cloud.play(script);

        QCOMPARE(signIn(byCode).errorCode, Code::EC_IsAborted);
        QVERIFY(!client);
        QCOMPARE(map, mapBefore);
    }

    void refusesTheProfileOfNobody()
    {
        client->setToken("T");
        const Record record = client->reqGetUserInfo(map, "any");
        QCOMPARE(record.errorCode, Code::AuthErr);
        QCOMPARE(record.errorName, "AuthErr");
        client->setToken("");
        client->setUserInfo(account); // a profile, but no token
        QCOMPARE(client->reqGetUserInfo(map, "any").errorCode, Code::AuthErr);
        QCOMPARE(map, mapBefore);
        QVERIFY(cloud.calls().empty());
    }

    void convertsAndRenamesFields()
    {
        client->setUserInfo(account);
        const QVariantMap expected = with(account, {{"companyType", "3"},
                                                    {"defaultDentalOrderReceive", true},
                                                    {"factoryObjs", ""},
                                                    {"nickName", "Ada"},
                                                    {"oems", QStringList{"o1", "o2"}},
                                                    {"perms", QStringList{"p"}},
                                                    {"phone", "12345"},
                                                    {"phoneArea", "86"},
                                                    {"userID", "42"}});
        QCOMPARE(shown(stored()), shown(expected));
    }

    void mergesLaterAnswers_data()
    {
        const auto row = columns<QVariantMap, QVariantMap>("answer", "changes");
        const QVariantMap two{{"companyName", "N"}, {"companyType", "T"}};
        row("nothing known", QVariantMap{{"more", "new"}, {"email", "new"}}, QVariantMap{});
        row("company fields need all three", two, QVariantMap{});
        row("company fields without token", with(two, {{"companyPurpose", 1}, {"email", "new"}}),
            with(two, {{"companyPurpose", "1"}}));
    }

    void mergesLaterAnswers()
    {
        QFETCH(QVariantMap, answer);
        QFETCH(QVariantMap, changes);
        client->setUserInfo(account);
        const QVariantMap before = stored();
        client->setUserInfo(answer);
        QCOMPARE(stored(), with(before, changes));
    }

    void emptiesWhatAnAnswerWithATokenLacks()
    {
        client->setUserInfo(account);
        QVariantMap expected = stored();
        for (const QString &field : renewed)
            expected[field] = QVariant(expected.value(field).type());
        client->setUserInfo({{"token", "T2"}, {"email", "new"}, {"more", "new"}});
        QCOMPARE(shown(stored()), shown(with(expected, {{"token", "T2"}, {"email", "new"}})));
    }

    void signsOutLocally()
    {
        client->setUserInfo(account);
        client->setToken("T1");
        QCOMPARE(client->logOut().errorCode, Code::NoError);
        QVERIFY(cloud.calls().empty());
        QCOMPARE(client->token(), "T1");
        QCOMPARE(stored().value("status"), QVariant(false));
    }

private:
    Record signIn(bool byCode)
    {
        return byCode ? client->reqCodeLogIn("user", {}, {}, {}, map)
                      : client->logIn("user", "pw", {}, map, false);
    }

    /// By way of a profile query that brings nothing.
    QVariantMap stored()
    {
        const QString token = client->token();
        client->setToken("any");
        cloud.play(Script::answering(QVariantMap{}));
        QVariantMap profile;
        client->reqGetUserInfo(profile, {});
        client->setToken(token);
        return profile;
    }
};

QTEST_GUILESS_MAIN(tst_SignIn)
#include "tst_signin.moc"
