#include "crypto/AESEncryption.h"
#include "support/Rows.h"

#include <stdexcept>

namespace {

std::string fromHex(const char *hex)
{
    return QByteArray::fromHex(hex).toStdString();
}

constexpr char Key128[] = "a 16-byte secret";
constexpr char Vector[] = "initial 16 bytes";

} // namespace

Q_DECLARE_METATYPE(std::string)

class TestAes : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void publishedVectors_data();
    void publishedVectors();
    void roundStepsComposeTheCipher();
    void paddings_data();
    void paddings();
    void paddingsThatCannotBeRemoved();
    void shortLastPiece();
    void wrongVector();
    void unknownEnumerationValues();
    void keyLengths();
};

void TestAes::publishedVectors_data()
{
    const auto row = columns<int, std::string, std::string, std::string, std::string>(
        "mode", "key", "iv", "text", "data");

    // FIPS 197, appendix C.
    const std::string fipsKey =
        fromHex("000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f");
    const std::string fipsText = fromHex("00112233445566778899aabbccddeeff");
    const char *fipsData[] = {"69c4e0d86a7b0430d8cdb78070b4c55a",
                              "dda97ca4864cdfe06eaf70a0ec0d7191",
                              "8ea2b7ca516745bfeafc49904b496089"};
    for (std::size_t kind = 0; kind < 3; ++kind)
        row("FIPS 197", 0, fipsKey.substr(0, 16 + 8 * kind), {}, fipsText, fromHex(fipsData[kind]));

    // SP 800-38A, appendix F: the four blocks of each mode under keys of 128, 192 and 256 bits.
    const char *keys[] = {"2b7e151628aed2a6abf7158809cf4f3c",
                          "8e73b0f7da0e6452c810f32b809079e562f8ead2522c6b7b",
                          "603deb1015ca71be2b73aef0857d77811f352c073b6108d72d9810a30914dff4"};
    const std::string iv = fromHex("000102030405060708090a0b0c0d0e0f");
    const std::string text =
        fromHex("6bc1bee22e409f96e93d7e117393172aae2d8a571e03ac9c9eb76fac45af8e51"
                "30c81c46a35ce411e5fbc1191a0a52eff69f2445df4f9b17ad2b417be66c3710");
    const char *modes[] = {"SP 800-38A ECB", "SP 800-38A CBC", "SP 800-38A CFB", "SP 800-38A OFB"};
    const char *data[4][3] = {
        {"3ad77bb40d7a3660a89ecaf32466ef97f5d3d58503b9699de785895a96fdbaaf"
         "43b1cd7f598ece23881b00e3ed0306887b0c785e27e8ad3f8223207104725dd4",
         "bd334f1d6e45f25ff712a214571fa5cc974104846d0ad3ad7734ecb3ecee4eef"
         "ef7afd2270e2e60adce0ba2face6444e9a4b41ba738d6c72fb16691603c18e0e",
         "f3eed1bdb5d2a03c064b5a7e3db181f8591ccb10d410ed26dc5ba74a31362870"
         "b6ed21b99ca6f4f9f153e7b1beafed1d23304b7a39f9f3ff067d8d8f9e24ecc7"},
        {"7649abac8119b246cee98e9b12e9197d5086cb9b507219ee95db113a917678b2"
         "73bed6b8e3c1743b7116e69e222295163ff1caa1681fac09120eca307586e1a7",
         "4f021db243bc633d7178183a9fa071e8b4d9ada9ad7dedf4e5e738763f69145a"
         "571b242012fb7ae07fa9baac3df102e008b0e27988598881d920a9e64f5615cd",
         "f58c4c04d6e5f1ba779eabfb5f7bfbd69cfc4e967edb808d679f777bc6702c7d"
         "39f23369a9d9bacfa530e26304231461b2eb05e2c39be9fcda6c19078c6a9d1b"},
        {"3b3fd92eb72dad20333449f8e83cfb4ac8a64537a0b3a93fcde3cdad9f1ce58b"
         "26751f67a3cbb140b1808cf187a4f4dfc04b05357c5d1c0eeac4c66f9ff7f2e6",
         "cdc80d6fddf18cab34c25909c99a417467ce7f7f81173621961a2b70171d3d7a"
         "2e1e8a1dd59b88b1c8e60fed1efac4c9c05f9f9ca9834fa042ae8fba584b09ff",
         "dc7e84bfda79164b7ecd8486985d386039ffed143b28b1c832113c6331e5407b"
         "df10132415e54b92a13ed0a8267ae2f975a385741ab9cef82031623d55b1e471"},
        {"3b3fd92eb72dad20333449f8e83cfb4a7789508d16918f03f53c52dac54ed825"
         "9740051e9c5fecf64344f7a82260edcc304c6528f659c77866a510d9c1d6ae5e",
         "cdc80d6fddf18cab34c25909c99a4174fcc28b8d4c63837c09e81700c1100401"
         "8d9a9aeac0f6596f559c6d4daf59a5f26d9f200857ca6c3e9cac524bd9acc92a",
         "dc7e84bfda79164b7ecd8486985d38604febdc6740d20b3ac88f6ad82a4fb08d"
         "71ab47a086e86eedf39d1c5bba97c4080126141d67f37be8538f5a8be740e484"},
    };
    for (int mode = 0; mode < 4; ++mode) {
        for (int kind = 0; kind < 3; ++kind)
            row(modes[mode], mode, fromHex(keys[kind]), iv, text, fromHex(data[mode][kind]));
    }
}

void TestAes::publishedVectors()
{
    QFETCH(int, mode);
    QFETCH(std::string, key);
    QFETCH(std::string, iv);
    QFETCH(std::string, text);
    QFETCH(std::string, data);
    const auto aes = AESEncryption::Aes(key.size() / 8 - 2);
    const auto chaining = AESEncryption::Mode(mode);

    QCOMPARE(AESEncryption::Crypt(aes, chaining, text, key, iv, AESEncryption::ZERO), data);
    QCOMPARE(AESEncryption::Decrypt(aes, chaining, data, key, iv, AESEncryption::ZERO), text);
}

void TestAes::roundStepsComposeTheCipher()
{
    // FIPS 197, appendix B: the state after each step of the first round.
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

void TestAes::paddings_data()
{
    const auto row = columns<int, int, std::string>("padding", "length", "added");
    const std::string zeros(16, '\0');
    row("ZERO 0", 0, 0, {});
    row("ZERO 15", 0, 15, zeros.substr(15));
    row("ZERO 16", 0, 16, {});
    row("ZERO 17", 0, 17, zeros.substr(1));
    row("PKCS7 15", 1, 15, "\x01");
    row("PKCS7 16", 1, 16, std::string(16, '\x10'));
    row("PKCS7 17", 1, 17, std::string(15, '\x0f'));
    row("ISO 15", 2, 15, "\x80");
    row("ISO 16", 2, 16, {});
    row("ISO 17", 2, 17, "\x80" + zeros.substr(2));
    row("unknown 17", 3, 17, zeros.substr(1));
}

void TestAes::paddings()
{
    QFETCH(int, padding);
    QFETCH(int, length);
    QFETCH(std::string, added);
    const AESEncryption aes(AESEncryption::AES_128, AESEncryption::ECB,
                            AESEncryption::Padding(padding));
    const std::string text(std::size_t(length), 't');
    QCOMPARE(aes.getPadding(length, 16), added);
    QCOMPARE(aes.removePadding(text + added), padding < 3 ? text : text + added);
    QCOMPARE(aes.decode(aes.encode(text, Key128, ""), Key128, ""), text + added);
}

void TestAes::paddingsThatCannotBeRemoved()
{
    const auto remove = [](int padding, const std::string &text) {
        return AESEncryption::RemovePadding(text, AESEncryption::Padding(padding));
    };
    const std::string zeros(5, '\0'), count0("ab\0", 3), noMark("ab\0\0", 4);
    QCOMPARE(remove(0, ""), std::string());
    QVERIFY_EXCEPTION_THROWN(remove(0, zeros), std::out_of_range);
    QVERIFY_EXCEPTION_THROWN(remove(1, "ab\x04"), std::out_of_range);
    QVERIFY_EXCEPTION_THROWN(remove(1, std::string(200, '\x80')), std::out_of_range); // negative
    QCOMPARE(remove(1, count0), count0);
    QCOMPARE(remove(2, noMark), noMark);
    QCOMPARE(remove(2, zeros), zeros);
}

void TestAes::shortLastPiece()
{
    const std::string key(32, 'k');
    for (int mode = 0; mode < 4; ++mode) {
        const AESEncryption aes(AESEncryption::AES_256, AESEncryption::Mode(mode),
                                AESEncryption::ZERO);
        // A short last piece is completed; only the modes that work on blocks show it.
        const std::string piece(21, 'd');
        const std::string whole = aes.decode(piece + std::string(11, '\0'), key, Vector);
        const bool blockwise = mode == AESEncryption::ECB || mode == AESEncryption::CBC;
        QCOMPARE(aes.decode(piece, key, Vector), blockwise ? whole : whole.substr(0, piece.size()));
    }
}

void TestAes::wrongVector()
{
    for (const std::size_t size : {0U, 15U, 17U}) {
        const std::string iv(size, 'v');
        for (const auto mode : {AESEncryption::CBC, AESEncryption::CFB, AESEncryption::OFB}) {
            const AESEncryption aes(AESEncryption::AES_128, mode, AESEncryption::PKCS7);
            QCOMPARE(aes.encode("text", Key128, iv), std::string());
            QCOMPARE(aes.decode(std::string(16, 'd'), Key128, iv), std::string());
        }
    }
}

void TestAes::unknownEnumerationValues()
{
    for (const int value : {-1, 4, 1 << 30}) {
        const AESEncryption mode(AESEncryption::AES_128, AESEncryption::Mode(value),
                                 AESEncryption::PKCS7);
        QCOMPARE(mode.encode("text", Key128, Vector), std::string());
        QCOMPARE(mode.decode(std::string(16, 'd'), Key128, Vector), std::string());
        QCOMPARE(AESEncryption::Crypt(AESEncryption::Aes(value), AESEncryption::ECB, "text", Key128,
                                      "", AESEncryption::ZERO),
                 AESEncryption::Crypt(AESEncryption::AES_128, AESEncryption::ECB, "text", Key128,
                                      "", AESEncryption::Padding(value)));
    }
}

void TestAes::keyLengths()
{
    const AESEncryption aes(AESEncryption::AES_192, AESEncryption::CBC, AESEncryption::ZERO);
    const std::string key(24, 'k');
    // The key is looked at before the vector and the text are.
    QVERIFY_EXCEPTION_THROWN(aes.encode("", key.substr(1), ""), std::out_of_range);
    QCOMPARE(aes.encode("text", key + "more", Vector), aes.encode("text", key, Vector));
    QVERIFY_EXCEPTION_THROWN(aes.encodeWithExpanedKey("text", key, Vector), std::out_of_range);
    QVERIFY_EXCEPTION_THROWN(aes.decodeWithExpanedKey("text", key, Vector), std::out_of_range);
}

QTEST_APPLESS_MAIN(TestAes)
#include "tst_aes.moc"
