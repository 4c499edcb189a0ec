#include "config/ServiceLocator.h"
#include "hub/InitialWorker.h"
#include "support/LogCapture.h"
#include "support/PassportDirectory.h"
#include "support/Recorder.h"

#include <QtTest/QtTest>

#include <limits>
#include <thread>
#include <vector>

using VelqorPassPort::InitialWorker;

namespace {

const QString constructed = "info InitialWorker constructor!";
const QString deleted = "info InitialWorker deleteLater!";
const QString psCall = "ps [-A]";

QString hubPathLine(const QString &path)
{
    return QStringLiteral("debug m_hubFilePath: \"%1\"").arg(path);
}

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
    void cleanup();

    void startsTheHub_data();
    void startsTheHub();
    void startsNoHubUnasked();
    void endsTheHubItStarts();
    void hubPath_data();
    void hubPath();
    void reloadTimeout_data();
    void reloadTimeout();

    void missingDocumentsFailOnce();
    void askingBeforeLoadingChangesNothing();
    void keepsDocumentsAcrossExit();
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
    m_tools = std::make_unique<Recorder>();
    m_tools->add("ps");
    m_tools->add("killall");
    m_tools->add("passportHub");
}

void TestWorker::cleanup()
{
    m_tools.reset();
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
    QTest::addColumn<QByteArray>("tunnel");
    QTest::addColumn<QString>("port");
    QTest::addColumn<int>("seenAtLook");
    QTest::addColumn<int>("looks");
    QTest::newRow("seen at once") << QByteArray(R"({"Port": 8787})") << "8787" << 1 << 1;
    QTest::newRow("seen at last") << QByteArray(R"({"HostAddress": "h"})") << "0" << 10 << 10;
    QTest::newRow("seen too late") << QByteArray(R"({"Port": "80"})") << "0" << 11 << 10;
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

    LogCapture log;
    {
        InitialWorker worker;
        QVERIFY(worker.initialModule(m_dir->path()));
    }
    const QString hub =
        QCoreApplication::applicationDirPath() + QLatin1Char('/') + recordedHubPath().chopped(4);
    QStringList lines{constructed, hubPathLine(hub), "debug startHUb: true"};
    if (seenAtLook <= looks)
        lines += "debug g_checkProcessRunning NewHub success";
    QCOMPARE(log.lines(), lines + QStringList{deleted});

    QStringList calls{psCall, QStringLiteral("passportHub [-p] [%1]").arg(port)};
    for (int look = 0; look < looks; ++look)
        calls += psCall;
    QCOMPARE(m_tools->calls(), calls);
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

void TestWorker::endsTheHubItStarts()
{
    m_tools->add("ps", "echo passportHub");
    m_dir->writeSystemCfg(object(R"({"Default": {"StartHub": true}})"));
    configureRecordedHub();
    InitialWorker worker;
    QVERIFY(worker.initialModule(m_dir->path()));
    LogCapture log;
    worker.exitModule();
    QCOMPARE(log.lines(), QStringList{"debug exitModule if hub is not start by passport.... true"});
    QTRY_COMPARE(m_tools->calls(),
                 (QStringList{psCall, "passportHub [-p] [0]", psCall, "killall [passportHub]"}));
}

void TestWorker::hubPath_data()
{
    QTest::addColumn<QByteArray>("passportCfg");
    QTest::addColumn<QString>("path");
    const QString application = QCoreApplication::applicationDirPath();
    QTest::newRow("configured") << QByteArray(R"({"hub": {"path": "hub/passportHub.exe"}})")
                                << application + "/hub/passportHub";
    QTest::newRow("no suffix") << QByteArray(R"({"hub": {"path": "hub/passportHub"}})")
                               << application + "/hub/passpor";
    QTest::newRow("no path") << QByteArray(R"({"hub": {}})") << application.chopped(3);
    QTest::newRow("no text") << QByteArray(R"({"hub": {"path": 5}})") << application.chopped(3);
    QTest::newRow("no section") << QByteArray(R"({"hub": "x"})") << application.chopped(3);
}

void TestWorker::hubPath()
{
    QFETCH(QByteArray, passportCfg);
    QFETCH(QString, path);
    m_dir->writeSystemCfg(object(R"({"Tunnel": {}})"));
    m_dir->writePassportCfg(object(passportCfg));
    InitialWorker worker;
    LogCapture log;
    QVERIFY(worker.initialModule(m_dir->path()));
    QCOMPARE(log.lines().constFirst(), hubPathLine(path));
}

void TestWorker::reloadTimeout_data()
{
    QTest::addColumn<QByteArray>("seconds");
    QTest::addColumn<int>("logged");
    QTest::addColumn<int>("milliseconds");
    QTest::newRow("seconds") << QByteArray("30") << 30 << 30000;
    QTest::newRow("zero") << QByteArray("0") << 0 << 0;
    QTest::newRow("minus one") << QByteArray("-1") << -1 << 5000;
    QTest::newRow("minus two") << QByteArray("-2") << -2 << -2000;
    QTest::newRow("no whole number") << QByteArray("2.5") << -1 << 5000;
    QTest::newRow("text") << QByteArray("\"30\"") << -1 << 5000;
    QTest::newRow("null") << QByteArray("null") << -1 << 5000;
    QTest::newRow("beyond an int in milliseconds")
        << QByteArray("3000000") << 3000000 << std::numeric_limits<int>::max();
    QTest::newRow("beyond an int in seconds") << QByteArray("3e9") << -1 << 5000;
}

void TestWorker::reloadTimeout()
{
    QFETCH(QByteArray, seconds);
    QFETCH(int, logged);
    m_dir->writeSystemCfg(object(R"({"Tunnel": {}})"));
    m_dir->writePassportCfg(
        object(R"({"openwebengine": {"reLoadTimeout": )" + seconds + QByteArray("}}")));
    InitialWorker worker;
    QVERIFY(worker.initialModule(m_dir->path()));
    LogCapture log;
    QTEST(worker.reloadTiemout(), "milliseconds");
    QCOMPARE(log.lines(), QStringList{QStringLiteral("debug reloadTiemout___ %1").arg(logged)});
}

void TestWorker::missingDocumentsFailOnce()
{
    m_dir->writePassportCfg(object(R"({"openwebengine": {"reLoadTimeout": 7}})"));
    const PassportDirectory good;
    good.writeSystemCfg(object(R"({"Default": {"StartHub": true}})"));

    InitialWorker worker;
    LogCapture log;
    QVERIFY(!worker.initialModule(m_dir->path()));
    QCOMPARE(log.lines(), QStringList{"critical m_sysCfgObj isEmpty!!!"});
    QCOMPARE(worker.reloadTiemout(), 7000);
    log.clear();
    QVERIFY(worker.initialModule(good.path()));
    QCOMPARE(log.lines(), QStringList());
    QCOMPARE(m_tools->calls(), QStringList());
    QVERIFY(!ServiceLocator::configMgr());

    InitialWorker other;
    log.clear();
    QVERIFY(!other.initialModule(good.path()));
    QCOMPARE(log.lines(), QStringList{"critical m_cfgObj isEmpty!!!"});
    QVERIFY(!ServiceLocator::configMgr());
}

void TestWorker::askingBeforeLoadingChangesNothing()
{
    m_dir->writeSystemCfg(object(R"({"Tunnel": {}})"));
    m_dir->writePassportCfg(object(R"({"openwebengine": {"reLoadTimeout": 7}})"));
    InitialWorker worker;
    QCOMPARE(worker.reloadTiemout(), 5000);
    worker.exitModule();
    QVERIFY(worker.initialModule(m_dir->path()));
    QCOMPARE(worker.reloadTiemout(), 7000);
    QCOMPARE(m_tools->calls(), QStringList{psCall});
}

void TestWorker::keepsDocumentsAcrossExit()
{
    InitialWorker worker;
    m_dir->writePassportCfg(object(R"({"openwebengine": {"reLoadTimeout": 7}})"));
    QVERIFY(!worker.initialModule(m_dir->path()));
    worker.exitModule();

    m_dir->writeSystemCfg(object(R"({"Tunnel": {}})"));
    m_dir->writePassportCfg(object(R"({"openwebengine": {"reLoadTimeout": 8}})"));
    LogCapture log;
    QVERIFY(worker.initialModule(m_dir->path()));
    QCOMPARE(log.lines().constLast(), "debug startHUb: false");
    QCOMPARE(worker.reloadTiemout(), 7000);
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
