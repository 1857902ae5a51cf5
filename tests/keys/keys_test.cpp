// Key objects, the test of a key pair, and items from a card.
#include "ASN1Pkix/keys/PPrivateKey.h"
#include "ASN1Pkix/keys/PPublicKey.h"
#include "support/bytes.h"
#include "support/cases.h"
#include "support/pairs.h"
#include "support/scenarios.h"

using namespace vrno;
using namespace test;

// ---- key pairs ----

TEST(KeyPairs, MatchesOnlyItsOwnCertificate) { expectCalls("pairs.txt", World()); }

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
    const World world;
    expectCalls("cards.txt", world);
    world.card().remove("pin");
    Context context;
    ASSERT_EQ(VRNO_MEDIA_Load(context, STORAGE_LIBRARY), 0);
    EXPECT_EQ(call(context, "VRNO_MEDIA_CARD_ReadCert 1 1234 out").code, 2514);
}
