// SPDX-License-Identifier: MIT
#include "crypto/kernels/Routines_p.h"

#if defined(__x86_64__)

#include <cstring>
#include <utility>

#include <immintrin.h>

// The modes whose blocks do not wait for each other, two blocks to a register. What is left over,
// and the chained modes, go to the AES-NI routines.

namespace VelqorPassPort::Kernels::X86 {

namespace {

constexpr std::size_t Lanes = 8;
constexpr std::size_t Step = Lanes * 2 * BlockSize;
constexpr std::size_t StepBlocks = Lanes * 2;
using EveryLane = std::make_index_sequence<Lanes>;

struct Encryption
{
    [[gnu::target("avx2,vaes")]] static __m256i round(__m256i state, __m256i key)
    {
        return _mm256_aesenc_epi128(state, key);
    }
    [[gnu::target("avx2,vaes")]] static __m256i lastRound(__m256i state, __m256i key)
    {
        return _mm256_aesenclast_epi128(state, key);
    }
};

struct Decryption
{
    [[gnu::target("avx2,vaes")]] static __m256i round(__m256i state, __m256i key)
    {
        return _mm256_aesdec_epi128(state, key);
    }
    [[gnu::target("avx2,vaes")]] static __m256i lastRound(__m256i state, __m256i key)
    {
        return _mm256_aesdeclast_epi128(state, key);
    }
};

template <std::size_t... Lane>
[[gnu::target("avx2,vaes")]] inline void load(const Byte *in, __m256i *states,
                                              std::index_sequence<Lane...>)
{
    const auto *words = reinterpret_cast<const __m256i *>(in);
    ((states[Lane] = _mm256_loadu_si256(words + Lane)), ...);
}

template <std::size_t... Lane>
[[gnu::target("avx2,vaes")]] inline void store(Byte *out, const __m256i *states,
                                               std::index_sequence<Lane...>)
{
    auto *words = reinterpret_cast<__m256i *>(out);
    (_mm256_storeu_si256(words + Lane, states[Lane]), ...);
}

template <std::size_t... Lane>
[[gnu::target("avx2,vaes")]] inline void exclusiveOr(__m256i *states, const __m256i *others,
                                                     std::index_sequence<Lane...>)
{
    ((states[Lane] = _mm256_xor_si256(states[Lane], others[Lane])), ...);
}

/// The blocks that stand one block before those at `in`; the first of them is the chain's.
template <std::size_t... Lane>
[[gnu::target("avx2,vaes")]] inline void loadBefore(const Byte *vector, const Byte *in,
                                                    __m256i *states, std::index_sequence<Lane...>)
{
    const auto *blocks = reinterpret_cast<const __m128i *>(in);
    const auto *chain = reinterpret_cast<const __m128i *>(vector);
    states[0] = _mm256_set_m128i(_mm_loadu_si128(blocks), _mm_loadu_si128(chain));
    ((states[Lane + 1] =
          _mm256_loadu_si256(reinterpret_cast<const __m256i *>(blocks + 2 * Lane + 1))),
     ...);
}

template <typename Direction, std::size_t... Lane>
[[gnu::target("avx2,vaes")]] inline void crypt(const RoundKeys &keys, __m256i *states,
                                               std::index_sequence<Lane...>)
{
    const auto *words = reinterpret_cast<const __m128i *>(keys.bytes.data());
    __m256i key = _mm256_broadcastsi128_si256(words[0]);
    ((states[Lane] = _mm256_xor_si256(states[Lane], key)), ...);
    for (int round = 1; round < keys.rounds; ++round) {
        key = _mm256_broadcastsi128_si256(words[round]);
        ((states[Lane] = Direction::round(states[Lane], key)), ...);
    }
    key = _mm256_broadcastsi128_si256(words[keys.rounds]);
    ((states[Lane] = Direction::lastRound(states[Lane], key)), ...);
}

template <typename Direction>
[[gnu::target("avx2,vaes")]] std::size_t ecb(const RoundKeys &keys, const Byte *in, Byte *out,
                                             std::size_t blocks)
{
    const std::size_t size = blocks / StepBlocks * Step;
    for (std::size_t at = 0; at < size; at += Step) {
        __m256i states[Lanes];
        load(in + at, states, EveryLane());
        crypt<Direction>(keys, states, EveryLane());
        store(out + at, states, EveryLane());
    }
    return size;
}

void wideEcbEncrypt(const RoundKeys &keys, const Byte *in, Byte *out, std::size_t blocks)
{
    const std::size_t done = ecb<Encryption>(keys, in, out, blocks);
    ecbEncrypt(keys, in + done, out + done, blocks % StepBlocks);
}

void wideEcbDecrypt(const RoundKeys &keys, const Byte *in, Byte *out, std::size_t blocks)
{
    const std::size_t done = ecb<Decryption>(keys, in, out, blocks);
    ecbDecrypt(keys, in + done, out + done, blocks % StepBlocks);
}

[[gnu::target("avx2,vaes")]] void wideCbcDecrypt(const RoundKeys &keys, Byte *vector,
                                                 const Byte *in, Byte *out, std::size_t blocks)
{
    const Byte *chain = vector;
    for (; blocks >= StepBlocks; blocks -= StepBlocks, in += Step, out += Step) {
        __m256i states[Lanes];
        __m256i before[Lanes];
        load(in, states, EveryLane());
        loadBefore(chain, in, before, std::make_index_sequence<Lanes - 1>());
        crypt<Decryption>(keys, states, EveryLane());
        exclusiveOr(states, before, EveryLane());
        store(out, states, EveryLane());
        chain = in + Step - BlockSize;
    }
    std::memmove(vector, chain, BlockSize);
    cbcDecrypt(keys, vector, in, out, blocks);
}

[[gnu::target("avx2,vaes")]] void wideCfbDecrypt(const RoundKeys &keys, Byte *vector,
                                                 const Byte *in, Byte *out, std::size_t blocks)
{
    const Byte *chain = vector;
    for (; blocks >= StepBlocks; blocks -= StepBlocks, in += Step, out += Step) {
        __m256i states[Lanes];
        __m256i text[Lanes];
        loadBefore(chain, in, states, std::make_index_sequence<Lanes - 1>());
        load(in, text, EveryLane());
        crypt<Encryption>(keys, states, EveryLane());
        exclusiveOr(states, text, EveryLane());
        store(out, states, EveryLane());
        chain = in + Step - BlockSize;
    }
    std::memmove(vector, chain, BlockSize);
    cfbDecrypt(keys, vector, in, out, blocks);
}

} // namespace

} // namespace VelqorPassPort::Kernels::X86

namespace VelqorPassPort::Kernels {

const Kernel *vaesKernel()
{
    static constexpr Kernel kernel{"vaes",
                                   X86::wideEcbEncrypt,
                                   X86::wideEcbDecrypt,
                                   X86::cbcEncrypt,
                                   X86::wideCbcDecrypt,
                                   X86::cfbEncrypt,
                                   X86::wideCfbDecrypt,
                                   X86::ofb,
                                   X86::base64Encode,
                                   X86::base64Decode};
    return X86::hasVaes() ? &kernel : nullptr;
}

} // namespace VelqorPassPort::Kernels

#else

const VelqorPassPort::Kernels::Kernel *VelqorPassPort::Kernels::vaesKernel()
{
    return nullptr;
}

#endif
