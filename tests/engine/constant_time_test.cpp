// What may take no time that depends on a secret, under valgrind: it reports each branch and each address that depends on octets
// that are marked as undefined. The marks change nothing else.
#if __has_include(<valgrind/memcheck.h>)
#include "engine/bignum/montgomery.h"
#include "engine/digest/hash_id.h"
#include "engine/digest/hmac.h"
#include "engine/digest/sha1_kernels.h"
#include "engine/rsa/rsa.h"
#include "engine/seed/padding.h"

#include <gtest/gtest.h>
#include <valgrind/memcheck.h>

#include <algorithm>
#include <random>

using namespace vrno;

namespace {

struct ConstantTime : testing::Test {
    void SetUp() override
    {
        if (!RUNNING_ON_VALGRIND) GTEST_SKIP() << "scripts/valgrind runs it";
    }
};

// The reports of a run with the secret marked. Its results are as secret, and nobody looks at them.
template <class Run> unsigned reports(void* secret, std::size_t length, Run run)
{
    const unsigned before = VALGRIND_COUNT_ERRORS;
    VALGRIND_MAKE_MEM_UNDEFINED(secret, length);
    run();
    VALGRIND_MAKE_MEM_DEFINED(secret, length);
    return VALGRIND_COUNT_ERRORS - before;
}

ZIRC_BN number(int words)
{
    static std::mt19937 random;
    ZIRC_BN a;
    for (; a.top < words; ++a.top) a.d[a.top] = static_cast<std::uint32_t>(random()) | 0x80000001;
    return a;
}

} // namespace

TEST_F(ConstantTime, PowersDoNotDependOnTheExponent)
{
    const ZIRC_BN a = number(31), m = number(32), otherM = number(32);
    for (const int words : {2, 5, 32}) { // with windows of 3, 4 and 5 bits
        SCOPED_TRACE(words);
        ZIRC_BN p = number(words), r, other;
        const std::size_t marked = 4 * static_cast<std::size_t>(words - 1); // not the top word, since the length is no secret
        for (const Kernel<ModExpFunction>& kernel : modExpKernels) {
            if (!cpuHas(kernel.needs)) continue;
            EXPECT_EQ(reports(p.d, marked, [&] { kernel.run(r, a, p, m, true); }), 0U) << kernel.name;
        }
        EXPECT_EQ(reports(p.d, marked, [&] { bnModExpSecret(r, a, p, m); }), 0U);
        EXPECT_EQ(reports(p.d, marked, [&] { bnModExpSecretPair(a, r, p, m, other, p, otherM); }), 0U);
        // A public exponent shows that the marks are seen.
        EXPECT_GT(reports(p.d, marked, [&] { bnModExp(r, a, p, m); }), 0U);
    }
}

TEST_F(ConstantTime, MacsDoNotDependOnTheKey)
{
    unsigned char key[65] = "a key of some length", out[60];
    const unsigned char links[60] = "the first links of three chains";
    for (const std::size_t length : {20U, 65U}) { // as it is, and its digest
        for (const auto& kernel : sha1ChainKernels) {
            if (!cpuHas(kernel.needs)) continue;
            const auto macs = [&] {
                HMAC_State state;
                HMAC_Init(state, key, length);
                kernel.run(state.sha1.h, state.outer.h, out, links, 3, 4);
                HMAC_Update(state, links, sizeof links);
                HMAC_Final(state, out);
            };
            EXPECT_EQ(reports(key, sizeof key, macs), 0U) << kernel.name;
        }
    }
}

TEST_F(ConstantTime, PaddingsAreRemovedWithoutABranchOnTheirOctets)
{
    const unsigned char label[20] = {};
    for (const int count : {0, 8, 16, 126}) { // octets of padding, which are too few, enough or too many
        SCOPED_TRACE(count);
        const auto octet = static_cast<unsigned char>(count);
        unsigned char block[128] = {0, 2};
        std::fill_n(block + 2, count, octet);
        std::fill(block + 128 - count % 100, block + 128, octet);
        for (const int kind : {ZIRC_PAD_BIT, ZIRC_PAD_LENGTH, ZIRC_PAD_LENGTH_MINUS_ONE}) {
            EXPECT_EQ(reports(block, 128, [&] { paddingLength(block, 128, 16, kind); }), 0U) << kind;
        }
        EXPECT_EQ(reports(block, 128, [&] { rsaPkcs1Contents(block, 128, 1); }), 0U);
        EXPECT_EQ(reports(block, 128, [&] { rsaPkcs1Contents(block, 128, 2); }), 0U);
        EXPECT_EQ(reports(block, 128, [&] { rsaOaepContents(block, 128, hashSha1, label); }), 0U);
    }
}
#endif
