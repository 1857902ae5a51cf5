// Private keys under a password: what we write and what we open, against the parts that OpenSSL has for it.
#include "ASN1Pkix/keys/PPKCS12.h"
#include "ASN1Pkix/keys/PPKCS8.h"
#include "support/bytes.h"
#include "support/calls.h"
#include "support/cases.h"
#include "support/openssl.h"

#include <openssl/evp.h>
#include <openssl/pkcs12.h>
#include <openssl/x509.h>

#include <map>

using namespace vrno;
using namespace test;

namespace {

const std::string key = readFile(SAMPLES "/hong.key");
const std::string fixedVector = "4820913756482091", password = "secret";

const std::string oidPbes2 = "06{2A864886F70D01050D}", oidPbkdf2 = "06{2A864886F70D01050C}", oidSeed = "06{2A831A8C9A440104}",
                  oidSeedPkcs12 = "06{2A831A8C9A44010402}", oidSeedSha1 = "06{2A831A8C9A44010F}";

// ---- the derivations ----

std::string pbkdf2(const std::string& secret, const std::string& salt, int count, int length = 32)
{
    std::string out(static_cast<std::size_t>(length), '\0');
    PKCS5_PBKDF2_HMAC_SHA1(secret.data(), static_cast<int>(secret.size()), at(salt), static_cast<int>(salt.size()), count, length,
                           reinterpret_cast<unsigned char*>(out.data()));
    return out;
}

std::string pbkdf1(const std::string& secret, const std::string& salt, int count)
{
    std::string t = secret + salt;
    while (count-- > 0) t = sha1ByOpenssl(t);
    return t;
}

std::string pkcs12(const std::string& secret, const std::string& salt, int id, int count, int length)
{
    std::string out(static_cast<std::size_t>(length), '\0');
    PKCS12_key_gen_asc(secret.c_str(), static_cast<int>(secret.size()), const_cast<unsigned char*>(at(salt)),
                       static_cast<int>(salt.size()), id, count, length, reinterpret_cast<unsigned char*>(out.data()), EVP_sha1());
    return out;
}

// ---- blobs ----

std::string octets(const std::string& value) { return "04{" + hex(value) + "}"; }

std::string blob(const std::string& algorithm, const std::string& keyAndIv, const std::string& plain = key)
{
    const std::string cipherText = seedByOpenssl(keyAndIv.substr(0, 16), keyAndIv.substr(16, 16), plain, true);
    return der("30{" + algorithm + octets(cipherText) + "}");
}

std::string pbes2(const std::string& derivation, const std::string& scheme)
{
    return "30{" + oidPbes2 + "30{30{" + oidPbkdf2 + "30{" + derivation + "}} 30{" + scheme + "}}}";
}

std::string encrypted(int scheme, const std::string& secret, int& code)
{
    PPKCS8 pkcs8;
    ByteString in = byteString(key), out;
    pkcs8.setEncAlgorithm(scheme);
    pkcs8.setPassword(secret.c_str());
    EXPECT_EQ(pkcs8.setPrivateKeyInfo(in), 0);
    code = pkcs8.getPKCS8Data(out);
    return bytes(out);
}

struct Opened {
    int code;
    std::string key, trail;
};

Opened opened(const std::string& data, const std::string& secret = password)
{
    PPKCS8 pkcs8;
    ByteString in = byteString(data), out;
    pkcs8.setPassword(secret.c_str());
    const int code = pkcs8.getPrivateKeyInfo(in, out);
    return {code, bytes(out), placeless(trail(pkcs8))};
}

} // namespace

TEST(Pkcs8, WritesWhatAnIndependentConstructionGives)
{
    for (const std::string& secret :
         {std::string("a"), password, std::string("\xC8\xAB\xB1\xE6\xB5\xBF!"), std::string(64, 'p'), std::string(200, 'p')}) {
        const std::string salt = sha1ByOpenssl(secret + key).substr(0, 8), t = pbkdf2(secret, salt, 1024),
                          t1 = pbkdf1(secret, salt, 1024);
        const std::string modern = blob(pbes2(octets(salt) + "02020400", oidSeed + octets(t.substr(16))), t);
        const std::string ownIv = t1.substr(0, 16) + sha1ByOpenssl(t1.substr(16)).substr(0, 16);
        const std::string parameters = "30{" + octets(salt) + "02020400}";
        int code = 0;
        for (const int scheme : {14, 15, 24}) EXPECT_EQ(hex(encrypted(scheme, secret, code)), hex(modern)) << scheme;
        EXPECT_EQ(hex(encrypted(7, secret, code)), hex(blob("30{" + oidSeedSha1 + parameters + "}", ownIv)));
        EXPECT_EQ(hex(encrypted(8, secret, code)), hex(blob("30{" + oidSeed + parameters + "}", t1.substr(0, 16) + fixedVector)));
        EXPECT_EQ(code, 0);
    }
    int code = 0;
    EXPECT_EQ(encrypted(9, password, code), ""); // a key of 20 octets
    EXPECT_EQ(code, 4);
}

TEST(Pkcs8, OpenSSLOpensWhatWeWriteAndTheOtherWayRound)
{
    seedByOpenssl(std::string(16, 'k'), fixedVector, "", true); // for its providers
    int code = 0;
    const auto passwordLength = static_cast<int>(password.size());
    const Owned<X509_SIG> ours = decoded(d2i_X509_SIG, encrypted(24, password, code));
    const Owned<PKCS8_PRIV_KEY_INFO> info(PKCS8_decrypt(ours.get(), password.c_str(), passwordLength));
    ASSERT_TRUE(info);
    EXPECT_EQ(encoded(i2d_PKCS8_PRIV_KEY_INFO, info.get()), key);

    const Owned<EVP_CIPHER> seed(EVP_CIPHER_fetch(nullptr, "SEED-CBC", nullptr));
    for (const int count : {1, 2048}) {
        unsigned char salt[16] = "salt of openssl";
        X509_ALGOR* const scheme = PKCS5_pbe2_set_iv(seed.get(), count, salt, sizeof salt, nullptr, NID_hmacWithSHA1);
        const Owned<X509_SIG> theirs(PKCS8_set0_pbe(password.c_str(), passwordLength, info.get(), scheme));
        EXPECT_EQ(opened(encoded(i2d_X509_SIG, theirs.get())).key, key);
    }
}

TEST(Pkcs8, OpensEveryScheme)
{
    const std::string salt = "NaCl", t = pbkdf2(password, salt, 300), t1 = pbkdf1(password, salt, 300);
    const std::map<std::string, std::string> keysAndIvs = {
        {"PBKDF2", t},
        {"PBKDF2 and a vector", t.substr(0, 16) + fixedVector},
        {"PBKDF2 without a salt", pbkdf2(password, "", 1)},
        {"PBKDF1", t1.substr(0, 16) + sha1ByOpenssl(t1.substr(16)).substr(0, 16)},
        {"PBKDF1 and a vector", t1.substr(0, 16) + fixedVector},
        {"PKCS #12", pkcs12(password, salt, 1, 300, 16) + pkcs12(password, salt, 2, 300, 16)},
    };
    for (const Case& c : cases("opened.txt", 2)) {
        const Opened result = opened(blob(c[1], keysAndIvs.at(c[0])));
        EXPECT_EQ(result.key, key) << c.where << ": " << result.trail;
    }
}

TEST(Pkcs8, UnsupportedSchemesAreRefusedWithTheReason)
{
    for (const Case& c : cases("schemes.txt", 2)) {
        SCOPED_TRACE(c.where);
        const Values values{{"blob", der("30{" + c[0] + octets(std::string(32, 'c')) + "}")}};
        Context context;
        EXPECT_EQ(call(context, "VRNO_PRIKEY_Decrypt password blob out", values).code, 2001);
        EXPECT_EQ(placeless(context.error()), "[VRNO_PRIKEY_Decrypt] 잘못된 암호화된 개인키 형식입니다. <tarnlib> " + c[1]);
    }
}

TEST(Pkcs8, WrongPasswordsAndWrongPlainTexts)
{
    int code = 0;
    const std::string right = encrypted(24, password, code);
    Context context;
    BinStr in(right), out("old");
    for (int i = 0; i < 1000; ++i) ASSERT_EQ(VRNO_PRIKEY_Decrypt(context, std::to_string(i).c_str(), in, out), 2004) << i;
    EXPECT_EQ(context.error(), "[VRNO_PRIKEY_Decrypt] 개인키 비밀번호를 확인하세요.");
    EXPECT_EQ(out.data(), "old");

    const std::string t = pbkdf2(password, "salt", 5), algorithm = pbes2(octets("salt") + "020105", oidSeed);
    const std::string noKey = blob(algorithm, t, "padded, and no key"),
                      shortIv = pbes2(octets("salt") + "020105", oidSeed + "0401FF");
    const std::pair<std::string, int> table[] = {
        {noKey, 4103},
        {blob(algorithm, t, ""), 12},
        {blob(algorithm, t, key + "more"), 0},
        {der("30{" + algorithm + octets(std::string(15, 'c')) + "}"), 4103},
        {der("30{" + algorithm + "0400}"), 12},
        {der("30{" + shortIv + octets(std::string(16, 'c')) + "}"), 4103},
    };
    for (const auto& [data, expected] : table) {
        const Opened result = opened(data);
        EXPECT_EQ(result.code, expected) << result.trail;
        EXPECT_EQ(result.key, expected == 0 ? key : "");
    }
    PPKCS8 pkcs8;
    ByteString from = byteString(noKey), plain;
    pkcs8.setPassword(password.c_str());
    EXPECT_EQ(pkcs8.decryptData(from, plain), 0); // any plain text will do
    EXPECT_EQ(bytes(plain), "padded, and no key");
}

TEST(Pkcs8, NothingIsMadeWithoutPasswordOrKey)
{
    PPKCS8 pkcs8;
    ByteString out, in = byteString(key), noKey("no key", 6);
    EXPECT_EQ(pkcs8.getPKCS8Data(out), 1);
    EXPECT_EQ(pkcs8.decryptData(in, out), 1);
    EXPECT_EQ(placeless(trail(pkcs8)), "PPKCS8::decryptData-Password(1),Password is not found.");
    pkcs8.setPassword("p");
    EXPECT_EQ(pkcs8.getPKCS8Data(out), 2);
    EXPECT_EQ(placeless(trail(pkcs8)), "PPKCS8::getPKCS8Data-PrivateKeyInfo(2),The PrivateKeyInfo or Data does not setted.");
    EXPECT_EQ(pkcs8.setPrivateKeyInfo(noKey), 1);
}

// Lengths about the digest's and the block's, and secrets and salts about the block's.
TEST(Pkcs12, DerivesAsOpenSSLDoes)
{
    PPKCS12 ours;
    for (const std::size_t saltLength : {1U, 8U, 64U, 65U}) {
        for (const std::size_t secretLength : {1U, 31U, 32U, 100U}) {
            for (const int length : {1, 16, 20, 21, 40, 64, 130}) {
                const std::string secret(secretLength, 'p'), salt(saltLength, '\xEE');
                ByteString p = byteString(secret), s = byteString(salt), out;
                EXPECT_EQ(ours.keyGenAsc(p, s, 3, 7, length, out), 0);
                EXPECT_EQ(hex(bytes(out)), hex(pkcs12(secret, salt, 3, 7, length)));
            }
        }
    }
    ByteString none, salt("salt", 4), out;
    std::string expected(24, '\0');
    PKCS12_key_gen_uni(nullptr, 0, const_cast<unsigned char*>(salt.getBytes()), 4, 1, 2, 24,
                       reinterpret_cast<unsigned char*>(expected.data()), EVP_sha1());
    EXPECT_EQ(ours.keyGenAsc(none, salt, 1, 2, 24, out), 0);
    EXPECT_EQ(hex(bytes(out)), hex(expected));
}
