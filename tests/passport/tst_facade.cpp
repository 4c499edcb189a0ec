#include "passport/Passport.h"
#include "support/LogCapture.h"
#include "support/PassportDirectory.h"
#include "support/Recorder.h"

#include <ScriptedCloud.h>

#include <QtTest/QtTest>

using namespace VelqorPassPort;
using Code = CommunityErrorCode;

namespace {

const QVariantMap account{{"token", "T"}, {"user_id", "7"}, {"nick_name", "Ada"}};

// Of one request, whatever it is.
const QStringList wait{"debug replyConnect current thread-1",
                       "debug replyConnect current thread-2.1", "debug request success true"};

} // namespace

/// The facade's life: every log line in order, and what it leaves behind.
class tst_Facade : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void logsItsWholeLife();
    void initialisesAgainAndAgain();
    void passesValuesThrough();

private:
    ScriptedCloud &cloud = ScriptedCloud::instance();
    std::unique_ptr<PassportDirectory> dir;
};

void tst_Facade::init()
{
    cloud.reset();
    dir = std::make_unique<PassportDirectory>();
    dir->writeSystemCfg({{"Tunnel", QJsonObject{{"Port", 1}}}});
    dir->writePassportCfg({{"hub", QJsonObject{{"path", "hub/passportHub.exe"}}}});
}

void tst_Facade::logsItsWholeLife()
{
    Recorder recorder;
    recorder.add("ps", "echo nothing");
    recorder.add("killall");
    const LogCapture log;
    auto taken = [&log, seen = 0]() mutable {
        QStringList lines = log.lines().mid(seen);
        seen += lines.size();
        for (QString &line : lines)
            line = line.section(" QThread(", 0, 0);
        return lines;
    };
    {
        Passport passport;
        QStringList lines = taken();
        const QRegularExpression banner("^info VelqorPassPort 0\\.1\\.24 [0-9a-f]{40}$");
        QVERIFY2(lines.size() > 2 && banner.match(lines.takeAt(2)).hasMatch(),
                 qPrintable(lines.join('\n')));
        QCOMPARE(lines, QStringList({"info InitialWorker constructor!",
                                     "debug current threaddddddddd nubelo",
                                     "debug current threaddddddddd", "debug qt version 5.15.12"}));

        QCOMPARE(passport.initial(dir->path()), 0);
        const QString hub = QCoreApplication::applicationDirPath() + "/hub/passportHub";
        QCOMPARE(taken(), QStringList({"debug m_hubFilePath: \"" + hub + "\"",
                                       "debug startHUb: false", "info initial: false"}));

        QVariantMap info{{"old", 1}};
        QCOMPARE(passport.reqGetUserInfo(info, "x").errorCode, Code::AuthErr);
        QCOMPARE(taken(), QStringList("debug reqGetUserInfo error... 84344835 \"AuthErr\" "
                                      "QJsonDocument() \"\""));
        for (int i = 0; i < 3; ++i)
            cloud.play(Script::answering(account));
        QCOMPARE(passport.logIn("ada", "secret", "86", info, true).errorCode, Code::NoError);
        QCOMPARE(taken(), wait + QStringList("debug token changed \"T\"") + wait +
                              QStringList("debug login success..."));
        QCOMPARE(passport.token(), "T");
        QCOMPARE(passport.getAccountInfo(), (QJsonObject{{"name", "ada"}, {"password", "secret"}}));

        QCOMPARE(passport.reqGetUserInfo(info, "x").errorCode, Code::NoError);
        QString shown;
        QDebug(&shown) << "debug reqGetUserInfo success..." << info;
        QCOMPARE(taken(), wait + QStringList(shown.trimmed()));
        QCOMPARE(passport.logOut().errorCode, Code::NoError);
        QCOMPARE(passport.reqSoftUp().errorCode, Code::NoError);
        passport.exitModule();
        QCOMPARE(taken(), QStringList({"debug logOut success...", "debug exitModule.... false"}));
    }
    QCOMPARE(taken(), QStringList("info m_initialWorker deleteLater!"));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCOMPARE(taken(), QStringList("info InitialWorker deleteLater!"));
    QTRY_COMPARE(recorder.calls(),
                 QStringList({"ps [-A]", "killall [openweburl.app/Contents/MacOS/openweburl]"}));
}

void tst_Facade::initialisesAgainAndAgain()
{
    Passport passport;
    const LogCapture log;
    QCOMPARE(passport.initial("/nowhere"), 0);
    QCOMPARE(log.lines(), QStringList("critical m_sysCfgObj isEmpty!!!"));
    // The worker is reached again, and it is the worker that does nothing.
    QCOMPARE(passport.initial(dir->path()), 0);
    QCOMPARE(log.lines().mid(1), QStringList("info initial: false"));
}

void tst_Facade::passesValuesThrough()
{
    Passport passport;
    QVariantMap data{{"old", 1}};
    QCOMPARE(passport.configData(data).errorCode, Code::NoError);
    QCOMPARE(data, QVariantMap());
    cloud.play(Script::refusing("dberr"));
    QCOMPARE(passport.setConfigPath("/p").errorCode, Code::DbErr);
    passport.setConfigData(QVariantMap{{"a", 1}});
    QCOMPARE(cloud.lastCall().envelope, (QVariantMap{{"a", 1}}));
    passport.setConfigData(QString("env"));
    QCOMPARE(cloud.lastCall().envelope, (QVariantMap{{"cloudEnvironment", "env"}}));
    passport.setToken("own");
    QCOMPARE(passport.token(), "own");
    QCOMPARE(passport.deBase64("AGEA*YWJj"), std::string("\0a\0", 3));
}

QTEST_GUILESS_MAIN(tst_Facade)
#include "tst_facade.moc"
