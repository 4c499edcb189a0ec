#include "config/ConfigMgr.h"
#include "support/ChildProcess.h"
#include "support/LogCapture.h"
#include "support/PassportDirectory.h"
#include "support/Rows.h"

#include <sys/stat.h>

#include <fstream>
#include <thread>
#include <vector>

namespace {

const QString systemFile = "config/SystemCfg.cfg";

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

    void managerLoadsBothDocumentsOnce();
    void managerLoadsPathAsGiven();
    void managerLoadsFixedLocations();
    void managerLoadsOnceFromManyThreads();

private:
    PassportDirectory m_dir;
};

void TestDocuments::refusesWhatIsNoDocument_data()
{
    const auto row = columns<QByteArray, bool>("content", "loads");
    row("empty file", {}, false);
    row("empty object", "{}", false);
    row("array", R"([{"a": 1}])", false);
    row("cut off", R"({"Tunnel": {"Port": 1)", false);
    row("text after the end", R"({"a": 1} x)", false);
    row("too deep", R"({"a": )" + QByteArray(100000, '['), false);
    row("byte-order mark", "\xef\xbb\xbf{\"a\": 1}", true);
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
    QCOMPARE(document.getCfgJson() != "{\n}\n", loads);
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
}

void TestDocuments::findsAndChangesValues()
{
    m_dir.write(systemFile,
                R"({"": {"": 1, "Port": 2}, "text": "x", "Tunnel": {"Port": 8, "": 3}})");
    ConfigBase document;
    QVERIFY(document.loadCfg(m_dir.filePath(systemFile)));

    QCOMPARE(document.value("Tunnel", "Port", 5).toInt(), 8);
    QCOMPARE(document.value("", "Port", 5).toInt(), 5);
    QCOMPARE(document.value("Tunnel", "", 5).toInt(), 5);
    QCOMPARE(document.value("text", "Port", 5).toInt(), 5);
    QCOMPARE(document.rawValue("text", 5).toString(), "x");
    QCOMPARE(document.rawValue("none", 5).toInt(), 5);

    const QString before = document.getCfgJson();
    QVERIFY(!document.setValue("Tunnel", "Port", QString()));
    QVERIFY(!document.setValue("", "Port", 1));
    QVERIFY(!document.setValue("Tunnel", "", 1));
    QCOMPARE(document.getCfgJson(), before);

    QVERIFY(document.setValue("text", "Port", 9));
    QCOMPARE(document.rawValue("text", {}).toMap(), (QVariantMap{{"Port", 9}}));
    QVERIFY(document.setValue("Tunnel", "Channel", "4G"));
    QCOMPARE(document.value("Tunnel", "Port", 5).toInt(), 8);
}

void TestDocuments::savesOnlyLoadedDocumentsToExistingFiles()
{
    const QString path = m_dir.filePath(systemFile);
    m_dir.writeSystemCfg({{"Tunnel", QJsonObject{{"Port", 8}}}});
    ConfigBase unloaded;
    QVERIFY(unloaded.setValue("a", "b", 1));
    QVERIFY(!unloaded.saveCfg(path));

    ConfigBase document;
    QVERIFY(document.loadCfg(path));
    QVERIFY(document.setValue("Tunnel", "Port", 9));
    QVERIFY(document.saveCfg(path));
    QCOMPARE(m_dir.read(systemFile), QByteArray("{\n    \"Tunnel\": {\n        \"Port\": 9\n"
                                                "    }\n}\n"));
    QVERIFY(QFile::remove(path));
    QVERIFY(!document.saveCfg(path));
    QVERIFY(!QFile::exists(path));
    QVERIFY(!document.saveCfg(m_dir.filePath("config")));
}

void TestDocuments::failedSaveKeepsTheOldFile()
{
    const QByteArray old = R"({"a": {"b": 1}})";
    m_dir.write(systemFile, old);
    ConfigBase document;
    QVERIFY(document.loadCfg(m_dir.filePath(systemFile)));
    QVERIFY(document.setValue("a", "c", QString(100000, QChar(u'x'))));
    QCOMPARE(onAFullDisk([&] { return document.saveCfg(m_dir.filePath(systemFile)) ? 1 : 0; }), 0);
    QCOMPARE(m_dir.read(systemFile), old);

    // A pipe is only written: reading it first would wait for a writer.
    const QByteArray pipe = QFile::encodeName(m_dir.filePath("pipe"));
    QCOMPARE(::mkfifo(pipe.constData(), 0600), 0);
    std::string written;
    std::thread reader([&] {
        std::ifstream in(pipe.constData());
        written.assign(std::istreambuf_iterator<char>(in), {});
    });
    QVERIFY(document.saveCfg(m_dir.filePath("pipe")));
    reader.join();
    QCOMPARE(QByteArray::fromStdString(written), document.getCfgJson().toUtf8());
}

void TestDocuments::managerLoadsBothDocumentsOnce()
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
    QCOMPARE(loaded->value("Tunnel", "Port", 0).toInt(), 1);
    m_dir.writeSystemCfg({{"other", 1}});
    m_dir.writePassportCfg({{"other", 1}});
    QVERIFY(manager.init(m_dir.filePath(systemFile)));
    QVERIFY(manager.init());
    QCOMPARE(manager.systemConfig(), loaded);
    QVERIFY(!manager.init(dir.filePath("missing")));
}

void TestDocuments::managerLoadsPathAsGiven()
{
    m_dir.writeSystemCfg({{"a", 1}});
    m_dir.writePassportCfg({{"a", 1}});
    // Below the application a file is found, but it is the working directory that counts.
    const QDir application(QCoreApplication::applicationDirPath());
    const QTemporaryDir below(application.filePath("documents-XXXXXX"));
    const QString relative = application.relativeFilePath(below.filePath("SystemCfg.cfg"));
    QVERIFY(QFile::copy(m_dir.filePath(systemFile), below.filePath("SystemCfg.cfg")));
    const QString workingDirectory = QDir::currentPath();
    QVERIFY(QDir::setCurrent(m_dir.filePath("config")));

    ConfigMgr found;
    QVERIFY(found.fileExists(relative));
    QVERIFY(!found.init(relative) && !found.systemConfig());
    QVERIFY(found.init("SystemCfg.cfg")); // and the other document beside it
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
    std::shared_ptr<ConfigBase> seen[4];
    std::vector<std::thread> threads;
    for (auto &document : seen) {
        threads.emplace_back([&] {
            manager.init(m_dir.filePath(systemFile));
            document = manager.systemConfig();
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    for (const auto &document : seen)
        QVERIFY(document && document == manager.systemConfig());
}

QTEST_GUILESS_MAIN(TestDocuments)

#include "tst_documents.moc"
