// Published hostile vectors: tests/data/published.txt.
#include "engine/bignum/bignum.h"
#include "engine/calls.h"
#include "engine/der/der.h"
#include "engine/digest/hash_id.h"
#include "engine/digest/hmac.h"
#include "engine/digest/sha1.h"
#include "engine/rsa/rsa.h"
#include "support/cases.h"

#include <memory>

using namespace vrno;
using namespace test;

namespace {

using Fields = std::vector<std::string>; // from the key on, as bytes: key, input, code

const char* yes(bool holds) { return holds ? "yes" : "no"; }

std::string macOf(const std::string& key, const std::string& message)
{
    HMAC_State state;
    unsigned char mac[20];
    HMAC_Init(state, key.data(), key.size());
    HMAC_Update(state, message.data(), message.size());
    HMAC_Final(state, mac);
    return text(mac, sizeof mac);
}

std::string derived(const std::string& password, const std::string& salt, int iterations, std::size_t length)
{
    std::string firstLinks;
    for (char block = 1; firstLinks.size() < length; ++block) firstLinks += macOf(password, salt + std::string(3, '\0') + block);
    std::vector<unsigned char> key(firstLinks.size());
    HMAC_State state;
    HMAC_Init(state, password.data(), password.size());
    HMAC_Chain(state, key.data(), at(firstLinks), firstLinks.size(), iterations - 1);
    return hex(text(key.data(), length));
}

std::unique_ptr<ZIRC_RsaKey> keyFrom(const std::string& blob, bool isPrivate)
{
    auto key = std::make_unique<ZIRC_RsaKey>();
    EXPECT_EQ((isPrivate ? rsaReadPrivateKey : rsaReadPublicKey)(*key, at(blob), size(blob)), 0);
    return key;
}

std::string decrypted(const Fields& f, bool isOaep)
{
    const auto key = keyFrom(f[0], true);
    unsigned char out[1024];
    const int length = isOaep ? rsaOaepDecrypt(*key, hashSha1, out, at(f[1]), size(f[1]), at(f[2]), size(f[2]))
                              : rsaPrivateDecrypt(*key, out, at(f[1]), size(f[1]));
    return length < 0 ? "none" : hex(text(out, static_cast<std::size_t>(length)));
}

std::string isSignature(const Fields& f, int id)
{
    std::string signature;
    EXPECT_EQ(sign(id, f[0], f[1], signature), 0);
    return yes(signature == f[2]);
}

std::string isPss(const Fields& f)
{
    unsigned char digest[20];
    SHA1_Digest(digest, f[1].data(), f[1].size());
    return yes(rsaPssVerify(*keyFrom(f[0], false), hashSha1, digest, 20, at(f[2]), size(f[2]), 20) == 1);
}

std::string isPrime(const std::string& octets) // of an INTEGER
{
    const std::string element = der("02{" + hex(octets) + "}");
    DerReader reader(at(element), size(element));
    ZIRC_BN number;
    derReadInteger(reader, number); // without the sign
    number.neg = static_cast<unsigned char>(octets[0]) >= 0x80;
    return yes(bnIsPrime(number, 20));
}

std::string answer(const std::string& work, const Fields& f, const std::string& expected)
{
    if (work == "hmac") return yes(macOf(f[0], f[1]).starts_with(f[2]));
    if (work == "oaep" || work == "pkcs1") return decrypted(f, work == "oaep");
    if (work == "signature1024") return isSignature(f, 121401);
    if (work == "signature2048") return isSignature(f, 121402);
    if (work == "pss") return isPss(f);
    if (work == "prime") return isPrime(f[1]);
    return derived(f[1], f[0], std::stoi(work.substr(work.find(' '))), expected.size() / 2);
}

} // namespace

TEST(Published, VectorsHold)
{
    for (const Case& c : cases("published.txt", 6)) {
        EXPECT_EQ(answer(c[0], {der(c[2]), der(c[3]), der(c[4])}, c[5]), c[5]) << c.where << " " << c[0] << " " << c[1];
    }
}
