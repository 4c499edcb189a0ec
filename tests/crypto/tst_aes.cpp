// SPDX-License-Identifier: MIT
#include "crypto/AESEncryption.h"
#include "support/Rows.h"

#include <stdexcept>

namespace {

std::string fromHex(const QString &hex)
{
    return QByteArray::fromHex(hex.toLatin1()).toStdString();
}

constexpr char Key128[] = "a 16-byte secret";
constexpr char Vector[] = "initial 16 bytes";

} // namespace

Q_DECLARE_METATYPE(std::string)

class TestAes : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void publishedVectors_data()
    {
        const auto row = columns<QStringList>("parts");
        const QStringList lines = textOf(QFINDTESTDATA("vectors.txt")).split('\n');
        for (const QString &line : lines) {
            if (!line.isEmpty() && !line.startsWith('#'))
                row(qPrintable(line.left(40)), line.split(' '));
        }
    }

    void publishedVectors()
    {
        QFETCH(QStringList, parts);
        const std::string key = fromHex(parts[1]), iv = fromHex(parts[2]);
        const std::string text = fromHex(parts[3]), data = fromHex(parts[4]);
        const auto aes = AESEncryption::Aes(key.size() / 8 - 2);
        const auto mode =
            AESEncryption::Mode(QStringList({"ECB", "CBC", "CFB", "OFB"}).indexOf(parts[0]));
        QCOMPARE(AESEncryption::Crypt(aes, mode, text, key, iv, AESEncryption::ZERO), data);
        QCOMPARE(AESEncryption::Decrypt(aes, mode, data, key, iv, AESEncryption::ZERO), text);
    }

    // FIPS 197, appendix B: the state after each step of the first round.
    void roundStepsComposeTheCipher()
    {
        AESEncryption aes(AESEncryption::AES_128, AESEncryption::ECB, AESEncryption::ZERO);
        const std::string expanded = aes.expandKey(fromHex("2b7e151628aed2a6abf7158809cf4f3c"));
        const std::string input = fromHex("3243f6a8885a308d313198a2e0370734");
        std::string block = input;
        aes.subBytes(); // idle: nothing to work on
        aes.setState(&block);
        aes.addRoundKey(0, expanded);
        aes.subBytes();
        QCOMPARE(block, fromHex("d42711aee0bf98f1b8b45de51e415230"));
        aes.shiftRows();
        QCOMPARE(block, fromHex("d4bf5d30e0b452aeb84111f11e2798e5"));
        // A whole block in between leaves the caller's own state alone.
        QCOMPARE(aes.cipher(expanded, input), fromHex("3925841d02dc09fbdc118597196a0b32"));
        aes.mixColumns();
        QCOMPARE(block, fromHex("046681e5e0cb199a48f8d37a2806264c"));
        aes.invInScan3Columns();
        aes.invShiftRows();
        aes.invSubBytes();
        aes.addRoundKey(0, expanded);
        QCOMPARE(block, input);
        QVERIFY_EXCEPTION_THROWN(aes.addRoundKey(11, expanded), std::out_of_range);
        QVERIFY_EXCEPTION_THROWN(aes.addRoundKey(-1, expanded), std::out_of_range);
        QVERIFY_EXCEPTION_THROWN(aes.cipher(expanded, "short"), std::out_of_range);
        QCOMPARE(AESEncryption::byteXor("\x0f\x0f\x0f", "\xf0\x0f"), std::string("\xff\x00", 2));
    }

    void paddings_data()
    {
        const auto row = columns<int, int, std::string>("padding", "length", "added");
        const std::string zeros(16, '\0');
        row("ZERO 15", 0, 15, zeros.substr(15));
        row("ZERO 16", 0, 16, {});
        row("ZERO 17", 0, 17, zeros.substr(1));
        row("PKCS7 0", 1, 0, std::string(16, '\x10')); // a block of nothing but padding
        row("PKCS7 15", 1, 15, "\x01");
        row("PKCS7 16", 1, 16, std::string(16, '\x10'));
        row("ISO 15", 2, 15, "\x80");
        row("ISO 16", 2, 16, {});
        row("ISO 17", 2, 17, "\x80" + zeros.substr(2));
        row("unknown 17", 3, 17, zeros.substr(1));
    }

    void paddings()
    {
        QFETCH(int, padding);
        QFETCH(int, length);
        QFETCH(std::string, added);
        const AESEncryption aes(AESEncryption::AES_128, AESEncryption::ECB,
                                AESEncryption::Padding(padding));
        const std::string text(std::size_t(length), 't');
        QCOMPARE(aes.getPadding(length, 16), added);
        QCOMPARE(aes.getPadding(length, 0), std::string());
        QCOMPARE(aes.removePadding(text + added), padding < 3 ? text : text + added);
        QCOMPARE(aes.decode(aes.encode(text, Key128, ""), Key128, ""), text + added);
    }

    void paddingsThatCannotBeRemoved()
    {
        const auto remove = [](int padding, const std::string &text) {
            return AESEncryption::RemovePadding(text, AESEncryption::Padding(padding));
        };
        const std::string zeros(5, '\0'), count0("ab\0", 3), noMark("ab\0\0", 4);
        QCOMPARE(remove(0, ""), std::string());
        QVERIFY_EXCEPTION_THROWN(remove(0, zeros), std::out_of_range);
        QVERIFY_EXCEPTION_THROWN(remove(1, "ab\x04"), std::out_of_range);
        QVERIFY_EXCEPTION_THROWN(remove(1, std::string(200, '\x80')), std::out_of_range);
        QCOMPARE(remove(1, std::string(200, '\x7f')).size(), std::size_t(200 - 127));
        QCOMPARE(remove(1, count0), count0);
        QCOMPARE(remove(2, noMark), noMark);
        QCOMPARE(remove(2, zeros), zeros);
    }

    void shortLastPiece()
    {
        const std::string key(32, 'k');
        for (int mode = 0; mode < 4; ++mode) {
            const AESEncryption aes(AESEncryption::AES_256, AESEncryption::Mode(mode),
                                    AESEncryption::ZERO);
            // A short last piece is completed; only the modes that work on blocks show it.
            const std::string piece(21, 'd');
            const std::string whole = aes.decode(piece + std::string(11, '\0'), key, Vector);
            const std::size_t shown = mode <= AESEncryption::CBC ? whole.size() : piece.size();
            QCOMPARE(aes.decode(piece, key, Vector), whole.substr(0, shown));
        }
    }

    void worksOnlyWithAKnownModeAndAWholeVector_data()
    {
        const auto row = columns<int, std::string>("mode", "iv");
        for (const int mode : {-1, 4, 1 << 30})
            row("mode", mode, Vector);
        for (const int mode : {1, 2, 3}) {
            row("no vector", mode, "");
            row("short vector", mode, "initial 15 byte");
            row("long vector", mode, "initial 17 bytes.");
        }
    }

    void worksOnlyWithAKnownModeAndAWholeVector()
    {
        QFETCH(int, mode);
        QFETCH(std::string, iv);
        const AESEncryption aes(AESEncryption::AES_128, AESEncryption::Mode(mode),
                                AESEncryption::PKCS7);
        QCOMPARE(aes.encode("text", Key128, iv), std::string());
        QCOMPARE(aes.decode(std::string(16, 'd'), Key128, iv), std::string());
    }

    void takesUnknownKindsForTheSmallest()
    {
        for (const int value : {-1, 3}) {
            const auto kind = AESEncryption::Aes(value);
            const auto padding = AESEncryption::Padding(value);
            QCOMPARE(AESEncryption::Crypt(kind, AESEncryption::ECB, "text", Key128, "", padding),
                     AESEncryption::Crypt(AESEncryption::AES_128, AESEncryption::ECB, "text",
                                          Key128, "", AESEncryption::ZERO));
        }
    }

    void keyLengths()
    {
        const AESEncryption aes(AESEncryption::AES_192, AESEncryption::CBC, AESEncryption::ZERO);
        const std::string key(24, 'k'), almost = aes.expandKey(key).substr(1);
        // The key is looked at before the vector and the text are.
        QVERIFY_EXCEPTION_THROWN(aes.encode("", key.substr(1), ""), std::out_of_range);
        QCOMPARE(aes.encode("text", key + "more", Vector), aes.encode("text", key, Vector));
        QVERIFY_EXCEPTION_THROWN(aes.encodeWithExpanedKey("text", almost, Vector),
                                 std::out_of_range);
        QVERIFY_EXCEPTION_THROWN(aes.decodeWithExpanedKey("text", almost, Vector),
                                 std::out_of_range);
    }
};

QTEST_APPLESS_MAIN(TestAes)
#include "tst_aes.moc"
