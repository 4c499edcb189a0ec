// SPDX-License-Identifier: MIT
#if defined(__aarch64__)

#include "crypto/kernels/Routines_p.h"

#include <arm_neon.h>

// Loads and stores that interleave put the first, second, third (and fourth) byte of 16 groups into
// a register each, and table look-ups over 64 bytes do the rest.

namespace VelqorPassPort::Kernels::Arm64 {

namespace {

constexpr std::size_t Characters = 64; // of 16 groups
constexpr std::size_t Bytes = 48;      // that they stand for
constexpr Byte X = 0xff;               // not of the alphabet

constexpr Byte Alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// The values of the characters 0 to 63 and of 64 to 127.
constexpr Byte LowValues[] = {X,  X,  X,  X,  X,  X,  X,  X,  X,  X,  X, X,  X, X, X, X,  //
                              X,  X,  X,  X,  X,  X,  X,  X,  X,  X,  X, X,  X, X, X, X,  //
                              X,  X,  X,  X,  X,  X,  X,  X,  X,  X,  X, 62, X, X, X, 63, //
                              52, 53, 54, 55, 56, 57, 58, 59, 60, 61, X, X,  X, X, X, X};
constexpr Byte HighValues[] = {X,  0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 14, //
                               15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25, X,  X,  X,  X,  X,  //
                               X,  26, 27, 28, 29, 30, 31, 32, 33, 34, 35, 36, 37, 38, 39, 40, //
                               41, 42, 43, 44, 45, 46, 47, 48, 49, 50, 51, X,  X,  X,  X,  X};

inline uint8x16x4_t table(const Byte *bytes)
{
    return {{vld1q_u8(bytes), vld1q_u8(bytes + 16), vld1q_u8(bytes + 32), vld1q_u8(bytes + 48)}};
}

/// A look-up past the end of the first table gives 0, one that falls in neither half keeps X.
inline uint8x16_t valuesOf(const uint8x16x4_t &low, const uint8x16x4_t &high, uint8x16_t characters)
{
    const uint8x16_t kept = vqtbx4q_u8(vdupq_n_u8(X), low, characters);
    return vqtbx4q_u8(kept, high, veorq_u8(characters, vdupq_n_u8(64)));
}

} // namespace

void base64Encode(const Byte *in, std::size_t size, char *out)
{
    const uint8x16x4_t alphabet = table(Alphabet);
    const uint8x16_t sixBits = vdupq_n_u8(0x3f);
    for (; size >= Bytes; size -= Bytes, in += Bytes, out += Characters) {
        const uint8x16x3_t bytes = vld3q_u8(in);
        const uint8x16_t first = vshrq_n_u8(bytes.val[0], 2);
        const uint8x16_t second = vsliq_n_u8(vshrq_n_u8(bytes.val[1], 4), bytes.val[0], 4);
        const uint8x16_t third = vsliq_n_u8(vshrq_n_u8(bytes.val[2], 6), bytes.val[1], 2);
        const uint8x16x4_t text = {{vqtbl4q_u8(alphabet, first),
                                    vqtbl4q_u8(alphabet, vandq_u8(second, sixBits)),
                                    vqtbl4q_u8(alphabet, vandq_u8(third, sixBits)),
                                    vqtbl4q_u8(alphabet, vandq_u8(bytes.val[2], sixBits))}};
        vst4q_u8(reinterpret_cast<Byte *>(out), text);
    }
    Portable::base64Encode(in, size, out);
}

std::size_t base64Decode(const char *in, std::size_t size, Byte *out)
{
    const Byte *start = out;
    const uint8x16x4_t low = table(LowValues);
    const uint8x16x4_t high = table(HighValues);
    for (; size >= Characters; size -= Characters, in += Characters, out += Bytes) {
        const uint8x16x4_t text = vld4q_u8(reinterpret_cast<const Byte *>(in));
        const uint8x16_t first = valuesOf(low, high, text.val[0]);
        const uint8x16_t second = valuesOf(low, high, text.val[1]);
        const uint8x16_t third = valuesOf(low, high, text.val[2]);
        const uint8x16_t fourth = valuesOf(low, high, text.val[3]);
        if (vmaxvq_u8(vorrq_u8(vorrq_u8(first, second), vorrq_u8(third, fourth))) == X)
            break;
        const uint8x16x3_t bytes = {{vsliq_n_u8(vshrq_n_u8(second, 4), first, 2),
                                     vsliq_n_u8(vshrq_n_u8(third, 2), second, 4),
                                     vsliq_n_u8(fourth, third, 6)}};
        vst3q_u8(out, bytes);
    }
    return static_cast<std::size_t>(out - start) + Portable::base64Decode(in, size, out);
}

} // namespace VelqorPassPort::Kernels::Arm64

#endif
