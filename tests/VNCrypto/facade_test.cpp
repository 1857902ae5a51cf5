// The crypto facade.
#include "VNCrypto/VNCodes.h"
#include "VNCrypto/VNEncrypt.h"
#include "VNCrypto/VNHash.h"
#include "VNCrypto/VNMac.h"
#include "VNCrypto/VNRandom.h"
#include "VNCrypto/VNSign.h"
#include "engine/digest/hmac.h"
#include "engine/digest/sha1_kernels.h"
#include "engine/frame/slots.h"
#include "support/bytes.h"
#include "support/cases.h"
#include "support/openssl.h"
#include "support/secrets.h"

#include <gtest/gtest.h>

#include <map>
#include <sstream>

using namespace vrno;
using namespace test;

namespace {

ByteString filled(std::size_t length) { return byteString(std::string(length, 'x')); }

using Operation = int (VNEncrypt::*)(int, int, ByteString&, ByteString&, Octets, ByteString&, int);

} // namespace

TEST(Facade, CipherFailuresGiveTheirCodes)
{
    const std::map<std::string, Operation> operations{{"encrypt", &VNEncrypt::EncryptData},
                                                      {"decrypt", &VNEncrypt::DecryptData},
                                                      {"encryptNext", &VNEncrypt::EncryptData_NoGenKey},
                                                      {"decryptNext", &VNEncrypt::DecryptData_NoGenKey}};
    for (const Case& c : cases("facade.txt", 5)) {
        SCOPED_TRACE(c.where);
        std::istringstream numbers(c[1] + " " + c[2]);
        int algorithm = 0, mode = 0, padding = 0;
        std::size_t keyLength = 0, ivLength = 0, inLength = 0;
        numbers >> algorithm >> mode >> padding >> keyLength >> ivLength >> inLength;
        VNEncrypt cipher;
        ByteString key = filled(keyLength), iv = filled(ivLength), in = filled(16), out = filled(4);
        EXPECT_EQ((cipher.*operations.at(c[0]))(algorithm, mode, key, iv, {in.getBytes(), inLength}, out, padding),
                  std::stoi(c[3]));
        EXPECT_EQ(bytes(out) == "xxxx", c[3] != "0");
        if (!c[4].empty()) { EXPECT_EQ(placeless(trail(cipher)), "VNEncrypt::" + c[4]); }
    }
}

TEST(Facade, OtherFailuresGiveTheirCodes)
{
    ByteString key = filled(16), in = filled(16), out = filled(4);
    for (const int unknown : {0, -1, 7, static_cast<int>(vnMd5), static_cast<int>(vnSha256WithRsa1024)}) {
        EXPECT_EQ(VNRandom().GenerateRandom(unknown, 8, out), 1);
        EXPECT_EQ(VNEncrypt().GenerateKey(unknown, key, out), 1);
        EXPECT_EQ(VNHash().DigestData(unknown, in, out, 1), 1);
        EXPECT_EQ(VNMac().GenerateMAC(unknown, key, in, out), 1);
        EXPECT_EQ(VNSign().SignData(unknown, key, in, out), 1);
        EXPECT_EQ(VNSign().VerifyData(unknown, key, in, in), 1);
    }
    EXPECT_EQ(VNEncrypt().GenerateKey(vnRsa1024, key, out), 3);
    EXPECT_EQ(VNHash().DigestData(vnSeed, in, out, 1), 4);
    EXPECT_EQ(VNMac().GenerateMAC(vnSha1, key, in, out), 3);
    EXPECT_EQ(VNSign().SignData(vnSha1WithRsa1024, key, in, out), 14);
    EXPECT_EQ(VNSign().VerifyData(vnSha1WithKcdsa1024, key, in, in), 13);
    EXPECT_EQ(bytes(out), "xxxx");
    EXPECT_EQ(VNRandom().GenerateRandom(vnSeed, 8, out), 4);
    EXPECT_EQ(out.getLength(), 0); // cleared before the engine draws
    EXPECT_EQ(VNRandom().GenerateRandom(vnRandom, 0, out), 0);
    EXPECT_EQ(out.getLength(), 0);
}

TEST(Facade, DigestsIterate)
{
    ByteString in("abc", 3), out, twice;
    VNHash hash;
    EXPECT_EQ(hash.DigestData(vnSha1, in, out, 0), 0);
    EXPECT_EQ(hex(bytes(out)), "a9993e364706816aba3e25717850c26c9cd0d89d");
    EXPECT_EQ(hash.DigestData(vnSha1, out, out, 1), 0);
    EXPECT_EQ(hash.DigestData(vnSha1, in, twice, 2), 0);
    EXPECT_EQ(bytes(twice), bytes(out));
}

TEST(Facade, AMacTakesNoKeyAndNoInput)
{
    ByteString none, out;
    EXPECT_EQ(VNMac().GenerateMAC(vnHmacSha1, none, none, out), 0);
    EXPECT_EQ(hex(bytes(out)), "fbdb1d1b18aa6c08324b7d64b71fb76370690e1d");
}

TEST(Facade, AChainOfMessagesIsOneMessage)
{
    const std::string message(64, 'm');
    ByteString key = filled(16), iv = filled(16), chain = iv, schedule, whole, part, back;
    const Octets in{at(message), 64};
    VNEncrypt cipher;
    ASSERT_EQ(cipher.EncryptData(vnSeed, vnCbc, key, iv, in, whole, vnPadNone), 0);
    ASSERT_EQ(cipher.GenerateKey(vnSeed, key, schedule), 0);
    EXPECT_EQ(schedule.getLength(), 128);
    std::string joined;
    for (const Octets piece : {in.first(32), in.last(32)}) {
        ASSERT_EQ(cipher.EncryptData_NoGenKey(vnSeed, vnCbc, schedule, chain, piece, part, vnPadNone), 0);
        joined += bytes(part);
    }
    EXPECT_EQ(hex(joined), hex(bytes(whole)));
    EXPECT_EQ(bytes(chain), joined.substr(48));
    ASSERT_EQ(cipher.DecryptData_NoGenKey(vnSeed, vnCbc, schedule, iv, whole.octets(), back, vnPadNone), 0);
    EXPECT_EQ(bytes(back), message);
    for (const int padding : {3, 4}) { // one padding under two codes
        ASSERT_EQ(cipher.EncryptData(vnSeed, vnCbc, key, iv, in, whole, padding), 0);
        ASSERT_EQ(cipher.DecryptData(vnSeed, vnCbc, key, iv, whole.octets(), back, vnPadLengthMinusOne), 0);
        EXPECT_EQ(bytes(back), message);
    }
}

// All inputs are secret, and what they give.
TEST(Facade, LeavesNothingOnTheStack)
{
    const Owned<EVP_PKEY> pair(EVP_RSA_gen(1024));
    const std::string octets = "[some+text+that+no+message+has]", keyOctets = "quince/cabbage/s";
    ByteString in = byteString(octets), key = byteString(keyOctets), iv = filled(16), none, schedule, cipherText, out;
    ByteString publicKey = byteString(encoded(i2d_PublicKey, pair.get())),
               privateKey = byteString(encoded(i2d_PrivateKey, pair.get()));
    ByteString digest, code, chain, forHolder;
    VNEncrypt cipher;
    VNHash hash;
    VNMac mac;
    const std::pair<const char*, std::function<int()>> table[] = {
        {"GenerateKey", [&] { return cipher.GenerateKey(vnSeed, key, schedule); }},
        {"EncryptData", [&] { return cipher.EncryptData(vnSeed, vnCbc, key, iv, in.octets(), cipherText, vnPadLength); }},
        {"DecryptData", [&] { return cipher.DecryptData(vnSeed, vnCbc, key, iv, cipherText.octets(), out, vnPadLength); }},
        {"EncryptData_NoGenKey",
         [&] { return cipher.EncryptData_NoGenKey(vnSeed, vnCbc, schedule, iv, in.octets(), out, vnPadLength); }},
        {"EncryptData with RSA",
         [&] { return cipher.EncryptData(vnRsa1024, vnPublicKey, publicKey, none, in.octets(), forHolder, vnPadLength); }},
        {"DecryptData with RSA",
         [&] { return cipher.DecryptData(vnRsa1024, vnPrivateKey, privateKey, none, forHolder.octets(), out, vnPadLength); }},
        {"DigestData", [&] { return hash.DigestData(vnSha1, in, digest, 2); }},
        {"GenerateMAC", [&] { return mac.GenerateMAC(vnHmacSha1, key, in, code); }},
        {"ChainMAC", [&] { return mac.ChainMAC(vnHmacSha1, key, code, 5, chain); }},
    };
    for (const auto& row : table) ASSERT_EQ(row.second(), 0) << row.first;
    Secrets secrets;
    for (const ByteString* const secret : {&in, &key, &schedule, &digest, &code, &chain})
        secrets.add(hex(bytes(*secret)), bytes(*secret));
    std::string pad(64, '6');
    for (std::size_t i = 0; i < 16; ++i) pad[i] = static_cast<char>(keyOctets[i] ^ '6');
    secrets.add("key under the pad", pad.substr(0, 16));
    secrets.add("inner digest", sha1ByOpenssl(pad + octets));
    secrets.add("first digest", sha1ByOpenssl(octets));
    for (const auto& row : table) EXPECT_EQ(secrets.in({stackAfter(row.second)}), "") << row.first;

    HMAC_State state;
    unsigned char sum[20];
    HMAC_Init(state, keyOctets.data(), keyOctets.size());
    for (const auto& kernel : sha1ChainKernels) {
        if (!cpuHas(kernel.needs)) continue;
        EXPECT_EQ(secrets.in({stackAfter([&] { kernel.run(state.sha1.h, state.outer.h, sum, code.getBytes(), 1, 5); })}), "")
            << kernel.name;
        EXPECT_EQ(hex(text(sum, 20)), hex(bytes(chain)));
    }
    HMAC_Update(state, octets.data(), octets.size());
    EXPECT_EQ(secrets.in({stackAfter([&] { HMAC_Final(state, sum); })}), "");
    ZIRC_Context context;
    unsigned char* const to = schedule.mutableBytes();
    EXPECT_EQ(secrets.in({stackAfter([&] { seedSlots.fnGenerateKey(context, to, key.getBytes()); })}), "");
}
