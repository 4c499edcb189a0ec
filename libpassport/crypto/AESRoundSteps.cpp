// SPDX-License-Identifier: MIT
#include "crypto/AESEncryption.h"

#include "crypto/kernels/AesTables_p.h"

#include <algorithm>
#include <array>
#include <stdexcept>

// The cipher as FIPS 197 describes it, byte by byte: the reference that the kernels are held
// against.

using VelqorPassPort::Kernels::Byte;
using VelqorPassPort::Kernels::ByteTable;
using VelqorPassPort::Kernels::InverseSBox;
using VelqorPassPort::Kernels::multiply;
using VelqorPassPort::Kernels::SBox;
using VelqorPassPort::Kernels::xtime;

namespace {

constexpr std::size_t BlockSize = 16;

using Word = std::array<Byte, 4>;

Word rotWord(const Word &word)
{
    return {word[1], word[2], word[3], word[0]};
}

Word subWord(const Word &word)
{
    return {SBox[word[0]], SBox[word[1]], SBox[word[2]], SBox[word[3]]};
}

// The state is 4 x 4 bytes, column by column: row r of column c is byte r + 4c. An idle state is
// null.

void substitute(std::string *state, const ByteTable &box)
{
    for (std::size_t i = 0; state && i < BlockSize; ++i)
        state->at(i) = static_cast<char>(box[static_cast<Byte>(state->at(i))]);
}

/// Row r comes from r * step columns to the right.
void rotateRows(std::string *state, std::size_t step)
{
    if (!state)
        return;
    const std::string former = *state;
    for (std::size_t i = 0; i < BlockSize; ++i)
        state->at(i) = former.at((i + 4 * step * (i % 4)) % BlockSize);
}

/// Multiplies every column by the circulant matrix whose first row is given.
void multiplyColumns(std::string *state, const std::array<unsigned, 4> &factors)
{
    if (!state)
        return;
    const std::string former = *state;
    for (std::size_t i = 0; i < BlockSize; ++i) {
        Byte sum = 0;
        for (std::size_t row = 0; row < 4; ++row) {
            const auto byte = static_cast<Byte>(former.at(i - i % 4 + row));
            sum = static_cast<Byte>(sum ^ multiply(byte, factors[(row + 4 - i % 4) % 4]));
        }
        state->at(i) = static_cast<char>(sum);
    }
}

/// Gives the round steps a block for as long as the object lives, and then the former one back.
class StateScope
{
public:
    StateScope(std::string *&state, std::string *block) : m_state(state), m_former(state)
    {
        m_state = block;
    }
    ~StateScope() { m_state = m_former; }
    StateScope(const StateScope &) = delete;
    StateScope &operator=(const StateScope &) = delete;

private:
    std::string *&m_state;
    std::string *m_former;
};

std::string firstBlock(const std::string &block)
{
    if (block.size() < BlockSize)
        throw std::out_of_range("AESEncryption: block too short");
    return block.substr(0, BlockSize);
}

} // namespace

std::string AESEncryption::expandKey(const std::string &key) const
{
    const auto keyLength = static_cast<std::size_t>(m_keyLength);
    const auto keyWords = static_cast<std::size_t>(m_keyWords);
    const auto words = static_cast<std::size_t>(m_expandedKeyLength / m_columns);
    if (key.size() < keyLength)
        throw std::out_of_range("AESEncryption: key too short");
    std::string expanded;
    expanded.reserve(static_cast<std::size_t>(m_expandedKeyLength));
    expanded.append(key, 0, keyLength);
    Byte roundConstant = 1;
    for (std::size_t i = keyWords; i < words; ++i) {
        Word word;
        std::copy_n(expanded.end() - 4, 4, word.begin());
        if (i % keyWords == 0) {
            word = subWord(rotWord(word));
            word[0] = static_cast<Byte>(word[0] ^ roundConstant);
            roundConstant = xtime(roundConstant);
        } else if (keyWords == 8 && i % keyWords == 4) {
            word = subWord(word);
        }
        for (const Byte byte : word)
            expanded += static_cast<char>(expanded[expanded.size() - keyLength] ^ byte);
    }
    return expanded;
}

void AESEncryption::setState(std::string *block)
{
    m_state = block;
}

void AESEncryption::addRoundKey(int round, const std::string &expandedKey)
{
    // A negative round becomes an offset beyond every key.
    const std::size_t offset = BlockSize * static_cast<std::size_t>(round);
    for (std::size_t i = 0; m_state && i < BlockSize; ++i)
        m_state->at(i) = static_cast<char>(m_state->at(i) ^ expandedKey.at(offset + i));
}

void AESEncryption::subBytes()
{
    substitute(m_state, SBox);
}

void AESEncryption::shiftRows()
{
    rotateRows(m_state, 1);
}

void AESEncryption::mixColumns()
{
    multiplyColumns(m_state, {2, 3, 1, 1});
}

void AESEncryption::invSubBytes()
{
    substitute(m_state, InverseSBox);
}

void AESEncryption::invShiftRows()
{
    rotateRows(m_state, 3);
}

void AESEncryption::invInScan3Columns()
{
    multiplyColumns(m_state, {14, 11, 13, 9});
}

std::string AESEncryption::byteXor(const std::string &left, const std::string &right)
{
    std::string result(std::min(left.size(), right.size()), '\0');
    for (std::size_t i = 0; i < result.size(); ++i)
        result[i] = static_cast<char>(left[i] ^ right[i]);
    return result;
}

std::string AESEncryption::cipher(const std::string &expandedKey, const std::string &block)
{
    std::string result = firstBlock(block);
    const StateScope scope(m_state, &result);
    addRoundKey(0, expandedKey);
    for (int round = 1; round < m_rounds; ++round) {
        subBytes();
        shiftRows();
        mixColumns();
        addRoundKey(round, expandedKey);
    }
    subBytes();
    shiftRows();
    addRoundKey(m_rounds, expandedKey);
    return result;
}

std::string AESEncryption::invCipher(const std::string &expandedKey, const std::string &block)
{
    std::string result = firstBlock(block);
    const StateScope scope(m_state, &result);
    addRoundKey(m_rounds, expandedKey);
    for (int round = m_rounds - 1; round > 0; --round) {
        invShiftRows();
        invSubBytes();
        addRoundKey(round, expandedKey);
        invInScan3Columns();
    }
    invShiftRows();
    invSubBytes();
    addRoundKey(0, expandedKey);
    return result;
}
