// SPDX-License-Identifier: MIT
#include "crypto/kernels/Routines_p.h"

namespace VelqorPassPort::Kernels::Portable {

namespace {

constexpr char Alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint32_t Invalid = 0x80;

using Values = std::array<Byte, 256>;

constexpr Values makeValues()
{
    Values values{};
    for (Byte &value : values)
        value = Invalid;
    for (unsigned i = 0; i < 64; ++i)
        values[static_cast<Byte>(Alphabet[i])] = static_cast<Byte>(i);
    return values;
}

constexpr Values SixBits = makeValues();

std::uint32_t valueOf(char character)
{
    return SixBits[static_cast<Byte>(character)];
}

char characterOf(std::uint32_t bits)
{
    return Alphabet[bits & 0x3f];
}

/// At most 3 characters are left that belong to no whole group, or 4 of which one ends the text.
std::size_t decodeTail(const char *in, std::size_t size, Byte *out)
{
    std::uint32_t bits = 0;
    std::size_t accepted = 0;
    for (; accepted < size && accepted < 3 && valueOf(in[accepted]) != Invalid; ++accepted)
        bits |= valueOf(in[accepted]) << (18 - 6 * accepted);
    if (accepted < 2)
        return 0;
    out[0] = static_cast<Byte>(bits >> 16);
    if (accepted == 3)
        out[1] = static_cast<Byte>(bits >> 8);
    return accepted - 1;
}

} // namespace

void base64Encode(const Byte *in, std::size_t size, char *out)
{
    for (; size >= 3; size -= 3, in += 3, out += 4) {
        const std::uint32_t bits = std::uint32_t(in[0]) << 16 | std::uint32_t(in[1]) << 8 | in[2];
        out[0] = characterOf(bits >> 18);
        out[1] = characterOf(bits >> 12);
        out[2] = characterOf(bits >> 6);
        out[3] = characterOf(bits);
    }
    if (size == 0)
        return;
    const std::uint32_t bits =
        std::uint32_t(in[0]) << 16 | (size == 2 ? std::uint32_t(in[1]) << 8 : 0);
    out[0] = characterOf(bits >> 18);
    out[1] = characterOf(bits >> 12);
    out[2] = size == 2 ? characterOf(bits >> 6) : '=';
    out[3] = '=';
}

std::size_t base64Decode(const char *in, std::size_t size, Byte *out)
{
    const Byte *start = out;
    for (; size >= 4; size -= 4, in += 4, out += 3) {
        const std::uint32_t first = valueOf(in[0]);
        const std::uint32_t second = valueOf(in[1]);
        const std::uint32_t third = valueOf(in[2]);
        const std::uint32_t fourth = valueOf(in[3]);
        if ((first | second | third | fourth) & Invalid)
            break;
        out[0] = static_cast<Byte>(first << 2 | second >> 4);
        out[1] = static_cast<Byte>(second << 4 | third >> 2);
        out[2] = static_cast<Byte>(third << 6 | fourth);
    }
    return static_cast<std::size_t>(out - start) + decodeTail(in, size, out);
}

} // namespace VelqorPassPort::Kernels::Portable
