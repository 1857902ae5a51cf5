// Private keys under a password: what we write and what we open, against the parts that OpenSSL has for it.
#include "ASN1Pkix/keys/PPKCS12.h"
#include "ASN1Pkix/keys/PPKCS8.h"
#include "support/bytes.h"
#include "support/cases.h"
#include "support/interface.h"
#include "support/openssl.h"

#include <openssl/evp.h>
#include <openssl/pkcs12.h>
#include <openssl/x509.h>

#include <set>

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

std::string octets(const std::string& value)
{
    return "04{" + hex(value) + "}";
}

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
    EXPECT_EQ(bytes(pkcs8.m_bsKey), std::string(static_cast<std::size_t>(pkcs8.m_bsKey.getLength()), '\0'));
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
    return {code, bytes(out), placeless(bytes(pkcs8.getErrorTrail()))};
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
    const std::string ours = encrypted(24, password, code);
    const unsigned char* from = at(ours);
    X509_SIG* const read = d2i_X509_SIG(nullptr, &from, static_cast<long>(ours.size()));
    PKCS8_PRIV_KEY_INFO* const info = PKCS8_decrypt(read, password.c_str(), static_cast<int>(password.size()));
    ASSERT_TRUE(info);
    unsigned char* out = nullptr;
    int length = i2d_PKCS8_PRIV_KEY_INFO(info, &out);
    EXPECT_EQ(text(out, static_cast<std::size_t>(length)), key);
    OPENSSL_free(out);

    EVP_CIPHER* const seed = EVP_CIPHER_fetch(nullptr, "SEED-CBC", nullptr);
    for (const int count : {1, 2048}) {
        unsigned char salt[16] = "salt of openssl";
        X509_ALGOR* const scheme = PKCS5_pbe2_set_iv(seed, count, salt, sizeof salt, nullptr, NID_hmacWithSHA1);
        X509_SIG* const theirs = PKCS8_set0_pbe(password.c_str(), static_cast<int>(password.size()), info, scheme);
        out = nullptr;
        length = i2d_X509_SIG(theirs, &out);
        EXPECT_EQ(opened(text(out, static_cast<std::size_t>(length))).key, key);
        OPENSSL_free(out);
        X509_SIG_free(theirs);
    }
    EVP_CIPHER_free(seed);
    PKCS8_PRIV_KEY_INFO_free(info);
    X509_SIG_free(read);
}

TEST(Pkcs8, OpensEveryScheme)
{
    const std::string salt = "NaCl", s = octets(salt), iv = octets(fixedVector);
    const std::string t = pbkdf2(password, salt, 300), given = t.substr(0, 16) + fixedVector, unsalted = pbkdf2(password, "", 1);
    const std::string t1 = pbkdf1(password, salt, 300), ownIv = t1.substr(0, 16) + sha1ByOpenssl(t1.substr(16)).substr(0, 16);
    const std::string classic = "30{" + s + "0202012C}", derivation = s + "0202012C";
    const struct {
        const char* what;
        std::string algorithm, keyAndIv;
    } table[] = {
        {"an IV that is given", pbes2(derivation, oidSeed + iv), given},
        {"the other identifier inside PBES2", pbes2(derivation, oidSeedPkcs12 + iv), given},
        {"no IV", pbes2(derivation, oidSeed), t},
        {"an empty IV", pbes2(derivation, oidSeed + "0400"), t},
        {"a keyLength without effect", pbes2(derivation + "02012A", oidSeed + iv), given},
        {"a prf that is named", pbes2(derivation + "30{06{2B06010505080102}}", oidSeed + iv), given},
        {"a salt from elsewhere, and one iteration", pbes2("30{06{2A03}} 020101", oidSeed), unsalted},
        {"a derivation that is not looked at", "30{" + oidPbes2 + "30{30{06{2A03} 30{" + derivation + "}} 30{" + oidSeed + "}}}",
         t},
        {"PBKDF1 inside PBES2, whose IV gives way", pbes2(derivation, oidSeedSha1 + iv), ownIv},
        {"PBKDF1", "30{" + oidSeedSha1 + classic + "}", ownIv},
        {"PBKDF1 and the fixed vector", "30{" + oidSeed + classic + "}", t1.substr(0, 16) + fixedVector},
        {"PKCS #12", "30{" + oidSeedPkcs12 + classic + "}",
         pkcs12(password, salt, 1, 300, 16) + pkcs12(password, salt, 2, 300, 16)},
    };
    for (const auto& row : table) {
        const Opened result = opened(blob(row.algorithm, row.keyAndIv));
        EXPECT_EQ(result.key, key) << row.what << ": " << result.trail;
    }
}

TEST(Pkcs8, RefusesWithTheReason)
{
    const std::string head = "PPKCS8::getPrivateKeyInfo-this(8),PPKCS8::decryptData-this(8),PPKCS8::GetAlgorithm-bsOID(";
    const auto refused = [](const std::string& algorithm, const std::string& trail) {
        const std::string data = der("30{" + algorithm + octets(std::string(32, 'c')) + "}");
        Context context;
        BinStr in(data), out("old");
        EXPECT_EQ(opened(data).trail, trail);
        EXPECT_EQ(VRNO_PRIKEY_Decrypt(context, password.c_str(), in, out), 2001);
        EXPECT_EQ(placeless(context.error()), "[VRNO_PRIKEY_Decrypt] 잘못된 암호화된 개인키 형식입니다. <tarnlib> " + trail);
        EXPECT_EQ(out.data(), "old");
    };
    for (const Case& c : cases("schemes.txt", 3)) {
        SCOPED_TRACE(c.where);
        refused("30{06{" + c[0] + "} 0500}", head + c[1] + ")," + c[2]);
    }
    const std::string read = "PPKCS8::getPrivateKeyInfo-this(", decrypt = "),PPKCS8::decryptData-", s = octets("salt") + "020105";
    const auto row = [&](int code, const std::string& rest) { return read + std::to_string(code) + decrypt + rest; };
    refused("30{06{2A03}}", row(8, "this(8),PPKCS8::GetAlgorithm-bsOID(1),bsOID(1 2 3) is unknown OID."));
    refused("30{06{2A} 0500}", row(8, "this(8),PPKCS8::GetAlgorithm-bsOID(1),bsOID(1 2) is unknown OID."));
    refused("30{06{} 0500}", row(3, "pAlgorithmId(3),RAlgorithmIdentifier::getAlgorithm-m_algorithm(1),ASN1ObjectIdentifier::"
                                    "getOID-nOID(2),ASN1 OID Format Error"));
    refused("30{" + oidPbes2 + "0500}", row(5, "pbes2Params(5),RPBES2_params::fromASN1Object-asnSeq(1),ASN1Sequence::"
                                               "fromASN1Object-m_ucPrimitiveTag(2),TagType(5)is not ASN1_TAG_SEQUENCE"));
    refused(pbes2("0500", oidSeed), row(6, "this(6),PPKCS8::parseKeyDerivationFunc-pbkdf2Params(2),RPBKDF2_params::fromASN1Object-"
                                           "nCount(2),At least 2 components are required."));
    refused(pbes2(s + "30{06{2A864886F70D0207} 0500}", oidSeed),
            row(6, "this(6),PPKCS8::parseKeyDerivationFunc-pbkdf2Params(4),Only support HMAC-SHA-1 Pseudorandom function."));
    refused(pbes2(s, "06{2A864886F70D0302}"),
            row(7, "this(7),PPKCS8::parseEncryptionScheme-rc2CBCParameter(1),The RC2 algorithm dose not supported."));
    refused(pbes2(s, "06{2A864886F70D0309}"),
            row(7, "this(7),PPKCS8::parseEncryptionScheme-rc5CBCParameters(3),The RC5 algorithm is not supported."));
    refused(pbes2(s, oidSeed + "0500"), row(7, "this(7),PPKCS8::parseEncryptionScheme-this(9),ASN1OctetString::fromASN1Object-m_"
                                               "ucPrimitiveTag(2),TagType(5)is not ASN1_TAG_OCTETSTRING"));
    refused(
        pbes2(s, "06{2A864886F70D0307}" + octets("12345678")),
        row(7,
            "this(7),PPKCS8::parseEncryptionScheme-this(10),PPKCS8::GetAlgorithm-bsOID(11),The 3DES algorithm is not supported."));
    refused("30{" + oidSeed + "30{" + s + "0500}}",
            row(9, "pbeParameter(9),RPBEParameter::fromASN1Object-asnSeq(2),The number of components is not 2."));
    for (const std::string& count : {std::string("020100"), std::string("0201FF"), std::string("02{7FFFFFFFFF}")}) {
        const std::string told = count == "0201FF" ? "-1" : "0";
        const std::string trail =
            row(10, "this(10),PPKCS8::PBE_Initialize-m_nIterationCount(3),The iteration count(" + told + ") is below 1.");
        refused(pbes2(octets("salt") + count, oidSeed), trail);
        refused("30{" + oidSeed + "30{" + octets("salt") + count + "}}", trail);
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
    const auto deciphered = [&](const std::string& data) {
        PPKCS8 pkcs8;
        ByteString from = byteString(data), plain;
        pkcs8.setPassword(password.c_str());
        return std::pair{pkcs8.decryptData(from, plain), bytes(plain)};
    };
    const std::string noKey = blob(algorithm, t, "padded, and no key"), empty = blob(algorithm, t, ""),
                      more = blob(algorithm, t, key + "more");
    EXPECT_EQ(opened(noKey).code, 4103);
    EXPECT_EQ(deciphered(noKey), (std::pair<int, std::string>{0, "padded, and no key"}));
    EXPECT_EQ(opened(empty).code, 12);
    EXPECT_EQ(opened(more).key, key);
    EXPECT_EQ(opened(der("30{" + algorithm + octets(std::string(15, 'c')) + "}")).code, 4103);
    EXPECT_EQ(opened(der("30{" + algorithm + "0400}")).code, 12);
    EXPECT_EQ(
        opened(der("30{" + pbes2(octets("salt") + "020105", oidSeed + octets("short IV")) + octets(std::string(16, 'c')) + "}"))
            .code,
        4103);
}

TEST(Pkcs8, AnObjectThatLacksSomethingSaysSo)
{
    PPKCS8 pkcs8;
    ByteString out, in = byteString(key), noKey("no key", 6);
    EXPECT_EQ(pkcs8.getPKCS8Data(out), 1);
    EXPECT_EQ(pkcs8.decryptData(in, out), 1);
    EXPECT_EQ(placeless(bytes(pkcs8.getErrorTrail())), "PPKCS8::decryptData-Password(1),Password is not found.");
    pkcs8.setPassword("p");
    EXPECT_EQ(pkcs8.getPKCS8Data(out), 2);
    EXPECT_EQ(placeless(bytes(pkcs8.getErrorTrail())),
              "PPKCS8::getPKCS8Data-PrivateKeyInfo(2),The PrivateKeyInfo or Data does not setted.");
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
