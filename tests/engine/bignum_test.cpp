// Big numbers: compared with OpenSSL's on random and on extreme operands; word layers and kernels with each other.
#include "engine/bignum/division.h"
#include "engine/bignum/montgomery.h"
#include "engine/bignum/primes.h"
#include "engine/bignum/rows.h"
#include "engine/peer.h"
#include "support/bytes.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>

using namespace vrno;
using namespace test;

namespace {

template <class Compute> std::string peer(Compute compute)
{
    Peer r;
    return compute(r) ? r.text() : "failed";
}

std::string text(const ZIRC_BN& a)
{
    if (a.top > 1 && a.d[a.top - 1] == 0) return "not normalised";
    return Peer(a).text();
}

// ---- operands ----

std::mt19937 numbers(7);

int below(int limit) { return static_cast<int>(numbers() % static_cast<unsigned>(limit)); }

// A number of so many bits; its words are often all ones or zeros. Zero comes in both forms.
ZIRC_BN draw(int bits, bool isSigned = false)
{
    ZIRC_BN a;
    const int words = (bits + 31) / 32, kind = below(4);
    for (int i = 0; i < words; ++i) {
        const unsigned word = static_cast<unsigned>(numbers()), edge = numbers() % 2 ? ~0U : 0;
        if (kind > 1) {
            a.d[i] = numbers() % 4 ? word : edge;
        } else {
            a.d[i] = kind == 1 ? ~0U : 0;
        }
    }
    a.top = words;
    if (bits % 32 > 0) a.d[words - 1] &= (1U << (bits % 32)) - 1;
    if (bits > 0) a.d[words - 1] |= 1U << ((bits - 1) % 32);
    a.neg = isSigned && bits > 0 ? numbers() % 2 : 0;
    if (bits == 0 && numbers() % 2) {
        a.d[0] = 0;
        a.top = 1;
    }
    return a;
}

ZIRC_BN drawOdd(int bits)
{
    ZIRC_BN a = draw(bits);
    a.d[0] |= 1;
    return a;
}

ZIRC_BN number(const char* hexadecimal)
{
    const Peer made;
    BIGNUM* into = made;
    BN_hex2bn(&into, hexadecimal);
    return made.ours();
}

// ---- routines in pairs ----

struct Operands {
    ZIRC_BN a, b, m;
    int n;
    Peer A = a, B = b, M = m;
};

ZIRC_BN& set(ZIRC_BN& r, const ZIRC_BN& a)
{
    r = a;
    return r;
}

void setOrder(ZIRC_BN& r, int order) { bnSetWord(r, static_cast<unsigned>(order + 1)); }

void throughBytes(ZIRC_BN& r, const ZIRC_BN& a)
{
    unsigned char bytes[bnBytes + 1];
    bnToBytesFixed(bytes, a, bnBytes + 1);
    bnFromBytes(r, bytes, bnBytes + 1);
}

// A routine of ours on operands, and the peer's that must give the same.
struct Pair {
    const char* name;
    void (*ours)(ZIRC_BN& r, const Operands& o);
    int (*peers)(BIGNUM* r, const Operands& o);
};
#define PAIR(name, ours, peers)                                                                                                    \
    {                                                                                                                              \
        name, [](ZIRC_BN& r, const Operands& o) { ours; }, [](BIGNUM* r, const Operands& o) { return static_cast<int>(peers); }    \
    }

// clang-format off
const Pair pairs[] = {
    PAIR("add", bnAdd(r, o.a, o.b), BN_add(r, o.A, o.B)),
    PAIR("sub", bnSub(r, o.a, o.b), BN_sub(r, o.A, o.B)),
    PAIR("addMagnitudes", bnAddMagnitudes(r, o.a, o.b), BN_uadd(r, o.A, o.B)),
    PAIR("add in place", bnAdd(set(r, o.b), o.a, r), BN_add(r, o.A, o.B)),
    PAIR("sub in place", bnSub(set(r, o.b), o.a, r), BN_sub(r, o.A, o.B)),
    PAIR("addWord", bnAddWord(set(r, o.m), r, 0xFFFFFFFF), BN_copy(r, o.M) && BN_add_word(r, 0xFFFFFFFF)),
    PAIR("subWord", bnShiftLeft(r, o.m, 32); bnSubWord(r, r, 0xFFFFFFFF), BN_lshift(r, o.M, 32) && BN_sub_word(r, 0xFFFFFFFF)),
    PAIR("mul", bnMul(r, o.a, o.b), BN_mul(r, o.A, o.B, bnContext())),
    PAIR("sqr", bnSqr(r, o.a), BN_sqr(r, o.A, bnContext())),
    PAIR("quotient", bnDiv(&set(r, o.m), nullptr, o.a, r), BN_div(r, nullptr, o.A, o.M, bnContext())),
    PAIR("remainder", bnDiv(nullptr, &set(r, o.a), r, o.m), BN_mod(r, o.A, o.M, bnContext())),
    PAIR("mod", bnMod(r, o.a, o.m), BN_nnmod(r, o.A, o.M, bnContext())),
    PAIR("modSub", bnModSub(r, o.a, o.b, o.m), BN_mod_sub(r, o.A, o.B, o.M, bnContext())),
    PAIR("modMul", bnModMul(r, o.a, o.b, o.m), BN_mod_mul(r, o.A, o.B, o.M, bnContext())),
    PAIR("modSqr", bnModSqr(r, o.a, o.m), BN_mod_sqr(r, o.A, o.M, bnContext())),
    PAIR("shiftLeft", bnShiftLeft(set(r, o.a), r, o.n), BN_lshift(r, o.A, o.n)),
    PAIR("shiftRight", bnShiftRight(set(r, o.a), r, o.n), BN_rshift(r, o.A, o.n)),
    PAIR("maskBits", bnMaskBits(set(r, o.a), o.n), BN_copy(r, o.A) && BN_mask_bits(r, o.n) >= 0),
    PAIR("xor twice", bnXor(r, o.m, o.a); bnXor(r, r, o.a), BN_copy(r, o.M) != nullptr),
    PAIR("bytes", throughBytes(r, o.m), BN_copy(r, o.M) != nullptr),
    PAIR("modWord", bnSetWord(r, bnModWord(o.a, 0xFFF1)), BN_set_word(r, BN_mod_word(o.A, 0xFFF1))),
    PAIR("order", setOrder(r, bnCompare(o.a, o.b)), BN_set_word(r, static_cast<unsigned>(BN_cmp(o.A, o.B) + 1))),
};

void multiplyGcdByLcm(ZIRC_BN& r, const Operands& o)
{
    ZIRC_BN gcd;
    bnGcd(gcd, o.a, o.b);
    bnLcm(r, o.a, o.b);
    bnMul(r, gcd, r);
    r.neg = o.a.neg ^ o.b.neg;
}

// Zero where there is none.
void inverse(ZIRC_BN& r, const Operands& o)
{
    ZIRC_BN a;
    bnMod(a, o.a, o.m);
    if (bnModInverse(r, a, o.m) != 1) bnSetWord(r, 0);
}

const Pair slowPairs[] = {
    PAIR("gcd", bnGcd(r, o.a, o.b), BN_gcd(r, o.A, o.B, bnContext())),
    PAIR("gcd x lcm", multiplyGcdByLcm(r, o), BN_mul(r, o.A, o.B, bnContext())),
    PAIR("inverse", inverse(r, o), BN_mod_inverse(r, o.A, o.M, bnContext()) || BN_set_word(r, 0)),
};
// clang-format on

template <std::size_t count> void compare(const Pair (&table)[count], int maxBits, int turns)
{
    for (int turn = 0; turn < turns; ++turn) {
        const Operands o{draw(below(maxBits), true), draw(below(maxBits), true), draw(1 + below(maxBits)), below(maxBits)};
        for (const Pair& pair : table) {
            ZIRC_BN r;
            pair.ours(r, o);
            ASSERT_EQ(text(r), peer([&](BIGNUM* p) { return pair.peers(p, o); }))
                << pair.name << " of " << text(o.a) << ", " << text(o.b) << ", " << text(o.m) << ", " << o.n;
        }
    }
}

} // namespace

TEST(BigNumber, ShortOperandsAgreeWithOpenssl) { compare(pairs, 140, 6000); }
TEST(BigNumber, LongOperandsAgreeWithOpenssl) { compare(pairs, 2200, 1500); }
TEST(BigNumber, DivisorsAndInversesAgreeWithOpenssl)
{
    compare(slowPairs, 40, 2000);
    compare(slowPairs, 1100, 60);
}

TEST(BigNumber, EveryExponentiationAgreesWithOpenssl)
{
    for (int turn = 0; turn < 600; ++turn) {
        static constexpr int lengths[] = {1, 2, 17, 18, 127, 128, 160, 255, 256, 512, 1024};
        const bool isLong = turn >= 500;
        const int bits = isLong ? (turn % 3 ? 1 + below(2048) : 1024) : 1 + below(400);
        const int exponentBits = isLong ? below(300) : turn % 2 ? below(600) : lengths[turn / 2 % 11];
        const ZIRC_BN a = draw(below(bits + 64), true), p = draw(exponentBits), m = turn % 4 ? drawOdd(bits) : draw(bits);
        const std::string expected = peer([&](BIGNUM* r) {
            BN_nnmod(r, Peer(a), Peer(m), bnContext());
            return BN_mod_exp(r, r, Peer(p), Peer(m), bnContext());
        });
        const std::string where = text(a) + " ^ " + text(p) + " mod " + text(m);
        ZIRC_BN r;
        for (auto* const ours : {bnModExp, bnModExpReduced, bnModExpSecret}) {
            ours(r, a, p, m);
            ASSERT_EQ(text(r), expected) << where;
        }
        // Two powers together, of equal and of very different lengths, and such as no kernel pairs.
        const int otherBits = turn % 3 ? bits : 1 + below(1300);
        const ZIRC_BN otherP = draw(turn % 7 ? below(600) : 0), otherM = turn % 5 ? drawOdd(otherBits) : draw(otherBits);
        ZIRC_BN first, second;
        bnModExpSecret(r, a, otherP, otherM);
        bnModExpSecretPair(a, first, p, m, second, otherP, otherM);
        ASSERT_EQ(text(first) + text(second), expected + text(r)) << where << ", " << text(otherP) << " mod " << text(otherM);
        if (!isOdd(m) || bnBits(m) == 1 || bnIsZero(p)) continue;
        ZIRC_BN reduced;
        bnMod(reduced, a, m);
        for (const Kernel<ModExpFunction>& kernel : modExpKernels) {
            if (!cpuHas(kernel.needs)) continue;
            for (const bool secret : {false, true}) {
                kernel.run(r, reduced, p, m, secret);
                ASSERT_EQ(text(r), expected) << kernel.name << secret << " " << where;
            }
        }
    }
}

// Under a modulus of ones only, and with a base next to it, every carry runs through all limbs.
TEST(BigNumber, KernelsCarryThroughAllLimbs)
{
    for (int bits = 2; bits <= montgomeryMaxBits; bits += bits < 80 ? 1 : bits < 300 ? 13 : 187) {
        ZIRC_BN m, a, p;
        bnSetWord(m, 0);
        for (int i = 0; i < bits; ++i) {
            bnShiftLeftOne(m, m);
            bnAddWord(m, m, 1);
        }
        bnSubWord(a, m, 1);
        bnSetWord(p, 0x1FFFF);
        for (const Kernel<ModExpFunction>& kernel : modExpKernels) {
            if (!cpuHas(kernel.needs)) continue;
            ZIRC_BN r;
            kernel.run(r, a, p, m, bits % 2);
            EXPECT_TRUE(bnIsEqual(r, a)) << kernel.name << " " << bits; // -1 to an odd power
        }
        ZIRC_BN first, second;
        bnModExpSecretPair(a, first, p, m, second, p, m);
        EXPECT_TRUE(bnIsEqual(first, a) && bnIsEqual(second, a)) << bits;
    }
}

// A row whose words are often all ones or zeros.
template <std::size_t n> void drawRow(std::uint32_t (&row)[n])
{
    for (std::uint32_t& word : row)
        word = static_cast<std::uint32_t>(numbers() % 3 ? numbers() : numbers() % 2 ? ~0U : numbers() % 3);
}

// Every layer's quotient, times the divisor, plus the remainder, is the dividend.
template <class Layer> void divideAndMultiply()
{
    for (int turn = 0; turn < 30000; ++turn) {
        std::uint32_t a[13], d[8], q[14], rem[8], product[21];
        drawRow(a);
        drawRow(d);
        const std::size_t an = numbers() % 14, dn = 1 + numbers() % 8, digits = an < dn ? 0 : an - dn + 1;
        d[dn - 1] |= 1U << (numbers() % 32);
        std::fill_n(q, 14, 0x5A5A5A5AU);
        divideRows<Layer>(q, rem, a, an, d, dn);
        mulRows<WordsPortable>(product, d, dn, q, digits);
        EXPECT_EQ(0U, addToRow(product + dn, digits, addRow(product, product, rem, dn)));
        ASSERT_EQ(0, compareRows(product, a, an)) << turn;
        ASSERT_EQ(significant(product + an, dn + digits - an), 0U) << turn;
        ASSERT_LT(compareRows(rem, d, dn), 0) << turn;
        ASSERT_EQ(q[digits], 0x5A5A5A5AU) << turn;
    }
}

TEST(BigNumber, EveryLayerDivides)
{
    divideAndMultiply<WordsPortable>();
    divideAndMultiply<WordsNative>();
    divideAndMultiply<WidestWords>();
}

TEST(BigNumber, ZerosAndBadOperandsGiveDefinedResults)
{
    const ZIRC_BN zero = number("0"), one = number("1"), six = number("6"), four = number("4");
    ZIRC_BN longZero = one, minusSix = six, r = number("1234"), q = r;
    longZero.d[0] = 0;
    minusSix.neg = 1;
    unsigned char bytes[bnBytes + 8] = {1, 2, 3};
    EXPECT_TRUE(bnIsEqual(zero, longZero) && bnCompareMagnitude(longZero, zero) == 0 && bnCompare(zero, longZero) == 0);
    EXPECT_EQ(bnToBytes(bytes, longZero), 0);
    EXPECT_EQ(bnCompareMagnitude(number("100000000000000000000"), one), 2);
    EXPECT_FALSE(bnDiv(&q, &r, six, longZero) || bnMaskBits(r, 32));
    EXPECT_EQ(text(q) + text(r), "12341234");
    for (const auto& [length, octets] : {std::pair{1, "010203"}, {3, "001234"}}) { // nothing is written where it does not fit
        bnToBytesFixed(bytes, r, length);
        EXPECT_EQ(hex(test::text(bytes, 3)), octets);
    }
    using Pair = std::pair<const ZIRC_BN*, const ZIRC_BN*>;
    EXPECT_EQ(bnModInverse(r, six, four), -1);
    EXPECT_EQ(bnModInverse(q, minusSix, four), -1);
    EXPECT_EQ(text(q) + text(r), "12340");
    for (const auto& [a, m] : {Pair{&six, &longZero}, {&longZero, &six}}) EXPECT_EQ(bnModInverse(q, *a, *m), -1);
    bnMod(q, six, zero);
    bnLcm(r = six, zero, longZero);
    EXPECT_EQ(text(q) + text(r), "00");
    for (auto* const power : {bnModExp, bnModExpReduced, bnModExpSecret}) {
        std::string results;
        for (const auto& [p, m] : {Pair{&longZero, &four}, {&zero, &one}, {&four, &longZero}}) {
            power(r, six, *p, *m);
            results += text(r) + " ";
        }
        EXPECT_EQ(results, "01 0 0 ");
    }
    EXPECT_EQ(bnModWord(six, 0), 0U);
}

// Under the sanitizers these also show that nothing is written behind a record.
TEST(BigNumber, ResultsThatAreTooLongStayInTheRecord)
{
    const std::vector<unsigned char> bytes(5000, 0xFF);
    ZIRC_BN full, r, m;
    bnFromBytes(full, bytes.data(), 5000);
    EXPECT_EQ(bnBits(full), 4800);
    bnAdd(r, full, full);
    EXPECT_EQ(bnBits(r), 4800);
    bnAddWord(r, full, 1);
    EXPECT_EQ(bnBits(r), 0);
    bnShiftLeft(r, full, 31);
    EXPECT_EQ(bnBits(r), 4800);
    bnShiftLeft(r, full, 0x7FFFFFFF);
    EXPECT_EQ(bnBits(r), 0);
    bnMul(r, full, full);
    EXPECT_EQ(text(r), "01");
    bnSubWord(m, full, 1);
    bnModMul(r, full, full, m);
    EXPECT_EQ(text(r), "01");
    bnModExp(r, full, full, m);
    EXPECT_EQ(text(r), "01");
    for (const int bits : {0, 4801}) EXPECT_LT(bnRandom(r, bits, true, true), 0);
    for (const int bits : {1, 4801}) EXPECT_LT(bnGeneratePrime(r, bits), 0);
}

TEST(BigNumber, PrimesAreDistinguishedFromComposites)
{
    std::vector<bool> listed(17864);
    for (const std::uint32_t prime : primeTable) listed[prime] = true;
    ZIRC_BN n;
    for (unsigned i = 0; i < 2000; ++i) {
        bnSetWord(n, i);
        ASSERT_EQ(bnIsPrime(n, 0), listed[i]) << i;
    }
    for (const int bits : {3, 64, 129, 256, 512}) {
        ASSERT_EQ(bnGeneratePrime(n, bits), 0);
        EXPECT_TRUE(BN_check_prime(Peer(n), bnContext(), nullptr)) << text(n);
        if (bits > 17) { EXPECT_TRUE(bnBits(n) == bits && bnTestBit(n, bits - 2)) << text(n); }
        for (std::size_t i = 1; i < primeCount; ++i) ASSERT_GT(bnModWord(n, primeTable[i]), 1U);
    }
}

TEST(BigNumber, RandomNumbersHaveTheirLength)
{
    ZIRC_BN n;
    for (int turn = 0; turn < 600; ++turn) {
        const int bits = 1 + turn / 4;
        const bool top = turn & 1, bottom = turn & 2;
        ASSERT_EQ(bnRandom(n, bits, top, bottom), 0);
        ASSERT_EQ(bnBits(n), bits);
        ASSERT_TRUE(bnTestBit(n, bits - 2) || !top || bits == 1);
        ASSERT_TRUE(bnTestBit(n, 0) || !bottom);
    }
    unsigned char one[50] = {}, two[50] = {};
    for (unsigned char* out : {one, two}) ASSERT_EQ(fipsRandom(out, 47), 0);
    EXPECT_NE(0, std::memcmp(one, two, 47));
    EXPECT_NE(0, std::memcmp(one + 37, one + 27, 10));
    EXPECT_EQ(0, one[47] | one[48] | one[49]);
}
