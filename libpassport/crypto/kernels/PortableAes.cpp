// SPDX-License-Identifier: MIT
#include "crypto/kernels/AesTables_p.h"
#include "crypto/kernels/Routines_p.h"

#include <cstring>

namespace VelqorPassPort::Kernels {

namespace {

using Word = std::uint32_t; // one column of the state, row 0 in the lowest byte
using WordTable = std::array<Word, 256>;
using RoundTables = std::array<WordTable, 4>; // one per row

/// What a byte of each row adds to its column after S-box and MixColumns, whose first matrix column
/// is given by the four factors.
constexpr RoundTables makeRoundTables(const ByteTable &box, const std::array<unsigned, 4> &factors)
{
    RoundTables tables{};
    for (unsigned i = 0; i < 256; ++i) {
        for (unsigned row = 0; row < 4; ++row) {
            const Word product = multiply(box[i], factors[row]);
            for (unsigned shift = 0; shift < 4; ++shift)
                tables[shift][i] |= product << (8 * ((row + shift) % 4));
        }
    }
    return tables;
}

struct Encryption
{
    static constexpr unsigned Shift = 1; // row r comes from r columns to the right
    static constexpr const ByteTable &Box = SBox;
    static constexpr RoundTables Tables = makeRoundTables(SBox, {2, 1, 1, 3});
};

struct Decryption
{
    static constexpr unsigned Shift = 3; // row r comes from r columns to the left
    static constexpr const ByteTable &Box = InverseSBox;
    static constexpr RoundTables Tables = makeRoundTables(InverseSBox, {14, 9, 13, 11});
};

struct State
{
    Word columns[4];
};

inline Word loadWord(const Byte *bytes)
{
    return Word(bytes[0]) | Word(bytes[1]) << 8 | Word(bytes[2]) << 16 | Word(bytes[3]) << 24;
}

inline void storeWord(Word word, Byte *bytes)
{
    for (unsigned row = 0; row < 4; ++row)
        bytes[row] = static_cast<Byte>(word >> (8 * row));
}

inline State load(const Byte *in)
{
    return {{loadWord(in), loadWord(in + 4), loadWord(in + 8), loadWord(in + 12)}};
}

inline void store(const State &state, Byte *out)
{
    for (unsigned column = 0; column < 4; ++column)
        storeWord(state.columns[column], out + 4 * column);
}

inline State operator^(const State &left, const State &right)
{
    return {{left.columns[0] ^ right.columns[0], left.columns[1] ^ right.columns[1],
             left.columns[2] ^ right.columns[2], left.columns[3] ^ right.columns[3]}};
}

template <typename Direction, unsigned Column>
inline Byte shifted(const State &state, unsigned row)
{
    return static_cast<Byte>(state.columns[(Column + row * Direction::Shift) % 4] >> (8 * row));
}

template <typename Direction, unsigned Column>
inline Word roundColumn(const State &state)
{
    const RoundTables &tables = Direction::Tables;
    return tables[0][shifted<Direction, Column>(state, 0)] ^
           tables[1][shifted<Direction, Column>(state, 1)] ^
           tables[2][shifted<Direction, Column>(state, 2)] ^
           tables[3][shifted<Direction, Column>(state, 3)];
}

template <typename Direction, unsigned Column>
inline Word lastColumn(const State &state)
{
    const ByteTable &box = Direction::Box;
    return Word(box[shifted<Direction, Column>(state, 0)]) |
           Word(box[shifted<Direction, Column>(state, 1)]) << 8 |
           Word(box[shifted<Direction, Column>(state, 2)]) << 16 |
           Word(box[shifted<Direction, Column>(state, 3)]) << 24;
}

template <typename Direction>
inline State round(const State &state)
{
    return {{roundColumn<Direction, 0>(state), roundColumn<Direction, 1>(state),
             roundColumn<Direction, 2>(state), roundColumn<Direction, 3>(state)}};
}

template <typename Direction>
inline State lastRound(const State &state)
{
    return {{lastColumn<Direction, 0>(state), lastColumn<Direction, 1>(state),
             lastColumn<Direction, 2>(state), lastColumn<Direction, 3>(state)}};
}

template <typename Direction>
inline State crypt(const RoundKeys &keys, State state)
{
    const Byte *key = keys.bytes.data();
    state = state ^ load(key);
    for (int i = 1; i < keys.rounds; ++i)
        state = round<Direction>(state) ^ load(key += BlockSize);
    return lastRound<Direction>(state) ^ load(key + BlockSize);
}

template <typename Direction>
inline void cryptBlocks(const RoundKeys &keys, const Byte *in, Byte *out, std::size_t blocks)
{
    for (; blocks > 0; --blocks, in += BlockSize, out += BlockSize)
        store(crypt<Direction>(keys, load(in)), out);
}

} // namespace

RoundKeys invertedKeys(const RoundKeys &keys)
{
    RoundKeys inverted;
    inverted.rounds = keys.rounds;
    const auto last = static_cast<std::size_t>(keys.rounds) * BlockSize;
    for (std::size_t at = 0; at <= last; at += BlockSize)
        std::memcpy(&inverted.bytes[at], &keys.bytes[last - at], BlockSize);
    // The decryption tables undo the S-box first; going through the S-box leaves InvMixColumns
    // alone.
    for (std::size_t at = BlockSize; at < last; at += 4) {
        Byte *bytes = &inverted.bytes[at];
        Word mixed = 0;
        for (unsigned row = 0; row < 4; ++row)
            mixed ^= Decryption::Tables[row][SBox[bytes[row]]];
        storeWord(mixed, bytes);
    }
    return inverted;
}

namespace Portable {

void ecbEncrypt(const RoundKeys &keys, const Byte *in, Byte *out, std::size_t blocks)
{
    cryptBlocks<Encryption>(keys, in, out, blocks);
}

void ecbDecrypt(const RoundKeys &keys, const Byte *in, Byte *out, std::size_t blocks)
{
    cryptBlocks<Decryption>(keys, in, out, blocks);
}

void cbcEncrypt(const RoundKeys &keys, Byte *vector, const Byte *in, Byte *out, std::size_t blocks)
{
    State chain = load(vector);
    for (; blocks > 0; --blocks, in += BlockSize, out += BlockSize) {
        chain = crypt<Encryption>(keys, chain ^ load(in));
        store(chain, out);
    }
    store(chain, vector);
}

void cbcDecrypt(const RoundKeys &keys, Byte *vector, const Byte *in, Byte *out, std::size_t blocks)
{
    State chain = load(vector);
    for (; blocks > 0; --blocks, in += BlockSize, out += BlockSize) {
        const State block = load(in);
        store(crypt<Decryption>(keys, block) ^ chain, out);
        chain = block;
    }
    store(chain, vector);
}

void cfbEncrypt(const RoundKeys &keys, Byte *vector, const Byte *in, Byte *out, std::size_t blocks)
{
    State chain = load(vector);
    for (; blocks > 0; --blocks, in += BlockSize, out += BlockSize) {
        chain = crypt<Encryption>(keys, chain) ^ load(in);
        store(chain, out);
    }
    store(chain, vector);
}

void cfbDecrypt(const RoundKeys &keys, Byte *vector, const Byte *in, Byte *out, std::size_t blocks)
{
    State chain = load(vector);
    for (; blocks > 0; --blocks, in += BlockSize, out += BlockSize) {
        const State block = load(in);
        store(crypt<Encryption>(keys, chain) ^ block, out);
        chain = block;
    }
    store(chain, vector);
}

void ofb(const RoundKeys &keys, Byte *vector, const Byte *in, Byte *out, std::size_t blocks)
{
    State chain = load(vector);
    for (; blocks > 0; --blocks, in += BlockSize, out += BlockSize) {
        chain = crypt<Encryption>(keys, chain);
        store(chain ^ load(in), out);
    }
    store(chain, vector);
}

} // namespace Portable

const Kernel *portableKernel()
{
    static constexpr Kernel kernel{"portable",
                                   Portable::ecbEncrypt,
                                   Portable::ecbDecrypt,
                                   Portable::cbcEncrypt,
                                   Portable::cbcDecrypt,
                                   Portable::cfbEncrypt,
                                   Portable::cfbDecrypt,
                                   Portable::ofb,
                                   Portable::base64Encode,
                                   Portable::base64Decode};
    return &kernel;
}

} // namespace VelqorPassPort::Kernels
