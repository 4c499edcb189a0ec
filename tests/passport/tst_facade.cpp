#include "passport/Passport.h"
#include "support/LogCapture.h"
#include "support/PassportDirectory.h"
#include "support/Recorder.h"

#include <ScriptedCloud.h>

#include <QtCore/QFileInfo>
#include <QtTest/QtTest>

using namespace VelqorPassPort;
using Code = CommunityErrorCode;

namespace {

const QVariantMap account{{"token", "T"}, {"user_id", "7"}, {"nick_name", "Ada"}};
const QString accountFile = "config/account.json";

QStringList cut(QStringList lines)
{
    for (QString &line : lines)
        line = line.section(" QThread(", 0, 0);
    return lines;
}

// Of one request, whatever it is.
QStringList wait()
{
    return {"debug replyConnect current thread-1", "debug replyConnect current thread-2.1",
            "debug request success true"};
}

} // namespace

/// The facade's life and its sign-in operations: every log line in order, and the files they leave.
class tst_Facade : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void logsItsWholeLife();
    void initialisesAgainAndAgain();
    void remembersOnlyWhenAsked_data();
    void remembersOnlyWhenAsked();
    void logsFailuresWithAllTheyHold();
    void survivesAnAccountFileItCannotWrite();
    void passesTheConfigurationThrough();
    void endsTheWebTool();
    void decodesBase64();

private:
    QByteArray read() const { return dir->read(accountFile); }
    PassportCommunityError logIn(Passport &passport, bool remember)
    {
        QVariantMap info;
        return passport.logIn("ada", "pass \"word\"", "86", info, remember);
    }

    ScriptedCloud &cloud = ScriptedCloud::instance();
    std::unique_ptr<PassportDirectory> dir;
    std::unique_ptr<Recorder> recorder;
};

void tst_Facade::init()
{
    cloud.reset();
    dir = std::make_unique<PassportDirectory>();
    dir->writeSystemCfg({{"Tunnel", QJsonObject{{"Port", 1}}}});
    dir->writePassportCfg({{"hub", QJsonObject{{"path", "hub/passportHub.exe"}}}});
    recorder = std::make_unique<Recorder>();
    recorder->add("ps", "echo nothing");
    recorder->add("killall");
}

void tst_Facade::cleanup()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    recorder.reset();
}

void tst_Facade::logsItsWholeLife()
{
    const LogCapture log;
    auto taken = [&log, seen = 0]() mutable {
        const QStringList lines = cut(log.lines()).mid(seen);
        seen += lines.size();
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

        QVariantMap info;
        cloud.play(Script::answering(account));
        cloud.play(Script::answering(account));
        QCOMPARE(passport.logIn("ada", "secret", "86", info, true).errorCode, Code::NoError);
        QCOMPARE(taken(), wait() + QStringList("debug token changed \"T\"") + wait() +
                              QStringList("debug login success..."));
        QCOMPARE(passport.token(), "T");
        QCOMPARE(passport.getAccountInfo(), (QJsonObject{{"name", "ada"}, {"password", "secret"}}));

        cloud.play(Script::answering(account));
        QCOMPARE(passport.reqGetUserInfo(info, "x").errorCode, Code::NoError);
        QString shown;
        QDebug(&shown) << "debug reqGetUserInfo success..." << info;
        QCOMPARE(taken(), wait() + QStringList(shown.trimmed()));
        QCOMPARE(passport.logOut().errorCode, Code::NoError);
        QCOMPARE(passport.reqSoftUp().errorCode, Code::NoError);
        passport.exitModule();
        QCOMPARE(taken(), QStringList({"debug logOut success...", "debug exitModule.... false"}));
    }
    QCOMPARE(taken(), QStringList("info m_initialWorker deleteLater!"));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCOMPARE(taken(), QStringList("info InitialWorker deleteLater!"));
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
    passport.setPassportDir("/elsewhere");
    QVERIFY(passport.getAccountInfo().isEmpty());
}

void tst_Facade::remembersOnlyWhenAsked_data()
{
    QTest::addColumn<bool>("success");
    QTest::addColumn<bool>("remember");
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("after");
    const QByteArray old = R"({"name":"old","more":"members"})";
    const QByteArray fresh =
        "{\n    \"name\": \"ada\",\n    \"password\": \"pass \\\"word\\\"\"\n}\n";
    QTest::newRow("asked, no file") << true << true << QByteArray() << fresh;
    QTest::newRow("asked, replaces everything") << true << true << old << fresh;
    QTest::newRow("not asked") << true << false << old << old;
    QTest::newRow("failed") << false << true << old << old;
}

void tst_Facade::remembersOnlyWhenAsked()
{
    QFETCH(bool, success);
    QFETCH(bool, remember);
    QFETCH(QByteArray, before);
    const LogCapture quiet;
    Passport passport;
    passport.setPassportDir(dir->path());
    if (!before.isEmpty())
        dir->write(accountFile, before);
    cloud.play(success ? Script::answering(account) : Script::refusing("pwderr"));
    QCOMPARE(logIn(passport, remember).errorCode, success ? Code::NoError : Code::AuthErr);
    QTEST(read(), "after");
    if (success && remember) {
        const auto others =
            QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther;
        QVERIFY(!(QFileInfo(dir->filePath(accountFile)).permissions() & others));
        QCOMPARE(passport.getAccountInfo().value("password").toString(), "pass \"word\"");
    }
}

void tst_Facade::logsFailuresWithAllTheyHold()
{
    Passport passport;
    QVariantMap info{{"old", 1}};
    const LogCapture log;
    cloud.play(Script::refusing(R"({"a":1})"));
    logIn(passport, true);
    QCOMPARE(log.lines().last(),
             R"(debug login error... 84344833 "{\"a\":1}" QJsonDocument({"a":1}) "{\"a\":1}")");
    QCOMPARE(passport.reqGetUserInfo(info, "x").errorCode, Code::AuthErr);
    QCOMPARE(log.lines().last(),
             R"(debug reqGetUserInfo error... 84344835 "AuthErr" QJsonDocument() "")");
    QCOMPARE(info, (QVariantMap{{"old", 1}}));
}

void tst_Facade::survivesAnAccountFileItCannotWrite()
{
    const LogCapture quiet;
    Passport passport;
    passport.setPassportDir(dir->filePath("missing"));
    cloud.play(Script::answering(account));
    cloud.play(Script::answering(account));
    QCOMPARE(logIn(passport, true).errorCode, Code::NoError);
    QVERIFY(passport.getAccountInfo().isEmpty());

    // A directory in the file's place stays.
    QDir(dir->path()).mkpath(accountFile + "/inside");
    passport.setPassportDir(dir->path());
    cloud.play(Script::answering(account));
    cloud.play(Script::answering(account));
    QCOMPARE(logIn(passport, true).errorCode, Code::NoError);
    QVERIFY(QFileInfo(dir->filePath(accountFile + "/inside")).isDir());
}

void tst_Facade::passesTheConfigurationThrough()
{
    Passport passport;
    QVariantMap data{{"old", 1}};
    QCOMPARE(passport.configData(data).errorCode, Code::NoError);
    QCOMPARE(data, QVariantMap());
    cloud.play(Script::refusing("dberr"));
    QCOMPARE(passport.setConfigPath("/p").errorCode, Code::DbErr);
    passport.setConfigData(QVariantMap{{"a", 1}});
    passport.setConfigData(QString("env"));
    QCOMPARE(cloud.lastCall().envelope, (QVariantMap{{"cloudEnvironment", "env"}}));
    passport.setToken("own");
    QCOMPARE(passport.token(), "own");
}

void tst_Facade::endsTheWebTool()
{
    Passport passport;
    passport.exitModule(); // also without initial()
    QTRY_COMPARE(recorder->calls(),
                 QStringList("killall [openweburl.app/Contents/MacOS/openweburl]"));
}

void tst_Facade::decodesBase64()
{
    Passport passport;
    QCOMPARE(passport.deBase64("AGEA"), std::string("\0a\0", 3));
    QCOMPARE(passport.deBase64("YWJj*YWJj"), std::string("abc"));
    QCOMPARE(passport.deBase64(""), std::string());
}

QTEST_GUILESS_MAIN(tst_Facade)
#include "tst_facade.moc"
