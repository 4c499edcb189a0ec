#include "config/ConfigInformation.h"
#include "support/ChildProcess.h"
#include "support/LogCapture.h"
#include "support/PassportDirectory.h"

#include <QtTest/QtTest>

#include <thread>
#include <vector>

namespace {

const QString file = "config/account.json";
const QString name = "name";
const QString password = "password";

} // namespace

class TestInformation : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void createsAndUpdatesTheFile();
    void valuesComeBack();
    void contentThatIsNoObject();
    void readsGbkAndWritesLocalText();
    void refusesWhatCannotBeOpened();
    void fullDiskKeepsOtherKeys();
    void threadsLoseNothing();

private:
    QString path() const { return m_dir.filePath(file); }
    QString stored(const QString &key) const
    {
        return g_getConfigInformation(path())[key].toString();
    }

    PassportDirectory m_dir;
};

void TestInformation::init()
{
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    QFile::remove(path());
}

void TestInformation::createsAndUpdatesTheFile()
{
    QCOMPARE(g_getConfigInformation(path()), QJsonObject());
    QVERIFY(!QFile::exists(path()));
    QVERIFY(g_setConfigInformation(password, "secret", path()));
    QCOMPARE(m_dir.read(file), QByteArray("{\n    \"password\": \"secret\"\n}\n"));

    m_dir.write(file, R"({"password": {"was": "an object"}, "times": [1, 2.5], "keep": true})");
    QVERIFY(g_setConfigInformation(password, "new", path()));
    const QJsonObject expected{{password, "new"}, {"times", QJsonArray{1, 2.5}}, {"keep", true}};
    QCOMPARE(g_getConfigInformation(path()), expected);
}

void TestInformation::valuesComeBack()
{
    const QStringList texts{"", R"(a"b\c\"d\\)", "a\r\nb\n", QString(QLatin1String("a\0b", 3)),
                            "  a\t"};
    for (const QString &text : texts)
        QVERIFY(g_setConfigInformation(text, text, path()));
    QCOMPARE(g_getConfigInformation(path()).size(), texts.size());
    for (const QString &text : texts)
        QCOMPARE(stored(text), text);
}

void TestInformation::contentThatIsNoObject()
{
    // A byte-order mark's last byte and the brace are one GBK character.
    for (const QByteArray &content :
         {QByteArray(), QByteArray(R"(["a"])"), QByteArray(R"({"name": "al)"), QByteArray(16, '\0'),
          QByteArray("\xef\xbb\xbf{\"a\": \"b\"}")}) {
        m_dir.write(file, content);
        QCOMPARE(g_getConfigInformation(path()), QJsonObject());
        QCOMPARE(m_dir.read(file), content);
        QVERIFY(g_setConfigInformation(name, "alice", path()));
        QCOMPARE(m_dir.read(file), QByteArray("{\n    \"name\": \"alice\"\n}\n"));
    }
}

void TestInformation::readsGbkAndWritesLocalText()
{
    if (!QTextCodec::codecForName("GBK"))
        QSKIP("this Qt has no GBK codec: information files are read as UTF-8");
    m_dir.write(file, "\n {\"name\": \"\xd6\xd0\xce\xc4\"}\n");
    QCOMPARE(stored(name), "\u4e2d\u6587");

    // The other member is decoded as GBK and written as UTF-8, which the next reading decodes
    // again.
    QVERIFY(g_setConfigInformation(password, "\u00e9", path()));
    QVERIFY(m_dir.read(file).contains("\"\xc3\xa9\""));
    QVERIFY(m_dir.read(file).contains("\"\xe4\xb8\xad\xe6\x96\x87\""));
    QCOMPARE(stored(password), "\u8305");

    QFile::remove(path());
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-1"));
    QVERIFY(g_setConfigInformation(password, "p\u00e9\u20ac", path()));
    QCOMPARE(m_dir.read(file), QByteArray("{\n    \"password\": \"p\xe9?\"\n}\n"));
}

void TestInformation::refusesWhatCannotBeOpened()
{
    LogCapture log;
    QVERIFY(!g_setConfigInformation(name, "alice", m_dir.filePath("config")));
    QCOMPARE(log.lines(), QStringList());

    const QString nowhere = m_dir.filePath("missing/account.json");
    QVERIFY(!g_setConfigInformation(name, "alice", nowhere));
    QCOMPARE(log.lines(), QStringList("critical writeFileData open file fail \"" + nowhere + '"'));
    QVERIFY(!QFile::exists(m_dir.filePath("missing")));
}

void TestInformation::fullDiskKeepsOtherKeys()
{
    const QByteArray content = R"({"name": "alice"})";
    m_dir.write(file, content);
    const QString tooLong(100000, QLatin1Char('x'));
    QCOMPARE(onAFullDisk([&] { return int(g_setConfigInformation(password, tooLong, path())); }),
             1);
    QCOMPARE(m_dir.read(file), content);
}

void TestInformation::threadsLoseNothing()
{
    constexpr int rounds = 50;
    std::vector<std::thread> threads(4);
    for (size_t thread = 0; thread < threads.size(); ++thread) {
        threads[thread] = std::thread([this, thread] {
            for (int round = 0; round < rounds; ++round) {
                const QString key = QStringLiteral("%1.%2").arg(thread).arg(round);
                g_setConfigInformation(key, key, path());
                if (g_getConfigInformation(path()).value(key) != key)
                    return;
            }
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    QCOMPARE(g_getConfigInformation(path()).size(), 4 * rounds);
}

QTEST_GUILESS_MAIN(TestInformation)

#include "tst_information.moc"
