// Big numbers against OpenSSL's, on random operands and on those at the edges; the layers and kernels against each other.
#include "engine/bignum/montgomery.h"
#include "engine/bignum/primes.h"
#include "engine/bignum/rows.h"
#include "support/support.h"

#include <openssl/bn.h>

#include <cstring>
#include <memory>
#include <random>

using namespace vrno;
using namespace test;

namespace {

// ---- OpenSSL's numbers as values ----

BN_CTX* context()
{
    static const std::unique_ptr<BN_CTX, decltype(&BN_CTX_free)> made(BN_CTX_new(), BN_CTX_free);
    return made.get();
}

struct Peer {
    std::unique_ptr<BIGNUM, decltype(&BN_free)> number{BN_new(), BN_free};
    Peer() = default;
    Peer(const ZIRC_BN& a) // NOLINT: a number is a number
    {
        std::vector<unsigned char> bytes(bnBytes);
        const int length = bnToBytes(bytes.data(), a);
        BN_bin2bn(bytes.data(), length, number.get());
        BN_set_negative(number.get(), static_cast<int>(a.neg));
    }
    operator BIGNUM*() const { return number.get(); }
    std::string text() const
    {
        const std::unique_ptr<char, void (*)(char*)> hexadecimal(BN_bn2hex(number.get()), [](char* p) { OPENSSL_free(p); });
        return hexadecimal.get();
    }
};

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

int below(int limit)
{
    return static_cast<int>(numbers() % static_cast<unsigned>(limit));
}

// A number of so many bits; its words are often all ones or zeros. Zero comes in both forms.
ZIRC_BN draw(int bits, bool isSigned = false)
{
    ZIRC_BN a;
    const int words = (bits + 31) / 32, kind = below(4);
    for (int i = 0; i < words; ++i) {
        const unsigned word = static_cast<unsigned>(numbers());
        a.d[i] = kind > 1 ? word : kind == 1 ? ~0U : 0;
        if (kind > 1 && numbers() % 4 == 0) a.d[i] = numbers() % 2 ? ~0U : 0;
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

ZIRC_BN number(const std::string& hexadecimal)
{
    BIGNUM* made = nullptr;
    BN_hex2bn(&made, hexadecimal.c_str());
    unsigned char bytes[bnBytes];
    ZIRC_BN a;
    bnFromBytes(a, bytes, BN_bn2bin(made, bytes));
    BN_free(made);
    return a;
}

// ---- routines in pairs ----

struct Operands {
    ZIRC_BN a, b, m;
    int n;
};

struct Pair {
    const char* name;
    void (*ours)(ZIRC_BN& r, const Operands& o);
    int (*peers)(BIGNUM* r, const Operands& o);
};

const Pair pairs[] = {
    {"add", [](ZIRC_BN& r, const Operands& o) { bnAdd(r, o.a, o.b); }, [](BIGNUM* r, const Operands& o) { return BN_add(r, Peer(o.a), Peer(o.b)); }},
    {"sub", [](ZIRC_BN& r, const Operands& o) { bnSub(r, o.a, o.b); }, [](BIGNUM* r, const Operands& o) { return BN_sub(r, Peer(o.a), Peer(o.b)); }},
    {"addMagnitudes", [](ZIRC_BN& r, const Operands& o) { bnAddMagnitudes(r, o.a, o.b); },
     [](BIGNUM* r, const Operands& o) { return BN_uadd(r, Peer(o.a), Peer(o.b)); }},
    {"add in place", [](ZIRC_BN& r, const Operands& o) { bnCopy(r, o.b), bnAdd(r, o.a, r); },
     [](BIGNUM* r, const Operands& o) { return BN_add(r, Peer(o.a), Peer(o.b)); }},
    {"sub in place", [](ZIRC_BN& r, const Operands& o) { bnCopy(r, o.b), bnSub(r, o.a, r); },
     [](BIGNUM* r, const Operands& o) { return BN_sub(r, Peer(o.a), Peer(o.b)); }},
    {"addWord", [](ZIRC_BN& r, const Operands& o) { bnCopy(r, o.a), r.neg = 0, bnAddWord(r, r, 0xFFFFFFFF); },
     [](BIGNUM* r, const Operands& o) {
         BN_copy(r, Peer(o.a)), BN_set_negative(r, 0);
         return BN_add_word(r, 0xFFFFFFFF);
     }},
    {"subWord", [](ZIRC_BN& r, const Operands& o) { bnCopy(r, o.m), bnShiftLeft(r, r, 32), bnSubWord(r, r, 0xFFFFFFFF); },
     [](BIGNUM* r, const Operands& o) {
         BN_lshift(r, Peer(o.m), 32);
         return BN_sub_word(r, 0xFFFFFFFF);
     }},
    {"mul", [](ZIRC_BN& r, const Operands& o) { bnMul(r, o.a, o.b); }, [](BIGNUM* r, const Operands& o) { return BN_mul(r, Peer(o.a), Peer(o.b), context()); }},
    {"sqr", [](ZIRC_BN& r, const Operands& o) { bnSqr(r, o.a); }, [](BIGNUM* r, const Operands& o) { return BN_sqr(r, Peer(o.a), context()); }},
    {"quotient", [](ZIRC_BN& r, const Operands& o) { bnCopy(r, o.m), bnDiv(&r, nullptr, o.a, r); },
     [](BIGNUM* r, const Operands& o) { return BN_div(r, nullptr, Peer(o.a), Peer(o.m), context()); }},
    {"remainder", [](ZIRC_BN& r, const Operands& o) { bnCopy(r, o.a), bnDiv(nullptr, &r, r, o.m); },
     [](BIGNUM* r, const Operands& o) { return BN_mod(r, Peer(o.a), Peer(o.m), context()); }},
    {"mod", [](ZIRC_BN& r, const Operands& o) { bnMod(r, o.a, o.m); },
     [](BIGNUM* r, const Operands& o) { return BN_nnmod(r, Peer(o.a), Peer(o.m), context()); }},
    {"modSub", [](ZIRC_BN& r, const Operands& o) { bnModSub(r, o.a, o.b, o.m); },
     [](BIGNUM* r, const Operands& o) { return BN_mod_sub(r, Peer(o.a), Peer(o.b), Peer(o.m), context()); }},
    {"modMul", [](ZIRC_BN& r, const Operands& o) { bnModMul(r, o.a, o.b, o.m); },
     [](BIGNUM* r, const Operands& o) { return BN_mod_mul(r, Peer(o.a), Peer(o.b), Peer(o.m), context()); }},
    {"modSqr", [](ZIRC_BN& r, const Operands& o) { bnModSqr(r, o.a, o.m); },
     [](BIGNUM* r, const Operands& o) { return BN_mod_sqr(r, Peer(o.a), Peer(o.m), context()); }},
    {"shiftLeft", [](ZIRC_BN& r, const Operands& o) { bnCopy(r, o.a), bnShiftLeft(r, r, o.n); },
     [](BIGNUM* r, const Operands& o) { return BN_lshift(r, Peer(o.a), o.n); }},
    {"shiftRight", [](ZIRC_BN& r, const Operands& o) { bnCopy(r, o.a), bnShiftRight(r, r, o.n); },
     [](BIGNUM* r, const Operands& o) { return BN_rshift(r, Peer(o.a), o.n); }},
    {"maskBits", [](ZIRC_BN& r, const Operands& o) { bnCopy(r, o.a), bnMaskBits(r, o.n); },
     [](BIGNUM* r, const Operands& o) {
         BN_copy(r, Peer(o.a));
         return BN_mask_bits(r, o.n), 1;
     }},
    {"xor twice", [](ZIRC_BN& r, const Operands& o) { bnXor(r, o.m, o.a), bnXor(r, r, o.a); },
     [](BIGNUM* r, const Operands& o) { return BN_copy(r, Peer(o.m)) ? 1 : 0; }},
    {"bytes",
     [](ZIRC_BN& r, const Operands& o) {
         unsigned char bytes[bnBytes + 1];
         bnToBytesFixed(bytes, o.m, bnBytes + 1);
         bnFromBytes(r, bytes, bnBytes + 1);
     },
     [](BIGNUM* r, const Operands& o) { return BN_copy(r, Peer(o.m)) ? 1 : 0; }},
    {"modWord", [](ZIRC_BN& r, const Operands& o) { bnSetWord(r, bnModWord(o.a, 0xFFF1)); },
     [](BIGNUM* r, const Operands& o) { return BN_set_word(r, BN_mod_word(Peer(o.a), 0xFFF1)); }},
    {"order", [](ZIRC_BN& r, const Operands& o) { bnSetWord(r, static_cast<unsigned>(bnCompare(o.a, o.b) + 1)); },
     [](BIGNUM* r, const Operands& o) { return BN_set_word(r, static_cast<unsigned>(BN_cmp(Peer(o.a), Peer(o.b)) + 1)); }},
};

const Pair slowPairs[] = {
    {"gcd", [](ZIRC_BN& r, const Operands& o) { bnGcd(r, o.a, o.b); }, [](BIGNUM* r, const Operands& o) { return BN_gcd(r, Peer(o.a), Peer(o.b), context()); }},
    {"gcd x lcm",
     [](ZIRC_BN& r, const Operands& o) {
         ZIRC_BN lcm;
         bnGcd(r, o.a, o.b), bnLcm(lcm, o.a, o.b), bnMul(r, r, lcm);
     },
     [](BIGNUM* r, const Operands& o) { return BN_mul(r, Peer(o.a), Peer(o.b), context()) ? BN_set_negative(r, 0), 1 : 0; }},
    {"inverse",
     [](ZIRC_BN& r, const Operands& o) {
         ZIRC_BN a;
         bnMod(a, o.a, o.m);
         if (bnModInverse(r, a, o.m) == 1 && bnCompareMagnitude(r, o.m) < 0) {
             bnModMul(r, r, a, o.m); // 1, or 0 modulo 1
         } else {
             bnSetWord(r, 2);
         }
     },
     [](BIGNUM* r, const Operands& o) {
         BN_gcd(r, Peer(o.a), Peer(o.m), context());
         return BN_set_word(r, BN_is_one(Peer(o.m)) ? 0 : BN_is_one(r) ? 1 : 2);
     }},
};

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

TEST(BigNumber, ShortOperandsAgreeWithOpenssl)
{
    compare(pairs, 140, 6000);
}
TEST(BigNumber, LongOperandsAgreeWithOpenssl)
{
    compare(pairs, 2200, 1500);
}
TEST(BigNumber, DivisorsAndInversesAgreeWithOpenssl)
{
    compare(slowPairs, 40, 2000);
    compare(slowPairs, 1100, 60);
}

TEST(BigNumber, EveryRoadToAPowerAgreesWithOpenssl)
{
    for (int turn = 0; turn < 600; ++turn) {
        static constexpr int lengths[] = {1, 2, 17, 18, 127, 128, 160, 255, 256, 512, 1024};
        const int bits = turn < 500 ? 1 + below(400) : turn % 3 == 0 ? 1024 : 1 + below(2048);
        const int exponentBits = bits > 400 ? below(300) : turn % 2 ? below(600) : lengths[turn / 2 % 11];
        const ZIRC_BN a = draw(below(bits + 64), true), p = draw(exponentBits), m = turn % 4 ? drawOdd(bits) : draw(bits);
        const std::string expected = peer([&](BIGNUM* r) {
            BN_nnmod(r, Peer(a), Peer(m), context());
            return BN_mod_exp(r, r, Peer(p), Peer(m), context());
        });
        const std::string where = text(a) + " ^ " + text(p) + " mod " + text(m);
        ZIRC_BN r;
        for (auto* const ours : {bnModExp, bnModExpReduced, bnModExpSecret}) {
            ours(r, a, p, m);
            ASSERT_EQ(text(r), expected) << where;
        }
        // Two at once, of lengths alike or far apart, and of those that have no common way.
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

// A modulus of ones below a power of two lets every carry run, and so do bases beside it.
TEST(BigNumber, KernelsCarryToTheEnd)
{
    for (int bits = 2; bits <= 4800; bits += bits < 80 ? 1 : bits < 300 ? 13 : 187) {
        ZIRC_BN m, a, p;
        bnSetWord(m, 1);
        bnShiftLeft(m, m, bits - 1);
        bnAddMagnitudes(m, m, [&] {
            ZIRC_BN x;
            bnSubWord(x, m, 1);
            return x;
        }());
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

TEST(BigNumber, WordLayersAgree)
{
    const auto word = [] { return numbers() % 3 ? static_cast<unsigned>(numbers()) : numbers() % 2 ? ~0U : numbers() % 3; };
    for (int turn = 0; turn < 50000; ++turn) {
        std::uint32_t a[5], r[2][5], squares[2][10];
        const std::uint32_t w = static_cast<std::uint32_t>(word()), high = static_cast<std::uint32_t>(word());
        for (int i = 0; i < 5; ++i) a[i] = static_cast<std::uint32_t>(word()), r[0][i] = r[1][i] = static_cast<std::uint32_t>(word());
        ASSERT_EQ(WordsPortable::mulAddRow(r[0], a, 5, w), WordsNative::mulAddRow(r[1], a, 5, w));
        ASSERT_EQ(0, std::memcmp(r[0], r[1], sizeof r[0]));
        ASSERT_EQ(WordsPortable::mulRow(r[0], a, 5, w), WordsNative::mulRow(r[1], a, 5, w));
        ASSERT_EQ(0, std::memcmp(r[0], r[1], sizeof r[0]));
        WordsPortable::sqrWords(squares[0], a, 5), WordsNative::sqrWords(squares[1], a, 5);
        ASSERT_EQ(0, std::memcmp(squares[0], squares[1], sizeof squares[0]));
        if (high < w || w == 0) { ASSERT_EQ(WordsPortable::bnDivWords(high, a[0], w), WordsNative::bnDivWords(high, a[0], w)); }
    }
}

TEST(BigNumber, EdgesHaveOrderlyAnswers)
{
    const ZIRC_BN zero = number("0"), one = number("1"), six = number("6"), four = number("4");
    ZIRC_BN longZero = number("1"), r = number("1234"), q = r;
    longZero.d[0] = 0;
    unsigned char bytes[bnBytes + 8] = {1, 2, 3};
    EXPECT_TRUE(bnIsEqual(zero, longZero) && bnCompareMagnitude(longZero, zero) == 0 && bnCompare(zero, longZero) == 0);
    EXPECT_EQ(bnToBytes(bytes, longZero), 0);
    EXPECT_EQ(bnCompareMagnitude(number("100000000000000000000"), one), 2);
    EXPECT_FALSE(bnDiv(&q, &r, six, longZero));
    EXPECT_EQ(text(q) + text(r), "12341234");
    EXPECT_FALSE(bnMaskBits(r, 32));
    bnToBytesFixed(bytes, r, 1);
    EXPECT_EQ(hex({reinterpret_cast<char*>(bytes), 3}), "010203");
    bnToBytesFixed(bytes, r, 3);
    EXPECT_EQ(hex({reinterpret_cast<char*>(bytes), 3}), "001234");
    EXPECT_EQ(bnModInverse(r, six, four), -1);
    EXPECT_EQ(text(r), "0");
    r = six, r.neg = 1;
    EXPECT_EQ(bnModInverse(q, r, four), -1);
    EXPECT_EQ(text(q), "1234");
    EXPECT_EQ(bnModInverse(q, six, longZero), -1);
    EXPECT_EQ(bnModInverse(q, longZero, six), -1);
    for (auto* const power : {bnModExp, bnModExpReduced, bnModExpSecret}) {
        power(r, six, longZero, four);
        EXPECT_EQ(text(r), "01");
        power(r, six, zero, one);
        EXPECT_EQ(text(r), "0");
        power(r, six, four, longZero);
        EXPECT_EQ(text(r), "0");
    }
    bnMod(r, six, zero);
    EXPECT_EQ(text(r), "0");
    bnLcm(r, zero, longZero);
    EXPECT_EQ(text(r), "0");
    EXPECT_EQ(bnModWord(six, 0), 0U);
}

// Under the sanitizers these also show that nothing is written behind a record.
TEST(BigNumber, LongResultsStayInTheRecord)
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

TEST(BigNumber, PrimesAreToldFromComposites)
{
    std::vector<bool> listed(17864);
    for (const std::uint32_t prime : primeTable) listed[prime] = true;
    ZIRC_BN n;
    for (unsigned i = 0; i < 2000; ++i) {
        bnSetWord(n, i);
        ASSERT_EQ(bnIsPrime(n, 0), listed[i]) << i;
    }
    const std::pair<const char*, bool> known[] = {
        {"231", false},
        {"6C1", false},
        {"22CF", false},
        {"BFA17DC7", false},                        // Carmichael numbers
        {"7FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF", true}, // 2^127 - 1
        {"1FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF", false},
        {"FFFFFFFFFFFFFFFFC90FDAA22168C234C4C6628B80DC1CD129024E088A67CC74020BBEA63B139B22514A08798E3404DDEF9519B3CD3A431B302B0A6D"
         "F25F14374FE1356D6D51C245E485B576625E7EC6F44C42E9A63A3620FFFFFFFFFFFFFFFF",
         true}, // RFC 2409, first group
    };
    for (const auto& [hexadecimal, isPrime] : known) {
        if (BN_check_prime(Peer(number(hexadecimal)), context(), nullptr) != isPrime) ADD_FAILURE() << hexadecimal;
        EXPECT_EQ(bnIsPrime(number(hexadecimal), 0), isPrime) << hexadecimal;
    }
    for (const int bits : {3, 64, 129, 256, 512}) {
        ASSERT_EQ(bnGeneratePrime(n, bits), 0);
        EXPECT_TRUE(BN_check_prime(Peer(n), context(), nullptr)) << text(n);
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
