// SHA-1's block function with the SHA extensions of x86: four steps an instruction, 20 instructions a block.
#include "engine/digest/sha1_kernels.h"

#if defined(__x86_64__) || defined(__i386__)

#include <immintrin.h>

#include <utility>

#define SHANI [[gnu::target("sha,sse4.1,ssse3")]]

namespace vrno {

namespace {

// Steps 4q to 4q + 3. `previous` is what `abcd` was four steps ago: its a, rotated, is the e of this step. `w` holds the
// last 16 words of the schedule.
template <std::size_t q> SHANI [[gnu::always_inline]] inline void sha1FourSteps(__m128i& abcd, __m128i& previous, __m128i (&w)[4])
{
    if constexpr (q >= 4) {
        const __m128i mixed = _mm_xor_si128(_mm_sha1msg1_epu32(w[q % 4], w[(q + 1) % 4]), w[(q + 2) % 4]);
        w[q % 4] = _mm_sha1msg2_epu32(mixed, w[(q + 3) % 4]);
    }
    // The first e comes from the chaining value, which is not rotated.
    const __m128i words = q == 0 ? _mm_add_epi32(previous, w[0]) : _mm_sha1nexte_epu32(previous, w[q % 4]);
    previous = abcd;
    abcd = _mm_sha1rnds4_epu32(abcd, words, static_cast<int>(q / 5));
}

template <std::size_t... q>
SHANI [[gnu::always_inline]] inline void sha1Steps(__m128i& abcd, __m128i& previous, __m128i (&w)[4], std::index_sequence<q...>)
{
    (sha1FourSteps<q>(abcd, previous, w), ...);
}

} // namespace

SHANI void sha1BlocksShani(std::uint32_t* h, const unsigned char* blocks, std::size_t count)
{
    constexpr int reversed = 0x1B; // the instructions want a in the highest lane
    const __m128i bigEndian = _mm_set_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
    __m128i abcd = _mm_shuffle_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(h)), reversed);
    __m128i e = _mm_set_epi32(static_cast<int>(h[4]), 0, 0, 0);
    for (; count > 0; --count, blocks += 64) {
        const __m128i abcdBefore = abcd, eBefore = e;
        __m128i w[4];
        for (int i = 0; i < 4; ++i) {
            w[i] = _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(blocks) + i), bigEndian);
        }
        sha1Steps(abcd, e, w, std::make_index_sequence<20>());
        e = _mm_sha1nexte_epu32(e, eBefore);
        abcd = _mm_add_epi32(abcd, abcdBefore);
    }
    _mm_storeu_si128(reinterpret_cast<__m128i*>(h), _mm_shuffle_epi32(abcd, reversed));
    h[4] = static_cast<std::uint32_t>(_mm_extract_epi32(e, 3));
}

} // namespace vrno

#endif
