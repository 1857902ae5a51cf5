// The session cipher.
#include "support/failing.h"
#include "support/interface.h"
#include "vrno.h"

using namespace test;

TEST(SessionCipher, KeysAreSetDrawnAndRead)
{
    Context context;
    BinStr key(std::string(16, 'k')), iv(std::string(16, 'i')), gotKey, gotIv, otherKey, otherIv;
    int algorithm = 0;
    EXPECT_EQ(VRNO_CRYPT_GetKeyAndIV(context, &algorithm, gotKey, gotIv), 5004);
    ASSERT_EQ(VRNO_CRYPT_SetKeyAndIV(context, VRNO_SYM_SEED, key, iv), 0);
    ASSERT_EQ(VRNO_CRYPT_GetKeyAndIV(context, &algorithm, gotKey, gotIv), 0);
    EXPECT_EQ(algorithm, 48);
    EXPECT_EQ(gotKey.data(), key.data());
    EXPECT_EQ(gotIv.data(), iv.data());
    EXPECT_EQ(VRNO_CRYPT_GenKeyAndIV(context, 16), 5000);
    ASSERT_EQ(VRNO_CRYPT_GetKeyAndIV(context, &algorithm, gotKey, gotIv), 0);
    EXPECT_EQ(gotKey.data(), key.data()); // the old one is kept
    ASSERT_EQ(VRNO_CRYPT_GenKeyAndIV(context, VRNO_SYM_SEED), 0);
    ASSERT_EQ(VRNO_CRYPT_GetKeyAndIV(context, &algorithm, gotKey, gotIv), 0);
    ASSERT_EQ(VRNO_CRYPT_GenKeyAndIV(context, VRNO_SYM_SEED), 0);
    ASSERT_EQ(VRNO_CRYPT_GetKeyAndIV(context, &algorithm, otherKey, otherIv), 0);
    EXPECT_EQ(gotKey.data().size(), 16U);
    EXPECT_EQ(gotIv.data().size(), 16U);
    EXPECT_NE(gotKey.data(), otherKey.data());
    EXPECT_NE(gotIv.data(), otherIv.data());
    VRNO_API_CTX& fields = *context;
    fields.nSymAlg = 4001;
    EXPECT_EQ(VRNO_CRYPT_GetKeyAndIV(context, &algorithm, gotKey, gotIv), 5000);
}

TEST(SessionCipher, KeyAndIvAreGivenTogetherOrNotAtAll)
{
    Context context;
    BinStr sessionKey(std::string(16, 'k')), iv(std::string(16, 'i'));
    ASSERT_EQ(VRNO_CRYPT_SetKeyAndIV(context, VRNO_SYM_SEED, sessionKey, iv), 0);
    int failures = 0;
    for (long number = 1;; ++number) {
        BinStr gotKey("old key"), gotIv("old iv");
        int algorithm = -7, code = 0;
        {
            const FailingAllocation fails(number);
            code = VRNO_CRYPT_GetKeyAndIV(context, &algorithm, gotKey, gotIv);
        }
        if (code == 0) break;
        EXPECT_EQ(code, 1002);
        EXPECT_EQ(gotKey.data() + gotIv.data() + std::to_string(algorithm), "old keyold iv-7") << number;
        ++failures;
    }
    EXPECT_GE(failures, 2);
    BinStr both; // one record for both has the second
    int algorithm = 0;
    EXPECT_EQ(VRNO_CRYPT_GetKeyAndIV(context, &algorithm, both, both), 0);
    EXPECT_EQ(both.data(), iv.data());
}

TEST(SessionCipher, AnUnknownAlgorithmHasNoSchedule)
{
    Context context;
    BinStr key(std::string(16, 'k')), out;
    ASSERT_EQ(VRNO_CRYPT_SetKeyAndIV(context, VRNO_SYM_SEED, key, key), 0);
    VRNO_API_CTX& fields = *context;
    fields.nSymAlg = 4001;
    fields.ucFlags |= 2; // chained messages share one schedule
    EXPECT_EQ(VRNO_CRYPT_Encrypt(context, key, out), 5015);
    EXPECT_EQ(VRNO_CRYPT_Encrypt(context, key, out), 5015); // the failed one has left nothing
}

TEST(SessionCipher, EveryMessageStartsFromTheSessionIv)
{
    Context context;
    BinStr key(std::string(16, 'k')), iv(std::string(16, 'i')), out, again, back, empty;
    ASSERT_EQ(VRNO_CRYPT_SetKeyAndIV(context, 48, key, iv), 0);
    for (const unsigned length : {0U, 1U, 15U, 16U, 17U, 975U, 976U, 977U, 100000U}) {
        BinStr in(std::string(length, 'p'));
        ASSERT_EQ(VRNO_CRYPT_Encrypt(context, length ? static_cast<VRNO_BINSTR*>(in) : nullptr, out), 0);
        {
            const FailingAllocation none(0); // fails none, but counts
            ASSERT_EQ(VRNO_CRYPT_Encrypt(context, in, again), 0);
            EXPECT_LT(FailingAllocation::size(), length + 32000); // the output, which is the work block
        }
        EXPECT_EQ(out.data(), again.data());
        EXPECT_EQ(out.data().size(), length / 16 * 16 + 16);
        ASSERT_EQ(VRNO_CRYPT_Decrypt(context, out, out), 0); // into its own record
        EXPECT_EQ(out.data(), in.data());
    }
    ASSERT_EQ(VRNO_CRYPT_Decrypt(context, nullptr, back), 0);
    EXPECT_TRUE(back.isEmpty());
}

TEST(SessionCipher, FlagsChooseChainAndPadding)
{
    Context context;
    BinStr key(std::string(16, 'k')), iv(std::string(16, 'i')), in(std::string(16, 'p')), one, two, first;
    ASSERT_EQ(VRNO_CRYPT_SetKeyAndIV(context, 48, key, iv), 0);
    ASSERT_EQ(VRNO_CRYPT_Encrypt(context, in, one), 0);
    VRNO_API_CTX& fields = *context;
    fields.ucFlags |= 2;
    ASSERT_EQ(VRNO_CRYPT_SetKeyAndIV(context, 48, iv, key), 0); // another key, which has a schedule of its own
    ASSERT_EQ(VRNO_CRYPT_Encrypt(context, in, first), 0);
    ASSERT_EQ(VRNO_CRYPT_SetKeyAndIV(context, 48, key, iv), 0);
    ASSERT_EQ(VRNO_CRYPT_Encrypt(context, in, first), 0);
    EXPECT_EQ(first.data(), one.data());
    ASSERT_EQ(VRNO_CRYPT_Encrypt(context, in, two), 0);
    EXPECT_NE(two.data(), one.data());
    ASSERT_EQ(VRNO_CRYPT_SetKeyAndIV(context, 48, key, iv), 0); // starts a new chain
    ASSERT_EQ(VRNO_CRYPT_Decrypt(context, first, first), 0);
    ASSERT_EQ(VRNO_CRYPT_Decrypt(context, two, two), 0);
    EXPECT_EQ(first.data(), in.data());
    EXPECT_EQ(two.data(), in.data());
    fields.ucFlags = 1 | 4;
    EXPECT_EQ(VRNO_CRYPT_Decrypt(context, one, first), 5006); // sixteen bytes of 0x10 are not that padding
    ASSERT_EQ(VRNO_CRYPT_Encrypt(context, in, one), 0);
    ASSERT_EQ(VRNO_CRYPT_Decrypt(context, one, one), 0);
    EXPECT_EQ(one.data(), in.data());
}

TEST(SessionCipher, AFailedInstallationLeavesNoKey)
{
    BinStr key(std::string(16, 'k')), iv(std::string(16, 'i')), out;
    for (long number = 1; number < 30; ++number) {
        Context context;
        ASSERT_EQ(VRNO_CRYPT_SetKeyAndIV(context, 48, key, iv), 0);
        int code = 0;
        {
            const FailingAllocation fails(number);
            code = VRNO_CRYPT_SetKeyAndIV(context, 48, key, iv);
        }
        EXPECT_EQ(VRNO_CRYPT_Encrypt(context, key, out), code == 1002 ? 5004 : 0) << number;
    }
}
