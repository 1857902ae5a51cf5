// The crypto facade, and the exported session cipher on top of it.
#include "VNCrypto/VNCodes.h"
#include "VNCrypto/VNEncrypt.h"
#include "VNCrypto/VNHash.h"
#include "VNCrypto/VNMac.h"
#include "VNCrypto/VNRandom.h"
#include "VNCrypto/VNSign.h"
#include "engine/frame/zirc.h"
#include "support/support.h"

#include <openssl/evp.h>

#include <cstring>
#include <functional>

using namespace vrno;
using namespace test;

// ---- the facade ----

TEST(Facade, FailuresCarryTheirCodesAndTexts)
{
    ByteString key = byteString(std::string(16, 'k')), shortKey("k", 1), iv = byteString(std::string(16, 'i')), noIv, longIv = byteString(std::string(33, 'i')),
               in("data", 4), out("kept", 4), schedule = byteString(std::string(128, 's')), tooLong = byteString(std::string(1201, 's')),
               longest = byteString(std::string(1200, 's')), block = byteString(std::string(16, 'x')), odd = byteString(std::string(15, 'x'));
    VNEncrypt cipher;
    VNRandom random;
    VNHash hash;
    VNMac mac;
    VNSign sign;
    const std::string seedFailure = " nAlgID = 11110, nEncMode = 3, nPaddintType = 8(";
    // clang-format off
    const struct {
        VNObject& object;
        std::function<int()> call;
        int code;
        std::string frame; // the outermost, behind "Class::"
        std::string message;
    } table[] = {
        {random, [&] { return random.GenerateRandom(7, 8, out); }, 1, "GenerateRandom-The AlgID(7) is not supported.(1)", ""},
        {random, [&] { return random.GenerateRandom(3020, 8, out); }, 4, "GenerateRandom-ZIRC_GenerateRandom(4)", " Invalid algorithm identifier.(105)"},
        {cipher, [&] { return cipher.EncryptData(0, 4, key, iv, in, out, 2); }, 1, "EncryptData-The AlgID(0) is not supported.(1)", ""},
        {cipher, [&] { return cipher.EncryptData(3020, 0, key, iv, in, out, 2); }, 3, "EncryptData-The Mode(0) is not supported.(3)", ""},
        {cipher, [&] { return cipher.DecryptData(3020, 3, key, iv, in, out, 2); }, 3, "DecryptData-The Mode(3) is not supported.(3)", ""},
        {cipher, [&] { return cipher.EncryptData(3020, 4, key, iv, in, out, 5); }, 4, "EncryptData-The PaddingType(5) is not supported.(4)", ""},
        {cipher, [&] { return cipher.EncryptData(3020, 1, key, iv, in, out, 5); }, 32, "EncryptData-[ZIRC_EncryptData] nAlgID = 11110, nEncMode = 7, nPaddintType = 0(32)", "Init stage; Invalid algorithm mode.(1104)"},
        {cipher, [&] { return cipher.EncryptData(3020, 4, shortKey, iv, in, out, 2); }, 30, "EncryptData-ZIRC_GenerateKey error(30)", " Invalid input or output data.(101)"},
        {cipher, [&] { return cipher.DecryptData(3020, 4, shortKey, iv, in, out, 2); }, 25, "DecryptData-ZIRC_GenerateKey(25)", " Invalid input or output data.(101)"},
        {cipher, [&] { return cipher.EncryptData(3020, 4, key, noIv, in, out, 2); }, 32, "EncryptData-[ZIRC_EncryptData]" + seedFailure + "32)", "Init stage; Initial vector required.(1109)"},
        {cipher, [&] { return cipher.EncryptData(3020, 4, key, longIv, in, out, 2); }, 32, "EncryptData-[ZIRC_EncryptData]" + seedFailure + "32)", "Init stage; Initial vector required.(1109)"},
        {cipher, [&] { return cipher.DecryptData(3020, 4, key, iv, odd, out, 2); }, 27, "DecryptData-[ZIRC_DecryptData]" + seedFailure + "27)", "Update stage; Invalid encrypted data.(2114)"},
        {cipher, [&] { return cipher.EncryptData(3020, 4, key, iv, in.getBytes(), -1, out, 2); }, 31, "EncryptData-Momory allocation is failed.(31)", ""},
        {cipher, [&] { return cipher.DecryptData(3020, 4, key, iv, in.getBytes(), 0x7FFFFFFF, out, 2); }, 26, "DecryptData-Momory allocation is failed.(26)", ""},
        {cipher, [&] { return cipher.EncryptData(4001, 2, key, iv, in, out, 0); }, 18, "EncryptData-[ZIRC_EncryptData] nAlgID = 12001, nEncMode = 6, nPaddintType = 0(18)", "Init stage; Invalid key value.(1107)"},
        {cipher, [&] { return cipher.DecryptData(4002, 1, key, iv, in, out, 9); }, 13, "DecryptData-[ZIRC_DecryptData] nAlgID = 12002, nEncMode = 7, nPaddintType = 0(13)", "Init stage; Invalid key value.(1107)"},
        {cipher, [&] { return cipher.GenerateKey(9, key, out); }, 1, "GenerateKey-The AlgID(9) is not supported.(1)", ""},
        {cipher, [&] { return cipher.GenerateKey(4001, key, out); }, 3, "GenerateKey-ZIRC_GenerateKey(3)", " Invalid algorithm identifier.(105)"},
        {cipher, [&] { return cipher.EncryptData_NoGenKey(3020, 4, tooLong, iv, in, out, 2); }, 9, "EncryptData_NoGenKey-The key(1201) is longer than GENKEY_MAX_LEN(1200).(9)", ""},
        {cipher, [&] { return cipher.EncryptData_NoGenKey(3020, 4, key, iv, in, out, 2); }, 10, "EncryptData_NoGenKey-[ZIRC_EncryptData]" + seedFailure + "10)", "Init stage; Invalid key value.(1107)"},
        {cipher, [&] { return cipher.DecryptData_NoGenKey(3020, 4, schedule, iv, block, out, 7); }, 4, "DecryptData_NoGenKey-The PaddingType(7) is not supported.(4)", ""},
        {cipher, [&] { return cipher.DecryptData_NoGenKey(3020, 4, schedule, iv, in.getBytes(), -1, out, 2); }, 5, "DecryptData_NoGenKey-Momory allocation is failed.(5)", ""},
        {hash, [&] { return hash.DigestData(-1, in, out, 1); }, 1, "DigestData-The AlgID(-1) is not supported.(1)", ""},
        {hash, [&] { return hash.DigestData(3020, in, out, 1); }, 4, "DigestData-ZIRC_DigestData(4)", "Init stage; Invalid algorithm identifier.(1105)"},
        {mac, [&] { return mac.GenerateMAC(1012, key, in, out); }, 1, "GenerateMAC-The AlgID(1012) is not supported.(1)", ""},
        {mac, [&] { return mac.GenerateMAC(1011, key, in, out); }, 3, "GenerateMAC-ZIRC_GenerateMAC(3)", "Init stage; Invalid algorithm identifier.(1105)"},
        {sign, [&] { return sign.SignData(1, key, in, out); }, 1, "SignData-The AlgID(1) is not supported.(1)", ""},
        {sign, [&] { return sign.SignData(7011, key, in, out); }, 14, "SignData-ZIRC_SignData(14)", "Init stage; Invalid key value.(1107)"},
        {sign, [&] { return sign.VerifyData(7032, key, in, block); }, 13, "VerifyData-ZIRC_VerifyData(13)", "Init stage; Invalid key value.(1107)"},
    };
    // clang-format on
    for (const auto& row : table) {
        SCOPED_TRACE(row.frame);
        out = "kept";
        EXPECT_EQ(row.call(), row.code);
        EXPECT_TRUE(out == (&row.object == &random && row.code == 4 ? "" : "kept"));
        const std::string trail = bytes(row.object.getErrorTrail()), frame = trail.substr(trail.find("]VN") + 1);
        const std::string behind = frame.substr(frame.find("::") + 2);
        EXPECT_EQ(behind, row.message.empty() ? row.frame : row.frame + "," + row.message);
    }
    EXPECT_EQ(cipher.EncryptData_NoGenKey(3020, 4, longest, iv, in, out, 2), 0); // and no length below that is refused
}

TEST(Facade, ResultsOfEachClass)
{
    ByteString in("abc", 3), key("key", 3), out, twice, none;
    VNHash hash;
    EXPECT_EQ(hash.DigestData(vnSha1, in, out, 0), 0);
    EXPECT_EQ(hex(bytes(out)), "a9993e364706816aba3e25717850c26c9cd0d89d");
    EXPECT_EQ(hash.DigestData(vnSha1, out, out, 1), 0);
    EXPECT_EQ(hash.DigestData(vnSha1, in, twice, 2), 0);
    EXPECT_EQ(bytes(twice), bytes(out));
    VNMac mac;
    EXPECT_EQ(mac.GenerateMAC(vnHmacSha1, key, in, out), 0);
    EXPECT_EQ(hex(bytes(out)), "4fd0b215276ef12f2b3e4c8ecac2811498b656fc");
    EXPECT_EQ(mac.GenerateMAC(vnHmacSha1, none, none, out), 0);
    EXPECT_EQ(hex(bytes(out)), "fbdb1d1b18aa6c08324b7d64b71fb76370690e1d");
    VNRandom random;
    EXPECT_EQ(random.GenerateRandom(vnRandom, 0, out), 0);
    EXPECT_EQ(out.getLength(), 0);
    EXPECT_EQ(random.GenerateRandom(vnRandom, 40, out), 0);
    EXPECT_EQ(out.getLength(), 40);
}

TEST(Facade, AChainOfMessagesIsOneMessage)
{
    const std::string message(64, 'm');
    ByteString key = byteString(std::string(16, 'k')), iv = byteString(std::string(16, 'i')), schedule, whole, part, back;
    ByteString first = byteString(message.substr(0, 32)), second = byteString(message.substr(32)), all = byteString(message), minusOne;
    VNEncrypt cipher;
    ASSERT_EQ(cipher.EncryptData(vnSeed, vnCbc, key, iv, all, whole, vnPadNone), 0);
    ASSERT_EQ(cipher.EncryptData(vnSeed, vnCbc, key, iv, all, part, 3), 0);
    ASSERT_EQ(cipher.EncryptData(vnSeed, vnCbc, key, iv, all, minusOne, 4), 0);
    EXPECT_EQ(bytes(part), bytes(minusOne));
    ASSERT_EQ(cipher.GenerateKey(vnSeed, key, schedule), 0);
    EXPECT_EQ(schedule.getLength(), 128);
    ByteString running = iv;
    std::string joined;
    for (ByteString* piece : {&first, &second}) {
        ASSERT_EQ(cipher.EncryptData_NoGenKey(vnSeed, vnCbc, schedule, running, *piece, part, vnPadNone), 0);
        joined += bytes(part);
    }
    EXPECT_EQ(hex(joined), hex(bytes(whole)));
    EXPECT_EQ(bytes(running), joined.substr(48));
    ASSERT_EQ(cipher.DecryptData_NoGenKey(vnSeed, vnCbc, schedule, iv, whole, back, vnPadNone), 0);
    EXPECT_EQ(bytes(back), message);
}

// ---- the session cipher ----

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
    EXPECT_EQ(context.error(), "[VRNO_CRYPT_GenKeyAndIV] 지원하지 않는 대칭키 알고리즘입니다.");
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

TEST(SessionCipher, ChecksComeInTheirOrderWithTheirTexts)
{
    BinStr k15(std::string(15, 'k')), k16(std::string(16, 'k')), k17(std::string(17, 'k')), out;
    VRNO_BINSTR huge{reinterpret_cast<unsigned char*>(&huge), 0x7FFFFFFFU};
    int algorithm = 0;
    const char* const keyText = "대칭키 암복호화에 사용될 key(pKey)를 지정하세요.";
    // clang-format off
    const struct {
        const char* function;
        std::function<int(VRNO_API_CTX*)> call;
        int code;
        std::string message;
        bool keySet = false;
    } table[] = {
        {"VRNO_CRYPT_GenKeyAndIV", [&](auto* c) { return VRNO_CRYPT_GenKeyAndIV(c, 3020); }, 5000, "지원하지 않는 대칭키 알고리즘입니다."},
        {"VRNO_CRYPT_SetKeyAndIV", [&](auto* c) { return VRNO_CRYPT_SetKeyAndIV(c, 16, nullptr, nullptr); }, 1004, keyText},
        {"VRNO_CRYPT_SetKeyAndIV", [&](auto* c) { return VRNO_CRYPT_SetKeyAndIV(c, 16, k16, nullptr); }, 1004, "대칭키 암복호화에 사용될 IV(pIV)를 지정하세요."},
        {"VRNO_CRYPT_SetKeyAndIV", [&](auto* c) { return VRNO_CRYPT_SetKeyAndIV(c, 16, k15, k15); }, 5000, "지원하지 않는 대칭키 알고리즘입니다."},
        {"VRNO_CRYPT_SetKeyAndIV", [&](auto* c) { return VRNO_CRYPT_SetKeyAndIV(c, 48, k15, k17); }, 5002, "SEED 알고리즘은 16바이트의 Key가 필요합니다."},
        {"VRNO_CRYPT_SetKeyAndIV", [&](auto* c) { return VRNO_CRYPT_SetKeyAndIV(c, 48, k17, k16); }, 5002, "SEED 알고리즘은 16바이트의 Key가 필요합니다."},
        {"VRNO_CRYPT_SetKeyAndIV", [&](auto* c) { return VRNO_CRYPT_SetKeyAndIV(c, 48, k16, k17); }, 5003, "SEED 알고리즘은 16바이트의 IV가 필요합니다."},
        {"VRNO_CRYPT_GetKeyAndIV", [&](auto* c) { return VRNO_CRYPT_GetKeyAndIV(c, nullptr, nullptr, nullptr); }, 1004, "pSymAlg의 포인터가 NULL입니다."},
        {"VRNO_CRYPT_GetKeyAndIV", [&](auto* c) { return VRNO_CRYPT_GetKeyAndIV(c, &algorithm, nullptr, nullptr); }, 1004, "pKey의 포인터가 NULL입니다."},
        {"VRNO_CRYPT_GetKeyAndIV", [&](auto* c) { return VRNO_CRYPT_GetKeyAndIV(c, &algorithm, out, nullptr); }, 1004, "pIV의 포인터가 NULL입니다."},
        {"VRNO_CRYPT_Encrypt", [&](auto* c) { return VRNO_CRYPT_Encrypt(c, k16, nullptr); }, 1004, "pCipherText의 포인터가 NULL입니다."},
        {"VRNO_CRYPT_Encrypt", [&](auto* c) { return VRNO_CRYPT_Encrypt(c, k16, out); }, 5004, "대칭키 알고리즘의 Key와 IV가 설정되지 않았습니다."},
        {"VRNO_CRYPT_Encrypt", [&](auto* c) { return VRNO_CRYPT_Encrypt(c, &huge, out); }, 1002, "메모리를(pPlainText) 할당하는데 실패하였습니다.", true},
        {"VRNO_CRYPT_Decrypt", [&](auto* c) { return VRNO_CRYPT_Decrypt(c, k16, nullptr); }, 1004, "pPlainText의 포인터가 NULL입니다."},
        {"VRNO_CRYPT_Decrypt", [&](auto* c) { return VRNO_CRYPT_Decrypt(c, k16, out); }, 5004, "대칭키 알고리즘의 Key와 IV가 설정되지 않았습니다."},
        {"VRNO_CRYPT_Decrypt", [&](auto* c) { return VRNO_CRYPT_Decrypt(c, k15, out); }, 5006, "데이터를 복호화하는데 실패하였습니다. <tarnlib> [", true},
        {"VRNO_CRYPT_Decrypt", [&](auto* c) { return VRNO_CRYPT_Decrypt(c, k16, out); }, 5006, "데이터를 복호화하는데 실패하였습니다. <tarnlib> [", true},
    };
    // clang-format on
    for (const auto& row : table) {
        SCOPED_TRACE(row.function + std::string(" ") + row.message);
        Context context;
        if (row.keySet) { ASSERT_EQ(VRNO_CRYPT_SetKeyAndIV(context, 48, k16, k16), 0); }
        EXPECT_EQ(row.call(nullptr), 1001);
        EXPECT_EQ(row.call(context), row.code);
        const std::string expected = "[" + std::string(row.function) + "] " + row.message;
        EXPECT_EQ(context.error().substr(0, expected.size()), expected);
        EXPECT_TRUE(out.isEmpty());
    }
}

TEST(SessionCipher, EnciphersEveryMessageFromTheSameStart)
{
    Context context;
    BinStr key(std::string(16, 'k')), iv(std::string(16, 'i')), out, again, back, empty;
    ASSERT_EQ(VRNO_CRYPT_SetKeyAndIV(context, 48, key, iv), 0);
    for (const unsigned length : {0U, 1U, 15U, 16U, 17U, 975U, 976U, 977U, 100000U}) {
        BinStr in(std::string(length, 'p'));
        ASSERT_EQ(VRNO_CRYPT_Encrypt(context, length ? static_cast<VRNO_BINSTR*>(in) : nullptr, out), 0);
        {
            const FailingAllocation none(0); // fails nothing, and counts
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
    ASSERT_EQ(VRNO_CRYPT_Encrypt(context, in, first), 0);
    EXPECT_EQ(first.data(), one.data());
    ASSERT_EQ(VRNO_CRYPT_Encrypt(context, in, two), 0);
    EXPECT_NE(two.data(), one.data());
    ASSERT_EQ(VRNO_CRYPT_SetKeyAndIV(context, 48, key, iv), 0); // the chain starts afresh
    ASSERT_EQ(VRNO_CRYPT_Decrypt(context, first, first), 0);
    ASSERT_EQ(VRNO_CRYPT_Decrypt(context, two, two), 0);
    EXPECT_EQ(first.data(), in.data());
    EXPECT_EQ(two.data(), in.data());
    fields.ucFlags = 1 | 4;
    EXPECT_EQ(VRNO_CRYPT_Decrypt(context, one, first), 5006); // sixteen bytes of 0x10 are no such padding
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
