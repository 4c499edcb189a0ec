// SPDX-License-Identifier: MIT
#include "passport/Passport.h"
#include "passport/PassportNubelo.h"
#include "passport/testing/Emulator.h"
#include "support/LogCapture.h"
#include "support/PassportDirectory.h"
#include "support/Recorder.h"
#include "support/Rows.h"

#include <QtCore/QDir>
#include <QtCore/QProcess>
#include <QtNetwork/QTcpServer>

using namespace VelqorPassPort;

namespace {

using Flow = std::function<void(Passport &)>;

// The port at which a flow's page can be filled in from outside.
QString openPort()
{
    QTcpServer server;
    server.listen(QHostAddress::LocalHost);
    QString port = QString::number(server.serverPort());
    qputenv("QTWEBENGINE_REMOTE_DEBUGGING", port.toLatin1());
    return port;
}

} // namespace

Q_DECLARE_METATYPE(Flow)

/// The flows with nothing in place of anything: library, web tool, browser engine, pages, service.
class tst_Pages : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        recorder.add("killall");
        QVERIFY(emulator.start());
        const QString site = emulator.baseUrl().replace("/v1", "/web");
        dir.writeSystemCfg({{"Tunnel", QJsonObject{{"Port", 1}}}});
        dir.writePassportCfg({{"nubelo", QJsonObject{{"url", site}}}});
        const LogCapture quiet;
        passport = std::make_unique<Passport>();
        passport->initial(dir.path());
        passport->setConfigData(emulator.cloudConfiguration());
        passport->copyOpenWebFile(WEB_FILES, dir.filePath("openweburl"));
    }

    void signsIn_data()
    {
        const auto row = columns<QString, QString>("steps", "language");
        row("by password", "sign-in", "en");
        row("by code, in Chinese", "sign-in-by-code", "zh-CN");
    }

    void signsIn()
    {
        QFETCH(QString, steps);
        QFETCH(QString, language);
        const QSignalSpy tokens(passport.get(), &Passport::tokenReceived);
        const QSignalSpy users(passport.get(), &Passport::userIdReceived);
        const QSignalSpy closed(passport.get(), &Passport::webpageClosed);
        const auto signIn = [&](Passport &p) { p.openLoginURL(true, "/sign-in", language); };
        QCOMPARE(run(signIn, steps), QString());
        QCOMPARE(tokens.count(), 1);
        QCOMPARE(users.count(), 1);
        QCOMPARE(closed.count(), 1);
        QVariant profile;
        QVERIFY(fetchProfile(tokens[0][0].toString(), users[0][0].toString(), profile));
        QCOMPARE(profile.toMap().value("email").toString(), "ada@example.com");
    }

    void reportsDetails_data()
    {
        const auto row = columns<Flow, QString, QStringList>("flow", "steps", "details");
        const Flow signUp = [](Passport &p) { p.openRegisterURL(false, "/sign-up", "en"); };
        const Flow forgotten = [](Passport &p) {
            p.openForgitURL(false, "/forgotten-password", "en");
        };
        row("new account", signUp, "sign-up", {"zoe@example.com", "brand-new-1", ""});
        row("new password", forgotten, "forgotten", {"ada@example.com", "fresh-one-2", ""});
    }

    void reportsDetails()
    {
        QFETCH(Flow, flow);
        QFETCH(QString, steps);
        QFETCH(QStringList, details);
        const QSignalSpy loaded(passport.get(), &Passport::userLoadSuccess);
        const QSignalSpy closed(passport.get(), &Passport::webpageClosed);
        QCOMPARE(run(flow, steps), QString());
        QCOMPARE(loaded.count(), 1);
        QCOMPARE(QVariant(loaded[0]).toStringList(), details);
        QCOMPARE(closed.count(), 1);
        QVERIFY(canSignIn(details[0], details[1]));
    }

    void suppliesInformation()
    {
        const QSignalSpy supplied(passport.get(), &Passport::supplySuccess);
        QString token;
        const auto addInformation = [&](Passport &p) {
            QVariantMap ignored;
            p.logIn("ada@example.com", "correct horse 1", QString(), ignored, false);
            token = p.token();
            p.openAddInfoURL(token, false, "/add-information", "en");
        };
        QCOMPARE(run(addInformation, "add-information", "1112"), QString());
        QCOMPARE(supplied.count(), 1);
        QVariantMap profile;
        const LogCapture quiet;
        passport->reqGetUserInfo(profile, QString());
        QCOMPARE(profile.value("companyName").toString(), "Harbour Lab");
        QVERIFY(canSignIn("ada2@example.com", "correct horse 1"));
    }

    void servesTheConsole()
    {
        const QString console = emulator.baseUrl().replace("/v1", "/");
        const auto open = [&](Passport &p) { p.openURL(console, "en"); };
        QCOMPARE(run(open, "console"), QString());
    }

private:
    // Runs a flow while somebody else takes the steps on its page; what went wrong there.
    QString run(const Flow &flow, const QString &steps, const QString &port = openPort())
    {
        emulator.reset();
        QProcess person;
        person.start(DRIVE_PAGE, {port, QStringLiteral(STEPS "/%1.steps").arg(steps)});
        const LogCapture quiet;
        flow(*passport);
        if (!person.waitForFinished(90000))
            return "the page was closed too early";
        return person.readAllStandardError();
    }

    bool fetchProfile(const QString &token, const QString &userId, QVariant &profile)
    {
        const LogCapture quiet;
        PassportNubelo client;
        QVariantMap configuration;
        passport->configData(configuration);
        client.setConfigData(configuration);
        return client
                   .requestNubelo(profile, "getPassInfo", Nubelo::Manager::Post,
                                  Nubelo::Manager::NoEncrypt, QVariantMap(),
                                  QVariantMap{{"userID", userId}},
                                  QVariantMap{{"X-Auth-Token", token}}, "cloud")
                   .errorCode == CommunityErrorCode::NoError;
    }

    bool canSignIn(const QString &user, const QString &password)
    {
        const LogCapture quiet;
        QVariantMap ignored;
        return passport->logIn(user, password, QString(), ignored, false).errorCode ==
               CommunityErrorCode::NoError;
    }

    Testing::Emulator emulator;
    PassportDirectory dir;
    Recorder recorder;
    std::unique_ptr<Passport> passport;
};

QTEST_GUILESS_MAIN(tst_Pages)
#include "tst_pages.moc"
