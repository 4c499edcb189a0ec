#include "config/ConfigInformation.h"
#include "support/ChildProcess.h"
#include "support/LogCapture.h"
#include "support/PassportDirectory.h"

#include <QtTest/QtTest>

#include <csignal>
#include <sys/resource.h>
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
    void valuesComeBack_data();
    void valuesComeBack();
    void contentThatIsNoObject_data();
    void contentThatIsNoObject();
    void readsGbkAndWritesLocalText();
    void refusesWhatCannotBeOpened();
    void leavesUnreadableFilesAlone();
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
    QVERIFY(g_setConfigInformation(name, "alice", path()));
    QVERIFY(g_setConfigInformation(password, "new", path()));
    const QJsonObject expected{
        {name, "alice"}, {password, "new"}, {"times", QJsonArray{1, 2.5}}, {"keep", true}};
    QCOMPARE(g_getConfigInformation(path()), expected);
}

void TestInformation::valuesComeBack_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("empty") << QString();
    QTest::newRow("quotes and backslashes") << QString(R"(a"b\c\"d\\)");
    QTest::newRow("line ends") << "a\r\nb\n";
    QTest::newRow("NUL") << QString(QLatin1String("a\0b", 3));
    QTest::newRow("white space around") << "  a\t";
    QTest::newRow("long") << QString(100000, QLatin1Char('x'));
}

void TestInformation::valuesComeBack()
{
    QFETCH(QString, text);
    QVERIFY(g_setConfigInformation(text, text, path()));
    QVERIFY(g_setConfigInformation(name, "alice", path()));
    QCOMPARE(g_getConfigInformation(path()).size(), 2);
    QCOMPARE(stored(text), text);
}

void TestInformation::contentThatIsNoObject_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("empty file") << QByteArray();
    QTest::newRow("white space") << QByteArray(" \t\r\n ");
    QTest::newRow("array") << QByteArray(R"(["a"])");
    QTest::newRow("cut off") << QByteArray(R"({"name": "al)");
    QTest::newRow("too deep") << QByteArray(R"({"a": )" + QByteArray(100000, '['));
    QTest::newRow("NULs") << QByteArray(16, '\0');
    // The mark's last byte and the brace are one GBK character.
    QTest::newRow("UTF-8 byte-order mark") << QByteArray("\xef\xbb\xbf{\"a\": \"b\"}");
}

void TestInformation::contentThatIsNoObject()
{
    QFETCH(QByteArray, content);
    m_dir.write(file, content);
    QCOMPARE(g_getConfigInformation(path()), QJsonObject());
    QCOMPARE(m_dir.read(file), content);
    QVERIFY(g_setConfigInformation(name, "alice", path()));
    QCOMPARE(m_dir.read(file), QByteArray("{\n    \"name\": \"alice\"\n}\n"));
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
    const QString directory = m_dir.filePath("config");
    QCOMPARE(g_getConfigInformation(directory), QJsonObject());
    QVERIFY(!g_setConfigInformation(name, "alice", directory));
    QCOMPARE(log.lines(), QStringList());

    const QString nowhere = m_dir.filePath("missing/account.json");
    QVERIFY(!g_setConfigInformation(name, "alice", nowhere));
    QCOMPARE(
        log.lines(),
        (QStringList{QStringLiteral("critical writeFileData open file fail \"%1\"").arg(nowhere)}));
    QVERIFY(!QFile::exists(m_dir.filePath("missing")));
}

void TestInformation::leavesUnreadableFilesAlone()
{
    const QByteArray content = R"({"name": "alice"})";
    m_dir.write(file, content);
    QVERIFY(QFile::setPermissions(m_dir.path(), QFile::Permissions(0x7777)));
    const auto refusedWith = [this](QFile::Permissions permissions, int readMembers) {
        QFile::setPermissions(path(), permissions);
        return inChildProcess([this, readMembers] {
            return dropRoot() && g_getConfigInformation(path()).size() == readMembers &&
                           !g_setConfigInformation(name, "bob", path())
                       ? 0
                       : 1;
        });
    };
    QCOMPARE(refusedWith(QFile::WriteOwner | QFile::WriteUser | QFile::WriteOther, 0), 0);
    QCOMPARE(refusedWith(QFile::ReadOwner | QFile::ReadUser | QFile::ReadOther, 1), 0);
    QVERIFY(QFile::setPermissions(path(), QFile::ReadOwner | QFile::WriteOwner));
    QCOMPARE(m_dir.read(file), content);
}

void TestInformation::fullDiskKeepsOtherKeys()
{
    const QByteArray content = R"({"name": "alice"})";
    m_dir.write(file, content);
    QCOMPARE(inChildProcess([this] {
                 const rlimit fullDisk{4096, 4096};
                 std::signal(SIGXFSZ, SIG_IGN);
                 return setrlimit(RLIMIT_FSIZE, &fullDisk) == 0 &&
                                g_setConfigInformation(password, QString(100000, QLatin1Char('x')),
                                                       path())
                            ? 0
                            : 1;
             }),
             0);
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
