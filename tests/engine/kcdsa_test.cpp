// KCDSA of the engine: its equations calculated again with OpenSSL's numbers.
#include "engine/calls.h"
#include "engine/digest/has160.h"
#include "engine/digest/sha1.h"
#include "engine/frame/context.h"
#include "engine/kcdsa/kcdsa.h"
#include "engine/peer.h"
#include "support/cases.h"
#include "support/secrets.h"

#include <memory>

using namespace vrno;
using namespace test;

namespace {

// a to the e modulo m.
Peer power(const Peer& a, const Peer& e, const Peer& m)
{
    Peer r;
    BN_mod_exp(r, a, e, m, bnContext());
    return r;
}

std::string digestOf(unsigned hashId, const std::string& data)
{
    unsigned char digest[20];
    (hashId == hashSha1 ? SHA1_Digest : HAS160_Digest)(digest, data.data(), data.size());
    return text(digest, 20);
}

// E of the standard: (hash of W XOR digest) modulo q.
Peer computeE(const std::string& hash, const std::string& digest, const Peer& q)
{
    std::string mixed = hash;
    for (std::size_t i = 0; i < 20; ++i) mixed[i] = static_cast<char>(hash[i] ^ digest[i]);
    Peer e(mixed);
    BN_mod(e, e, q, bnContext());
    return e;
}

// A key of 1024 bits, with its blobs; made once, since that takes a second.
struct Key {
    ZIRC_KcdsaKey key;
    std::string publicBlob, privateBlob;

    Key()
    {
        EXPECT_EQ(kcdsaGenerateKeyPair(key, 1024, 160), 0);
        unsigned char blob[2048];
        publicBlob.assign(reinterpret_cast<char*>(blob), static_cast<std::size_t>(kcdsaWritePublicKey(key, blob, 2048)));
        privateBlob.assign(reinterpret_cast<char*>(blob), static_cast<std::size_t>(kcdsaWritePrivateKey(key, blob, 2048)));
    }
};

const Key& theKey()
{
    static const Key key;
    return key;
}

// Signs by the equations, with a W of exactly `bytes` bytes, which is hashed without zeros in front.
void signByHand(const ZIRC_KcdsaKey& key, unsigned hashId, const std::string& digest, int bytes, ZIRC_BN& r, ZIRC_BN& s)
{
    const Peer p = key.p, q = key.q, g = key.g, x = key.x;
    Peer k, w;
    do {
        BN_rand_range(k, q);
        w = power(g, k, p);
    } while (BN_num_bytes(w) != bytes);
    const std::string hash = digestOf(hashId, w.bytes(bytes));
    Peer value;
    BN_mod_sub(value, k, computeE(hash, digest, q), q, bnContext());
    BN_mod_mul(value, x, value, q, bnContext());
    r = Peer(hash).ours();
    s = value.ours();
}

} // namespace

TEST(Kcdsa, GeneratedParametersFollowTheStandard)
{
    for (const auto& [pBits, qBits] : {std::pair{512, 128}, {1024, 160}}) {
        ZIRC_BN p, q, J, g;
        unsigned char seed[64];
        int count = 0;
        ASSERT_EQ(kcdsaGenerateParameters(seed, p, q, J, count, g, pBits, qBits), 0);
        const Peer P = p, Q = q, j = J, G = g, product;
        EXPECT_EQ(BN_num_bits(Q), qBits);
        EXPECT_EQ(BN_num_bits(P), pBits);
        for (const Peer* prime : {&P, &Q, &j}) EXPECT_EQ(BN_check_prime(*prime, bnContext(), nullptr), 1);
        BN_mul(product, j, Q, bnContext());
        BN_lshift1(product, product);
        BN_add_word(product, 1);
        EXPECT_EQ(BN_cmp(product, P), 0); // p = 2Jq + 1
        EXPECT_TRUE(BN_is_one(power(G, Q, P)));
        EXPECT_FALSE(BN_is_one(G));
        // q comes from the seed and the count.
        const auto seedLength = static_cast<std::size_t>(qBits / 8);
        std::string block = text(seed, seedLength), expected(seedLength, '\0');
        for (int shift = 24; shift >= 0; shift -= 8) block += static_cast<char>(count >> shift);
        has160Expand(reinterpret_cast<unsigned char*>(expected.data()), qBits, at(block), size(block));
        expected.front() = static_cast<char>(expected.front() | 0x80);
        expected.back() = static_cast<char>(expected.back() | 1);
        EXPECT_EQ(hex(Q.bytes(qBits / 8)), hex(expected));
    }
}

TEST(Kcdsa, ExpansionFillsFromTheEnd)
{
    const std::string seed = "seed";
    const std::string first = digestOf(2, seed + '\0'), second = digestOf(2, seed + '\1');
    unsigned char out[25];
    has160Expand(out, 196, at(seed), 4);
    std::string expected = second.substr(15) + first;
    expected[0] = static_cast<char>(expected[0] & 0x0F);
    EXPECT_EQ(hex({reinterpret_cast<char*>(out), 25}), hex(expected));
}

TEST(Kcdsa, SignaturesSatisfyTheEquation)
{
    const Key& key = theKey();
    const Peer p = key.key.p, q = key.key.q, g = key.key.g, y = key.key.y, x = key.key.x;
    Peer inverse, w;
    BN_mod_inverse(inverse, x, q, bnContext());
    EXPECT_EQ(BN_cmp(power(g, inverse, p), y), 0);
    for (int round = 0; round < 10; ++round) {
        const std::string message = "message " + std::to_string(round);
        std::string signature;
        ASSERT_EQ(sign(141401, key.privateBlob, message, signature), 0);
        EXPECT_EQ(signature[1], static_cast<char>(signature.size() - 2));
        EXPECT_EQ(signature[3], 21); // r has its 20 bytes always
        ZIRC_BN r, s;
        ASSERT_EQ(kcdsaDecodeSignature(at(signature), size(signature), r, s), 0);
        const std::string hash = Peer(r).bytes(20), z = y.bytes(128).substr(64);
        const Peer e = computeE(hash, digestOf(hashSha1, z + message), q);
        BN_mod_mul(w, power(y, s, p), power(g, e, p), p, bnContext());
        EXPECT_EQ(hex(digestOf(hashSha1, w.bytes(BN_num_bytes(p)))), hex(hash));

        EXPECT_EQ(verify(141401, key.publicBlob, message, signature), 0);
        EXPECT_EQ(verify(141401, key.publicBlob, message + "x", signature), 3116);
        EXPECT_EQ(verify(141401, key.publicBlob, message, signature.substr(0, signature.size() - 1)), 3115);
        const std::string longer = der("30{" + hex(signature.substr(2)) + "00}"); // a byte more inside
        EXPECT_EQ(verify(141401, key.publicBlob, message, longer), 3115);
        signature[4] = 8; // unused bits
        EXPECT_EQ(verify(141401, key.publicBlob, message, signature), 3115);
    }
}

TEST(Kcdsa, VerifiesWithAndWithoutLeadingZerosOfW)
{
    const ZIRC_KcdsaKey& key = theKey().key;
    const int pLength = (bnBits(key.p) + 7) / 8;
    for (const unsigned hashId : {static_cast<unsigned>(hashSha1), 2U}) { // 2: HAS-160
        const std::string digest = digestOf(hashId, "m");
        ZIRC_BN r, s;
        signByHand(key, hashId, digest, pLength, r, s);
        EXPECT_EQ(kcdsaVerify(key, hashId, at(digest), 20, r, s), 1);
        signByHand(key, hashId, digest, pLength - 1, r, s);
        EXPECT_EQ(kcdsaVerify(key, hashId, at(digest), 20, r, s), 2);
        ZIRC_BN zero, sum;
        bnSetWord(zero, 0);
        std::string ofZero = digestOf(hashId, power(key.g, Peer("\5"), key.p).bytes(pLength)); // W for s = 0 and E = 5
        const ZIRC_BN rOfZero = Peer(ofZero).ours();
        ofZero.back() = static_cast<char>(ofZero.back() ^ 5);
        EXPECT_EQ(kcdsaVerify(key, hashId, at(ofZero), 20, rOfZero, zero), -1);
        EXPECT_EQ(kcdsaVerify(key, hashId, at(digest), 20, r, key.q), -1);
        bnAdd(sum, s, key.q);
        EXPECT_EQ(kcdsaVerify(key, hashId, at(digest), 20, r, sum), -1); // equal modulo q, but refused
        ASSERT_EQ(kcdsaSign(key, hashId, r, s, at(digest), 20), 0);
        EXPECT_EQ(kcdsaVerify(key, hashId, at(digest), 20, r, s), 1);
    }
    ZIRC_KcdsaKey small;
    unsigned char value[64];
    bnSetWord(small.y, 0x010203);
    kcdsaZ(small, value);
    EXPECT_EQ(hex({reinterpret_cast<char*>(value), 64}), std::string(122, '0') + "010203");
}

// With an order of 3 one draw in three is 0, whose W of 1 would show x.
TEST(Kcdsa, NoSignatureIsMadeWithAZero)
{
    ZIRC_KcdsaKey key;
    for (const auto& [number, value] : {std::pair{&key.p, 7U}, {&key.q, 3U}, {&key.g, 2U}, {&key.x, 1U}, {&key.y, 2U}}) {
        bnSetWord(*number, value);
    }
    const ZIRC_BN ofOne = Peer(digestOf(hashSha1, "\1")).ours();
    for (int i = 0; i < 64; ++i) {
        const std::string digest = digestOf(hashSha1, std::to_string(i));
        ZIRC_BN r, s;
        if (kcdsaSign(key, hashSha1, r, s, at(digest), 20) < 0) continue;
        EXPECT_FALSE(bnIsEqual(r, ofOne));
        EXPECT_FALSE(bnIsZero(s));
    }
}

// A p just above 2^1016: W is as long as p once in 2^900 draws, so no signature comes out.
TEST(Kcdsa, SigningEndsWithoutALongW)
{
    const ZIRC_KcdsaKey& key = theKey().key;
    const auto number = [](const ZIRC_BN& n) { return "02{" + hex(Peer(n).bytes(bnBits(n) / 8 + 1)) + "}"; };
    const std::string never =
        "30{02{01" + std::string(252, '0') + "0B}" + number(key.q) + "020103" + number(key.x) + number(key.y) + "}";
    std::string signature;
    EXPECT_EQ(sign(141401, der(never) + std::string(200, '\0'), "m", signature), 3110);
}

TEST(Kcdsa, SignsWith2048Bits)
{
    std::string numbers, shared;
    for (const Case& c : cases("kcdsa2048.txt", 2)) {
        const std::string number = "02{00" + c[1] + "}";
        if (c[0] != "x") shared += number;
        numbers += number;
    }
    const std::string publicBlob = der("30{" + shared + "}");
    std::string signature;
    ASSERT_EQ(sign(141402, der("30{" + numbers + "}"), "m", signature), 0);
    EXPECT_EQ(verify(141402, publicBlob, "m", signature), 0);
    EXPECT_EQ(verify(141402, publicBlob, "n", signature), 3116);
    EXPECT_EQ(verify(141402, publicBlob.substr(0, 820), "m", signature), 1107);
    EXPECT_EQ(verify(141402, der("02{" + std::string(1700, '7') + "}"), "m", signature), 1107); // y alone is no key
}

TEST(Kcdsa, KeyGenerationWritesAMatchingPair)
{
    ZIRC_Context context;
    ASSERT_EQ(bindSignature(context, 141401), 0);
    context.sizes.nKeyBits = 512; // whose order has 128
    unsigned char pub[512], priv[512];
    int publicLength = 512, privateLength = 512;
    ASSERT_EQ(context.slots->fnGenerateKeyPair(context, pub, &publicLength, priv, &privateLength, nullptr, 0), 0);
    ZIRC_KcdsaKey one, other;
    ASSERT_EQ(kcdsaReadPublicKey(one, pub, publicLength), 0);
    ASSERT_EQ(kcdsaReadPrivateKey(other, priv, privateLength), 0);
    EXPECT_EQ(bnBits(one.p), 512);
    EXPECT_EQ(bnBits(one.q), 128);
    EXPECT_TRUE(bnIsEqual(one.y, other.y));
}

TEST(Kcdsa, LeavesNothingOnTheStack)
{
    const Key& key = theKey();
    const Peer q = key.key.q, x = key.key.x;
    const std::string digest = digestOf(hashSha1, "m");
    Secrets secrets;
    const auto add = [&secrets](const std::string& name, const Peer& number, const Peer& modulus) {
        secrets.add(name, number.bytes(20));
        BN_add(number, number, modulus); // what is drawn is reduced
        secrets.add(name, number.bytes(21));
    };
    ZIRC_KcdsaKey made;
    ZIRC_BN r, s;
    const std::string ofSigning = stackAfter([&] { EXPECT_EQ(kcdsaSign(key.key, hashSha1, r, s, at(digest), 20), 0); }),
                      ofReading = stackAfter([&] { kcdsaReadPrivateKey(made, at(key.privateBlob), size(key.privateBlob)); });
    Peer k, difference; // s = x (k - E)
    BN_mod_inverse(difference, x, q, bnContext());
    BN_mod_mul(difference, difference, Peer(s), q, bnContext());
    BN_mod_add(k, difference, computeE(Peer(r).bytes(20), digest, q), q, bnContext());
    add("k", k, q);
    add("k - E", difference, q);
    add("x", x, q);
    EXPECT_EQ(secrets.in({ofSigning, ofReading}), "");

    const std::string ofMaking = stackAfter([&] { EXPECT_EQ(kcdsaGenerateKeyPair(made, 512, 128), 0); });
    Peer inverse;
    BN_mod_inverse(inverse, Peer(made.x), Peer(made.q), bnContext());
    add("x", made.x, made.q);
    add("inverse", inverse, made.q);
    EXPECT_EQ(secrets.in({ofMaking}), "");
}
