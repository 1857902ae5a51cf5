// CBC decryption of SEED with GFNI and AVX2: 48 blocks at once.
#if defined(__x86_64__) || defined(__i386__)

#define SEED_TARGET "avx2,gfni"
#include "engine/seed/seed_avx2.h"
#include "engine/seed/seed_field.h"
#include "engine/seed/seed_vectors.h"

namespace vrno {

namespace {

using namespace seed;

struct Gfni256 : Avx2 {
    static constexpr std::size_t fewest = 3;

    VECTOR_INLINE Register substituted(Register x)
    {
        const Register mapped = _mm256_gf2p8affine_epi64_epi8(x, matrix<intoAes>(), 0);
        const Register even = _mm256_gf2p8affineinv_epi64_epi8(mapped, matrix<S1BehindInverse>(), S1Constant);
        const Register odd = _mm256_gf2p8affineinv_epi64_epi8(mapped, matrix<S2BehindInverse>(), S2Constant);
        return evenAndOdd(even, odd);
    }

private:
    template <const AffineMap& map> VECTOR_INLINE Register matrix()
    {
        constexpr std::uint64_t rows = map.matrix();
        return _mm256_set1_epi64x(static_cast<long long>(rows));
    }
};

} // namespace

[[gnu::target(SEED_TARGET)]] void seedCbcDecryptGfni256(const SEED_Schedule& schedule, unsigned char* output,
                                                        const unsigned char* input, std::size_t blocks,
                                                        unsigned char* chainingValue)
{
    cbcDecrypt<Gfni256>(schedule, output, input, blocks, chainingValue);
}

} // namespace vrno

#endif
