// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace VelqorPassPort::Kernels {

using Byte = unsigned char;
constexpr std::size_t BlockSize = 16;

/// The round keys of AES as bytes in the order in which the rounds use them (FIPS 197).
///
/// For deciphering they are those of the equivalent inverse cipher: last round key first, the inner
/// ones passed through InvMixColumns.
struct RoundKeys
{
    static constexpr std::size_t MaxBytes = 15 * BlockSize;

    alignas(16) std::array<Byte, MaxBytes> bytes;
    int rounds;
};

/// Turns the round keys of the cipher into those of the equivalent inverse cipher.
RoundKeys invertedKeys(const RoundKeys &keys);

/// The block and base64 routines of one CPU family.
///
/// All of them are pure functions, callable from any thread. `in` and `out` need no alignment.
/// Nothing is read outside `in`, nothing written outside the room that the length implies.
struct Kernel
{
    /// Blocks that do not depend on each other; `in` and `out` may be the same.
    using Independent = void (*)(const RoundKeys &, const Byte *in, Byte *out, std::size_t blocks);
    /// Chained blocks; `in` and `out` do not overlap. The 16-byte `vector` is left as the vector of
    /// the block that would come next, so that a text can be worked on in pieces.
    using Chained = void (*)(const RoundKeys &, Byte *vector, const Byte *in, Byte *out,
                             std::size_t blocks);

    const char *name;

    Independent ecbEncrypt;
    Independent ecbDecrypt; // with inverted keys
    Chained cbcEncrypt;
    Chained cbcDecrypt; // with inverted keys
    Chained cfbEncrypt;
    Chained cfbDecrypt;
    Chained ofb;

    /// RFC 4648 with "=" padding; writes encodedSize(size) characters.
    void (*base64Encode)(const Byte *in, std::size_t size, char *out);
    /// Decodes up to the first character outside the alphabet and returns the number of bytes.
    /// `out` has room for decodedSize(size) bytes; those behind the returned number hold anything.
    std::size_t (*base64Decode)(const char *in, std::size_t size, Byte *out);
};

constexpr std::size_t encodedSize(std::size_t bytes)
{
    return (bytes + 2) / 3 * 4;
}

constexpr std::size_t decodedSize(std::size_t characters)
{
    return characters / 4 * 3 + (characters % 4) * 3 / 4;
}

/// The size of the whole blocks that hold so many bytes.
constexpr std::size_t paddedSize(std::size_t bytes)
{
    return (bytes + BlockSize - 1) / BlockSize * BlockSize;
}

/// Null where the program runs on another CPU family or the CPU lacks the instructions.
const Kernel *portableKernel(); // never null
const Kernel *aesniKernel();
const Kernel *vaesKernel();
const Kernel *neonKernel();

/// The fastest kernel of this machine, chosen at the first call, safe from any thread and from
/// static initialisers.
const Kernel &activeKernel();

} // namespace VelqorPassPort::Kernels
