// SPDX-License-Identifier: MIT
#include "passport/Passport.h"
#include "support/LogCapture.h"
#include "support/PassportDirectory.h"
#include "support/Recorder.h"
#include "support/Rows.h"

#include <ScriptedCloud.h>

using namespace VelqorPassPort;
using Code = CommunityErrorCode;

/// The facade's life: its log lines in order, and what it leaves behind.
class tst_Facade : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        cloud.reset();
        dir = std::make_unique<PassportDirectory>();
        dir->writeSystemCfg({{"Tunnel", QJsonObject{{"Port", 1}}}});
        dir->writePassportCfg({{"hub", QJsonObject{{"path", "hub/passportHub.exe"}}}});
    }

    void logsItsWholeLife()
    {
        Recorder recorder;
        recorder.add("ps", "echo nothing");
        recorder.add("killall");
        const LogCapture log;
        {
            Passport passport;
            QCOMPARE(passport.initial(dir->path()), 0);
            QVariantMap info{{"old", 1}};
            QCOMPARE(passport.reqGetUserInfo(info, "x").errorCode, Code::AuthErr);
            const QVariantMap account{{"token", "T"}, {"user_id", "7"}, {"nick_name", "Ada"}};
            for (int i = 0; i < 2; ++i)
                cloud.play(Script::answering(account));
            QCOMPARE(passport.logIn("ada", "secret", "86", info, true).errorCode, Code::NoError);
            QCOMPARE(passport.token(), "T");
            QCOMPARE(passport.getAccountInfo(),
                     (QJsonObject{{"name", "ada"}, {"password", "secret"}}));
            QCOMPARE(passport.logOut().errorCode, Code::NoError);
            QCOMPARE(passport.reqSoftUp().errorCode, Code::NoError);
            passport.exitModule();
        }
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QString lines = log.lines().join('\n') + '\n';
        lines.replace(QCoreApplication::applicationDirPath(), "DIR");
        lines.replace(QRegularExpression(" QThread\\(.*"), {});
        lines.replace(QRegularExpression(" [0-9a-f]{40}\n"), " ID\n");
        QCOMPARE(lines, textOf(QFINDTESTDATA("life.txt")));
        QTRY_COMPARE(recorder.calls(), QStringList({"ps [-A]", "killall [openweburl.app/Contents/"
                                                               "MacOS/openweburl]"}));
    }

    void initialisesAgainAndAgain()
    {
        Passport passport;
        const LogCapture log;
        QCOMPARE(passport.initial("/nowhere"), 0);
        QCOMPARE(log.lines(), QStringList("critical m_sysCfgObj isEmpty!!!"));
        // The worker is reached again, and it is the worker that does nothing.
        QCOMPARE(passport.initial(dir->path()), 0);
        QCOMPARE(log.lines().mid(1), QStringList("info initial: false"));
    }

    void passesValuesThrough()
    {
        Passport passport;
        QVariantMap data{{"old", 1}};
        QCOMPARE(passport.configData(data).errorCode, Code::NoError);
        QCOMPARE(data, QVariantMap());
        for (int i = 0; i < 3; ++i)
            cloud.play(Script::refusing("dberr"));
        QCOMPARE(passport.setConfigPath("/p").errorCode, Code::DbErr);
        QCOMPARE(cloud.lastCall().operation, "setConfigPath");
        QCOMPARE(cloud.lastCall().name, "/p");
        QCOMPARE(passport.setConfigData(QVariantMap{{"a", 1}}).errorCode, Code::DbErr);
        QCOMPARE(cloud.lastCall().envelope, (QVariantMap{{"a", 1}}));
        QCOMPARE(passport.setConfigData(QString("env")).errorCode, Code::DbErr);
        QCOMPARE(cloud.lastCall().envelope, (QVariantMap{{"cloudEnvironment", "env"}}));
        QCOMPARE(cloud.lastCall().thread, QThread::currentThread());
        passport.setToken("own");
        QCOMPARE(passport.token(), "own");
        QCOMPARE(passport.deBase64("AGEA*YWJj"), std::string("\0a\0", 3));
    }

private:
    ScriptedCloud &cloud = ScriptedCloud::instance();
    std::unique_ptr<PassportDirectory> dir;
};

QTEST_GUILESS_MAIN(tst_Facade)
#include "tst_facade.moc"
