// SHA-1's block function and the chains of HMAC with the SHA extensions of x86: four steps an instruction, 20 instructions a
// block.
#include "engine/digest/sha1.h"
#include "engine/digest/sha1_kernels.h"

#if defined(__x86_64__) || defined(__i386__)

#include <immintrin.h>

#include <utility>

#define SHANI [[gnu::target("sha,sse4.1,ssse3")]]
#define SHANI_INLINE SHANI [[gnu::always_inline]] inline

namespace vrno {

namespace {

// A block that is hashed. `previous` is what `abcd` was four steps ago: its a, rotated, is the e of this step. `w` holds the
// last 16 words of the schedule. The instructions want the first word in the highest lane.
struct Hashing {
    __m128i abcd, previous, w[4];
};

// Steps 4q to 4q + 3.
template <std::size_t q> SHANI_INLINE void sha1FourSteps(Hashing& s)
{
    if constexpr (q >= 4) {
        const __m128i mixed = _mm_xor_si128(_mm_sha1msg1_epu32(s.w[q % 4], s.w[(q + 1) % 4]), s.w[(q + 2) % 4]);
        s.w[q % 4] = _mm_sha1msg2_epu32(mixed, s.w[(q + 3) % 4]);
    }
    // The first e comes from the chaining value, which is not rotated.
    const __m128i words = q == 0 ? _mm_add_epi32(s.previous, s.w[0]) : _mm_sha1nexte_epu32(s.previous, s.w[q % 4]);
    s.previous = s.abcd;
    s.abcd = _mm_sha1rnds4_epu32(s.abcd, words, static_cast<int>(q / 5));
}

// The steps of one block, or of several side by side: each instruction waits for the one before it, and meanwhile the processor
// works on the other blocks.
template <std::size_t q, class... Blocks> SHANI_INLINE void sha1FourStepsOfAll(Blocks&... s) { (sha1FourSteps<q>(s), ...); }
template <std::size_t... q, class... Blocks> SHANI_INLINE void sha1Steps(std::index_sequence<q...>, Blocks&... s)
{
    (sha1FourStepsOfAll<q>(s...), ...);
}

SHANI_INLINE __m128i reversedBytes(__m128i v)
{
    return _mm_shuffle_epi8(v, _mm_set_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15));
}
SHANI_INLINE __m128i reversedWords(const std::uint32_t* from)
{
    return _mm_shuffle_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(from)), 0x1B);
}
SHANI_INLINE __m128i highest(std::uint32_t word) { return _mm_set_epi32(static_cast<int>(word), 0, 0, 0); }

} // namespace

SHANI void sha1BlocksShani(std::uint32_t* h, const unsigned char* blocks, std::size_t count)
{
    Hashing s;
    s.abcd = reversedWords(h);
    s.previous = highest(h[4]);
    for (; count > 0; --count, blocks += 64) {
        const __m128i abcdBefore = s.abcd, eBefore = s.previous;
        const auto* const from = reinterpret_cast<const __m128i*>(blocks);
        for (int i = 0; i < 4; ++i) s.w[i] = reversedBytes(_mm_loadu_si128(from + i));
        sha1Steps(std::make_index_sequence<20>(), s);
        s.previous = _mm_sha1nexte_epu32(s.previous, eBefore);
        s.abcd = _mm_add_epi32(s.abcd, abcdBefore);
    }
    _mm_storeu_si128(reinterpret_cast<__m128i*>(h), _mm_shuffle_epi32(s.abcd, 0x1B));
    h[4] = static_cast<std::uint32_t>(_mm_extract_epi32(s.previous, 3));
}

namespace {

// The chaining value after a pad. `eAndBit` is e with the bit that ends the message, in the place of the word behind it.
struct Pad {
    __m128i abcd, e, eAndBit;
};

SHANI_INLINE Pad padOf(const std::uint32_t* h)
{
    const __m128i e = highest(h[4]);
    return {reversedWords(h), e, _mm_insert_epi32(e, static_cast<int>(0x80000000), 2)};
}

struct Sum {
    __m128i abcd, e;
};

// What the loop reads and adds to; wiped on destruction. The link itself is in the registers only.
template <std::size_t chains> struct ChainArea {
    Pad inner, outer;
    Sum sums[chains];

    SHANI ChainArea(const std::uint32_t* innerH, const std::uint32_t* outerH) : inner(padOf(innerH)), outer(padOf(outerH)) {}
    ChainArea(const ChainArea&) = delete;
    ChainArea& operator=(const ChainArea&) = delete;
    ~ChainArea() { wipe(this, sizeof *this); }
};

// A digest as it leaves the registers is a link as it enters them: `abcd`, and e with the ending bit in `previous`.
SHANI_INLINE void beginLink(Hashing& s, const Pad& pad)
{
    s = {pad.abcd, pad.e, {s.abcd, s.previous, _mm_setzero_si128(), _mm_set_epi32(0, 0, 0, linkBits)}};
}
SHANI_INLINE void endLink(Hashing& s, const Pad& pad)
{
    s.abcd = _mm_add_epi32(s.abcd, pad.abcd);
    s.previous = _mm_sha1nexte_epu32(s.previous, pad.eAndBit);
}
template <class... Blocks> SHANI_INLINE void hashLinks(const Pad& pad, Blocks&... s)
{
    (beginLink(s, pad), ...);
    sha1Steps(std::make_index_sequence<20>(), s...);
    (endLink(s, pad), ...);
}

SHANI_INLINE Hashing loadLink(const unsigned char* link)
{
    const __m128i abcd = reversedBytes(_mm_loadu_si128(reinterpret_cast<const __m128i*>(link)));
    return {abcd, _mm_insert_epi32(highest(load32<std::endian::big>(link + 16)), static_cast<int>(0x80000000), 2), {}};
}
SHANI_INLINE void addTo(Sum& sum, const Hashing& s)
{
    sum.abcd = _mm_xor_si128(sum.abcd, s.abcd);
    sum.e = _mm_xor_si128(sum.e, s.previous);
}
SHANI_INLINE void storeSum(unsigned char* to, const Sum& sum)
{
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), reversedBytes(sum.abcd));
    store32<std::endian::big>(to + 16, static_cast<std::uint32_t>(_mm_extract_epi32(sum.e, 3)));
}

template <std::size_t... c>
SHANI void chainsTogether(const std::uint32_t* inner, const std::uint32_t* outer, unsigned char* xorOfLinks,
                          const unsigned char* firstLinks, int furtherLinks, std::index_sequence<c...>)
{
    ChainArea<sizeof...(c)> area(inner, outer);
    Hashing s[] = {loadLink(firstLinks + c * sha1DigestLength)...};
    ((area.sums[c] = {s[c].abcd, s[c].previous}), ...);
    for (; furtherLinks > 0; --furtherLinks) {
        __asm__("" : "+m"(area)); // so that the compiler keeps no copy of it elsewhere
        hashLinks(area.inner, s[c]...);
        hashLinks(area.outer, s[c]...);
        (addTo(area.sums[c], s[c]), ...);
    }
    (storeSum(xorOfLinks + c * sha1DigestLength, area.sums[c]), ...);
}

} // namespace

// In pairs, which take little longer than a single one.
SHANI void sha1ChainsShani(const std::uint32_t* inner, const std::uint32_t* outer, unsigned char* xorOfLinks,
                           const unsigned char* firstLinks, std::size_t chains, int furtherLinks)
{
    for (; chains >= 2; chains -= 2, xorOfLinks += 2 * sha1DigestLength, firstLinks += 2 * sha1DigestLength) {
        chainsTogether(inner, outer, xorOfLinks, firstLinks, furtherLinks, std::make_index_sequence<2>());
    }
    if (chains > 0) chainsTogether(inner, outer, xorOfLinks, firstLinks, furtherLinks, std::make_index_sequence<1>());
}

} // namespace vrno

#endif
