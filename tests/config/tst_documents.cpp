#include "config/ConfigMgr.h"
#include "config/ServiceLocator.h"
#include "support/ChildProcess.h"
#include "support/LogCapture.h"
#include "support/PassportDirectory.h"

#include <QtTest/QtTest>

#include <csignal>
#include <sys/resource.h>
#include <thread>
#include <vector>

namespace {

const QString systemFile = "config/SystemCfg.cfg";
const QString passportFile = "config/PassPortCfg.cfg";
const QString emptyDocument = "{\n}\n";

} // namespace

class TestDocuments : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void refusesWhatIsNoDocument_data();
    void refusesWhatIsNoDocument();
    void reportsUnreadableFile();
    void findsAndChangesValues();
    void savesOnlyLoadedDocumentsToExistingFiles();
    void failedSaveKeepsTheOldFile();

    void managerFindsDocumentsSideBySide();
    void managerLoadsPathAsGiven();
    void managerLoadsFixedLocations();
    void managerLoadsOnceFromManyThreads();
    void locatorOwnsTheManager();

private:
    PassportDirectory m_dir;
};

void TestDocuments::refusesWhatIsNoDocument_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<bool>("loads");
    QTest::newRow("empty file") << QByteArray() << false;
    QTest::newRow("white space") << QByteArray(" \r\n\t") << false;
    QTest::newRow("empty object") << QByteArray("{}") << false;
    QTest::newRow("array") << QByteArray(R"([{"a": 1}])") << false;
    QTest::newRow("cut off") << QByteArray(R"({"Tunnel": {"Port": 1)") << false;
    QTest::newRow("text after the end") << QByteArray(R"({"a": 1} x)") << false;
    QTest::newRow("invalid UTF-8") << QByteArray("{\"a\": \"\xff\"}") << false;
    QTest::newRow("too deep") << QByteArray(R"({"a": )" + QByteArray(100000, '[')) << false;
    QTest::newRow("byte-order mark") << QByteArray("\xef\xbb\xbf{\"a\": 1}") << true;
    QTest::newRow("white space around") << QByteArray("\n {\"a\": 1}\n") << true;
}

void TestDocuments::refusesWhatIsNoDocument()
{
    QFETCH(QByteArray, content);
    QFETCH(bool, loads);
    m_dir.write("good", R"({"Tunnel": {"Port": 1}})");
    m_dir.write("tried", content);
    ConfigBase document;
    QVERIFY(document.loadCfg(m_dir.filePath("good")));

    QCOMPARE(document.loadCfg(m_dir.filePath("tried")), loads);
    QCOMPARE(document.getCfgJson() != emptyDocument, loads);
    QCOMPARE(document.saveCfg(m_dir.filePath("good")), loads);
}

void TestDocuments::reportsUnreadableFile()
{
    const QStringList complaint{"critical open file failed"};
    LogCapture log;
    ConfigBase document;
    QVERIFY(!document.loadCfg(m_dir.filePath("missing")));
    QCOMPARE(log.lines(), QStringList());
    QVERIFY(!document.loadCfg(m_dir.filePath("config")));
    QCOMPARE(log.lines(), complaint);

    m_dir.write("locked", R"({"a": 1})");
    const QString path = m_dir.filePath("locked");
    QVERIFY(QFile::setPermissions(path, {}));
    QVERIFY(QFile::setPermissions(m_dir.path(), QFile::Permissions(0x7777)));
    log.clear();
    QCOMPARE(inChildProcess([&] {
                 return dropRoot() && !document.loadCfg(path) && log.lines() == complaint ? 0 : 1;
             }),
             0);
}

void TestDocuments::findsAndChangesValues()
{
    const QString section = "Tunnel";
    const QString key = "Port";
    m_dir.write(systemFile,
                R"({"": {"": 1, "Port": 2}, "text": "x", "Tunnel": {"Port": 8, "": 3}})");
    ConfigBase document;
    QVERIFY(document.loadCfg(m_dir.filePath(systemFile)));

    QCOMPARE(document.value(section, key, 5).toInt(), 8);
    QCOMPARE(document.value(QString(), key, 5).toInt(), 5);
    QCOMPARE(document.value(section, QString(), 5).toInt(), 5);
    QCOMPARE(document.value("text", key, 5).toInt(), 5);
    QCOMPARE(document.value(section, "port", 5).toInt(), 5);
    QCOMPARE(document.rawValue("text", 5).toString(), "x");
    QCOMPARE(document.rawValue("none", 5).toInt(), 5);

    const QString before = document.getCfgJson();
    QVERIFY(!document.setValue(section, key, QVariant()));
    QVERIFY(!document.setValue(section, key, QString()));
    QVERIFY(!document.setValue(QString(), key, 1));
    QVERIFY(!document.setValue(section, QString(), 1));
    QCOMPARE(document.getCfgJson(), before);

    QVERIFY(document.setValue("text", key, 9));
    QCOMPARE(document.rawValue("text", {}).toMap(), (QVariantMap{{key, 9}}));
    QVERIFY(document.setValue(section, "Channel", "4G"));
    QCOMPARE(document.value(section, key, 5).toInt(), 8);
}

void TestDocuments::savesOnlyLoadedDocumentsToExistingFiles()
{
    const QString path = m_dir.filePath(systemFile);
    m_dir.write(systemFile, R"({"Tunnel": {"Port": 8}, "Default": {"StartHub": true}})");
    ConfigBase unloaded;
    QVERIFY(unloaded.setValue("a", "b", 1));
    QVERIFY(!unloaded.saveCfg(path));

    ConfigBase document;
    QVERIFY(document.loadCfg(path));
    QVERIFY(document.setValue("Tunnel", "Port", 9));
    QVERIFY(document.saveCfg(path));
    QCOMPARE(m_dir.read(systemFile), document.getCfgJson().toUtf8());
    ConfigBase again;
    QVERIFY(again.loadCfg(path));
    QCOMPARE(again.value("Tunnel", "Port", 0).toInt(), 9);
    QVERIFY(again.value("Default", "StartHub", false).toBool());

    QVERIFY(QFile::remove(path));
    QVERIFY(!document.saveCfg(path));
    QVERIFY(!QFile::exists(path));
    QVERIFY(!document.saveCfg(m_dir.filePath("config")));
}

void TestDocuments::failedSaveKeepsTheOldFile()
{
    const QByteArray old = R"({"a": {"b": 1}})";
    m_dir.write(systemFile, old);
    const QString path = m_dir.filePath(systemFile);
    ConfigBase document;
    QVERIFY(document.loadCfg(path));
    QVERIFY(document.setValue("a", "c", QString(100000, QChar(u'x'))));

    QCOMPARE(inChildProcess([&] {
                 const rlimit fullDisk{4096, 4096};
                 std::signal(SIGXFSZ, SIG_IGN);
                 return setrlimit(RLIMIT_FSIZE, &fullDisk) == 0 && !document.saveCfg(path) ? 0 : 1;
             }),
             0);
    QCOMPARE(m_dir.read(systemFile), old);
}

void TestDocuments::managerFindsDocumentsSideBySide()
{
    const PassportDirectory dir;
    const QString path = dir.filePath(systemFile);
    ConfigMgr manager;
    QVERIFY(!manager.init(path));

    dir.writeSystemCfg({{"Tunnel", QJsonObject{{"Port", 1}}}});
    QVERIFY(!manager.init(path));
    QVERIFY(manager.systemConfig());
    QVERIFY(!manager.passportConfig());

    dir.writePassportCfg({{"hub", QJsonObject()}});
    QVERIFY(manager.init(path));
    const auto loaded = manager.systemConfig();
    m_dir.writeSystemCfg({{"other", 1}});
    m_dir.writePassportCfg({{"other", 1}});
    QVERIFY(manager.init(m_dir.filePath(systemFile)));
    QVERIFY(manager.init());
    QCOMPARE(manager.systemConfig(), loaded);
    QCOMPARE(loaded->value("Tunnel", "Port", 0).toInt(), 1);
    QVERIFY(!manager.init(dir.filePath("missing")));
}

void TestDocuments::managerLoadsPathAsGiven()
{
    m_dir.writeSystemCfg({{"a", 1}});
    m_dir.writePassportCfg({{"a", 1}});
    // Below the application and, with other content, below the working directory.
    const QDir application(QCoreApplication::applicationDirPath());
    const QTemporaryDir below(application.filePath("documents-XXXXXX"));
    const QString relative = application.relativeFilePath(below.filePath("SystemCfg.cfg"));
    QVERIFY(QFile::copy(m_dir.filePath(systemFile), below.filePath("SystemCfg.cfg")));
    const QTemporaryDir working;
    const QString workingDirectory = QDir::currentPath();
    QVERIFY(QDir::setCurrent(working.path()));

    ConfigMgr found;
    QVERIFY(found.fileExists(relative));
    QVERIFY(!found.init(relative));
    QVERIFY(QDir::setCurrent(m_dir.path()));
    QVERIFY(found.init(systemFile));
    QVERIFY(QDir::setCurrent(m_dir.filePath("config")));
    ConfigMgr besideIt;
    QVERIFY(besideIt.init("SystemCfg.cfg"));
    QVERIFY(QDir::setCurrent(workingDirectory));
}

void TestDocuments::managerLoadsFixedLocations()
{
    QDir fixed(QCoreApplication::applicationDirPath() + "/passport");
    QVERIFY(!fixed.exists());
    QVERIFY(!ConfigMgr().init());
    m_dir.writeSystemCfg({{"a", 1}});
    m_dir.writePassportCfg({{"b", 2}});
    QVERIFY(QFile::link(m_dir.path(), fixed.path()));
    ConfigMgr manager;
    const bool loaded = manager.init();
    QVERIFY(QFile::remove(fixed.path()));
    QVERIFY(loaded);
    QCOMPARE(manager.systemConfig()->rawValue("a", 0).toInt(), 1);
    QCOMPARE(manager.passportConfig()->rawValue("b", 0).toInt(), 2);
}

void TestDocuments::managerLoadsOnceFromManyThreads()
{
    m_dir.writeSystemCfg({{"a", 1}});
    m_dir.writePassportCfg({{"b", 2}});
    ConfigMgr manager;
    std::vector<std::shared_ptr<ConfigBase>> seen(4);
    std::vector<std::thread> threads;
    threads.reserve(seen.size());
    for (auto &document : seen) {
        threads.emplace_back([&] {
            manager.init(m_dir.filePath(systemFile));
            document = manager.systemConfig();
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    for (const auto &document : seen)
        QCOMPARE(document, manager.systemConfig());
    QVERIFY(manager.systemConfig());
}

void TestDocuments::locatorOwnsTheManager()
{
    QVERIFY(!ServiceLocator::configMgr());
    ServiceLocator::init();
    const std::shared_ptr<ConfigMgr> first = ServiceLocator::configMgr();
    QVERIFY(first);
    ServiceLocator::init();
    QVERIFY(ServiceLocator::configMgr() != first);
    ServiceLocator::release();
    QVERIFY(!ServiceLocator::configMgr());
    QCOMPARE(first.use_count(), 1L);
}

QTEST_GUILESS_MAIN(TestDocuments)

#include "tst_documents.moc"
