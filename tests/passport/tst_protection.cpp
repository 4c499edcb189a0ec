// SPDX-License-Identifier: MIT
#include "crypto/EDData.h"
#include "passport/Passport.h"
#include "support/LogCapture.h"
#include "support/PassportDirectory.h"
#include "support/Rows.h"
#include "support/Threads.h"

#include <QtCore/QTextCodec>

#include <atomic>
#include <iostream>
#include <sstream>

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

/// The facade's protected storage: encodings, results on failure, files.
class tst_Protection : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void comesBackWithItsPadding_data()
    {
        const auto row = columns<QString>("text");
        row("15", QString(15, 'b'));
        row("not ASCII, 16 bytes", "äöüßäöüß");
        row("zeros inside and at the end", QString::fromUtf8("a\0b\0\0", 5));
        row("outside the first plane", "😀");
    }

    void comesBackWithItsPadding()
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

    void comesBackFromFiles()
    {
        const LogCapture quiet;
        QString text;
        QVERIFY(passport.serializeFile("secret", dir.filePath("file")));
        std::ostringstream output;
        std::streambuf *former = std::cout.rdbuf(output.rdbuf());
        const bool read = passport.deserializeFile(dir.filePath("file"), text);
        std::cout.rdbuf(former);
        QVERIFY(read);
        QCOMPARE(text, decoded(padded("secret")));
        QCOMPARE(output.str(), "decryptedBytes000:" + padded("secret") + '\n');

        QVERIFY(passport.setFileContent(dir.filePath("file"), R"({"k":"v"})")); // shorter
        QCOMPARE(dir.read("file"), QByteArray(R"({"k":"v"})"));
        QCOMPARE(passport.getFileContentObj(dir.filePath("file")), (QJsonObject{{"k", "v"}}));
    }

    void leavesResultsAloneOnFailure()
    {
        const LogCapture quiet;
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
    }

    void logsEveryStepOfSerializeData()
    {
        const LogCapture log;
        QVERIFY(passport.serializeData({}, dir.filePath("file")));
        QVERIFY(!passport.serializeData({}, dir.filePath("missing/file")));
        QCOMPARE(log.lines().join('\n') + '\n', textOf(QFINDTESTDATA("serializing.txt")));
    }

    void usesTheStatedEncodings()
    {
        const LogCapture quiet;
        QTextCodec *const before = QTextCodec::codecForLocale();
        const auto restored = qScopeGuard([before] { QTextCodec::setCodecForLocale(before); });
        QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-1"));
        const QString umlaut = QString::fromUtf8("ä");
        // In local 8-bit on disk, of which macOS takes UTF-8 alone.
        const QString path = dir.filePath(QSysInfo::kernelType() == "darwin" ? "a" : umlaut);
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

    void isUsedFromSeveralThreads()
    {
        std::atomic<int> good{0};
        inThreads(4, [&](int thread) {
            const std::string text(std::size_t(100 + thread), char('a' + thread));
            for (int i = 0; i < 200; ++i) {
                std::string protectedText, plain;
                good += passport.serializeString(text, protectedText) &&
                        passport.deserializeString(protectedText, plain) && plain == padded(text);
            }
        });
        QCOMPARE(good.load(), 800);
    }

private:
    const PassportDirectory dir;
    Passport passport;
};

QTEST_GUILESS_MAIN(tst_Protection)
#include "tst_protection.moc"
