#include "passport/PassportNubelo.h"
#include "support/EmulatorProcess.h"
#include "support/LogCapture.h"

#include <QtTest/QtTest>

using namespace VelqorPassPort;
using Code = CommunityErrorCode;

/// The real client over real HTTP against the emulator.
class tst_EndToEnd : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void signsSeededAccountsIn_data();
    void signsSeededAccountsIn();
    void sendsWhatTheServiceExpects();
    void refusesAnEndedSession();
    void showsEveryFaultToTheHost_data();
    void showsEveryFaultToTheHost();

private:
    PassportCommunityError signIn(const QString &user, const QString &password,
                                  const QString &area = {})
    {
        return client->logIn(user, password, area, profile, false);
    }

    EmulatorProcess emulator;
    std::unique_ptr<PassportNubelo> client;
    QVariantMap profile;
};

void tst_EndToEnd::initTestCase()
{
    QLoggingCategory::setFilterRules("nubelo=false");
    QVERIFY(emulator.start());
}

void tst_EndToEnd::init()
{
    emulator.devPost("reset");
    profile.clear();
    client = std::make_unique<PassportNubelo>();
    const QVariantMap sources{{"cloud", emulator.baseUrl()}};
    QCOMPARE(client->setConfigData({{"environments", QVariantMap{{"here", sources}}}}).errorCode,
             Code::NoError);
    QCOMPARE(client->setConfigData(QString("here")).errorCode, Code::NoError);
}

void tst_EndToEnd::signsSeededAccountsIn_data()
{
    QTest::addColumn<QString>("user");
    QTest::addColumn<QString>("area");
    QTest::addColumn<QString>("password");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("nickName");
    QTest::addColumn<bool>("company");
    QTest::newRow("ordinary") << "ada@example.com"
                              << ""
                              << "correct horse 1" << int(Code::NoError) << "Ada" << true;
    QTest::newRow("by phone") << "13800000001"
                              << "86"
                              << "correct horse 1" << int(Code::NoError) << "Ada" << true;
    QTest::newRow("not ASCII") << QString::fromUtf8("李明") << ""
                               << QString::fromUtf8("пароль-密码-ß 3") << int(Code::NoError)
                               << QString::fromUtf8("Lǐ Míng") << true;
    QTest::newRow("without company") << "carol@example.com"
                                     << ""
                                     << "correct horse 4" << int(Code::NoError) << "Carol" << false;
    QTest::newRow("locked") << "locked@example.com"
                            << ""
                            << "correct horse 2" << int(Code::IllegalErr) << "" << false;
    QTest::newRow("wrong password") << "ada@example.com"
                                    << ""
                                    << "correct horse" << int(Code::AuthErr) << "" << false;
    QTest::newRow("unknown user") << "nobody"
                                  << ""
                                  << "correct horse 1" << int(Code::AuthErr) << "" << false;
}

void tst_EndToEnd::signsSeededAccountsIn()
{
    QFETCH(QString, user);
    QFETCH(QString, password);
    QFETCH(QString, area);
    QFETCH(int, code);
    const LogCapture quiet;
    QCOMPARE(int(signIn(user, password, area).errorCode), code);
    QTEST(profile.value("nickName").toString(), "nickName");
    QTEST(profile.contains("companyName"), "company");
    QCOMPARE(client->token().isEmpty(), code != Code::NoError);
    if (code != Code::NoError)
        return;
    QCOMPARE(profile.value("status"), QVariant(true));
    QCOMPARE(profile.value("perms").type(), QVariant::StringList);
    QVERIFY(!profile.value("userID").toString().isEmpty());
}

void tst_EndToEnd::sendsWhatTheServiceExpects()
{
    const LogCapture quiet;
    QCOMPARE(signIn("ada@example.com", "correct horse 1", "86").errorCode, Code::NoError);
    const QJsonArray requests = emulator.requests();
    QCOMPARE(requests.size(), 2);
    const QJsonObject login = requests[0].toObject(), info = requests[1].toObject();
    QCOMPARE(login["name"], QJsonValue("userLogin"));
    QCOMPARE(login["method"], QJsonValue("POST"));
    QCOMPARE(login["body"], QJsonValue(QJsonObject{{"username", "ada@example.com"},
                                                   {"password", "correct horse 1"},
                                                   {"phoneArea", "86"},
                                                   {"loginType", "VelqorPassPort"}}));
    QCOMPARE(login["query"],
             QJsonValue(QJsonObject{{"withPerms", "true"}, {"withDentals", "true"}}));
    QCOMPARE(info["name"], QJsonValue("getPassInfo"));
    QCOMPARE(info["query"].toObject()["userID"], QJsonValue(profile.value("userID").toString()));
    QCOMPARE(info["headers"].toObject()["X-Auth-Token"], QJsonValue(client->token()));
}

void tst_EndToEnd::refusesAnEndedSession()
{
    const LogCapture quiet;
    signIn("ada@example.com", "correct horse 1");
    emulator.devPost("reset"); // ends every session
    const QVariantMap before = profile;
    QCOMPARE(client->reqGetUserInfo(profile, {}).errorCode, Code::AuthErr);
    QCOMPARE(profile, before);
    QCOMPARE(signIn("ada@example.com", "correct horse 1").errorCode, Code::NoError);
}

void tst_EndToEnd::showsEveryFaultToTheHost_data()
{
    QTest::addColumn<QJsonObject>("fault");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("name");
    const auto fault = [](const char *kind, QJsonObject more = {}) {
        more["request"] = "userLogin";
        more["kind"] = kind;
        return more;
    };
    QTest::newRow("known word") << fault("word", {{"word", "dbErr"}}) << int(Code::DbErr)
                                << "dbErr";
    QTest::newRow("other word") << fault("word", {{"word", "quota"}}) << int(Code::JsonErr)
                                << "quota";
    QTest::newRow("HTTP status") << fault("httpStatus", {{"code", 503}, {"body", "busy"}})
                                 << int(Code::EC_ServiceUnavailableError)
                                 << "EC_ServiceUnavailableError";
    QTest::newRow("dropped") << fault("drop") << int(Code::EC_RemoteHostClosedError)
                             << "EC_RemoteHostClosedError";
    QTest::newRow("half a body") << fault("halfBody") << int(Code::EC_RemoteHostClosedError)
                                 << "EC_RemoteHostClosedError";
    QTest::newRow("malformed") << fault("malformed") << int(Code::EC_ProtocolFailure)
                               << "EC_ProtocolFailure";
    QTest::newRow("redirect that would take the password along")
        << fault("redirect", {{"location", "http://localhost:1/"}, {"code", 307}})
        << int(Code::EC_InsecureRedirectError) << "EC_InsecureRedirectError";
    QTest::newRow("too late") << fault("delay", {{"ms", 5000}}) << int(Code::NetErr) << "NetErr";
    QTest::newRow("too slow") << fault("drip", {{"bytesPerSecond", 20}}) << int(Code::NetErr)
                              << "NetErr";
    QTest::newRow("late, but in time") << fault("delay", {{"ms", 100}}) << int(Code::NoError) << "";
}

void tst_EndToEnd::showsEveryFaultToTheHost()
{
    QFETCH(QJsonObject, fault);
    const LogCapture quiet;
    client->setConfigData(QVariantMap{{"timeouts", QVariantMap{{"totalMs", 1000}}}});
    QVERIFY(emulator.addFault(fault));
    const auto record = signIn("ada@example.com", "correct horse 1");
    QTEST(int(record.errorCode), "code");
    QTEST(record.errorName, "name");

    emulator.devDelete("faults");
    QCOMPARE(signIn("ada@example.com", "correct horse 1").errorCode, Code::NoError);
}

QTEST_GUILESS_MAIN(tst_EndToEnd)
#include "tst_endtoend.moc"
