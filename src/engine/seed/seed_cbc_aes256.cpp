// CBC decryption of SEED with AES-NI and AVX2: 48 blocks at once. The last round of AES computes the inverses in its field; maps
// around it are looked up by half octets.
#if defined(__x86_64__) || defined(__i386__)

#define SEED_TARGET "avx2,aes"
#include "engine/seed/seed_avx2.h"
#include "engine/seed/seed_field.h"
#include "engine/seed/seed_vectors.h"

namespace vrno {

namespace {

using namespace seed;

// An affine map is the sum of a table over the low half of the octet and one over the high half.
struct HalfTables {
    alignas(16) Octet low[16], high[16];

    constexpr explicit HalfTables(const AffineMap& map) : low{}, high{}
    {
        for (unsigned int i = 0; i < 16; ++i) {
            low[i] = map(static_cast<Octet>(i));
            high[i] = map(static_cast<Octet>(i << 4)) ^ map.constant;
        }
    }
};
constexpr HalfTables into(intoAes), evenBack(S1BehindAes), oddBack(S2BehindAes);

struct Aes256 : Avx2 {
    static constexpr std::size_t fewest = 6;

    VECTOR_INLINE Register substituted(Register x)
    {
        const Halves y = halves(aesBoxes(mapped(into, halves(x))));
        return evenAndOdd(mapped(evenBack, y), mapped(oddBack, y));
    }

private:
    struct Halves {
        Register low, high;
    };
    VECTOR_INLINE Halves halves(Register x)
    {
        const Register low = _mm256_set1_epi8(0x0F);
        return {masked(x, low), masked(_mm256_srli_epi16(x, 4), low)};
    }
    VECTOR_INLINE Register looked(const Octet (&table)[16], Register x)
    {
        const __m128i octets = _mm_load_si128(reinterpret_cast<const __m128i*>(table));
        return _mm256_shuffle_epi8(_mm256_broadcastsi128_si256(octets), x);
    }
    VECTOR_INLINE Register mapped(const HalfTables& map, Halves x)
    {
        return exclusive(looked(map.low, x.low), looked(map.high, x.high));
    }
    // AESENCLAST also rotates the rows, which are the octets at the same place of the four words; this is undone.
    VECTOR_INLINE Register aesBoxes(Register x)
    {
        const __m128i none = _mm_setzero_si128();
        const __m128i low = _mm_aesenclast_si128(_mm256_castsi256_si128(x), none);
        const __m128i high = _mm_aesenclast_si128(_mm256_extracti128_si256(x, 1), none);
        const Register moved = _mm256_inserti128_si256(_mm256_castsi128_si256(low), high, 1);
        return shuffled(moved, 0x0306090C, 0x0F020508, 0x0B0E0104, 0x070A0D00);
    }
};

} // namespace

[[gnu::target(SEED_TARGET)]] void seedCbcDecryptAes256(const SEED_Schedule& schedule, unsigned char* output,
                                                       const unsigned char* input, std::size_t blocks, unsigned char* chainingValue)
{
    cbcDecrypt<Aes256>(schedule, output, input, blocks, chainingValue);
}

} // namespace vrno

#endif
