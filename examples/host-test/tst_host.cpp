// SPDX-License-Identifier: MIT
#include <passport/Passport.h>
#include <passport/testing/Emulator.h>

#include <QtTest/QtTest>

#include <memory>

using namespace VelqorPassPort;

/// How a host tests what it does with the library: against an account cloud of the test's own.
class HostTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void signsIn();
    void showsAWrongPassword();
    void survivesAFault_data();
    void survivesAFault();
    void signsInByCode();

private:
    PassportCommunityError signIn(const QString &password)
    {
        return passport->logIn(user, password, QString(), profile, false);
    }

    const QString user = "grace@example.com";
    const QString password = "moth in relay 70";
    Testing::Emulator emulator;
    std::unique_ptr<Passport> passport;
    QVariantMap profile;
};

void HostTest::initTestCase()
{
    emulator.setAccounts(
        {QJsonObject{{"username", user}, {"password", password}, {"nick_name", "Grace"}}});
    QVERIFY(emulator.start());
}

// Each test begins with the accounts as they were at first, and signed out.
void HostTest::init()
{
    QVERIFY(emulator.reset());
    profile.clear();
    passport = std::make_unique<Passport>();
    passport->setConfigData(emulator.cloudConfiguration());
}

void HostTest::signsIn()
{
    QCOMPARE(signIn(password).errorCode, CommunityErrorCode::NoError);
    QCOMPARE(profile["nickName"].toString(), "Grace");
    QVERIFY(!passport->token().isEmpty());
}

void HostTest::showsAWrongPassword()
{
    QCOMPARE(signIn("moth").errorCode, CommunityErrorCode::AuthErr);
    QVERIFY(passport->token().isEmpty());
}

void HostTest::survivesAFault_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<int>("errorCode");
    QTest::newRow("connection dropped")
        << "drop" << int(CommunityErrorCode::EC_RemoteHostClosedError);
    QTest::newRow("answer that is not JSON")
        << "malformed" << int(CommunityErrorCode::EC_ProtocolFailure);
}

void HostTest::survivesAFault()
{
    QFETCH(QString, kind);
    QVERIFY(emulator.addFault({{"request", "userLogin"}, {"kind", kind}, {"times", 1}}));
    QTEST(int(signIn(password).errorCode), "errorCode");
    QCOMPARE(signIn(password).errorCode, CommunityErrorCode::NoError); // the fault is spent
}

void HostTest::signsInByCode()
{
    const QString area; // an e-mail address needs none
    QVariant picture, sent;
    passport->reqCaptcha(picture, "120", "40", "300", "4", "login", QString());
    const QString captcha = emulator.latestCaptchaAnswer(); // what a user reads in the picture
    passport->reqValidCode(sent, captcha, user, area, "en", "login", QString());
    const QString code = emulator.latestCode();
    QVERIFY(!code.isEmpty());
    const PassportCommunityError outcome =
        passport->reqCodeLogIn(user, area, captcha, code, profile, QString(), false);
    QCOMPARE(outcome.errorCode, CommunityErrorCode::NoError);
    QCOMPARE(profile["nickName"].toString(), "Grace");
}

QTEST_GUILESS_MAIN(HostTest)
#include "tst_host.moc"
