// SPDX-License-Identifier: MIT
#pragma once

#include "crypto/kernels/Kernel_p.h"

namespace VelqorPassPort::Kernels {

using ByteTable = std::array<Byte, 256>;

/// Multiplication by x in GF(2^8) modulo x^8 + x^4 + x^3 + x + 1 (FIPS 197, 4.2.1).
constexpr Byte xtime(Byte value)
{
    return static_cast<Byte>((value << 1) ^ ((value & 0x80) ? 0x1b : 0));
}

/// Multiplication in GF(2^8) (FIPS 197, 4.2).
constexpr Byte multiply(Byte value, unsigned factor)
{
    Byte product = 0;
    for (; factor != 0; factor >>= 1) {
        if (factor & 1U)
            product = static_cast<Byte>(product ^ value);
        value = xtime(value);
    }
    return product;
}

constexpr Byte rotateLeft(Byte value, int bits)
{
    return static_cast<Byte>((value << bits) | (value >> (8 - bits)));
}

/// The S-box: inverse in GF(2^8), then the affine map (FIPS 197, 5.1.1).
constexpr ByteTable makeSBox()
{
    ByteTable box{};
    box[0] = 0x63;
    // 3 generates the field's units and 0xf6 is its inverse: the two powers stay inverse to each
    // other.
    Byte power = 1;
    Byte inverse = 1;
    do {
        power = multiply(power, 0x03);
        inverse = multiply(inverse, 0xf6);
        box[power] = static_cast<Byte>(inverse ^ rotateLeft(inverse, 1) ^ rotateLeft(inverse, 2) ^
                                       rotateLeft(inverse, 3) ^ rotateLeft(inverse, 4) ^ 0x63);
    } while (power != 1);
    return box;
}

constexpr ByteTable makeInverse(const ByteTable &table)
{
    ByteTable inverse{};
    for (unsigned i = 0; i < table.size(); ++i)
        inverse[table[i]] = static_cast<Byte>(i);
    return inverse;
}

inline constexpr ByteTable SBox = makeSBox();
inline constexpr ByteTable InverseSBox = makeInverse(SBox);

} // namespace VelqorPassPort::Kernels
