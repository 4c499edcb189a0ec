#include "passport/PassportNubelo.h"
#include "support/LogCapture.h"

#include <ScriptedCloud.h>

#include <QtTest/QtTest>

using namespace VelqorPassPort;
using Code = CommunityErrorCode;

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
                          {"status", false},
                          {"token", "T1"},
                          {"user_id", 42},
                          {"more", "kept"}};

QVariantMap with(QVariantMap map, const QVariantMap &changes)
{
    for (auto it = changes.begin(); it != changes.end(); ++it)
        map[it.key()] = it.value();
    return map;
}

} // namespace

/// Password sign-in, the profile and how answers are merged into it.
class tst_SignIn : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void sendsTheSignInAndFetchesTheProfile();
    void storesNothingWhenTheSignInFails();
    void succeedsWithoutTheProfile();
    void refusesTheProfileOfNobody();
    void convertsAndRenamesFields();
    void mergesLaterAnswers_data();
    void mergesLaterAnswers();
    void signsOutLocally();
    void linksWithoutSubstitutingTwice();

private:
    QVariantMap stored(); // by way of a profile query that brings nothing

    ScriptedCloud &cloud = ScriptedCloud::instance();
    std::unique_ptr<PassportNubelo> client;
};

void tst_SignIn::init()
{
    cloud.reset();
    client = std::make_unique<PassportNubelo>();
}

QVariantMap tst_SignIn::stored()
{
    const QString token = client->token();
    client->setToken("any");
    cloud.play(Script::answering(QVariantMap{}));
    QVariantMap map;
    client->reqGetUserInfo(map, {});
    client->setToken(token);
    return map;
}

void tst_SignIn::sendsTheSignInAndFetchesTheProfile()
{
    cloud.play(Script::answering(account));
    cloud.play(Script::answering(with(account, {{"token", "another"}, {"nick_name", "Ada L."}})));
    QVariantMap info{{"old", 1}};
    const LogCapture log;
    const auto record = client->logIn(QString::fromUtf8("ädä"), "p\"w", "86", info, true);
    QCOMPARE(record.errorCode, Code::NoError);

    const auto calls = cloud.calls();
    QCOMPARE(cloud.names(), QStringList({"userLogin", "getPassInfo"}));
    QCOMPARE(calls[1].envelope.value("headers").toMap(), (QVariantMap{{"X-Auth-Token", "T1"}}));
    QCOMPARE(calls[1].envelope.value("params").toMap(), (QVariantMap{{"userID", "42"}}));

    // The profile's token is data; the session's is the sign-in's.
    QCOMPARE(client->token(), "T1");
    QCOMPARE(info.value("token"), QVariant("another"));
    QCOMPARE(info.value("nickName"), QVariant("Ada L."));
    QVERIFY(!info.contains("old"));
    QCOMPARE(log.lines().filter("token changed"), QStringList("debug token changed \"T1\""));
}

void tst_SignIn::storesNothingWhenTheSignInFails()
{
    cloud.play(Script::refusing("pwderr"));
    QVariantMap info{{"old", 1}};
    QCOMPARE(client->logIn("a", "b", "c", info, false).errorMessage, "pwdErr");
    QCOMPARE(info, (QVariantMap{{"old", 1}}));
    QCOMPARE(client->token(), "");
    QCOMPARE(cloud.calls().size(), 1u);
    client->setToken("T");
    QCOMPARE(client->reqGetUserInfo(info, {}).errorCode, Code::AuthErr);
}

void tst_SignIn::succeedsWithoutTheProfile()
{
    cloud.play(Script::answering(account));
    cloud.play(Script::refusing("dberr"));
    QVariantMap info{{"old", 1}};
    QCOMPARE(client->logIn("a", "b", "c", info, false).errorCode, Code::NoError);
    QCOMPARE(info, (QVariantMap{{"old", 1}}));
    QCOMPARE(stored().value("source"), QVariant("product"));
    QCOMPARE(stored().value("status"), QVariant(true));
}

void tst_SignIn::refusesTheProfileOfNobody()
{
    QVariantMap info{{"old", 1}};
    const auto record = client->reqGetUserInfo(info, "any");
    QCOMPARE(record.errorCode, Code::AuthErr);
    QCOMPARE(record.errorName, "AuthErr");
    client->setUserInfo(account); // a profile, but no token
    QCOMPARE(client->reqGetUserInfo(info, "any").errorCode, Code::AuthErr);
    QCOMPARE(info, (QVariantMap{{"old", 1}}));
    QVERIFY(cloud.calls().empty());
}

void tst_SignIn::convertsAndRenamesFields()
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
    const QVariantMap map = stored();
    QCOMPARE(map.keys(), expected.keys());
    for (auto it = expected.begin(); it != expected.end(); ++it) {
        QCOMPARE(map.value(it.key()), it.value());
        QCOMPARE(map.value(it.key()).type(), it.value().type());
    }
}

void tst_SignIn::mergesLaterAnswers_data()
{
    QTest::addColumn<QVariantMap>("answer");
    QTest::addColumn<QVariantMap>("changes");
    QTest::newRow("nothing known")
        << QVariantMap{{"more", "new"}, {"email", "new"}} << QVariantMap{};
    QTest::newRow("company fields need all three")
        << QVariantMap{{"companyName", "N"}, {"companyType", "T"}} << QVariantMap{};
    QTest::newRow("company fields without token")
        << QVariantMap{{"companyName", "N"},
                       {"companyType", "T"},
                       {"companyPurpose", 1},
                       {"email", "new"}}
        << QVariantMap{{"companyName", "N"}, {"companyType", "T"}, {"companyPurpose", "1"}};
    QTest::newRow("a token empties what is missing")
        << QVariantMap{{"token", "T2"}, {"email", "new"}, {"factory_objs", "text"}, {"more", "new"}}
        << QVariantMap{{"country", ""},
                       {"defaultDentalOrderReceive", false},
                       {"email", "new"},
                       {"factoryObjs", "text"},
                       {"lastIP", ""},
                       {"lastLogin", ""},
                       {"nickName", ""},
                       {"oems", QStringList()},
                       {"perms", QStringList()},
                       {"phone", ""},
                       {"phoneArea", ""},
                       {"source", ""},
                       {"status", false},
                       {"token", "T2"},
                       {"userID", ""}};
}

void tst_SignIn::mergesLaterAnswers()
{
    QFETCH(QVariantMap, answer);
    QFETCH(QVariantMap, changes);
    client->setUserInfo(account);
    const QVariantMap before = stored();
    client->setUserInfo(answer);
    QCOMPARE(stored(), with(before, changes));
}

void tst_SignIn::signsOutLocally()
{
    cloud.play(Script::answering(account));
    QVariantMap info;
    client->logIn("a", "b", "c", info, false);
    const auto before = cloud.calls().size();
    QCOMPARE(client->logOut().errorCode, Code::NoError);
    QCOMPARE(cloud.calls().size(), before);
    QCOMPARE(client->token(), "T1");
    QCOMPARE(stored().value("status"), QVariant(false));

    cloud.play(Script::answering(QVariantMap{}));
    QCOMPARE(client->reqGetUserInfo(info, {}).errorCode, Code::NoError);
    QCOMPARE(cloud.lastCall().envelope.value("headers").toMap(),
             (QVariantMap{{"X-Auth-Token", "T1"}}));
}

void tst_SignIn::linksWithoutSubstitutingTwice()
{
    QCOMPARE(client->linkUuid("login", "1-2"), "login-1-2");
    QCOMPARE(client->linkUuid("%2", "%1"), "%2-%1");
    QCOMPARE(client->linkUuid("", ""), "-");
}

QTEST_GUILESS_MAIN(tst_SignIn)
#include "tst_signin.moc"
