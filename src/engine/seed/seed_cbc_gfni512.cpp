// CBC decryption of SEED with GFNI and AVX-512: 96 blocks at once.
#if defined(__x86_64__) || defined(__i386__)

// The compiler's own header reads undefined registers, and the compiler warns of them (GCC bug 105593).
#ifndef __clang__
#pragma GCC diagnostic ignored "-Wuninitialized"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif
#include <immintrin.h>

#define SEED_TARGET "avx512f,avx512bw,avx512vl,gfni"
#include "engine/seed/seed_field.h"
#include "engine/seed/seed_vectors.h"

namespace vrno {

namespace {

using namespace seed;

struct Gfni512 {
    using Register = __m512i;
    static constexpr std::size_t lanes = 4, fewest = 3;

    VECTOR_INLINE Register load(const unsigned char* from) { return _mm512_loadu_si512(from); }
    VECTOR_INLINE void store(unsigned char* to, Register v) { _mm512_storeu_si512(to, v); }
    VECTOR_INLINE Register all(std::uint32_t word) { return _mm512_set1_epi32(static_cast<int>(word)); }
    VECTOR_INLINE Register add(Register a, Register b) { return _mm512_add_epi32(a, b); }
    VECTOR_INLINE Register exclusive(Register a, Register b) { return _mm512_xor_si512(a, b); }
    VECTOR_INLINE Register masked(Register a, Register mask) { return _mm512_and_si512(a, mask); }
    VECTOR_INLINE Register addMasked(Register a, Register b, Register mask)
    {
        return _mm512_ternarylogic_epi32(a, b, mask, 0x78); // a ^ (b & mask)
    }
    VECTOR_INLINE Register substituted(Register x)
    {
        const Register mapped = _mm512_gf2p8affine_epi64_epi8(x, matrix<intoAes>(), 0);
        const Register even = _mm512_gf2p8affineinv_epi64_epi8(mapped, matrix<S1BehindInverse>(), S1Constant);
        return _mm512_mask_gf2p8affineinv_epi64_epi8(even, 0xAAAAAAAAAAAAAAAA, mapped, matrix<S2BehindInverse>(), S2Constant);
    }
    VECTOR_INLINE Register turned16(Register a) { return _mm512_ror_epi32(a, 16); }
    VECTOR_INLINE Register turned8(Register a) { return _mm512_ror_epi32(a, 8); }
    VECTOR_INLINE Register swapped(Register a)
    {
        return _mm512_shuffle_epi8(a, _mm512_set4_epi32(0x0C0D0E0F, 0x08090A0B, 0x04050607, 0x00010203));
    }
    VECTOR_INLINE Register lowWords(Register a, Register b) { return _mm512_unpacklo_epi32(a, b); }
    VECTOR_INLINE Register highWords(Register a, Register b) { return _mm512_unpackhi_epi32(a, b); }
    VECTOR_INLINE Register lowPairs(Register a, Register b) { return _mm512_unpacklo_epi64(a, b); }
    VECTOR_INLINE Register highPairs(Register a, Register b) { return _mm512_unpackhi_epi64(a, b); }
    VECTOR_INLINE Register behind(Register blocks, const unsigned char* first)
    {
        const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(first));
        return _mm512_alignr_epi64(blocks, _mm512_broadcast_i32x4(block), 6);
    }

private:
    template <const AffineMap& map> VECTOR_INLINE Register matrix()
    {
        constexpr std::uint64_t rows = map.matrix();
        return _mm512_set1_epi64(static_cast<long long>(rows));
    }
};

} // namespace

[[gnu::target(SEED_TARGET)]] void seedCbcDecryptGfni512(const SEED_Schedule& schedule, unsigned char* output,
                                                        const unsigned char* input, std::size_t blocks,
                                                        unsigned char* chainingValue)
{
    cbcDecrypt<Gfni512>(schedule, output, input, blocks, chainingValue);
}

} // namespace vrno

#endif
