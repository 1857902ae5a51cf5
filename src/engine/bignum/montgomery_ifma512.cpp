// Exponentiation over limbs of 52 bits, eight or four in a register, with the fused multiply-add of AVX-512 IFMA.
//
// Values stay below 2 x N, and R is above 4 x N. So a product is below 2 x N again, and no step has to subtract N.
#include "engine/bignum/montgomery.h"

#if defined(__x86_64__) && defined(__SIZEOF_INT128__)

#include "engine/bignum/montgomery_rows.h"

// The compiler's own header reads undefined registers, and the compiler warns of them (GCC bug 105593).
#ifndef __clang__
#pragma GCC diagnostic ignored "-Wuninitialized"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif
#include <immintrin.h>

#include <utility>

#define IFMA512 [[gnu::target("avx512f,avx512vl,avx512ifma,bmi2")]]
#define IFMA512_INLINE IFMA512 [[gnu::always_inline]] static inline

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

// Eight limbs: the fewest instructions.
struct Eight {
    using V = __m512i;
    static constexpr std::size_t lanes = 8;

    IFMA512_INLINE V all(std::uint64_t limb) { return _mm512_set1_epi64(static_cast<long long>(limb)); }
    IFMA512_INLINE V load(const std::uint64_t* from) { return _mm512_load_si512(from); }
    IFMA512_INLINE void store(std::uint64_t* to, V v) { _mm512_store_si512(to, v); }
    IFMA512_INLINE V addLow(V sum, V a, V b) { return _mm512_madd52lo_epu64(sum, a, b); }
    IFMA512_INLINE V addHigh(V sum, V a, V b) { return _mm512_madd52hi_epu64(sum, a, b); }
    IFMA512_INLINE V add(V a, V b) { return _mm512_add_epi64(a, b); }
    IFMA512_INLINE V both(V a, V b) { return _mm512_and_si512(a, b); }
    IFMA512_INLINE V upper(V v) { return _mm512_srli_epi64(v, limbBits); }
    IFMA512_INLINE V down(V v, V above) { return _mm512_alignr_epi64(above, v, 1); } // by a lane
    IFMA512_INLINE V up(V v, V below) { return _mm512_alignr_epi64(v, below, lanes - 1); }
    IFMA512_INLINE __m128i bottom(V v) { return _mm512_castsi512_si128(v); }
    IFMA512_INLINE std::uint64_t above(V a, V b) { return _mm512_cmpgt_epu64_mask(a, b); }
    IFMA512_INLINE std::uint64_t equal(V a, V b) { return _mm512_cmpeq_epu64_mask(a, b); }
    IFMA512_INLINE V addWhere(V v, std::uint64_t mask, V b) { return _mm512_mask_add_epi64(v, static_cast<__mmask8>(mask), v, b); }
    IFMA512_INLINE V pick(V v, std::uint64_t mask, V b) { return _mm512_mask_mov_epi64(v, static_cast<__mmask8>(mask), b); }
};

// Four limbs: fewer unused lanes in the last register.
struct Four {
    using V = __m256i;
    static constexpr std::size_t lanes = 4;

    IFMA512_INLINE V all(std::uint64_t limb) { return _mm256_set1_epi64x(static_cast<long long>(limb)); }
    IFMA512_INLINE V load(const std::uint64_t* from) { return _mm256_load_si256(reinterpret_cast<const __m256i*>(from)); }
    IFMA512_INLINE void store(std::uint64_t* to, V v) { _mm256_store_si256(reinterpret_cast<__m256i*>(to), v); }
    IFMA512_INLINE V addLow(V sum, V a, V b) { return _mm256_madd52lo_epu64(sum, a, b); }
    IFMA512_INLINE V addHigh(V sum, V a, V b) { return _mm256_madd52hi_epu64(sum, a, b); }
    IFMA512_INLINE V add(V a, V b) { return _mm256_add_epi64(a, b); }
    IFMA512_INLINE V both(V a, V b) { return _mm256_and_si256(a, b); }
    IFMA512_INLINE V upper(V v) { return _mm256_srli_epi64(v, limbBits); }
    IFMA512_INLINE V down(V v, V above) { return _mm256_alignr_epi64(above, v, 1); }
    IFMA512_INLINE V up(V v, V below) { return _mm256_alignr_epi64(v, below, lanes - 1); }
    IFMA512_INLINE __m128i bottom(V v) { return _mm256_castsi256_si128(v); }
    IFMA512_INLINE std::uint64_t above(V a, V b) { return _mm256_cmpgt_epu64_mask(a, b); }
    IFMA512_INLINE std::uint64_t equal(V a, V b) { return _mm256_cmpeq_epu64_mask(a, b); }
    IFMA512_INLINE V addWhere(V v, std::uint64_t mask, V b) { return _mm256_mask_add_epi64(v, static_cast<__mmask8>(mask), v, b); }
    IFMA512_INLINE V pick(V v, std::uint64_t mask, V b) { return _mm256_mask_mov_epi64(v, static_cast<__mmask8>(mask), b); }
};

template <std::size_t Z> using Registers = std::make_index_sequence<Z>;

// r = sums of up to 64 bits in each lane, as limbs. A lane takes the upper bits of the one below it. What it then carries is
// one bit. An integer addition of the masks of carrying and of full lanes moves all these bits to their last lane at once.
template <class L, std::size_t... z> IFMA512_INLINE void normalise(std::uint64_t* r, typename L::V* sums, std::index_sequence<z...>)
{
    const auto full = L::all(limbMask), one = L::all(1);
    const typename L::V upper[] = {L::all(0), L::upper(sums[z])...};
    ((sums[z] = L::add(L::both(sums[z], full), L::up(upper[z + 1], upper[z]))), ...);
    const std::uint64_t carries = (... | (L::above(sums[z], full) << (L::lanes * z)));
    const std::uint64_t fulls = (... | (L::equal(sums[z], full) << (L::lanes * z)));
    const std::uint64_t taken = ((carries << 1) + fulls) ^ fulls;
    ((sums[z] = L::addWhere(sums[z], taken >> (L::lanes * z) & ((1U << L::lanes) - 1), one)), ...);
    (L::store(r + L::lanes * z, L::both(sums[z], full)), ...);
}

// The state of a product: the sums of limbs of a x b and of multiples of N, with zeros on top. With two rows each of them has its
// own sums, so that neither addition waits for the other; one row takes fewer registers and shifts. The lowest limb is kept in
// `low`, so that the next multiple of N does not wait for the vectors; lane 0 has no meaning.
template <class L, std::size_t Z, int rows> struct Product {
    typename L::V A[Z], N[Z], sums[rows][Z + 1] = {};
    std::uint64_t a0, N0, N1, n0, low = 0;
};

template <class L, int rows, std::size_t... z>
IFMA512_INLINE void begin(Product<L, sizeof...(z), rows>& p, const std::uint64_t* a, const Modulus& modulus,
                          std::index_sequence<z...>)
{
    ((p.A[z] = L::load(a + L::lanes * z), p.N[z] = L::load(modulus.N + L::lanes * z)), ...);
    p.a0 = a[0];
    p.N0 = modulus.N[0];
    p.N1 = modulus.N[1];
    p.n0 = modulus.n0;
}

// Adds a limb of b times a, and the multiple of N that clears the lowest limb, which is then shifted out.
template <class L, int rows, std::size_t... z>
IFMA512_INLINE void turn(Product<L, sizeof...(z), rows>& p, std::uint64_t limb, std::index_sequence<z...>)
{
    auto &x = p.sums[0], &y = p.sums[rows - 1];
    const auto digit = L::all(limb);
    ((x[z] = L::addLow(x[z], p.A[z], digit)), ...);
    const DoubleLimb lowest = static_cast<DoubleLimb>(p.a0) * limb + p.low;
    const std::uint64_t lowestLimb = static_cast<std::uint64_t>(lowest) << spareBits;
    const std::uint64_t multiple = lowestLimb * p.n0; // in the upper 52 bits
    const auto multiples = L::all(multiple >> spareBits);
    const __m128i next = rows > 1 ? _mm_add_epi64(L::bottom(x[0]), L::bottom(y[0])) : L::bottom(x[0]);
    // The lowest limb and that of N x multiple are both 0 or sum up to one that is carried.
    p.low =
        static_cast<std::uint64_t>(lowest >> limbBits) + (lowestLimb != 0) + static_cast<std::uint64_t>(_mm_extract_epi64(next, 1));
    p.low += static_cast<std::uint64_t>(static_cast<DoubleLimb>(p.N0) * multiple >> 64) + (p.N1 * multiple >> spareBits);
    ((y[z] = L::addLow(y[z], p.N[z], multiples)), ...);
    ((x[z] = L::down(x[z], x[z + 1])), ...);
    if constexpr (rows > 1) ((y[z] = L::down(y[z], y[z + 1])), ...);
    ((x[z] = L::addHigh(x[z], p.A[z], digit)), ...);
    ((y[z] = L::addHigh(y[z], p.N[z], multiples)), ...);
}

template <class L, int rows, std::size_t... z>
IFMA512_INLINE void end(std::uint64_t* r, Product<L, sizeof...(z), rows>& p, std::index_sequence<z...> registers)
{
    auto& x = p.sums[0];
    if constexpr (rows > 1) ((x[z] = L::add(x[z], p.sums[1][z])), ...);
    x[0] = L::pick(x[0], 1, L::all(p.low));
    normalise<L>(r, x, registers);
}

// r = a x b / R, below 2 x N.
template <class L, std::size_t... z>
IFMA512 void multiply(std::uint64_t* r, const std::uint64_t* a, const std::uint64_t* b, const Modulus& modulus,
                      std::index_sequence<z...> registers)
{
    Product<L, sizeof...(z), 2> p;
    begin(p, a, modulus, registers);
    for (std::size_t i = 0; i < modulus.limbs; ++i) turn(p, b[i], registers);
    end(r, p, registers);
}

// Two products side by side, under moduli of equally many limbs. Each turn of a product waits for the turn before it, and
// meanwhile the processor works on the other product. Numbers and results are pairs, `second` limbs apart.
template <class L, std::size_t... z>
IFMA512 void multiplyPair(std::uint64_t* r, const std::uint64_t* a, const std::uint64_t* b, std::size_t second,
                          const Modulus (&modulus)[2], std::index_sequence<z...> registers)
{
    constexpr int rows = sizeof...(z) < 5 ? 2 : 1; // two products with two rows of five do not fit into the registers
    Product<L, sizeof...(z), rows> p, q;
    begin(p, a, modulus[0], registers);
    begin(q, a + second, modulus[1], registers);
    for (std::size_t i = 0; i < modulus[0].limbs; ++i) {
        turn(p, b[i], registers);
        turn(q, b[second + i], registers);
    }
    end(r, p, registers);
    end(r + second, q, registers);
}

// The entry `index` of a table whose entries are `stride` limbs apart.
template <class L, std::size_t... z>
IFMA512 void selectRow(std::uint64_t* r, const std::uint64_t* table, std::size_t stride, unsigned count, unsigned index,
                       std::index_sequence<z...>)
{
    typename L::V selected[sizeof...(z)] = {};
    const auto wanted = L::all(index);
    for (unsigned i = 0; i < count; ++i, table += stride) {
        const std::uint64_t lanes = L::equal(wanted, L::all(i));
        ((selected[z] = L::pick(selected[z], lanes, L::load(table + L::lanes * z))), ...);
    }
    (L::store(r + L::lanes * z, selected[z]), ...);
}

// The limbs of R for a modulus of so many bits.
constexpr std::size_t limbsFor(int bits) { return static_cast<std::size_t>(bits + 2 + limbBits - 1) / limbBits; }

template <class L, std::size_t Z> class MontgomeryIfma {
public:
    static constexpr std::size_t room = L::lanes * Z; // limbs
    static constexpr int maxBits = room * limbBits - 2;
    struct Element {
        alignas(64) std::uint64_t d[room];
    };

    explicit MontgomeryIfma(const ZIRC_BN& m) : MontgomeryIfma(m, limbsFor(bnBits(m))) {}
    MontgomeryIfma(const ZIRC_BN& m, std::size_t limbs)
    {
        toLimbs<limbBits>(N.d, room, m);
        modulus = {N.d, negativeInverse(N.d[0]), limbs};
        Temporary square;
        powerOfTwo(square, 2 * limbBits * limbs, m);
        toLimbs<limbBits>(RR.d, room, square);
    }
    MontgomeryIfma(const MontgomeryIfma&) = delete;
    MontgomeryIfma& operator=(const MontgomeryIfma&) = delete;
    ~MontgomeryIfma()
    {
        wipe(&N, sizeof N);
        wipe(&RR, sizeof RR);
    }

    void mul(Element& r, const Element& a, const Element& b) const { multiply<L>(r.d, a.d, b.d, modulus, Registers<Z>()); }
    void sqr(Element& r) const { multiply<L>(r.d, r.d, r.d, modulus, Registers<Z>()); }
    void select(Element& r, const Element* table, int count, unsigned index) const
    {
        selectRow<L>(r.d, table->d, room, static_cast<unsigned>(count), index, Registers<Z>());
    }

    void enter(Element& r, const ZIRC_BN& a) const
    {
        toLimbs<limbBits>(r.d, room, a);
        mul(r, r, RR);
    }
    // A product with 1 is N at most, and N means zero.
    void leave(ZIRC_BN& r, Element& a, std::size_t words) const
    {
        const Element one = {{1}};
        mul(a, a, one);
        std::uint64_t difference = 0;
        for (std::size_t i = 0; i < room; ++i) difference |= a.d[i] ^ N.d[i];
        const auto isLess = hidden(std::uint64_t{0} - static_cast<std::uint64_t>(difference != 0));
        for (std::uint64_t& limb : a.d) limb &= isLess;
        fromLimbs<limbBits>(r, words, a.d, room);
    }

    const Modulus& getModulus() const { return modulus; }

private:
    Modulus modulus{};
    Element N, RR; // RR is R squared modulo N
};

// A ring of pairs, each half with its own modulus.
template <class L, std::size_t Z> class MontgomeryIfmaPair {
public:
    using Ring = MontgomeryIfma<L, Z>;
    struct Element {
        typename Ring::Element half[2];
    };

    MontgomeryIfmaPair(const ZIRC_BN& m1, const ZIRC_BN& m2)
        : MontgomeryIfmaPair(m1, m2, limbsFor(bnBits(m1) > bnBits(m2) ? bnBits(m1) : bnBits(m2)))
    {}

    void mul(Element& r, const Element& a, const Element& b) const
    {
        multiplyPair<L>(r.half[0].d, a.half[0].d, b.half[0].d, stride / 2, moduli, Registers<Z>());
    }
    void sqr(Element& r) const { mul(r, r, r); }
    void select(Element& r, const Element* table, int count, unsigned first, unsigned second) const
    {
        const auto entries = static_cast<unsigned>(count);
        selectRow<L>(r.half[0].d, table->half[0].d, stride, entries, first, Registers<Z>());
        selectRow<L>(r.half[1].d, table->half[1].d, stride, entries, second, Registers<Z>());
    }

    const Ring half[2];

private:
    static constexpr std::size_t stride = sizeof(Element) / sizeof(std::uint64_t);

    MontgomeryIfmaPair(const ZIRC_BN& m1, const ZIRC_BN& m2, std::size_t limbs)
        : half{{m1, limbs}, {m2, limbs}}, moduli{half[0].getModulus(), half[1].getModulus()}
    {}

    const Modulus moduli[2];
};

template <class L, std::size_t Z> void modExpPair(const SecretPower& first, const SecretPower& second)
{
    using Pair = MontgomeryIfmaPair<L, Z>;
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

// In the first of the sizes that the modulus fits in.
template <std::size_t Z, std::size_t... more>
void modExpOfSize(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& p, const ZIRC_BN& m, bool secret)
{
    if (bnBits(m) <= MontgomeryIfma<Eight, Z>::maxBits) {
        modExp<MontgomeryIfma<Eight, Z>>(r, a, p, m, secret);
    } else if constexpr (sizeof...(more) > 0) {
        modExpOfSize<more...>(r, a, p, m, secret);
    }
}

} // namespace

void modExpIfma512(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& p, const ZIRC_BN& m, bool secret)
{
    static_assert(MontgomeryIfma<Eight, 5>::maxBits >= montgomeryMaxBits);
    modExpOfSize<1, 2, 3, 4, 5>(r, a, p, m, secret);
}

// For the primes of RSA with 1024 and 2048 bits; longer ones do not fit into the registers.
bool modExpPairIfma512(const SecretPower& first, const SecretPower& second)
{
    const int bits = bnBits(first.m) > bnBits(second.m) ? bnBits(first.m) : bnBits(second.m);
    if (bits <= MontgomeryIfma<Four, 3>::maxBits) {
        modExpPair<Four, 3>(first, second);
    } else if (bits <= MontgomeryIfma<Four, 5>::maxBits) {
        modExpPair<Four, 5>(first, second);
    } else {
        return false;
    }
    return true;
}

} // namespace vrno

#endif
