// Exponentiation over limbs of 52 bits, eight in a register, with the fused multiply-add of AVX-512 IFMA.
//
// Values stay below 2 x N, and R is above 4 x N: then a product again is below 2 x N, and no step takes N off.
#include "engine/bignum/montgomery.h"

#if defined(__x86_64__) && defined(__SIZEOF_INT128__)

#include "engine/bignum/montgomery_rows.h"

// The compiler's own header starts results from undefined registers and warns of them (GCC bug 105593).
#ifndef __clang__
#pragma GCC diagnostic ignored "-Wuninitialized"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif
#include <immintrin.h>

#include <utility>

#define IFMA512 [[gnu::target("avx512f,avx512ifma,bmi2")]]

namespace vrno {

namespace {

constexpr int limbBits = 52;
constexpr int spareBits = 64 - limbBits;
constexpr std::uint64_t limbMask = (std::uint64_t{1} << limbBits) - 1;

struct Modulus {
    const std::uint64_t* N;
    std::uint64_t n0;  // -1 / N modulo 2^52 in its low bits
    std::size_t limbs; // of R
};

template <std::size_t Z> using Registers = std::make_index_sequence<Z>;

// r = sums of up to 64 bits in each lane, as limbs. A lane takes the upper bits of the one below it; what it then carries on
// is one bit, and an integer addition of the masks of carrying and of full lanes takes all those bits where they end.
template <std::size_t... z>
IFMA512 [[gnu::always_inline]] inline void normalise(std::uint64_t* r, __m512i* sums, std::index_sequence<z...>)
{
    const __m512i full = _mm512_set1_epi64(limbMask), one = _mm512_set1_epi64(1);
    const __m512i upper[] = {_mm512_setzero_si512(), _mm512_srli_epi64(sums[z], limbBits)...};
    ((sums[z] = _mm512_add_epi64(_mm512_and_si512(sums[z], full), _mm512_alignr_epi64(upper[z + 1], upper[z], 7))), ...);
    const std::uint64_t carries = (... | (std::uint64_t{_mm512_cmpgt_epu64_mask(sums[z], full)} << (8 * z)));
    const std::uint64_t fulls = (... | (std::uint64_t{_mm512_cmpeq_epu64_mask(sums[z], full)} << (8 * z)));
    const std::uint64_t taken = ((carries << 1) + fulls) ^ fulls;
    ((sums[z] = _mm512_mask_add_epi64(sums[z], static_cast<__mmask8>(taken >> (8 * z)), sums[z], one)), ...);
    (_mm512_store_si512(r + 8 * z, _mm512_and_si512(sums[z], full)), ...);
}

// r = a x b / R, below 2 x N. Each turn adds a limb of b times a, and the multiple of N that clears the lowest limb, which
// then leaves. The lowest limb is kept apart in `low`, so that the next multiple of N does not wait for the vectors; what
// lane 0 holds has no meaning.
template <std::size_t... z>
IFMA512 void multiply(std::uint64_t* r, const std::uint64_t* a, const std::uint64_t* b, const Modulus& modulus,
                      std::index_sequence<z...> registers)
{
    const std::uint64_t a0 = a[0], N0 = modulus.N[0], N1 = modulus.N[1], n0 = modulus.n0;
    const std::size_t limbs = modulus.limbs;
    const __m512i A[] = {_mm512_load_si512(a + 8 * z)...}, N[] = {_mm512_load_si512(modulus.N + 8 * z)...};
    __m512i x[sizeof...(z) + 1] = {}, y[sizeof...(z) + 1] = {}; // sums of limbs of a x b and of multiples of N; zeros on top
    std::uint64_t low = 0;
    for (std::size_t i = 0; i < limbs; ++i) {
        const __m512i digit = _mm512_set1_epi64(static_cast<long long>(b[i]));
        ((x[z] = _mm512_madd52lo_epu64(x[z], A[z], digit)), ...);
        const DoubleLimb lowest = static_cast<DoubleLimb>(a0) * b[i] + low;
        const std::uint64_t lowestLimb = static_cast<std::uint64_t>(lowest) << spareBits;
        const std::uint64_t multiple = lowestLimb * n0; // in the upper 52 bits
        const __m512i multiples = _mm512_set1_epi64(static_cast<long long>(multiple >> spareBits));
        const __m128i next = _mm_add_epi64(_mm512_castsi512_si128(x[0]), _mm512_castsi512_si128(y[0]));
        // The lowest limb and that of N x multiple are both 0 or sum up to one that is carried.
        low = static_cast<std::uint64_t>(lowest >> limbBits) + (lowestLimb != 0) +
              static_cast<std::uint64_t>(_mm_extract_epi64(next, 1));
        low += static_cast<std::uint64_t>(static_cast<DoubleLimb>(N0) * multiple >> 64) + (N1 * multiple >> spareBits);
        ((y[z] = _mm512_madd52lo_epu64(y[z], N[z], multiples)), ...);
        ((x[z] = _mm512_alignr_epi64(x[z + 1], x[z], 1)), ...);
        ((y[z] = _mm512_alignr_epi64(y[z + 1], y[z], 1)), ...);
        ((x[z] = _mm512_madd52hi_epu64(x[z], A[z], digit)), ...);
        ((y[z] = _mm512_madd52hi_epu64(y[z], N[z], multiples)), ...);
    }
    ((x[z] = _mm512_add_epi64(x[z], y[z])), ...);
    x[0] = _mm512_mask_set1_epi64(x[0], 1, static_cast<long long>(low));
    normalise(r, x, registers);
}

template <std::size_t... z>
IFMA512 void selectRow(std::uint64_t* r, const std::uint64_t* table, unsigned count, unsigned index, std::index_sequence<z...>)
{
    __m512i selected[sizeof...(z)] = {};
    const __m512i wanted = _mm512_set1_epi64(index);
    for (unsigned i = 0; i < count; ++i, table += 8 * sizeof...(z)) {
        const __mmask8 lanes = _mm512_cmpeq_epu64_mask(wanted, _mm512_set1_epi64(i));
        ((selected[z] = _mm512_mask_mov_epi64(selected[z], lanes, _mm512_load_si512(table + 8 * z))), ...);
    }
    (_mm512_store_si512(r + 8 * z, selected[z]), ...);
}

template <std::size_t Z> class MontgomeryIfma {
public:
    struct Element {
        alignas(64) std::uint64_t d[8 * Z];
    };
    static constexpr int maxBits = 8 * Z * limbBits - 2;

    explicit MontgomeryIfma(const ZIRC_BN& m)
    {
        const std::size_t limbs = static_cast<std::size_t>(bnBits(m) + 2 + limbBits - 1) / limbBits;
        toLimbs<limbBits>(N.d, 8 * Z, m);
        modulus = {N.d, negativeInverse(N.d[0]), limbs};
        Temporary square;
        powerOfTwo(square, 2 * limbBits * limbs, m);
        toLimbs<limbBits>(RR.d, 8 * Z, square);
    }
    MontgomeryIfma(const MontgomeryIfma&) = delete;
    MontgomeryIfma& operator=(const MontgomeryIfma&) = delete;
    ~MontgomeryIfma()
    {
        wipe(&N, sizeof N);
        wipe(&RR, sizeof RR);
    }

    void mul(Element& r, const Element& a, const Element& b) const { multiply(r.d, a.d, b.d, modulus, Registers<Z>()); }
    void sqr(Element& r) const { multiply(r.d, r.d, r.d, modulus, Registers<Z>()); }
    void select(Element& r, const Element* table, int count, unsigned index) const
    {
        selectRow(r.d, table->d, static_cast<unsigned>(count), index, Registers<Z>());
    }

    void enter(Element& r, const ZIRC_BN& a) const
    {
        toLimbs<limbBits>(r.d, 8 * Z, a);
        mul(r, r, RR);
    }
    // A product with 1 is N at most, and N stands for zero.
    void leave(ZIRC_BN& r, Element& a, std::size_t words) const
    {
        const Element one = {{1}};
        mul(a, a, one);
        std::uint64_t difference = 0;
        for (std::size_t i = 0; i < 8 * Z; ++i) difference |= a.d[i] ^ N.d[i];
        const auto isLess = hidden(std::uint64_t{0} - static_cast<std::uint64_t>(difference != 0));
        for (std::uint64_t& limb : a.d) limb &= isLess;
        fromLimbs<limbBits>(r, words, a.d, 8 * Z);
    }

private:
    Modulus modulus{};
    Element N, RR; // RR is R squared modulo N
};

// The first of the sizes that the modulus fits in.
template <std::size_t Z, std::size_t... more>
void modExpOfSize(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& p, const ZIRC_BN& m, bool secret)
{
    if (bnBits(m) <= MontgomeryIfma<Z>::maxBits) {
        modExp<MontgomeryIfma<Z>>(r, a, p, m, secret);
    } else if constexpr (sizeof...(more) > 0) {
        modExpOfSize<more...>(r, a, p, m, secret);
    } else {
        modExpWide(r, a, p, m, secret);
    }
}

} // namespace

void modExpIfma512(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& p, const ZIRC_BN& m, bool secret)
{
    modExpOfSize<1, 2, 3, 4, 5, 8>(r, a, p, m, secret);
}

} // namespace vrno

#endif
