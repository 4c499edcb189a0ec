// SPDX-License-Identifier: MIT
#include "crypto/kernels/Routines_p.h"

#if defined(__x86_64__)

#include <utility>

#include <immintrin.h>

namespace VelqorPassPort::Kernels::X86 {

namespace {

// An AES instruction takes several cycles but one or two can start in each: eight blocks in flight
// keep the unit busy.
constexpr std::size_t Lanes = 8;
using EveryLane = std::make_index_sequence<Lanes>;

struct Encryption
{
    [[gnu::target("aes")]] static __m128i round(__m128i state, __m128i key)
    {
        return _mm_aesenc_si128(state, key);
    }
    [[gnu::target("aes")]] static __m128i lastRound(__m128i state, __m128i key)
    {
        return _mm_aesenclast_si128(state, key);
    }
};

struct Decryption
{
    [[gnu::target("aes")]] static __m128i round(__m128i state, __m128i key)
    {
        return _mm_aesdec_si128(state, key);
    }
    [[gnu::target("aes")]] static __m128i lastRound(__m128i state, __m128i key)
    {
        return _mm_aesdeclast_si128(state, key);
    }
};

__m128i load(const Byte *bytes)
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i *>(bytes));
}

void store(Byte *bytes, __m128i block)
{
    _mm_storeu_si128(reinterpret_cast<__m128i *>(bytes), block);
}

const __m128i *wordsOf(const RoundKeys &keys)
{
    return reinterpret_cast<const __m128i *>(keys.bytes.data());
}

template <typename Direction, std::size_t... Lane>
[[gnu::target("aes")]] inline void crypt(const RoundKeys &keys, __m128i *states,
                                         std::index_sequence<Lane...>)
{
    const __m128i *key = wordsOf(keys);
    ((states[Lane] = _mm_xor_si128(states[Lane], *key)), ...);
    for (int round = 1; round < keys.rounds; ++round) {
        ++key;
        ((states[Lane] = Direction::round(states[Lane], *key)), ...);
    }
    ++key;
    ((states[Lane] = Direction::lastRound(states[Lane], *key)), ...);
}

template <typename Direction>
[[gnu::target("aes")]] inline __m128i crypt(const RoundKeys &keys, __m128i state)
{
    crypt<Direction>(keys, &state, std::make_index_sequence<1>());
    return state;
}

template <std::size_t... Lane>
inline void load(const Byte *in, __m128i *states, std::index_sequence<Lane...>)
{
    ((states[Lane] = load(in + Lane * BlockSize)), ...);
}

template <std::size_t... Lane>
inline void store(Byte *out, const __m128i *states, std::index_sequence<Lane...>)
{
    (store(out + Lane * BlockSize, states[Lane]), ...);
}

template <std::size_t... Lane>
inline void exclusiveOr(__m128i *states, const __m128i *others, std::index_sequence<Lane...>)
{
    ((states[Lane] = _mm_xor_si128(states[Lane], others[Lane])), ...);
}

template <typename Direction>
[[gnu::target("aes")]] void ecb(const RoundKeys &keys, const Byte *in, Byte *out,
                                std::size_t blocks)
{
    constexpr std::size_t Step = Lanes * BlockSize;
    for (; blocks >= Lanes; blocks -= Lanes, in += Step, out += Step) {
        __m128i states[Lanes];
        load(in, states, EveryLane());
        crypt<Direction>(keys, states, EveryLane());
        store(out, states, EveryLane());
    }
    for (; blocks > 0; --blocks, in += BlockSize, out += BlockSize)
        store(out, crypt<Direction>(keys, load(in)));
}

/// All rounds but the outermost two halves, which the chained modes merge with their own XOR: only
/// the latency of the rounds is left on the chain from block to block.
[[gnu::target("aes")]] inline __m128i innerRounds(const RoundKeys &keys, __m128i state)
{
    const __m128i *key = wordsOf(keys);
    for (int round = 1; round < keys.rounds; ++round)
        state = _mm_aesenc_si128(state, key[round]);
    return state;
}

} // namespace

void ecbEncrypt(const RoundKeys &keys, const Byte *in, Byte *out, std::size_t blocks)
{
    ecb<Encryption>(keys, in, out, blocks);
}

void ecbDecrypt(const RoundKeys &keys, const Byte *in, Byte *out, std::size_t blocks)
{
    ecb<Decryption>(keys, in, out, blocks);
}

[[gnu::target("aes")]] void cbcEncrypt(const RoundKeys &keys, Byte *vector, const Byte *in,
                                       Byte *out, std::size_t blocks)
{
    if (blocks == 0)
        return;
    const __m128i first = wordsOf(keys)[0];
    const __m128i last = wordsOf(keys)[keys.rounds];
    __m128i whitened = _mm_xor_si128(first, load(in));
    __m128i state = _mm_xor_si128(load(vector), whitened);
    for (; blocks > 1; --blocks, out += BlockSize) {
        in += BlockSize;
        whitened = _mm_xor_si128(first, load(in));
        state = _mm_aesenclast_si128(innerRounds(keys, state), _mm_xor_si128(last, whitened));
        store(out, _mm_xor_si128(state, whitened));
    }
    state = _mm_aesenclast_si128(innerRounds(keys, state), last);
    store(out, state);
    store(vector, state);
}

[[gnu::target("aes")]] void cfbEncrypt(const RoundKeys &keys, Byte *vector, const Byte *in,
                                       Byte *out, std::size_t blocks)
{
    const __m128i first = wordsOf(keys)[0];
    const __m128i outer = _mm_xor_si128(first, wordsOf(keys)[keys.rounds]);
    __m128i state = _mm_xor_si128(load(vector), first);
    for (; blocks > 0; --blocks, in += BlockSize, out += BlockSize) {
        state = _mm_aesenclast_si128(innerRounds(keys, state), _mm_xor_si128(outer, load(in)));
        store(out, _mm_xor_si128(state, first));
    }
    store(vector, _mm_xor_si128(state, first));
}

[[gnu::target("aes")]] void ofb(const RoundKeys &keys, Byte *vector, const Byte *in, Byte *out,
                                std::size_t blocks)
{
    const __m128i first = wordsOf(keys)[0];
    const __m128i outer = _mm_xor_si128(first, wordsOf(keys)[keys.rounds]);
    __m128i state = _mm_xor_si128(load(vector), first);
    for (; blocks > 0; --blocks, in += BlockSize, out += BlockSize) {
        state = _mm_aesenclast_si128(innerRounds(keys, state), outer);
        store(out, _mm_xor_si128(state, _mm_xor_si128(first, load(in))));
    }
    store(vector, _mm_xor_si128(state, first));
}

[[gnu::target("aes")]] void cbcDecrypt(const RoundKeys &keys, Byte *vector, const Byte *in,
                                       Byte *out, std::size_t blocks)
{
    constexpr std::size_t Step = Lanes * BlockSize;
    __m128i chain = load(vector);
    for (; blocks >= Lanes; blocks -= Lanes, in += Step, out += Step) {
        __m128i states[Lanes];
        __m128i before[Lanes];
        load(in, states, EveryLane());
        before[0] = chain;
        load(in, before + 1, std::make_index_sequence<Lanes - 1>());
        crypt<Decryption>(keys, states, EveryLane());
        exclusiveOr(states, before, EveryLane());
        store(out, states, EveryLane());
        chain = load(in + Step - BlockSize);
    }
    for (; blocks > 0; --blocks, in += BlockSize, out += BlockSize) {
        const __m128i block = load(in);
        store(out, _mm_xor_si128(crypt<Decryption>(keys, block), chain));
        chain = block;
    }
    store(vector, chain);
}

[[gnu::target("aes")]] void cfbDecrypt(const RoundKeys &keys, Byte *vector, const Byte *in,
                                       Byte *out, std::size_t blocks)
{
    constexpr std::size_t Step = Lanes * BlockSize;
    __m128i chain = load(vector);
    for (; blocks >= Lanes; blocks -= Lanes, in += Step, out += Step) {
        __m128i states[Lanes];
        __m128i text[Lanes];
        states[0] = chain;
        load(in, states + 1, std::make_index_sequence<Lanes - 1>());
        load(in, text, EveryLane());
        crypt<Encryption>(keys, states, EveryLane());
        exclusiveOr(states, text, EveryLane());
        store(out, states, EveryLane());
        chain = load(in + Step - BlockSize);
    }
    for (; blocks > 0; --blocks, in += BlockSize, out += BlockSize) {
        const __m128i block = load(in);
        store(out, _mm_xor_si128(crypt<Encryption>(keys, chain), block));
        chain = block;
    }
    store(vector, chain);
}

} // namespace VelqorPassPort::Kernels::X86

namespace VelqorPassPort::Kernels {

const Kernel *aesniKernel()
{
    static const Kernel kernel{"aesni",
                               X86::ecbEncrypt,
                               X86::ecbDecrypt,
                               X86::cbcEncrypt,
                               X86::cbcDecrypt,
                               X86::cfbEncrypt,
                               X86::cfbDecrypt,
                               X86::ofb,
                               X86::hasAvx2() ? X86::base64Encode : Portable::base64Encode,
                               X86::hasAvx2() ? X86::base64Decode : Portable::base64Decode};
    return X86::hasAes() ? &kernel : nullptr;
}

} // namespace VelqorPassPort::Kernels

#else

const VelqorPassPort::Kernels::Kernel *VelqorPassPort::Kernels::aesniKernel()
{
    return nullptr;
}

#endif
