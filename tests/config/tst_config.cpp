// SPDX-License-Identifier: MIT
#include "config/ConfigInformation.h"
#include "config/ConfigMgr.h"
#include "support/ChildProcess.h"
#include "support/LogCapture.h"
#include "support/PassportDirectory.h"
#include "support/Rows.h"
#include "support/Threads.h"

#include <QtCore/QDir>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtCore/QTextCodec>

#include <sys/stat.h>

namespace {

const QString systemFile = "config/SystemCfg.cfg";
const QString accountFile = "config/account.json";
const QString name = "name";
const QString password = "password";

} // namespace

/// The two configuration documents, their manager, and the small information files.
class TestConfig : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
        m_dir = std::make_unique<PassportDirectory>();
    }

    void refusesWhatIsNoDocument_data()
    {
        const auto row = columns<QByteArray, bool>("content", "loads");
        row("missing", {}, false);
        row("empty object", "{}", false);
        row("array", R"([{"a": 1}])", false);
        row("cut off", "{\"Tunnel\": {\"Port\": 1", false);
        row("byte-order mark", "\xef\xbb\xbf{\"a\": 1}", true);
    }

    void refusesWhatIsNoDocument()
    {
        QFETCH(QByteArray, content);
        QFETCH(bool, loads);
        m_dir->write("good", R"({"Tunnel": {"Port": 1}})");
        if (!content.isEmpty())
            m_dir->write("tried", content);
        ConfigBase document;
        QVERIFY(document.loadCfg(m_dir->filePath("good")));

        QCOMPARE(document.loadCfg(m_dir->filePath("tried")), loads);
        QCOMPARE(document.getCfgJson() != "{\n}\n", loads);
        // Not even with a value set anew is a document saved that did not load.
        QVERIFY(document.setValue("a", "b", 1));
        QCOMPARE(document.saveCfg(m_dir->filePath("good")), loads);
    }

    void findsAndChangesValues()
    {
        m_dir->write(systemFile,
                     R"({"": {"": 1, "Port": 2}, "text": "x", "Tunnel": {"Port": 8, "": 3}})");
        ConfigBase document;
        QVERIFY(document.loadCfg(path()));

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

    void savesToExistingFilesAlone()
    {
        m_dir->writeSystemCfg({{"Tunnel", QJsonObject{{"Port", 8}}}});
        ConfigBase document;
        QVERIFY(document.loadCfg(path()));
        QVERIFY(document.setValue("Tunnel", "Port", 9));
        QVERIFY(document.saveCfg(path()));
        QCOMPARE(m_dir->read(systemFile),
                 QByteArray("{\n    \"Tunnel\": {\n        \"Port\": 9\n    }\n}\n"));
        QVERIFY(QFile::remove(path()));
        QVERIFY(!document.saveCfg(path()));
        QVERIFY(!QFile::exists(path()));
        QVERIFY(!document.saveCfg(m_dir->filePath("config")));

        // Opening a pipe would wait for its other end.
        const QString pipe = m_dir->filePath("pipe");
        QCOMPARE(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
        QVERIFY(!document.saveCfg(pipe));
        QVERIFY(!g_setConfigInformation("key", "value", pipe));
        QVERIFY(g_getConfigInformation(pipe).isEmpty());
    }

    void fullDiskKeepsTheOldFile()
    {
        const QByteArray old = R"({"a": {"b": 1}})";
        m_dir->write(systemFile, old);
        // One text fails when it is written, the other when what was buffered is.
        const QString tooLong(100000, QChar(u'x')), buffered(10000, QChar(u'x'));
        ConfigBase document;
        QVERIFY(document.loadCfg(path()));
        QVERIFY(document.setValue("a", "c", buffered));
        QCOMPARE(onAFullDisk([&] { return document.saveCfg(path()) ? 1 : 0; }), 0);
        QCOMPARE(m_dir->read(systemFile), old);
        // Of an information file it is said that it could be opened.
        QCOMPARE(onAFullDisk([&] { return int(g_setConfigInformation(name, tooLong, path())); }),
                 1);
        QCOMPARE(m_dir->read(systemFile), old);
    }

    void managerLoadsBothDocumentsOnce()
    {
        ConfigMgr manager;
        QVERIFY(!manager.init(path()));
        m_dir->writeSystemCfg({{"Tunnel", QJsonObject{{"Port", 1}}}});
        QVERIFY(!manager.init(path()));
        QVERIFY(manager.systemConfig());
        QVERIFY(!manager.passportConfig());

        m_dir->writePassportCfg({{"hub", QJsonObject()}});
        std::shared_ptr<ConfigBase> seen[4];
        inThreads(4, [&](int thread) {
            manager.init(path());
            seen[thread] = manager.systemConfig();
        });
        for (const auto &document : seen)
            QVERIFY(document && document == manager.systemConfig());
        QVERIFY(manager.passportConfig());
        QCOMPARE(manager.systemConfig()->value("Tunnel", "Port", 0).toInt(), 1);
        QVERIFY(manager.init());
        QCOMPARE(manager.systemConfig(), seen[0]);
        QVERIFY(!manager.init(m_dir->filePath("missing")));
    }

    void managerLoadsPathAsGiven()
    {
        m_dir->writeSystemCfg({{"a", 1}});
        m_dir->writePassportCfg({{"a", 1}});
        // Below the application a file is found, but it is the working directory that counts.
        const QDir application(QCoreApplication::applicationDirPath());
        const QTemporaryDir below(application.filePath("documents-XXXXXX"));
        const QString relative = application.relativeFilePath(below.filePath("SystemCfg.cfg"));
        QVERIFY(QFile::copy(path(), below.filePath("SystemCfg.cfg")));
        const QString workingDirectory = QDir::currentPath();
        QVERIFY(QDir::setCurrent(m_dir->filePath("config")));

        ConfigMgr found;
        QVERIFY(found.fileExists(relative));
        QVERIFY(!found.init(relative) && !found.systemConfig());
        QVERIFY(found.init("SystemCfg.cfg")); // and the other document beside it
        QVERIFY(QDir::setCurrent(workingDirectory));
    }

    void managerLoadsFixedLocations()
    {
        QDir fixed(QCoreApplication::applicationDirPath() + "/passport");
        QVERIFY(!fixed.exists());
        QVERIFY(!ConfigMgr().init());
        m_dir->writeSystemCfg({{"a", 1}});
        m_dir->writePassportCfg({{"b", 2}});
        QVERIFY(QFile::link(m_dir->path(), fixed.path()));
        ConfigMgr manager;
        const bool loaded = manager.init();
        QVERIFY(QFile::remove(fixed.path()));
        QVERIFY(loaded);
        QCOMPARE(manager.systemConfig()->rawValue("a", 0).toInt(), 1);
        QCOMPARE(manager.passportConfig()->rawValue("b", 0).toInt(), 2);
    }

    void informationIsCreatedAndUpdated()
    {
        QCOMPARE(g_getConfigInformation(account()), QJsonObject());
        QVERIFY(!QFile::exists(account()));
        QVERIFY(g_setConfigInformation(password, "a\r\nb\t\"", account()));
        QCOMPARE(stored(password), "a\r\nb\t\"");

        m_dir->write(accountFile, R"({"password": {"a": "b"}, "times": [1, 2.5], "keep": true})");
        QVERIFY(g_setConfigInformation(password, "new", account()));
        const QJsonObject all{{password, "new"}, {"times", QJsonArray{1, 2.5}}, {"keep", true}};
        QCOMPARE(g_getConfigInformation(account()), all);
    }

    void contentThatIsNoObjectIsReplaced()
    {
        // A byte-order mark's last byte and the brace are one GBK character.
        for (const QByteArray &content :
             {QByteArray(), QByteArray(R"(["a"])"), QByteArray("{\"name\": \"al"),
              QByteArray("\xef\xbb\xbf{\"a\": \"b\"}")}) {
            m_dir->write(accountFile, content);
            QCOMPARE(g_getConfigInformation(account()), QJsonObject());
            QVERIFY(g_setConfigInformation(name, "alice", account()));
            QCOMPARE(m_dir->read(accountFile), QByteArray("{\n    \"name\": \"alice\"\n}\n"));
        }
    }

    void readsGbkAndWritesLocalText()
    {
        if (!QTextCodec::codecForName("GBK"))
            QSKIP("this Qt has no GBK codec: information files are read as UTF-8");
        // A wide space is no JSON, and only reading takes it away.
        m_dir->write(accountFile, "\xa1\xa1{\"name\": \"\xd6\xd0\xce\xc4\"}\n");
        QCOMPARE(stored(name), "\u4e2d\u6587");

        // The other member is decoded as GBK and written as UTF-8, which the next reading decodes
        // again.
        m_dir->write(accountFile, "{\"name\": \"\xd6\xd0\xce\xc4\"}\n");
        QVERIFY(g_setConfigInformation(password, "\u00e9", account()));
        QVERIFY(m_dir->read(accountFile).contains("\"\xc3\xa9\""));
        QVERIFY(m_dir->read(accountFile).contains("\"\xe4\xb8\xad\xe6\x96\x87\""));
        QCOMPARE(stored(password), "\u8305");

        QFile::remove(account());
        QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-1"));
        QVERIFY(g_setConfigInformation(password, "p\u00e9\u20ac", account()));
        QCOMPARE(m_dir->read(accountFile), QByteArray("{\n    \"password\": \"p\xe9?\"\n}\n"));
    }

    void complainsOnlyWhereItCannotWrite()
    {
        const LogCapture log;
        QVERIFY(!g_setConfigInformation(name, "alice", m_dir->filePath("config")));
        QVERIFY(!ConfigBase().loadCfg(m_dir->filePath("missing")));
        QCOMPARE(log.lines(), QStringList());
        QVERIFY(!ConfigBase().loadCfg(m_dir->filePath("config")));
        QVERIFY(!g_setConfigInformation(name, "alice", m_dir->filePath("missing/account.json")));
        QCOMPARE(log.lines().size(), 2);
        QVERIFY(!QFile::exists(m_dir->filePath("missing")));
    }

    void threadsLoseNoInformation()
    {
        constexpr int rounds = 50;
        inThreads(4, [this](int thread) {
            for (int round = 0; round < rounds; ++round) {
                const QString key = QStringLiteral("%1.%2").arg(thread).arg(round);
                g_setConfigInformation(key, key, account());
                if (stored(key) != key)
                    return;
            }
        });
        QCOMPARE(g_getConfigInformation(account()).size(), 4 * rounds);
    }

private:
    QString path() const { return m_dir->filePath(systemFile); }
    QString account() const { return m_dir->filePath(accountFile); }
    QString stored(const QString &key) const
    {
        return g_getConfigInformation(account())[key].toString();
    }

    std::unique_ptr<PassportDirectory> m_dir;
};

QTEST_GUILESS_MAIN(TestConfig)
#include "tst_config.moc"
