// Base64 with AVX-512 VBMI, whose byte permutations hold the whole alphabet: 48 octets and 64 characters a step.
#include "base/Base64Kernels.h"

#if defined(__x86_64__) || defined(__i386__)

#include <algorithm>

// The compiler's own header reads undefined registers, and the compiler warns of them (GCC bug 105593).
#ifndef __clang__
#pragma GCC diagnostic ignored "-Wuninitialized"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif
#include <immintrin.h>

#define VBMI512 [[gnu::target("avx512f,avx512bw,avx512vbmi")]]
#define VBMI512_INLINE VBMI512 [[gnu::always_inline]] inline

namespace vrno::base64 {

namespace {

constexpr std::size_t octetsOfStep = 48, charactersOfStep = 64;

using Bytes = std::array<unsigned char, 64>;

VBMI512_INLINE __m512i load(const void* bytes) { return _mm512_loadu_si512(bytes); }

constexpr __mmask64 first(std::size_t count) { return count == 64 ? ~__mmask64{0} : (__mmask64{1} << count) - 1; }

// Of each group a b c the word b a c b: each value stands whole in two octets of it.
constexpr Bytes groupsApart = [] {
    Bytes order{};
    for (unsigned char group = 0; group < 16; ++group) {
        unsigned char* const word = &order[group * 4U];
        const auto a = static_cast<unsigned char>(3 * group);
        word[0] = word[3] = static_cast<unsigned char>(a + 1);
        word[1] = a;
        word[2] = static_cast<unsigned char>(a + 2);
    }
    return order;
}();

// The same back: the three octets of each word, the highest first. The last 16 entries are not used.
constexpr Bytes groupsTogether = [] {
    Bytes order{};
    for (unsigned char octet = 0; octet < octetsOfStep; ++octet)
        order[octet] = static_cast<unsigned char>(octet / 3 * 4 + 2 - octet % 3);
    return order;
}();

VBMI512_INLINE __m512i charactersOf(__m512i octets)
{
    const __m512i words = _mm512_permutexvar_epi8(load(groupsApart.data()), octets);
    // The first bit of each value, in two words at once.
    const __m512i valuesOfGroups = _mm512_multishift_epi64_epi8(_mm512_set1_epi64(0x3036242A1016040A), words);
    return _mm512_permutexvar_epi8(valuesOfGroups, load(alphabet)); // by the low six bits
}

// The highest bit is set where a character is outside the alphabet.
VBMI512_INLINE __m512i valuesOf(__m512i characters)
{
    const __m512i found =
        _mm512_permutex2var_epi8(load(values.data()), characters, load(values.data() + 64)); // by the low seven bits
    return _mm512_or_si512(found, _mm512_and_si512(characters, _mm512_set1_epi8(static_cast<char>(noValue))));
}

VBMI512_INLINE __m512i octetsOf(__m512i valuesOfGroups)
{
    const __m512i pairs = _mm512_maddubs_epi16(valuesOfGroups, _mm512_set1_epi32(0x01400140)); // 64 times the first plus the second
    const __m512i groups = _mm512_madd_epi16(pairs, _mm512_set1_epi32(0x00011000)); // 4096 times the first plus the second
    return _mm512_permutexvar_epi8(load(groupsTogether.data()), groups);
}

} // namespace

VBMI512 std::size_t encodeVbmi512(unsigned char* out, const unsigned char* in, std::size_t length)
{
    std::size_t at = 0;
    for (; length - at >= 64; at += octetsOfStep, out += charactersOfStep) _mm512_storeu_si512(out, charactersOf(load(in + at)));
    while (length - at >= octetsOfGroup) {
        const std::size_t groups = std::min<std::size_t>(length - at, octetsOfStep) / octetsOfGroup;
        const __m512i octets = _mm512_maskz_loadu_epi8(first(groups * octetsOfGroup), in + at);
        _mm512_mask_storeu_epi8(out, first(groups * charactersOfGroup), charactersOf(octets));
        at += groups * octetsOfGroup;
        out += groups * charactersOfGroup;
    }
    return at;
}

// A whole step writes 64 octets. The result of the characters that remain is long enough for them.
VBMI512 std::size_t decodeVbmi512(unsigned char* out, const unsigned char* in, std::size_t length)
{
    std::size_t at = 0;
    for (; length - at >= 88; at += charactersOfStep, out += octetsOfStep) {
        const __m512i valuesOfGroups = valuesOf(load(in + at));
        if (_mm512_movepi8_mask(valuesOfGroups) != 0) return at;
        _mm512_storeu_si512(out, octetsOf(valuesOfGroups));
    }
    while (length - at >= charactersOfGroup) {
        const std::size_t groups = std::min<std::size_t>(length - at, charactersOfStep) / charactersOfGroup;
        const __mmask64 used = first(groups * charactersOfGroup);
        const __m512i valuesOfGroups = valuesOf(_mm512_maskz_loadu_epi8(used, in + at));
        if ((_mm512_movepi8_mask(valuesOfGroups) & used) != 0) break;
        _mm512_mask_storeu_epi8(out, first(groups * octetsOfGroup), octetsOf(valuesOfGroups));
        at += groups * charactersOfGroup;
        out += groups * octetsOfGroup;
    }
    return at;
}

} // namespace vrno::base64

#endif
