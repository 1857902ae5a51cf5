// Key objects, the test of a key pair, and items from a card.
#include "ASN1Pkix/keys/PPrivateKey.h"
#include "ASN1Pkix/keys/PPublicKey.h"
#include "engine/kcdsa/kcdsa.h"
#include "support/bytes.h"
#include "support/calls.h"
#include "support/cases.h"
#include "support/certificates.h"
#include "support/folder.h"
#include "support/openssl.h"

#include <openssl/rsa.h>

#include <map>
#include <memory>

using namespace vrno;
using namespace test;

namespace {

// ---- key pairs ----

struct Pair {
    std::string privateKey, certificate;
    std::shared_ptr<EVP_PKEY> peer;
};

Pair makeRsa(unsigned bits)
{
    Pair pair{"", "", {EVP_RSA_gen(bits), Freed()}};
    const Certificate x(X509_new());
    X509_set_version(x.get(), 2);
    ASN1_INTEGER_set(X509_get_serialNumber(x.get()), 7);
    X509_gmtime_adj(X509_getm_notBefore(x.get()), 0);
    X509_gmtime_adj(X509_getm_notAfter(x.get()), 86400);
    X509_set_pubkey(x.get(), pair.peer.get());
    X509_sign(x.get(), pair.peer.get(), EVP_sha256());
    pair.certificate = encoded(i2d_X509, x.get());
    const Owned<PKCS8_PRIV_KEY_INFO> info(EVP_PKEY2PKCS8(pair.peer.get()));
    pair.privateKey = encoded(i2d_PKCS8_PRIV_KEY_INFO, info.get());
    return pair;
}

const Pair& rsa(unsigned bits)
{
    static std::map<unsigned, Pair> pairs;
    return pairs.contains(bits) ? pairs[bits] : pairs[bits] = makeRsa(bits);
}

const std::string oidRsa = "06{2A864886F70D010101}", oidKcdsa = "06{2A831A8C9A440101}", oidKcdsa1 = "06{2A831A8C9A440115}",
                  oidDsa = "06{2A8648CE380401}";

std::string integer(const ZIRC_BN& number)
{
    std::string octets(bnBytes, '\0');
    octets.resize(static_cast<std::size_t>(bnToBytes(reinterpret_cast<unsigned char*>(octets.data()), number)));
    return "02{" + std::string(octets[0] & 0x80 ? "00" : "") + hex(octets) + "}";
}

std::string privateKeyInfo(const std::string& algorithm, const std::string& privateKey)
{
    return der("30{020100 30{" + algorithm + "} 04{" + privateKey + "}}");
}

// Pairs over one domain, which takes a second to make.
struct Kcdsa {
    ZIRC_KcdsaKey key;
    std::string x, y, domain, fullDomain;

    Kcdsa()
    {
        EXPECT_EQ(kcdsaGenerateKeyPair(key, 1024, 160), 0);
        x = integer(key.x);
        y = integer(key.y);
        domain = integer(key.p) + integer(key.q) + integer(key.g);
        fullDomain = domain + "020103 04{\"seed\"} 020105"; // J, seed and count go no further
    }
    Pair pair(const std::string& oid) const
    {
        const std::string algorithm = oid + " 30{" + fullDomain + "}";
        return {privateKeyInfo(algorithm, x), certificate({.algorithm = algorithm, .key = y}), nullptr};
    }
};

const Kcdsa& kcdsa()
{
    static const Kcdsa made;
    return made;
}

} // namespace

TEST(KeyPairs, MatchesOnlyItsOwnCertificate)
{
    Values values{{"stranger", makeRsa(1024).privateKey},
                  {"wireless", "\x01"},
                  {"certDsa", certificate({.algorithm = oidDsa, .key = "0500"})}};
    const auto add = [&values](const std::string& name, const Pair& pair) {
        values["cert" + name] = pair.certificate;
        values["key" + name] = pair.privateKey;
    };
    for (const unsigned bits : {1024U, 1536U, 2048U}) add(std::to_string(bits), rsa(bits));
    add("Kcdsa", kcdsa().pair(oidKcdsa));
    add("Kcdsa1", kcdsa().pair(oidKcdsa1));
    std::string& stranger = values["strangerKcdsa"] = values["keyKcdsa"];
    stranger.back() = static_cast<char>(stranger.back() ^ 1);
    expectCalls("pairs.txt", values);
}

// Both sides of a pair detect alike, each with its own codes and words.
TEST(KeyPairs, UnsupportedAlgorithmsAreRefusedOnBothSides)
{
    for (const Case& c : cases("detection.txt", 6)) {
        SCOPED_TRACE(c.where);
        ByteString oid = byteString(c[0]), parameters = byteString(der(c[1])), key = byteString(der(c[2])), flat;
        const int hash = std::stoi(c[3]);
        int keyCode = 0;
        PPrivateKey secret;
        PPublicKey open;
        EXPECT_GT(secret.GetPrivateKeyAlgorithm(&keyCode, oid, key, parameters, flat, hash, &key), 0);
        EXPECT_GT(open.GetPublicKeyAlgorithm(&keyCode, oid, key, parameters, flat, hash), 0);
        EXPECT_EQ(placeless(trail(secret)).find("PPrivateKey::GetPrivateKeyAlgorithm-" + c[4]), 0U);
        EXPECT_EQ(placeless(trail(open)).find("PPublicKey::GetPublicKeyAlgorithm-" + c[5]), 0U);
    }
}

TEST(KeyPairs, SignaturesRefuseDigestsThatTheyDoNotKnow)
{
    for (const Case& c : cases("signatures.txt", 5)) {
        SCOPED_TRACE(c.where);
        const Pair& pair = rsa(c[0] == "1024" ? 1024 : 2048);
        const int hash = std::stoi(c[1]), pss = std::stoi(c[2]);
        ByteString key = byteString(pair.privateKey), cert = byteString(pair.certificate), data("data", 4), signature("s", 1), spki;
        PPrivateKey secret;
        PPublicKey open;
        EXPECT_GT(secret.genSignature(key, hash, data, signature, nullptr, 0, pss), 0);
        ASSERT_EQ(open.getPublicKeyInfoFromCert(cert, spki), 0);
        EXPECT_GT(open.verifySignature(spki, data, signature, hash, pss), 0);
        EXPECT_EQ(placeless(trail(secret)), "PPrivateKey::genSignature-" + c[3]);
        EXPECT_EQ(placeless(trail(open)), "PPublicKey::verifySignature-" + c[4]);
    }
    ByteString data("data", 4), none, spki, signature, key = byteString(kcdsa().pair(oidKcdsa).privateKey);
    PPrivateKey secret;
    PPublicKey open;
    EXPECT_EQ(open.verifySignature(spki, data, none, 0, 0), 1);
    EXPECT_EQ(secret.genSignature(key, 1011, data, signature, nullptr, 0, 0), 5);
    EXPECT_EQ(secret.genSignature(key, 1011, data, signature, &none, 0, 0), 8);
    const std::string info = der("30{30{" + oidKcdsa + " 30{" + kcdsa().domain + "}} 03{00" + kcdsa().y + "}}");
    spki = byteString(info);
    EXPECT_EQ(secret.genSignature(key, 1011, data, signature, &spki, 0, 0), 0);
    EXPECT_EQ(open.verifySignature(spki, data, signature, 0, 0), 0);
    EXPECT_EQ(open.encrypt(spki, data, signature, 0), 5); // KCDSA does not encrypt
}

TEST(KeyPairs, OpenSSLVerifiesAndDeciphers)
{
    const Pair& pair = rsa(2048);
    ByteString key = byteString(pair.privateKey), cert = byteString(pair.certificate), data("data", 4), signature, spki, cipherText,
               none;
    PPrivateKey secret;
    PPublicKey open;
    ASSERT_EQ(secret.genSignature(key, 1011, data, signature, nullptr, 0, 0), 0);
    const Owned<EVP_MD_CTX> verifier(EVP_MD_CTX_new());
    EVP_DigestVerifyInit(verifier.get(), nullptr, EVP_sha1(), nullptr, pair.peer.get());
    EXPECT_EQ(EVP_DigestVerify(verifier.get(), signature.getBytes(), 256, data.getBytes(), 4), 1);
    ASSERT_EQ(open.getPublicKeyInfoFromCert(cert, spki), 0);
    EXPECT_EQ(open.encrypt(spki, none, cipherText, 0), 1);
    EXPECT_EQ(open.encrypt(spki, data, cipherText, 1), 5);
    ASSERT_EQ(open.encrypt(spki, data, cipherText, 0), 0);
    const Owned<EVP_PKEY_CTX> context(EVP_PKEY_CTX_new(pair.peer.get(), nullptr));
    unsigned char plain[256];
    std::size_t length = sizeof plain;
    EVP_PKEY_decrypt_init(context.get());
    ASSERT_EQ(EVP_PKEY_decrypt(context.get(), plain, &length, cipherText.getBytes(), 256), 1);
    EXPECT_EQ(text(plain, length), "data");
}

TEST(KeyPairs, TheRandomNumberComesLastAndOnce)
{
    const std::string head = "020100 30{" + oidRsa + " 0500} 04{\"key\"}", other = "30{06{2A03} 31{020101}}",
                      type = "06{2A831A8C9A440A010103}";
    const auto number = [&](const std::string& value) { return "30{" + type + " 31{03{00 " + value + "}}}"; };
    const struct {
        std::string before, after;
    } table[] = {
        {head, head + "A0{" + number("ABCD00") + "}"},
        {head + "A0{" + other + number("11") + other + "}", head + "A0{" + other + other + number("ABCD00") + "}"},
        {head + "A0{" + number("11") + number("22") + "}", head + "A0{" + number("ABCD00") + "}"},
    };
    ByteString value = byteString(der("ABCD00"));
    PPrivateKey secret;
    for (const auto& row : table) {
        ByteString key = byteString(der("30{" + row.before + "}"));
        EXPECT_EQ(secret.setRandomNumber(key, value), 0);
        EXPECT_EQ(hex(bytes(key)), hex(der("30{" + row.after + "}")));
    }
    ByteString bad = byteString(der("30{" + head + "A0{0500}}"));
    EXPECT_EQ(secret.setRandomNumber(bad, value), 2);
    EXPECT_EQ(secret.setRandomNumber(value, value), 1);
}

// ---- cards ----

TEST(Cards, EveryCardResultMapsToItsCode)
{
    const Card card;
    const std::string longest = "\x30" + std::string(2047, 'e');
    for (const char* const name : {"2010.item", "2020.item"}) card.put(name, longest);
    card.put("0010.item", "certificate");
    card.put("0040.item", longest + "e");
    card.put("0001.item", "");
    card.put("0002.item", {"\0key", 4});
    card.put("0004.item", std::string(2048, '\0'));
    const std::string longText =
        "인증서를 읽는데 실패하였습니다. <dynamiclib> fnc=PKI_STORAGE_Read,errcode=0x1,msg=" + std::string(511, 'm');
    const Values values{{"library", STORAGE_LIBRARY}, {"odd", ODD_STORAGE_LIBRARY}, {"longest", longest}, {"longText", longText}};
    expectCalls("cards.txt", values);
    card.remove("pin");
    Context context;
    ASSERT_EQ(VRNO_MEDIA_Load(context, STORAGE_LIBRARY), 0);
    EXPECT_EQ(call(context, "VRNO_MEDIA_CARD_ReadCert 1 1234 out").code, 2514);
}

TEST(Cards, KeysAreOpenedAndGetTheirRandomNumber)
{
    const Card card;
    Context context;
    ASSERT_EQ(VRNO_MEDIA_Load(context, STORAGE_LIBRARY), 0);
    Values values = goodValues();
    const std::string plain = values["key"], number = der("06{2A831A8C9A440A010103} 31{03{00\"value\"}}");
    const auto put = [&](const std::string& item) { card.put("0020.item", item); };
    const auto read = [&](const std::string& type, const std::string& password) {
        return call(context, "VRNO_MEDIA_CARD_ReadPriKey " + type + " 1234 " + password + " out", values);
    };
    for (const char* name : {"0020.item", "2020.item", "0050.item"}) card.put(name, values["blob"]);
    EXPECT_EQ(read("1", "empty"), (Result{0, values["blob"]})); // as it lies there, and no random value asked for
    EXPECT_EQ(read("2", "password"), (Result{0, plain}));
    EXPECT_EQ(read("0x2001", "password"), (Result{0, plain}));
    EXPECT_EQ(read("1", "password").code, 2519);
    EXPECT_EQ(context.error(), "[VRNO_MEDIA_CARD_ReadPriKey] 본인확인을 위한 랜덤값 읽기 실패하였습니다. <dynamiclib> "
                               "fnc=PKI_STORAGE_Read,errcode=0x6a82,msg=no such item");
    for (const std::string& value : {std::string(), std::string("\0value", 6)}) {
        card.put("0030.item", value);
        EXPECT_EQ(read("1", "password"), (Result{0, plain}));
    }
    card.put("0030.item", "value");
    EXPECT_EQ(read("1", "wrong").code, 2004);
    const std::string with = read("1", "password").output;
    EXPECT_TRUE(with.ends_with(number));
    EXPECT_EQ(with.size(), plain.size() + number.size() + 4);
    card.put("0030.item", std::string(129, 'v'));
    EXPECT_EQ(read("1", "password").code, 2519);
    card.put("0030.result", "6301 pin");
    EXPECT_EQ(read("1", "password").code, 2515);
    put(std::string(1, '\0')); // and yet the random value is asked for first
    EXPECT_EQ(read("1", "password").code, 2515);
    card.remove("0030.result");
    card.put("0030.item", "value");
    EXPECT_EQ(read("1", "password").code, 2502);
    put("no key");
    EXPECT_EQ(read("1", "password").code, 2001);
    // A key whose attribute is none cannot take the number.
    values["odd"] = der("30{020100 30{06{2A03}} 0400 A0{0500}}");
    put(call(context, "VRNO_PRIKEY_Encrypt 48 password odd out", values).output);
    EXPECT_EQ(read("1", "password").code, 2000);
    EXPECT_TRUE(placeless(context.error())
                    .starts_with("[VRNO_MEDIA_CARD_ReadPriKey] 잘못된 개인키 형식입니다. <tarnlib> "
                                 "PPrivateKey::setRandomNumber-attribute(2),"));
}
