// The session cipher.
#include "support/calls.h"
#include "support/failing.h"

using namespace test;

namespace {

const Values values{{"key", std::string(16, 'k')}, {"iv", std::string(16, 'i')}, {"text", std::string(16, 'p')}};
const std::string set = "VRNO_CRYPT_SetKeyAndIV 48 key iv", get = "VRNO_CRYPT_GetKeyAndIV out out out",
                  encrypt = "VRNO_CRYPT_Encrypt text out", decrypt = "VRNO_CRYPT_Decrypt text out";

struct SessionCipher : testing::Test {
    void SetUp() override { made(set); }
    // The output of a call that must not fail.
    std::string made(const std::string& line, const std::string& text = values.at("text"))
    {
        Values all = values;
        all["text"] = text;
        const Result result = call(context, line, all);
        EXPECT_EQ(result.code, 0) << line;
        return result.output;
    }

    Context context;
    VRNO_API_CTX& fields = *context;
};

} // namespace

TEST_F(SessionCipher, KeysAreSetDrawnAndRead)
{
    const std::string given = "48" + values.at("key") + values.at("iv");
    EXPECT_EQ(made(get), given);
    EXPECT_EQ(VRNO_CRYPT_GenKeyAndIV(context, 16), 5000);
    EXPECT_EQ(made(get), given); // the old one is kept
    std::string drawn[2];
    for (std::string& all : drawn) {
        ASSERT_EQ(VRNO_CRYPT_GenKeyAndIV(context, VRNO_SYM_SEED), 0);
        all = made(get);
        EXPECT_EQ(all.size(), 34U);
    }
    EXPECT_NE(drawn[0].substr(2, 16), drawn[1].substr(2, 16));
    EXPECT_NE(drawn[0].substr(18), drawn[1].substr(18));
    fields.nSymAlg = 4001;
    EXPECT_EQ(call(context, get).code, 5000);
}

TEST_F(SessionCipher, KeyAndIvAreGivenTogetherOrNotAtAll)
{
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
    EXPECT_EQ(both.data(), values.at("iv"));
}

TEST_F(SessionCipher, AnUnknownAlgorithmHasNoSchedule)
{
    fields.nSymAlg = 4001;
    fields.ucFlags |= 2;                                                              // chained messages share one schedule
    for (int i = 0; i < 2; ++i) EXPECT_EQ(call(context, encrypt, values).code, 5015); // the failed one has left nothing
}

TEST_F(SessionCipher, EveryMessageStartsFromTheSessionIv)
{
    for (const unsigned length : {0U, 1U, 15U, 16U, 17U, 975U, 976U, 977U, 100000U}) {
        const std::string in(length, 'p'), out = made(length ? encrypt : "VRNO_CRYPT_Encrypt null out", in);
        {
            const FailingAllocation none(0); // fails none, but counts
            EXPECT_EQ(made(encrypt, in), out);
            EXPECT_LT(FailingAllocation::size(), length + 32000); // the output, which is the work block
        }
        EXPECT_EQ(out.size(), length / 16 * 16 + 16);
        BinStr record(out);
        ASSERT_EQ(VRNO_CRYPT_Decrypt(context, record, record), 0); // into its own record
        EXPECT_EQ(record.data(), in);
    }
    EXPECT_EQ(made("VRNO_CRYPT_Decrypt null out"), "");
}

TEST_F(SessionCipher, FlagsChooseChainAndPadding)
{
    const std::string alone = made(encrypt);
    fields.ucFlags |= 2;
    made("VRNO_CRYPT_SetKeyAndIV 48 iv key"); // another key, which has a schedule of its own
    made(encrypt);
    made(set);
    const std::string first = made(encrypt), second = made(encrypt);
    EXPECT_EQ(first, alone);
    EXPECT_NE(second, alone);
    made(set); // starts a new chain
    for (const std::string& message : {first, second}) EXPECT_EQ(made(decrypt, message), values.at("text"));
    fields.ucFlags = 1 | 4;
    EXPECT_EQ(call(context, decrypt, {{"text", alone}}).code, 5006); // sixteen bytes of 0x10 are not that padding
    EXPECT_EQ(made(decrypt, made(encrypt)), values.at("text"));
}

TEST_F(SessionCipher, AFailedInstallationLeavesNoKey)
{
    for (long number = 1; number < 30; ++number) {
        made(set);
        int code = 0;
        {
            const FailingAllocation fails(number);
            code = call(context, set, values).code;
        }
        EXPECT_EQ(call(context, encrypt, values).code, code == 1002 ? 5004 : 0) << number;
    }
}
