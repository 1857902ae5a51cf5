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

// A product on its way: the sums of limbs of a x b and of multiples of N, with zeros on top. The lowest limb is kept apart in
// `low`, so that the next multiple of N does not wait for the vectors; what lane 0 holds has no meaning.
template <std::size_t Z> struct Product {
    __m512i A[Z], N[Z], x[Z + 1] = {}, y[Z + 1] = {};
    std::uint64_t a0, N0, N1, n0, low = 0;
};

template <std::size_t... z>
IFMA512 [[gnu::always_inline]] inline void begin(Product<sizeof...(z)>& p, const std::uint64_t* a, const Modulus& modulus,
                                                 std::index_sequence<z...>)
{
    ((p.A[z] = _mm512_load_si512(a + 8 * z), p.N[z] = _mm512_load_si512(modulus.N + 8 * z)), ...);
    p.a0 = a[0];
    p.N0 = modulus.N[0];
    p.N1 = modulus.N[1];
    p.n0 = modulus.n0;
}

// Adds a limb of b times a, and the multiple of N that clears the lowest limb, which then leaves.
template <std::size_t... z>
IFMA512 [[gnu::always_inline]] inline void turn(Product<sizeof...(z)>& p, std::uint64_t limb, std::index_sequence<z...>)
{
    const __m512i digit = _mm512_set1_epi64(static_cast<long long>(limb));
    ((p.x[z] = _mm512_madd52lo_epu64(p.x[z], p.A[z], digit)), ...);
    const DoubleLimb lowest = static_cast<DoubleLimb>(p.a0) * limb + p.low;
    const std::uint64_t lowestLimb = static_cast<std::uint64_t>(lowest) << spareBits;
    const std::uint64_t multiple = lowestLimb * p.n0; // in the upper 52 bits
    const __m512i multiples = _mm512_set1_epi64(static_cast<long long>(multiple >> spareBits));
    const __m128i next = _mm_add_epi64(_mm512_castsi512_si128(p.x[0]), _mm512_castsi512_si128(p.y[0]));
    // The lowest limb and that of N x multiple are both 0 or sum up to one that is carried.
    p.low =
        static_cast<std::uint64_t>(lowest >> limbBits) + (lowestLimb != 0) + static_cast<std::uint64_t>(_mm_extract_epi64(next, 1));
    p.low += static_cast<std::uint64_t>(static_cast<DoubleLimb>(p.N0) * multiple >> 64) + (p.N1 * multiple >> spareBits);
    ((p.y[z] = _mm512_madd52lo_epu64(p.y[z], p.N[z], multiples)), ...);
    ((p.x[z] = _mm512_alignr_epi64(p.x[z + 1], p.x[z], 1)), ...);
    ((p.y[z] = _mm512_alignr_epi64(p.y[z + 1], p.y[z], 1)), ...);
    ((p.x[z] = _mm512_madd52hi_epu64(p.x[z], p.A[z], digit)), ...);
    ((p.y[z] = _mm512_madd52hi_epu64(p.y[z], p.N[z], multiples)), ...);
}

template <std::size_t... z>
IFMA512 [[gnu::always_inline]] inline void end(std::uint64_t* r, Product<sizeof...(z)>& p, std::index_sequence<z...> registers)
{
    ((p.x[z] = _mm512_add_epi64(p.x[z], p.y[z])), ...);
    p.x[0] = _mm512_mask_set1_epi64(p.x[0], 1, static_cast<long long>(p.low));
    normalise(r, p.x, registers);
}

// r = a x b / R, below 2 x N.
template <std::size_t... z>
IFMA512 void multiply(std::uint64_t* r, const std::uint64_t* a, const std::uint64_t* b, const Modulus& modulus,
                      std::index_sequence<z...> registers)
{
    Product<sizeof...(z)> p;
    begin(p, a, modulus, registers);
    for (std::size_t i = 0; i < modulus.limbs; ++i) turn(p, b[i], registers);
    end(r, p, registers);
}

// Two products side by side, under moduli of as many limbs: each turn of one waits for its last one, and the processor works
// on the other meanwhile. Numbers and results are pairs, one behind the other.
template <std::size_t... z>
IFMA512 void multiplyPair(std::uint64_t* r, const std::uint64_t* a, const std::uint64_t* b, const Modulus (&modulus)[2],
                          std::index_sequence<z...> registers)
{
    constexpr std::size_t second = 8 * sizeof...(z);
    Product<sizeof...(z)> p, q;
    begin(p, a, modulus[0], registers);
    begin(q, a + second, modulus[1], registers);
    for (std::size_t i = 0; i < modulus[0].limbs; ++i) {
        turn(p, b[i], registers);
        turn(q, b[second + i], registers);
    }
    end(r, p, registers);
    end(r + second, q, registers);
}

// The entry `index` of a table whose entries stand `stride` limbs apart.
template <std::size_t... z>
IFMA512 void selectRow(std::uint64_t* r, const std::uint64_t* table, std::size_t stride, unsigned count, unsigned index,
                       std::index_sequence<z...>)
{
    __m512i selected[sizeof...(z)] = {};
    const __m512i wanted = _mm512_set1_epi64(index);
    for (unsigned i = 0; i < count; ++i, table += stride) {
        const __mmask8 lanes = _mm512_cmpeq_epu64_mask(wanted, _mm512_set1_epi64(i));
        ((selected[z] = _mm512_mask_mov_epi64(selected[z], lanes, _mm512_load_si512(table + 8 * z))), ...);
    }
    (_mm512_store_si512(r + 8 * z, selected[z]), ...);
}

// Limbs of an R for a modulus of so many bits.
constexpr std::size_t limbsFor(int bits)
{
    return static_cast<std::size_t>(bits + 2 + limbBits - 1) / limbBits;
}

template <std::size_t Z> class MontgomeryIfma {
public:
    struct Element {
        alignas(64) std::uint64_t d[8 * Z];
    };
    static constexpr int maxBits = 8 * Z * limbBits - 2;

    explicit MontgomeryIfma(const ZIRC_BN& m) : MontgomeryIfma(m, limbsFor(bnBits(m))) {}
    MontgomeryIfma(const ZIRC_BN& m, std::size_t limbs)
    {
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
        selectRow(r.d, table->d, 8 * Z, static_cast<unsigned>(count), index, Registers<Z>());
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

    const Modulus& getModulus() const { return modulus; }

private:
    Modulus modulus{};
    Element N, RR; // RR is R squared modulo N
};

// A ring of pairs, each half under a modulus of its own.
template <std::size_t Z> class MontgomeryIfmaPair {
public:
    using Half = typename MontgomeryIfma<Z>::Element;
    struct Element {
        Half half[2];
    };

    MontgomeryIfmaPair(const ZIRC_BN& m1, const ZIRC_BN& m2)
        : MontgomeryIfmaPair(m1, m2, limbsFor(bnBits(m1) > bnBits(m2) ? bnBits(m1) : bnBits(m2)))
    {}

    void mul(Element& r, const Element& a, const Element& b) const
    {
        multiplyPair(r.half[0].d, a.half[0].d, b.half[0].d, moduli, Registers<Z>());
    }
    void sqr(Element& r) const { mul(r, r, r); }
    void select(Element& r, const Element* table, int count, unsigned first, unsigned second) const
    {
        const auto entries = static_cast<unsigned>(count);
        selectRow(r.half[0].d, table->half[0].d, 16 * Z, entries, first, Registers<Z>());
        selectRow(r.half[1].d, table->half[1].d, 16 * Z, entries, second, Registers<Z>());
    }

    const MontgomeryIfma<Z> half[2];

private:
    MontgomeryIfmaPair(const ZIRC_BN& m1, const ZIRC_BN& m2, std::size_t limbs)
        : half{{m1, limbs}, {m2, limbs}}, moduli{half[0].getModulus(), half[1].getModulus()}
    {}

    const Modulus moduli[2];
};

template <std::size_t Z> void modExpPair(const SecretPower& first, const SecretPower& second)
{
    using Pair = MontgomeryIfmaPair<Z>;
    const Pair pair(first.m, second.m);
    const SecretPower* const powers[] = {&first, &second};
    PowerTable<typename Pair::Element, 2> values;
    typename Pair::Element &result = values.v[0], &base = values.v[1];
    Temporary one;
    bnSetWord(one, 1);
    for (int i = 0; i < 2; ++i) {
        pair.half[i].enter(result.half[i], one);
        pair.half[i].enter(base.half[i], powers[i]->a);
    }
    powerSecret(pair, result, base, first.p, second.p);
    for (int i = 0; i < 2; ++i) pair.half[i].leave(powers[i]->r, result.half[i], significant(powers[i]->m));
}

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

// Three registers of each number are what there is room for.
bool modExpPairIfma512(const SecretPower& first, const SecretPower& second)
{
    const int bits = bnBits(first.m) > bnBits(second.m) ? bnBits(first.m) : bnBits(second.m);
    if (bits <= MontgomeryIfma<2>::maxBits) {
        modExpPair<2>(first, second);
    } else if (bits <= MontgomeryIfma<3>::maxBits) {
        modExpPair<3>(first, second);
    } else {
        return false;
    }
    return true;
}

} // namespace vrno

#endif
