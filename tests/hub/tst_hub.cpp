// SPDX-License-Identifier: MIT
#include "config/ServiceLocator.h"
#include "hub/InitialWorker.h"
#include "hub/ProcessControl.h"
#include "support/LogCapture.h"
#include "support/PassportDirectory.h"
#include "support/Recorder.h"
#include "support/Rows.h"
#include "support/Threads.h"

#include <limits>

using VelqorPassPort::InitialWorker;

namespace {

const QString psCall = "ps [-A]";

QJsonObject object(const QByteArray &json)
{
    return QJsonDocument::fromJson(json).object();
}

} // namespace

/// The worker that reads the documents and starts the hub, and the programs that it runs for that.
class TestHub : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        ServiceLocator::release();
        m_dir = std::make_unique<PassportDirectory>();
        m_tools.reset(); // before the next one changes PATH
        m_tools = std::make_unique<Recorder>();
        m_tools->add("ps");
        m_tools->add("killall");
        m_tools->add("passportHub");
        // The path that makes the recorder's program the hub.
        const QString hub = QDir(QCoreApplication::applicationDirPath())
                                .relativeFilePath(m_tools->programPath("passportHub"));
        m_dir->writeSystemCfg(object(R"({"Tunnel": {}})"));
        m_dir->writePassportCfg({{"hub", QJsonObject{{"path", hub + ".exe"}}}});
    }

    void startsTheHub_data()
    {
        const auto row =
            columns<QByteArray, QString, int, int>("tunnel", "port", "seenAtLook", "looks");
        row("seen at once", R"({"Port": 8787})", "8787", 1, 1);
        row("seen at last", R"({"HostAddress": "h"})", "0", 10, 10);
        row("seen too late", R"({"Port": "80"})", "0", 11, 10);
    }

    void startsTheHub()
    {
        QFETCH(QByteArray, tunnel);
        QFETCH(QString, port);
        QFETCH(int, seenAtLook);
        QFETCH(int, looks);
        // The listing shows the hub from that look on; an earlier run of "ps" precedes the start.
        m_tools->add("ps", "test \"$(grep -c '^ps' \"$RECORD\")\" -gt " +
                               QByteArray::number(seenAtLook) + " && echo '1 ? passportHub'");
        m_dir->writeSystemCfg(
            object("{\"Default\": {\"StartHub\": true}, \"Tunnel\": " + tunnel + "}"));

        InitialWorker worker;
        const LogCapture log;
        QVERIFY(worker.initialModule(m_dir->path()));
        worker.exitModule();
        QCOMPARE(log.lines().contains("debug g_checkProcessRunning NewHub success"),
                 seenAtLook <= looks);
        QStringList calls{psCall, "passportHub [-p] [" + port + ']'};
        for (int look = 0; look < looks; ++look)
            calls += psCall;
        QTRY_COMPARE(m_tools->calls(), calls + QStringList("killall [passportHub]"));
        QVERIFY(ServiceLocator::configMgr());
    }

    void startsNoHubUnasked()
    {
        m_tools->add("ps", "echo passportHub");
        m_dir->writeSystemCfg(object(R"({"Default": {"StartHub": "true"}})"));
        InitialWorker worker;
        QVERIFY(worker.initialModule(m_dir->path()));
        worker.exitModule();
        QVERIFY(ServiceLocator::configMgr());
        // A hub or a kill would be on its way by now; the end of another detached program shows it.
        QProcess::startDetached("killall", {"marker"});
        QTRY_COMPARE(m_tools->calls(), (QStringList{psCall, "killall [marker]"}));
    }

    void hubPath()
    {
        const QString application = QCoreApplication::applicationDirPath();
        const QMap<QByteArray, QString> paths{
            {R"({"hub": {"path": "hub/passportHub.exe"}})", application + "/hub/passportHub"},
            {R"({"hub": {"path": "hub/passportHub"}})", application + "/hub/passpor"},
            {R"({"hub": "x"})", application.chopped(3)}};
        for (auto it = paths.begin(); it != paths.end(); ++it) {
            m_dir->writePassportCfg(object(it.key()));
            InitialWorker worker;
            const LogCapture log;
            QVERIFY(worker.initialModule(m_dir->path()));
            QCOMPARE(log.lines().constFirst(), "debug m_hubFilePath: \"" + it.value() + '"');
        }
    }

    void reloadTimeout_data()
    {
        const auto row = columns<QByteArray, int>("seconds", "milliseconds");
        row("seconds", "30", 30000);
        row("zero", "0", 0);
        row("minus one", "-1", 5000);
        row("minus two", "-2", -2000);
        row("no whole number", "2.5", 5000);
        row("text", "\"30\"", 5000);
        row("beyond an int in milliseconds", "3000000", std::numeric_limits<int>::max());
        row("beyond an int in seconds", "3e9", 5000);
    }

    void reloadTimeout()
    {
        QFETCH(QByteArray, seconds);
        m_dir->writePassportCfg(
            object("{\"openwebengine\": {\"reLoadTimeout\": " + seconds + "}}"));
        InitialWorker worker;
        QCOMPARE(worker.reloadTiemout(), 5000); // asking too early changes nothing
        QVERIFY(worker.initialModule(m_dir->path()));
        QTEST(worker.reloadTiemout(), "milliseconds");
    }

    void missingDocumentsFailOnce()
    {
        m_dir->writePassportCfg(object(R"({"openwebengine": {"reLoadTimeout": 7}})"));
        QVERIFY(QFile::remove(m_dir->filePath("config/SystemCfg.cfg")));
        InitialWorker worker;
        LogCapture log;
        QVERIFY(!worker.initialModule(m_dir->path()));
        QCOMPARE(log.lines(), QStringList{"critical m_sysCfgObj isEmpty!!!"});
        // What was loaded stays, and nothing starts again before exitModule().
        m_dir->writeSystemCfg(object(R"({"Tunnel": {}})"));
        m_dir->writePassportCfg(object(R"({"openwebengine": {"reLoadTimeout": 8}})"));
        QVERIFY(worker.initialModule(m_dir->path()));
        QCOMPARE(m_tools->calls(), QStringList());
        QVERIFY(!ServiceLocator::configMgr());
        worker.exitModule();
        QVERIFY(worker.initialModule(m_dir->path()));
        QCOMPARE(m_tools->calls(), QStringList(psCall));
        QCOMPARE(worker.reloadTiemout(), 7000);

        QVERIFY(QFile::remove(m_dir->filePath("config/PassPortCfg.cfg")));
        InitialWorker other;
        log.clear();
        QVERIFY(!other.initialModule(m_dir->path()));
        QCOMPARE(log.lines(), QStringList{"critical m_cfgObj isEmpty!!!"});
    }

    void threadsStartOnlyOnce()
    {
        InitialWorker worker;
        inThreads(4, [&](int) { worker.initialModule(m_dir->path()); });
        QCOMPARE(m_tools->calls(), QStringList{psCall});
    }

    void searchesTheListing()
    {
        m_tools->add("ps", "printf ' 1 ?  /opt/passportHub -p\\n 2 ?  caf\\303\\251\\n'\n"
                           "echo complaint >&2; exit 1");
        const QList<unsigned long long> before{1, 2};
        QList<unsigned long long> ids = before;
        for (const QString text : {"passportHub", "opt/pass", "", "caf\u00e9"})
            QVERIFY2(g_checkProcessRunning(text, ids), qPrintable(text));
        for (const QString text : {"PassportHub", "pass.*", "complaint"})
            QVERIFY2(!g_checkProcessRunning(text, ids), qPrintable(text));
        QCOMPARE(ids, before);

        m_tools->add("ps", "exit 1");
        QVERIFY(!g_checkProcessRunning(QString(), ids));
    }

    void passesNamesToKillallUnchanged()
    {
        g_killProcess("open web/\"tool\" -9");
        g_terminateProcess("open web/\"tool\" -9");
        const QString call = "killall [open web/\"tool\" -9]";
        QTRY_COMPARE(m_tools->calls(), (QStringList{call, call}));
    }

private:
    std::unique_ptr<PassportDirectory> m_dir;
    std::unique_ptr<Recorder> m_tools;
};

QTEST_GUILESS_MAIN(TestHub)
#include "tst_hub.moc"
