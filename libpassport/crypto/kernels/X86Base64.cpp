// SPDX-License-Identifier: MIT
#if defined(__x86_64__)

#include "crypto/kernels/Routines_p.h"

#include <cstring>
#include <utility>

#include <immintrin.h>

// Base64 on registers of 32 characters, two halves of 16 side by side, with byte shuffles as
// look-ups in tables of 16. The portable routines finish what is too short for a register.

namespace VelqorPassPort::Kernels::X86 {

namespace {

constexpr std::size_t Characters = 32; // of one register
constexpr std::size_t Bytes = 24;      // that they stand for

[[gnu::target("avx2")]] inline __m256i inBothHalves(__m128i table)
{
    return _mm256_broadcastsi128_si256(table);
}

/// Two times 12 bytes, each from the start of its half, as 32 values of 6 bits.
[[gnu::target("avx2")]] inline __m256i split(__m256i bytes)
{
    // Each group of 3 bytes a, b, c becomes b, a, c, b: two 16-bit numbers with two values in each.
    const __m256i order =
        inBothHalves(_mm_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10));
    const __m256i groups = _mm256_shuffle_epi8(bytes, order);
    // Multiplications shift the two numbers by different counts at once.
    const __m256i evenMask = _mm256_set1_epi32(0x0fc0fc00);
    const __m256i evenShift = _mm256_set1_epi32(0x04000040);
    const __m256i oddMask = _mm256_set1_epi32(0x003f03f0);
    const __m256i oddShift = _mm256_set1_epi32(0x01000010);
    const __m256i even = _mm256_mulhi_epu16(_mm256_and_si256(groups, evenMask), evenShift);
    const __m256i odd = _mm256_mullo_epi16(_mm256_and_si256(groups, oddMask), oddShift);
    return _mm256_or_si256(even, odd);
}

/// What to add to a value depends on its range: 0 for A-Z, 1 for a-z, 2 to 11 for 0-9, 12 for + and
/// 13 for / number the ranges.
[[gnu::target("avx2")]] inline __m256i charactersOf(__m256i values)
{
    const __m256i offsets = inBothHalves(
        _mm_setr_epi8('A', 'a' - 26, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52,
                      '0' - 52, '0' - 52, '0' - 52, '0' - 52, '+' - 62, '/' - 63, 0, 0));
    const __m256i beyondCapitals = _mm256_cmpgt_epi8(values, _mm256_set1_epi8(25)); // -1 each
    const __m256i range =
        _mm256_sub_epi8(_mm256_subs_epu8(values, _mm256_set1_epi8(51)), beyondCapitals);
    return _mm256_add_epi8(values, _mm256_shuffle_epi8(offsets, range));
}

/// Turns characters into their values. A bit of `barred` is set by each one that is not of the
/// alphabet.
[[gnu::target("avx2")]] inline __m256i valuesOf(__m256i characters, __m256i &barred)
{
    // Each high nibble has a bit that is set for the low nibbles it must not come with. High
    // nibbles that never occur share the bit 0x10, which every low nibble has.
    const __m256i barredLow =
        inBothHalves(_mm_setr_epi8(0x15, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x13,
                                   0x1a, 0x1b, 0x1b, 0x1b, 0x1a));
    const __m256i barredHigh =
        inBothHalves(_mm_setr_epi8(0x10, 0x10, 0x01, 0x02, 0x04, 0x08, 0x04, 0x08, 0x10, 0x10, 0x10,
                                   0x10, 0x10, 0x10, 0x10, 0x10));
    // By high nibble: -, / (moved here), +, 0-9, A-O, P-Z, a-o, p-z.
    const __m256i offsets = inBothHalves(_mm_setr_epi8(0, 63 - '/', 62 - '+', 52 - '0', -'A', -'A',
                                                       26 - 'a', 26 - 'a', 0, 0, 0, 0, 0, 0, 0, 0));
    const __m256i nibble = _mm256_set1_epi8(0x0f);
    const __m256i high = _mm256_and_si256(_mm256_srli_epi32(characters, 4), nibble);
    const __m256i low = _mm256_and_si256(characters, nibble);
    barred = _mm256_or_si256(barred, _mm256_and_si256(_mm256_shuffle_epi8(barredLow, low),
                                                      _mm256_shuffle_epi8(barredHigh, high)));
    const __m256i slashes = _mm256_cmpeq_epi8(characters, _mm256_set1_epi8('/')); // -1 each
    const __m256i offset = _mm256_shuffle_epi8(offsets, _mm256_add_epi8(high, slashes));
    return _mm256_add_epi8(characters, offset);
}

/// 32 values of 6 bits as two times 12 bytes, each at the start of its half.
[[gnu::target("avx2")]] inline __m256i join(__m256i values)
{
    const __m256i pairs = _mm256_maddubs_epi16(values, _mm256_set1_epi32(0x01400140));
    const __m256i groups = _mm256_madd_epi16(pairs, _mm256_set1_epi32(0x00011000));
    const __m256i order =
        inBothHalves(_mm_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1));
    return _mm256_shuffle_epi8(groups, order);
}

/// Each half is stored whole, with an excess of 4 bytes that the next one overwrites. Only the last
/// register of a row has to end with its last byte.
template <bool Last>
[[gnu::target("avx2")]] inline void decodeRegister(const char *in, Byte *out, __m256i &barred)
{
    const __m256i text = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(in));
    const __m256i bytes = join(valuesOf(text, barred));
    const __m128i second = _mm256_extracti128_si256(bytes, 1);
    _mm_storeu_si128(reinterpret_cast<__m128i *>(out), _mm256_castsi256_si128(bytes));
    out += Bytes / 2;
    if (!Last) {
        _mm_storeu_si128(reinterpret_cast<__m128i *>(out), second);
        return;
    }
    const int end = _mm_extract_epi32(second, 2);
    _mm_storel_epi64(reinterpret_cast<__m128i *>(out), second);
    std::memcpy(out + 8, &end, sizeof(end));
}

/// Decodes a row of registers; false when one of the characters is not of the alphabet.
template <std::size_t... Register>
[[gnu::target("avx2")]] inline bool decodeRow(const char *in, Byte *out,
                                              std::index_sequence<Register...>)
{
    __m256i barred = _mm256_setzero_si256();
    (decodeRegister<Register + 1 == sizeof...(Register)>(in + Register * Characters,
                                                         out + Register * Bytes, barred),
     ...);
    return _mm256_testz_si256(barred, barred);
}

} // namespace

[[gnu::target("avx2")]] void base64Encode(const Byte *in, std::size_t size, char *out)
{
    // The two loads of 16 bytes that hold 12 each reach over 28.
    constexpr std::size_t Reach = Bytes / 2 + 16;
    for (; size >= Reach; size -= Bytes, in += Bytes, out += Characters) {
        const auto low = _mm_loadu_si128(reinterpret_cast<const __m128i *>(in));
        const auto high = _mm_loadu_si128(reinterpret_cast<const __m128i *>(in + Bytes / 2));
        const __m256i text = charactersOf(split(_mm256_set_m128i(high, low)));
        _mm256_storeu_si256(reinterpret_cast<__m256i *>(out), text);
    }
    Portable::base64Encode(in, size, out);
}

[[gnu::target("avx2")]] std::size_t base64Decode(const char *in, std::size_t size, Byte *out)
{
    constexpr std::size_t Row = 4;
    std::size_t read = 0;
    std::size_t written = 0;
    while (size - read >= Row * Characters &&
           decodeRow(in + read, out + written, std::make_index_sequence<Row>())) {
        read += Row * Characters;
        written += Row * Bytes;
    }
    while (size - read >= Characters &&
           decodeRow(in + read, out + written, std::make_index_sequence<1>())) {
        read += Characters;
        written += Bytes;
    }
    return written + Portable::base64Decode(in + read, size - read, out + written);
}

} // namespace VelqorPassPort::Kernels::X86

#endif
