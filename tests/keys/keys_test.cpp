// Key objects, the test of a key pair, and items from a card.
#include "ASN1Pkix/keys/PPrivateKey.h"
#include "ASN1Pkix/keys/PPublicKey.h"
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

const std::string oidRsa = "06{2A864886F70D010101}", oidKcdsa = "06{2A831A8C9A440101}", oidKcdsa1 = "06{2A831A8C9A440115}",
                  oidDsa = "06{2A8648CE380401}";

Pair makeRsa(unsigned bits)
{
    const std::shared_ptr<EVP_PKEY> peer(EVP_RSA_gen(bits), Freed());
    const Owned<PKCS8_PRIV_KEY_INFO> info(EVP_PKEY2PKCS8(peer.get()));
    return {encoded(i2d_PKCS8_PRIV_KEY_INFO, info.get()),
            certificate({.algorithm = oidRsa + "0500", .key = hex(encoded(i2d_PublicKey, peer.get()))}), peer};
}

const Pair& rsa(unsigned bits)
{
    static std::map<unsigned, Pair> pairs;
    return pairs.contains(bits) ? pairs[bits] : pairs[bits] = makeRsa(bits);
}

std::string privateKeyInfo(const std::string& algorithm, const std::string& privateKey)
{
    return der("30{020100 30{" + algorithm + "} 04{" + privateKey + "}}");
}

// A key under either of its identifiers; J, seed and count of the domain go no further.
struct Kcdsa {
    const Case key = cases("kcdsa1024.txt", 3).at(0);
    const std::string x = key[0], y = key[1], domain = key[2];

    Pair pair(const std::string& oid) const
    {
        const std::string algorithm = oid + " 30{" + domain + "020103 04{\"seed\"} 020105}";
        return {privateKeyInfo(algorithm, x), certificate({.algorithm = algorithm, .key = y}), nullptr};
    }
};

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
    add("Kcdsa", Kcdsa().pair(oidKcdsa));
    add("Kcdsa1", Kcdsa().pair(oidKcdsa1));
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
    ByteString data("data", 4), none, spki, signature, key = byteString(Kcdsa().pair(oidKcdsa).privateKey);
    PPrivateKey secret;
    PPublicKey open;
    EXPECT_EQ(open.verifySignature(spki, data, none, 0, 0), 1);
    EXPECT_EQ(secret.genSignature(key, 1011, data, signature, nullptr, 0, 0), 5);
    EXPECT_EQ(secret.genSignature(key, 1011, data, signature, &none, 0, 0), 8);
    const std::string info = der("30{30{" + oidKcdsa + " 30{" + Kcdsa().domain + "}} 03{00" + Kcdsa().y + "}}");
    spki = byteString(info);
    EXPECT_EQ(secret.genSignature(key, 1011, data, signature, &spki, 0, 0), 0);
    EXPECT_EQ(open.verifySignature(spki, data, signature, 0, 0), 0);
    EXPECT_EQ(open.encrypt(spki, data, signature, 0), 5); // KCDSA does not encrypt
}

TEST(KeyPairs, OpenSSLVerifiesWhatIsSigned)
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
    Values values = goodValues();
    values.merge(Values{{"odd", ODD_STORAGE_LIBRARY},
                        {"longest", longest},
                        {"longText", longText},
                        {"zero", std::string(1, '\0')},
                        {"zeroFirst", std::string("\0value", 6)},
                        {"tooLong", std::string(129, 'v')}});
    const std::string number = "A0{30{06{2A831A8C9A440A010103} 31{03{00\"value\"}}}}";
    values["withNumber"] = der("30{" + hex(values["key"].substr(4)) + number + "}");
    // A key whose attribute is none cannot take the number.
    values["noAttribute"] = der("30{020100 30{06{2A03}} 0400 A0{0500}}");
    values["noAttribute"] = call(Context(), "VRNO_PRIKEY_Encrypt 48 password noAttribute out", values).output;
    expectCalls("cards.txt", values);
    card.remove("pin");
    Context context;
    ASSERT_EQ(VRNO_MEDIA_Load(context, STORAGE_LIBRARY), 0);
    EXPECT_EQ(call(context, "VRNO_MEDIA_CARD_ReadCert 1 1234 out").code, 2514);
}
