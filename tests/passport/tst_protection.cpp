#include "crypto/EDData.h"
#include "passport/Passport.h"
#include "support/LogCapture.h"
#include "support/PassportDirectory.h"

#include <QtCore/QTextCodec>
#include <QtTest/QtTest>

#include <thread>

using namespace VelqorPassPort;

namespace {

std::string padded(std::string bytes)
{
    bytes.resize((bytes.size() + 15) / 16 * 16);
    return bytes;
}

QString decoded(const std::string &bytes)
{
    return QString::fromUtf8(bytes.data(), int(bytes.size()));
}

} // namespace

/// The facade's protected storage: encodings, results on failure, log lines, files.
class tst_Protection : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void comesBackWithItsPadding_data();
    void comesBackWithItsPadding();
    void comesBackFromFiles();
    void leavesResultsAloneOnFailure();
    void logsEveryStepOfSerializeData();
    void usesTheStatedEncodings();
    void isUsedFromSeveralThreads();

private:
    const PassportDirectory dir;
    Passport passport;
};

void tst_Protection::comesBackWithItsPadding_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("15") << QString(15, 'b');
    QTest::newRow("not ASCII, 16 bytes") << QString::fromUtf8("äöüßäöüß");
    QTest::newRow("zeros inside and at the end") << QString::fromUtf8("a\0b\0\0", 5);
    QTest::newRow("outside the first plane") << QString::fromUtf8("😀");
}

void tst_Protection::comesBackWithItsPadding()
{
    QFETCH(QString, text);
    const std::string bytes = text.toStdString();
    QString protectedText, plain;
    std::string protectedBytes, plainBytes;
    QVERIFY(passport.serializeString(text, protectedText));
    QVERIFY(passport.serializeString(bytes, protectedBytes));
    QCOMPARE(protectedText.toStdString(), protectedBytes);
    QVERIFY(passport.deserializeData(protectedText, plain));
    QCOMPARE(plain, decoded(padded(bytes)));
    QVERIFY(passport.deserializeString(protectedBytes, plainBytes));
    QCOMPARE(plainBytes, padded(bytes));

    const QJsonObject object{{"name", text}};
    QVERIFY(passport.serializeObj(object, protectedText));
    QVERIFY(passport.deserializeData(protectedText, plain));
    QCOMPARE(plain, decoded(padded(QJsonDocument(object).toJson().toStdString())));
}

void tst_Protection::comesBackFromFiles()
{
    const LogCapture quiet;
    QString text;
    QVERIFY(passport.serializeFile("secret", dir.filePath("file")));
    QVERIFY(passport.deserializeFile(dir.filePath("file"), text));
    QCOMPARE(text, decoded(padded("secret")));
    QVERIFY(passport.setFileContent(dir.filePath("file"), R"({"k":"v"})")); // shorter
    QCOMPARE(dir.read("file"), QByteArray(R"({"k":"v"})"));
    QCOMPARE(passport.getFileContentObj(dir.filePath("file")), (QJsonObject{{"k", "v"}}));
}

void tst_Protection::leavesResultsAloneOnFailure()
{
    const LogCapture log;
    const QString missing = dir.filePath("missing");
    QString text = "before";
    std::string bytes = "before", other = "before";
    QVERIFY(!passport.serializeString(QString(), text));
    QVERIFY(!passport.deserializeData("*", text));
    QVERIFY(!passport.serializeFile("", missing));
    QVERIFY(!passport.deserializeFile(missing, text));
    QVERIFY(!passport.setFileContent(missing + "/file", "x"));
    QVERIFY(!passport.setFileContent(dir.path(), "x")); // a directory stays one
    QCOMPARE(text, "before");
    QVERIFY(!passport.serializeString(std::string(), bytes));
    QVERIFY(!passport.deserializeString("", other));
    QVERIFY(bytes.empty() && other.empty()); // byte strings are assigned all the same
    QVERIFY(!QFile::exists(missing) && QFile::exists(dir.path()));
    QCOMPARE(log.lines(),
             QStringList(
                 {"critical serializeData is empty0!", "critical deserializeData is empty3!",
                  "critical serializeData is empty2!",
                  "critical deserializeFile is empty4! \"" + missing + "\" \"\"",
                  "critical writeFileData open file fail", "critical writeFileData open file fail",
                  "critical serializeString is empty0!", "critical deserializeString is empty3!"}));
}

void tst_Protection::logsEveryStepOfSerializeData()
{
    const QStringList start{
        R"(debug serializeData data: "{\n}\n")", "debug mireth01 serializeData serial started",
        "debug mireth01 serializeData write file started",
        "debug mireth01 edData.writeFile start:", "debug mireth01 edData.ofstream declared:"};
    LogCapture log;
    QVERIFY(passport.serializeData({}, dir.filePath("file")));
    QCOMPARE(log.lines(), start + QStringList({"debug mireth01 edData.ofstream opened:",
                                               "debug mireth01 edData.ofstream declared:",
                                               "debug mireth01 edData.ofstream flushed:",
                                               "debug edData.writeFile close file:",
                                               "debug mireth01 serializeData serial finished"}));
    log.clear();
    QVERIFY(!passport.serializeData({}, dir.filePath("missing/file")));
    QCOMPARE(log.lines(), start + QStringList({"debug edData.writeFile open failed:",
                                               "debug mireth01 serializeData serial finished"}));
}

void tst_Protection::usesTheStatedEncodings()
{
    const LogCapture quiet;
    QTextCodec *const before = QTextCodec::codecForLocale();
    const auto restored = qScopeGuard([before] { QTextCodec::setCodecForLocale(before); });
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-1"));
    const QString umlaut = QString::fromUtf8("ä");
    const QString path = dir.filePath(umlaut); // in local 8-bit on disk
    const QByteArray localPath = path.toLocal8Bit();
    const EDData codec;
    const auto plain = [&] {
        return codec.global_deserialize(codec.readFile(localPath.toStdString()));
    };

    QVERIFY(passport.serializeFile(umlaut, path));
    QCOMPARE(plain(), padded("\xC3\xA4"));
    QVERIFY(passport.serializeData({{"k", umlaut}}, path));
    QCOMPARE(plain(), padded("{\n    \"k\": \"\xE4\"\n}\n"));
    QVERIFY(QFile::remove(path)); // while its name can be told
    QVERIFY(passport.setFileContent(dir.filePath("plain"), umlaut + '\n'));
    QCOMPARE(dir.read("plain"), QByteArray("\xE4\n"));
}

void tst_Protection::isUsedFromSeveralThreads()
{
    std::atomic<int> good{0};
    std::vector<std::thread> threads;
    for (std::size_t thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&, thread] {
            const std::string text(100 + thread, char('a' + thread));
            for (int i = 0; i < 200; ++i) {
                std::string protectedText, plain;
                good += passport.serializeString(text, protectedText) &&
                        passport.deserializeString(protectedText, plain) && plain == padded(text);
            }
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    QCOMPARE(good.load(), 800);
}

QTEST_GUILESS_MAIN(tst_Protection)
#include "tst_protection.moc"
