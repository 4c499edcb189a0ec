// SPDX-License-Identifier: MIT
#pragma once

#include "../common/Export.h"

#include <string>

/// The block cipher AES (FIPS 197) on byte strings, with four chaining modes (SP 800-38A) and three
/// paddings.
///
/// Any integer may be passed as an enumeration value; what an unknown one means stands beside each
/// enumeration. Two objects never share anything. One object may be used by several threads as long
/// as none of them composes the round steps: these work on the block given to setState(), which
/// stays the caller's. An std::out_of_range reports strings that are too short; nothing else is
/// thrown but std::bad_alloc.
class PASSPORT_EXPORT AESEncryption
{
public:
    /// Key lengths of 16, 24 and 32 bytes. An unknown kind is AES_128.
    enum Aes : int { AES_128 = 0, AES_192 = 1, AES_256 = 2 };
    /// With an unknown mode, encoding and decoding give an empty result.
    enum Mode : int { ECB = 0, CBC = 1, CFB = 2, OFB = 3 };
    /// For a text that lacks n bytes to whole blocks: n zero bytes; n bytes of value n or, when n
    /// is 0, 16 of value 16; nothing when n is 0 or else 0x80 and n - 1 zero bytes. An unknown
    /// padding adds what ZERO adds and removes nothing.
    enum Padding : int { ZERO = 0, PKCS7 = 1, ISO = 2 };

    /// What encode() and decode() work with; a key is given to each call.
    AESEncryption(Aes aes, Mode mode, Padding padding);

    /// encode() of a temporary object.
    static std::string Crypt(Aes aes, Mode mode, const std::string &text, const std::string &key,
                             const std::string &iv, Padding padding);
    /// decode() of a temporary object: the padding is still attached.
    static std::string Decrypt(Aes aes, Mode mode, const std::string &data, const std::string &key,
                               const std::string &iv, Padding padding);
    /// expandKey() of a temporary object.
    static std::string ExpandKey(Aes aes, Mode mode, const std::string &key);
    /// The text without its padding. Throws std::out_of_range for PKCS7 when the last byte, the
    /// only one that is looked at, counts more than the text or is 0x80 or above, and for ZERO when
    /// the text is made of zero bytes alone. An ISO text without its 0x80 stays as it is.
    static std::string RemovePadding(const std::string &text, Padding padding);

    /// Pads and enciphers. The key may be longer than its kind needs; a shorter one throws
    /// std::out_of_range. In all modes but ECB, a vector of other than 16 bytes gives an empty
    /// result.
    std::string encode(const std::string &text, const std::string &key,
                       const std::string &iv) const;
    /// Deciphers and leaves the padding attached. Key and vector as for encode(). A last piece
    /// shorter than a block is completed with zero bytes in ECB and CBC; CFB and OFB give as many
    /// bytes as came.
    std::string decode(const std::string &data, const std::string &key,
                       const std::string &iv) const;

    /// The round keys, 176, 208 or 240 bytes (FIPS 197, 5.2).
    std::string expandKey(const std::string &key) const;
    /// encode() with the result of expandKey(); a shorter one throws std::out_of_range. Callers
    /// know this name by its spelling.
    std::string encodeWithExpanedKey(const std::string &text, const std::string &expandedKey,
                                     const std::string &iv) const;
    /// decode() in the same way.
    std::string decodeWithExpanedKey(const std::string &data, const std::string &expandedKey,
                                     const std::string &iv) const;

    /// The bytes to add to a text of that length; empty for a block size below 1.
    std::string getPadding(int length, int blockSize) const;
    /// The text without its padding. One that cannot end so, such as nothing but zero bytes under
    /// ZERO, throws std::out_of_range.
    std::string removePadding(const std::string &text) const;

    /// The block the round steps work on, at least 16 bytes and owned by the caller; null when
    /// idle. An idle round step does nothing.
    void setState(std::string *block);

    // The round steps (FIPS 197, 5.1 and 5.3), each in place on the block.
    void addRoundKey(int round, const std::string &expandedKey); ///< AddRoundKey
    void subBytes();                                             ///< SubBytes
    void shiftRows();                                            ///< ShiftRows
    void mixColumns();                                           ///< MixColumns
    void invSubBytes();                                          ///< InvSubBytes
    void invShiftRows();                                         ///< InvShiftRows
    void invInScan3Columns(); ///< InvMixColumns; callers know it by this name.

    /// XOR byte by byte over the shorter length.
    static std::string byteXor(const std::string &left, const std::string &right);
    /// A block of 16 bytes through all rounds, composed of the round steps.
    std::string cipher(const std::string &expandedKey, const std::string &block);
    /// A block back through all rounds.
    std::string invCipher(const std::string &expandedKey, const std::string &block);

private:
    int m_columns; // of the state, Nb
    int m_blockSize;
    Aes m_aes;
    Mode m_mode;
    int m_keyWords; // Nk
    int m_keyLength;
    int m_rounds; // Nr
    int m_expandedKeyLength;
    Padding m_padding;
    std::string *m_state = nullptr;
};
