// The vectors of AVX2 for the kernels of SEED, all but the S-boxes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <immintrin.h>

#define AVX2_INLINE [[gnu::target("avx2"), gnu::always_inline]] static inline

namespace vrno::seed {

struct Avx2 {
    using Register = __m256i;
    static constexpr std::size_t lanes = 2;

    AVX2_INLINE Register load(const unsigned char* from) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from)); }
    AVX2_INLINE void store(unsigned char* to, Register v) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), v); }
    AVX2_INLINE Register all(std::uint32_t word) { return _mm256_set1_epi32(static_cast<int>(word)); }
    AVX2_INLINE Register add(Register a, Register b) { return _mm256_add_epi32(a, b); }
    AVX2_INLINE Register exclusive(Register a, Register b) { return _mm256_xor_si256(a, b); }
    AVX2_INLINE Register masked(Register a, Register mask) { return _mm256_and_si256(a, mask); }
    AVX2_INLINE Register addMasked(Register a, Register b, Register mask) { return exclusive(a, masked(b, mask)); }
    AVX2_INLINE Register turned16(Register a) { return shuffled(a, 0x0D0C0F0E, 0x09080B0A, 0x05040706, 0x01000302); }
    AVX2_INLINE Register turned8(Register a) { return shuffled(a, 0x0C0F0E0D, 0x080B0A09, 0x04070605, 0x00030201); }
    AVX2_INLINE Register swapped(Register a) { return shuffled(a, 0x0C0D0E0F, 0x08090A0B, 0x04050607, 0x00010203); }
    AVX2_INLINE Register lowWords(Register a, Register b) { return _mm256_unpacklo_epi32(a, b); }
    AVX2_INLINE Register highWords(Register a, Register b) { return _mm256_unpackhi_epi32(a, b); }
    AVX2_INLINE Register lowPairs(Register a, Register b) { return _mm256_unpacklo_epi64(a, b); }
    AVX2_INLINE Register highPairs(Register a, Register b) { return _mm256_unpackhi_epi64(a, b); }
    AVX2_INLINE Register behind(Register blocks, const unsigned char* first)
    {
        const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(first));
        return _mm256_inserti128_si256(_mm256_castsi128_si256(block), _mm256_castsi256_si128(blocks), 1);
    }

protected:
    AVX2_INLINE Register evenAndOdd(Register even, Register odd)
    {
        return _mm256_blendv_epi8(even, odd, _mm256_set1_epi16(static_cast<short>(0xFF00)));
    }
    // The octets of each part of 128 bits in the given order, which stands in four words from the highest.
    AVX2_INLINE Register shuffled(Register a, int w3, int w2, int w1, int w0)
    {
        return _mm256_shuffle_epi8(a, _mm256_set_epi32(w3, w2, w1, w0, w3, w2, w1, w0));
    }
};

} // namespace vrno::seed
