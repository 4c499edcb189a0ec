#include "config/ServiceLocator.h"
#include "hub/InitialWorker.h"
#include "support/LogCapture.h"
#include "support/PassportDirectory.h"
#include "support/Recorder.h"
#include "support/Rows.h"

#include <limits>
#include <thread>
#include <vector>

using VelqorPassPort::InitialWorker;

namespace {

const QString psCall = "ps [-A]";

QJsonObject object(const QByteArray &json)
{
    return QJsonDocument::fromJson(json).object();
}

} // namespace

class TestWorker : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void startsTheHub_data();
    void startsTheHub();
    void startsNoHubUnasked();
    void hubPath();
    void reloadTimeout_data();
    void reloadTimeout();

    void missingDocumentsFailOnce();
    void threadsStartOnlyOnce();

private:
    /// The "path" that makes the recorder's program the hub.
    QString recordedHubPath() const;
    void configureRecordedHub() const;

    std::unique_ptr<PassportDirectory> m_dir;
    std::unique_ptr<Recorder> m_tools;
};

void TestWorker::init()
{
    ServiceLocator::release();
    m_dir = std::make_unique<PassportDirectory>();
    m_tools.reset(); // before the next one changes PATH
    m_tools = std::make_unique<Recorder>();
    m_tools->add("ps");
    m_tools->add("killall");
    m_tools->add("passportHub");
}

QString TestWorker::recordedHubPath() const
{
    return QDir(QCoreApplication::applicationDirPath())
               .relativeFilePath(m_tools->programPath("passportHub")) +
           ".exe";
}

void TestWorker::configureRecordedHub() const
{
    m_dir->writePassportCfg({{"hub", QJsonObject{{"path", recordedHubPath()}}}});
}

void TestWorker::startsTheHub_data()
{
    const auto row =
        columns<QByteArray, QString, int, int>("tunnel", "port", "seenAtLook", "looks");
    row("seen at once", R"({"Port": 8787})", "8787", 1, 1);
    row("seen at last", R"({"HostAddress": "h"})", "0", 10, 10);
    row("seen too late", R"({"Port": "80"})", "0", 11, 10);
}

void TestWorker::startsTheHub()
{
    QFETCH(QByteArray, tunnel);
    QFETCH(QString, port);
    QFETCH(int, seenAtLook);
    QFETCH(int, looks);
    // The listing shows the hub from that look on; an earlier run of "ps" precedes the start.
    m_tools->add("ps", "test \"$(grep -c '^ps' \"$RECORD\")\" -gt " +
                           QByteArray::number(seenAtLook) + " && echo '1 ? passportHub'");
    m_dir->writeSystemCfg(
        object(R"({"Default": {"StartHub": true}, "Tunnel": )" + tunnel + QByteArray("}")));
    configureRecordedHub();

    InitialWorker worker;
    const LogCapture log;
    QVERIFY(worker.initialModule(m_dir->path()));
    worker.exitModule();
    const QString hub =
        QCoreApplication::applicationDirPath() + QLatin1Char('/') + recordedHubPath().chopped(4);
    QStringList lines{"debug m_hubFilePath: \"" + hub + '"', "debug startHUb: true",
                      "debug g_checkProcessRunning NewHub success",
                      "debug exitModule if hub is not start by passport.... true"};
    if (seenAtLook > looks)
        lines.removeAt(2);
    QCOMPARE(log.lines(), lines);

    QStringList calls{psCall, QStringLiteral("passportHub [-p] [%1]").arg(port)};
    for (int look = 0; look < looks; ++look)
        calls += psCall;
    QTRY_COMPARE(m_tools->calls(), calls + QStringList("killall [passportHub]"));
    QVERIFY(ServiceLocator::configMgr());
}

void TestWorker::startsNoHubUnasked()
{
    m_tools->add("ps", "echo passportHub");
    m_dir->writeSystemCfg(object(R"({"Default": {"StartHub": "true"}})"));
    configureRecordedHub();
    InitialWorker worker;
    LogCapture log;
    QVERIFY(worker.initialModule(m_dir->path()));
    worker.exitModule();
    QCOMPARE(log.lines().mid(1),
             (QStringList{"debug startHUb: false",
                          "debug exitModule if hub is not start by passport.... false"}));
    QVERIFY(ServiceLocator::configMgr());
    // A hub or a kill would be on its way by now; the end of another detached program shows it.
    QProcess::startDetached("killall", {"marker"});
    QTRY_COMPARE(m_tools->calls(), (QStringList{psCall, "killall [marker]"}));
}

void TestWorker::hubPath()
{
    const QString application = QCoreApplication::applicationDirPath();
    const QMap<QByteArray, QString> paths{
        {R"({"hub": {"path": "hub/passportHub.exe"}})", application + "/hub/passportHub"},
        {R"({"hub": {"path": "hub/passportHub"}})", application + "/hub/passpor"},
        {R"({"hub": {"path": 5}})", application.chopped(3)},
        {R"({"hub": "x"})", application.chopped(3)}};
    m_dir->writeSystemCfg(object(R"({"Tunnel": {}})"));
    for (auto it = paths.begin(); it != paths.end(); ++it) {
        m_dir->writePassportCfg(object(it.key()));
        InitialWorker worker;
        const LogCapture log;
        QVERIFY(worker.initialModule(m_dir->path()));
        QCOMPARE(log.lines().constFirst(), "debug m_hubFilePath: \"" + it.value() + '"');
    }
}

void TestWorker::reloadTimeout_data()
{
    const auto row = columns<QByteArray, int, int>("seconds", "logged", "milliseconds");
    row("seconds", "30", 30, 30000);
    row("zero", "0", 0, 0);
    row("minus one", "-1", -1, 5000);
    row("minus two", "-2", -2, -2000);
    row("no whole number", "2.5", -1, 5000);
    row("text", "\"30\"", -1, 5000);
    row("beyond an int in milliseconds", "3000000", 3000000, std::numeric_limits<int>::max());
    row("beyond an int in seconds", "3e9", -1, 5000);
}

void TestWorker::reloadTimeout()
{
    QFETCH(QByteArray, seconds);
    QFETCH(int, logged);
    m_dir->writeSystemCfg(object(R"({"Tunnel": {}})"));
    m_dir->writePassportCfg(
        object(R"({"openwebengine": {"reLoadTimeout": )" + seconds + QByteArray("}}")));
    InitialWorker worker;
    QCOMPARE(worker.reloadTiemout(), 5000); // asking too early changes nothing
    QVERIFY(worker.initialModule(m_dir->path()));
    const LogCapture log;
    QTEST(worker.reloadTiemout(), "milliseconds");
    QCOMPARE(log.lines(), QStringList{QStringLiteral("debug reloadTiemout___ %1").arg(logged)});
}

void TestWorker::missingDocumentsFailOnce()
{
    m_dir->writePassportCfg(object(R"({"openwebengine": {"reLoadTimeout": 7}})"));
    InitialWorker worker;
    LogCapture log;
    QVERIFY(!worker.initialModule(m_dir->path()));
    QCOMPARE(log.lines(), QStringList{"critical m_sysCfgObj isEmpty!!!"});
    // What was loaded stays, and nothing starts again before exitModule().
    m_dir->writeSystemCfg(object(R"({"Tunnel": {}})"));
    m_dir->writePassportCfg(object(R"({"openwebengine": {"reLoadTimeout": 8}})"));
    log.clear();
    QVERIFY(worker.initialModule(m_dir->path()));
    QCOMPARE(log.lines(), QStringList());
    QCOMPARE(m_tools->calls(), QStringList());
    QVERIFY(!ServiceLocator::configMgr());
    worker.exitModule();
    QVERIFY(worker.initialModule(m_dir->path()));
    QCOMPARE(log.lines().constLast(), "debug startHUb: false");
    QCOMPARE(worker.reloadTiemout(), 7000);

    QVERIFY(QFile::remove(m_dir->filePath("config/PassPortCfg.cfg")));
    InitialWorker other;
    log.clear();
    QVERIFY(!other.initialModule(m_dir->path()));
    QCOMPARE(log.lines(), QStringList{"critical m_cfgObj isEmpty!!!"});
}

void TestWorker::threadsStartOnlyOnce()
{
    m_dir->writeSystemCfg(object(R"({"Tunnel": {}})"));
    configureRecordedHub();
    InitialWorker worker;
    std::vector<std::thread> threads(4);
    for (std::thread &thread : threads)
        thread = std::thread([&] { worker.initialModule(m_dir->path()); });
    for (std::thread &thread : threads)
        thread.join();
    QCOMPARE(m_tools->calls(), QStringList{psCall});
}

QTEST_GUILESS_MAIN(TestWorker)

#include "tst_worker.moc"
