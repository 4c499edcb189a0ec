// SPDX-License-Identifier: MIT
#include "crypto/kernels/Routines_p.h"

#if defined(__aarch64__)

#include <utility>

#include <arm_neon.h>

// The cipher's intrinsics can be had in a function that asks for them, or where the compiler's
// default CPU includes the extension (macOS). Clang before 16 offers only the latter; without it
// the routines of plain C++ step in.
#if defined(__ARM_FEATURE_AES) || defined(__ARM_FEATURE_CRYPTO) // the latter until Clang 12
#define PASSPORT_TARGET_AES
#elif !defined(__clang__)
#define PASSPORT_TARGET_AES __attribute__((target("+crypto")))
#elif __clang_major__ >= 16
#define PASSPORT_TARGET_AES __attribute__((target("aes")))
#endif

#if defined(PASSPORT_TARGET_AES)

namespace VelqorPassPort::Kernels::Arm64 {

namespace {

constexpr std::size_t Lanes = 8;
constexpr std::size_t Step = Lanes * BlockSize;
using EveryLane = std::make_index_sequence<Lanes>;
using OneLane = std::make_index_sequence<1>;

// These instructions add the round key before the S-box, so that a last key remains to be added.

struct Encryption
{
    PASSPORT_TARGET_AES static uint8x16_t round(uint8x16_t state, uint8x16_t key)
    {
        return vaesmcq_u8(vaeseq_u8(state, key));
    }
    PASSPORT_TARGET_AES static uint8x16_t lastRound(uint8x16_t state, uint8x16_t key)
    {
        return vaeseq_u8(state, key);
    }
};

struct Decryption
{
    PASSPORT_TARGET_AES static uint8x16_t round(uint8x16_t state, uint8x16_t key)
    {
        return vaesimcq_u8(vaesdq_u8(state, key));
    }
    PASSPORT_TARGET_AES static uint8x16_t lastRound(uint8x16_t state, uint8x16_t key)
    {
        return vaesdq_u8(state, key);
    }
};

inline uint8x16_t roundKey(const RoundKeys &keys, int round)
{
    return vld1q_u8(keys.bytes.data() + static_cast<std::size_t>(round) * BlockSize);
}

template <std::size_t... Lane>
inline void load(const Byte *in, uint8x16_t *states, std::index_sequence<Lane...>)
{
    ((states[Lane] = vld1q_u8(in + Lane * BlockSize)), ...);
}

template <std::size_t... Lane>
inline void store(Byte *out, const uint8x16_t *states, std::index_sequence<Lane...>)
{
    (vst1q_u8(out + Lane * BlockSize, states[Lane]), ...);
}

template <std::size_t... Lane>
inline void exclusiveOr(uint8x16_t *states, const uint8x16_t *others, std::index_sequence<Lane...>)
{
    ((states[Lane] = veorq_u8(states[Lane], others[Lane])), ...);
}

template <typename Direction, std::size_t... Lane>
PASSPORT_TARGET_AES inline void crypt(const RoundKeys &keys, uint8x16_t *states,
                                      std::index_sequence<Lane...>)
{
    for (int round = 0; round < keys.rounds - 1; ++round) {
        const uint8x16_t key = roundKey(keys, round);
        ((states[Lane] = Direction::round(states[Lane], key)), ...);
    }
    const uint8x16_t key = roundKey(keys, keys.rounds - 1);
    const uint8x16_t last = roundKey(keys, keys.rounds);
    ((states[Lane] = veorq_u8(Direction::lastRound(states[Lane], key), last)), ...);
}

/// All rounds but the addition of the last key, which the chained modes merge with the first
/// addition of the next block: only the latency of the rounds is left on the chain from block to
/// block.
PASSPORT_TARGET_AES inline uint8x16_t openRounds(const RoundKeys &keys, uint8x16_t state,
                                                 uint8x16_t firstKey)
{
    state = Encryption::round(state, firstKey);
    for (int round = 1; round < keys.rounds - 1; ++round)
        state = Encryption::round(state, roundKey(keys, round));
    return Encryption::lastRound(state, roundKey(keys, keys.rounds - 1));
}

template <typename Direction>
PASSPORT_TARGET_AES void ecb(const RoundKeys &keys, const Byte *in, Byte *out, std::size_t blocks)
{
    for (; blocks >= Lanes; blocks -= Lanes, in += Step, out += Step) {
        uint8x16_t states[Lanes];
        load(in, states, EveryLane());
        crypt<Direction>(keys, states, EveryLane());
        store(out, states, EveryLane());
    }
    for (; blocks > 0; --blocks, in += BlockSize, out += BlockSize) {
        uint8x16_t state = vld1q_u8(in);
        crypt<Direction>(keys, &state, OneLane());
        vst1q_u8(out, state);
    }
}

void ecbEncrypt(const RoundKeys &keys, const Byte *in, Byte *out, std::size_t blocks)
{
    ecb<Encryption>(keys, in, out, blocks);
}

void ecbDecrypt(const RoundKeys &keys, const Byte *in, Byte *out, std::size_t blocks)
{
    ecb<Decryption>(keys, in, out, blocks);
}

PASSPORT_TARGET_AES void cbcEncrypt(const RoundKeys &keys, Byte *vector, const Byte *in, Byte *out,
                                    std::size_t blocks)
{
    const uint8x16_t last = roundKey(keys, keys.rounds);
    const uint8x16_t outer = veorq_u8(roundKey(keys, 0), last);
    uint8x16_t state = veorq_u8(vld1q_u8(vector), last);
    for (; blocks > 0; --blocks, in += BlockSize, out += BlockSize) {
        state = openRounds(keys, state, veorq_u8(outer, vld1q_u8(in)));
        vst1q_u8(out, veorq_u8(state, last));
    }
    vst1q_u8(vector, veorq_u8(state, last));
}

PASSPORT_TARGET_AES void cfbEncrypt(const RoundKeys &keys, Byte *vector, const Byte *in, Byte *out,
                                    std::size_t blocks)
{
    const uint8x16_t first = roundKey(keys, 0);
    const uint8x16_t last = roundKey(keys, keys.rounds);
    uint8x16_t state = vld1q_u8(vector);
    uint8x16_t whitening = vdupq_n_u8(0); // what is missing to make the state the former ciphertext
    for (; blocks > 0; --blocks, in += BlockSize, out += BlockSize) {
        state = openRounds(keys, state, veorq_u8(whitening, first));
        whitening = veorq_u8(last, vld1q_u8(in));
        vst1q_u8(out, veorq_u8(state, whitening));
    }
    vst1q_u8(vector, veorq_u8(state, whitening));
}

PASSPORT_TARGET_AES void ofb(const RoundKeys &keys, Byte *vector, const Byte *in, Byte *out,
                             std::size_t blocks)
{
    const uint8x16_t last = roundKey(keys, keys.rounds);
    const uint8x16_t outer = veorq_u8(roundKey(keys, 0), last);
    uint8x16_t state = veorq_u8(vld1q_u8(vector), last);
    for (; blocks > 0; --blocks, in += BlockSize, out += BlockSize) {
        state = openRounds(keys, state, outer);
        vst1q_u8(out, veorq_u8(state, veorq_u8(last, vld1q_u8(in))));
    }
    vst1q_u8(vector, veorq_u8(state, last));
}

PASSPORT_TARGET_AES void cbcDecrypt(const RoundKeys &keys, Byte *vector, const Byte *in, Byte *out,
                                    std::size_t blocks)
{
    uint8x16_t chain = vld1q_u8(vector);
    for (; blocks >= Lanes; blocks -= Lanes, in += Step, out += Step) {
        uint8x16_t states[Lanes];
        uint8x16_t before[Lanes];
        load(in, states, EveryLane());
        before[0] = chain;
        load(in, before + 1, std::make_index_sequence<Lanes - 1>());
        crypt<Decryption>(keys, states, EveryLane());
        exclusiveOr(states, before, EveryLane());
        store(out, states, EveryLane());
        chain = vld1q_u8(in + Step - BlockSize);
    }
    for (; blocks > 0; --blocks, in += BlockSize, out += BlockSize) {
        const uint8x16_t block = vld1q_u8(in);
        uint8x16_t state = block;
        crypt<Decryption>(keys, &state, OneLane());
        vst1q_u8(out, veorq_u8(state, chain));
        chain = block;
    }
    vst1q_u8(vector, chain);
}

PASSPORT_TARGET_AES void cfbDecrypt(const RoundKeys &keys, Byte *vector, const Byte *in, Byte *out,
                                    std::size_t blocks)
{
    uint8x16_t chain = vld1q_u8(vector);
    for (; blocks >= Lanes; blocks -= Lanes, in += Step, out += Step) {
        uint8x16_t states[Lanes];
        uint8x16_t text[Lanes];
        states[0] = chain;
        load(in, states + 1, std::make_index_sequence<Lanes - 1>());
        load(in, text, EveryLane());
        crypt<Encryption>(keys, states, EveryLane());
        exclusiveOr(states, text, EveryLane());
        store(out, states, EveryLane());
        chain = vld1q_u8(in + Step - BlockSize);
    }
    for (; blocks > 0; --blocks, in += BlockSize, out += BlockSize) {
        const uint8x16_t block = vld1q_u8(in);
        crypt<Encryption>(keys, &chain, OneLane());
        vst1q_u8(out, veorq_u8(chain, block));
        chain = block;
    }
    vst1q_u8(vector, chain);
}

} // namespace

} // namespace VelqorPassPort::Kernels::Arm64

#else

namespace VelqorPassPort::Kernels::Arm64 {
using namespace Portable;
} // namespace VelqorPassPort::Kernels::Arm64

#endif

namespace VelqorPassPort::Kernels {

const Kernel *neonKernel()
{
    static constexpr Kernel kernel{"neon",
                                   Arm64::ecbEncrypt,
                                   Arm64::ecbDecrypt,
                                   Arm64::cbcEncrypt,
                                   Arm64::cbcDecrypt,
                                   Arm64::cfbEncrypt,
                                   Arm64::cfbDecrypt,
                                   Arm64::ofb,
                                   Arm64::base64Encode,
                                   Arm64::base64Decode};
    return Arm64::hasAes() ? &kernel : nullptr;
}

} // namespace VelqorPassPort::Kernels

#else

const VelqorPassPort::Kernels::Kernel *VelqorPassPort::Kernels::neonKernel()
{
    return nullptr;
}

#endif
