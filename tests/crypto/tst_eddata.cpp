// SPDX-License-Identifier: MIT
#include "crypto/AESEncryption.h"
#include "crypto/EDData.h"
#include "support/LogCapture.h"
#include "support/Rows.h"

#include "Bytes.h"

#include <QtCore/QTemporaryDir>

#include <iostream>
#include <sstream>

using VelqorPassPort::EDData;

namespace {

// No zero byte among them: a plain C string will do.
constexpr char LibraryKey[] = "\x0B\x05\x11\x02\x27\x0E\x19\x1C\x03\x0A\x26\x07\x13\x22\x06\x18";

std::string encoded(const std::string &bytes)
{
    return EDData().base64_encode(reinterpret_cast<const unsigned char *>(bytes.data()),
                                  static_cast<unsigned>(bytes.size()));
}

} // namespace

Q_DECLARE_METATYPE(std::string)

class TestEDData : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void base64_data()
    {
        const auto row = columns<std::string, std::string>("bytes", "text");
        // RFC 4648, section 10.
        const char *texts[] = {"", "Zg==", "Zm8=", "Zm9v", "Zm9vYg==", "Zm9vYmE=", "Zm9vYmFy"};
        for (std::size_t i = 0; i < 7; ++i)
            row("RFC 4648", std::string("foobar").substr(0, i), texts[i]);
        row("zeros", std::string(2, '\0'), "AAA=");
        row("both signs", "\xfb\xff\xbf", "+/+/");
    }

    void base64()
    {
        QFETCH(std::string, bytes);
        QFETCH(std::string, text);
        QCOMPARE(encoded(bytes), text);
        QCOMPARE(EDData().base64_decode(text), bytes);
        // Without its padding the last group means the same, and one character alone means nothing.
        QCOMPARE(EDData().base64_decode(text.substr(0, text.find('='))), bytes);
        QCOMPARE(EDData().base64_decode(text.substr(0, text.size() / 4 * 4) + "\nZm9v"), bytes);
        if (text.find('=') == std::string::npos)
            QCOMPARE(EDData().base64_decode(text + "Z"), bytes);
    }

    void decodingStopsAtAnyOtherCharacter()
    {
        const std::string bytes = someBytes(150);
        const std::string text = encoded(bytes);
        for (int value = 0; value < 256; ++value) {
            const bool accepted = (value < 128 && isalnum(value)) || value == '+' || value == '/';
            for (std::size_t at = 0; at < text.size(); ++at) {
                std::string changed = text;
                changed[at] = char(value);
                const std::string result = EDData().base64_decode(changed);
                if (accepted)
                    QCOMPARE(result, QByteArray::fromBase64(changed.c_str()).toStdString());
                else
                    QCOMPARE(result, bytes.substr(0, at * 3 / 4));
            }
        }
    }

    // Every value is made of ciphertext under the fixed key: other builds must be able to read it.
    void protectedTextOfEveryLength()
    {
        QCOMPARE(EDData().global_serialize("M"), std::string("iZDzbtBw0l4F6cB5T2D9Kw=="));
        const std::string bytes = someBytes(20000);
        for (std::size_t size = 0; size < bytes.size(); size += size % 6144 < 80 ? 1 : 61) {
            const std::string text = bytes.substr(0, size);
            const std::string result = EDData().global_serialize(text);
            QCOMPARE(result,
                     encoded(AESEncryption::Crypt(AESEncryption::AES_128, AESEncryption::ECB, text,
                                                  LibraryKey, "", AESEncryption::ZERO)));
            QCOMPARE(EDData().global_deserialize(result),
                     text + std::string((16 - size % 16) % 16, '\0'));
        }
    }

    void protectedTextThatIsCut()
    {
        const std::string text = EDData().global_serialize(someBytes(20000));
        for (const std::size_t size :
             {1U, 2U, 21U, 22U, 23U, 24U, 8190U, 8191U, 8192U, 8193U, 8194U, 8195U, 20000U}) {
            const std::string bytes = EDData().base64_decode(text.substr(0, size));
            const std::string expected =
                AESEncryption::Decrypt(AESEncryption::AES_128, AESEncryption::ECB, bytes,
                                       LibraryKey, "", AESEncryption::ZERO);
            QCOMPARE(EDData().global_deserialize(text.substr(0, size)), expected);
            QCOMPARE(EDData().global_deserialize(text.substr(0, size) + '\n' + text), expected);
        }
    }

    void filesKeepEveryByte()
    {
        const LogCapture quiet;
        const QTemporaryDir directory;
        const std::string path = directory.filePath("file").toStdString();
        for (const std::size_t size : {100000U, 0U, 3U}) {
            const std::string bytes = someBytes(size);
            QVERIFY(EDData().writeFile(path, bytes));
            QCOMPARE(EDData().readFile(path), bytes);
        }
        std::ostringstream output;
        std::streambuf *former = std::cout.rdbuf(output.rdbuf());
        const std::string missing = EDData().readFile(path + "/missing");
        std::cout.rdbuf(former);
        QCOMPARE(missing, std::string());
        QCOMPARE(output.str(), std::string("readfile fail!\n"));
        QCOMPARE(EDData().readFile(directory.path().toStdString()), std::string());
    }
};

QTEST_GUILESS_MAIN(TestEDData)
#include "tst_eddata.moc"
