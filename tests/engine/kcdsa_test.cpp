// KCDSA of the engine: its equations calculated again with OpenSSL's numbers.
#include "engine/der/der.h"
#include "engine/digest/has160.h"
#include "engine/digest/sha1.h"
#include "engine/frame/context.h"
#include "engine/kcdsa/kcdsa.h"
#include "support/support.h"

#include <openssl/bn.h>

#include <memory>

using namespace vrno;
using namespace test;

namespace {

struct FreeNumber {
    void operator()(BIGNUM* n) const { BN_free(n); }
    void operator()(BN_CTX* c) const { BN_CTX_free(c); }
};
using Number = std::unique_ptr<BIGNUM, FreeNumber>;

BN_CTX* work()
{
    static const std::unique_ptr<BN_CTX, FreeNumber> context(BN_CTX_new());
    return context.get();
}

Number peer(const ZIRC_BN& from)
{
    unsigned char bytes[bnBytes];
    return Number(BN_bin2bn(bytes, bnToBytes(bytes, from), nullptr));
}

ZIRC_BN ours(const BIGNUM* from)
{
    ZIRC_BN number;
    std::vector<unsigned char> bytes(static_cast<std::size_t>(BN_num_bytes(from)) + 1);
    bnFromBytes(number, bytes.data(), BN_bn2bin(from, bytes.data()));
    return number;
}

Number power(const BIGNUM* a, const BIGNUM* e, const BIGNUM* m)
{
    Number r(BN_new());
    BN_mod_exp(r.get(), a, e, m, work());
    return r;
}

std::string digestOf(unsigned hashId, const std::string& data)
{
    unsigned char digest[20];
    (hashId == hashSha1 ? SHA1_Digest : HAS160_Digest)(digest, data.data(), data.size());
    return {reinterpret_cast<char*>(digest), 20};
}

std::string fixed(const BIGNUM* number, int length)
{
    std::string out(static_cast<std::size_t>(length), '\0');
    BN_bn2binpad(number, reinterpret_cast<unsigned char*>(out.data()), length);
    return out;
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

std::string z(const ZIRC_KcdsaKey& key)
{
    const std::string y = fixed(peer(key.y).get(), 128);
    return y.substr(64);
}

// Signs by the equations: a W of just `bytes` bytes is drawn for, and hashed without zeros in front.
void signByHand(const ZIRC_KcdsaKey& key, unsigned hashId, const std::string& digest, int bytes, ZIRC_BN& r, ZIRC_BN& s)
{
    const Number p = peer(key.p), q = peer(key.q), g = peer(key.g), x = peer(key.x);
    Number k(BN_new()), w, e(BN_new()), value(BN_new());
    do {
        BN_rand_range(k.get(), q.get());
        w = power(g.get(), k.get(), p.get());
    } while (BN_num_bytes(w.get()) != bytes);
    const std::string hash = digestOf(hashId, fixed(w.get(), bytes));
    std::string mixed = hash;
    for (std::size_t i = 0; i < 20; ++i) mixed[i] = static_cast<char>(hash[i] ^ digest[i]);
    BN_bin2bn(at(mixed), 20, e.get());
    BN_mod(e.get(), e.get(), q.get(), work());
    BN_mod_sub(value.get(), k.get(), e.get(), q.get(), work());
    BN_mod_mul(value.get(), x.get(), value.get(), q.get(), work());
    bnFromBytes(r, at(hash), 20);
    s = ours(value.get());
}

} // namespace

TEST(Kcdsa, ParametersAreWhatTheStandardAsks)
{
    const struct {
        int pBits, qBits;
    } table[] = {{512, 128}, {1024, 160}};
    for (const auto& row : table) {
        ZIRC_BN p, q, J, g;
        unsigned char seed[64];
        int count = 0;
        ASSERT_EQ(kcdsaGenerateParameters(seed, p, q, J, count, g, row.pBits, row.qBits), 0);
        const Number P = peer(p), Q = peer(q), j = peer(J), G = peer(g);
        EXPECT_EQ(BN_num_bits(Q.get()), row.qBits);
        EXPECT_EQ(BN_num_bits(P.get()), row.pBits);
        for (const Number* prime : {&P, &Q, &j}) EXPECT_EQ(BN_check_prime(prime->get(), work(), nullptr), 1);
        Number product(BN_new());
        BN_mul(product.get(), j.get(), Q.get(), work());
        BN_lshift1(product.get(), product.get());
        BN_add_word(product.get(), 1);
        EXPECT_EQ(BN_cmp(product.get(), P.get()), 0); // p = 2Jq + 1
        EXPECT_TRUE(BN_is_one(power(G.get(), Q.get(), P.get()).get()));
        EXPECT_FALSE(BN_is_one(G.get()));
        // q comes from the seed and the count.
        unsigned char block[68], expected[32];
        const int seedLength = row.qBits / 8;
        std::copy(seed, seed + seedLength, block);
        for (int i = 0; i < 4; ++i) block[seedLength + i] = static_cast<unsigned char>(count >> (24 - 8 * i));
        has160Expand(expected, row.qBits, block, seedLength + 4);
        expected[0] |= 0x80;
        expected[seedLength - 1] |= 1;
        EXPECT_EQ(hex(fixed(Q.get(), seedLength)), hex({reinterpret_cast<char*>(expected), static_cast<std::size_t>(seedLength)}));
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
    const Number p = peer(key.key.p), q = peer(key.key.q), g = peer(key.key.g), y = peer(key.key.y), x = peer(key.key.x);
    Number inverse(BN_mod_inverse(nullptr, x.get(), q.get(), work()));
    EXPECT_EQ(BN_cmp(power(g.get(), inverse.get(), p.get()).get(), y.get()), 0);
    for (int round = 0; round < 10; ++round) {
        const std::string message = "message " + std::to_string(round), digest = digestOf(hashSha1, z(key.key) + message);
        unsigned char signature[256];
        int length = 256;
        ASSERT_EQ(ZIRC_SignData(at(key.privateBlob), static_cast<int>(key.privateBlob.size()), 141401, signature, &length, at(message),
                                static_cast<int>(message.size())),
                  0);
        EXPECT_EQ(hex({reinterpret_cast<char*>(signature), 2}), hex(der("30")) + hex({static_cast<char>(length - 2)}));
        EXPECT_EQ(signature[3], 21); // r has its 20 bytes always
        ZIRC_BN r, s;
        ASSERT_EQ(kcdsaDecodeSignature(signature, length, r, s), 0);
        std::string mixed = fixed(peer(r).get(), 20);
        for (std::size_t i = 0; i < 20; ++i) mixed[i] = static_cast<char>(mixed[i] ^ digest[i]);
        Number e(BN_bin2bn(at(mixed), 20, nullptr)), w(BN_new());
        BN_mod(e.get(), e.get(), q.get(), work());
        BN_mod_mul(w.get(), power(y.get(), peer(s).get(), p.get()).get(), power(g.get(), e.get(), p.get()).get(), p.get(), work());
        EXPECT_EQ(hex(digestOf(hashSha1, fixed(w.get(), BN_num_bytes(p.get())))), hex(fixed(peer(r).get(), 20)));

        const auto verify = [&](const unsigned char* from, int count, const std::string& text) {
            return ZIRC_VerifyData(at(key.publicBlob), static_cast<int>(key.publicBlob.size()), 141401, from, count, at(text), static_cast<int>(text.size()));
        };
        EXPECT_EQ(verify(signature, length, message), 0);
        EXPECT_EQ(verify(signature, length, message + "x"), 3116);
        EXPECT_EQ(verify(signature, length - 1, message), 3115);
        unsigned char longer[300] = {0x30, static_cast<unsigned char>(length)};
        std::copy(signature + 2, signature + length, longer + 2);
        EXPECT_EQ(verify(longer, length + 1, message), 3115); // a byte more inside
    }
}

TEST(Kcdsa, BothFormsOfWVerify)
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
        EXPECT_EQ(kcdsaVerify(key, hashId, at(digest), 20, r, zero), -1);
        EXPECT_EQ(kcdsaVerify(key, hashId, at(digest), 20, r, key.q), -1);
        bnAdd(sum, s, key.q);
        EXPECT_EQ(kcdsaVerify(key, hashId, at(digest), 20, r, sum), -1); // the same modulo q, and yet refused
        ASSERT_EQ(kcdsaSign(key, hashId, r, s, at(digest), 20), 0);
        EXPECT_EQ(kcdsaVerify(key, hashId, at(digest), 20, r, s), 1);
    }
    ZIRC_KcdsaKey small;
    unsigned char value[64];
    bnSetWord(small.y, 0x010203);
    kcdsaZ(small, value);
    EXPECT_EQ(hex({reinterpret_cast<char*>(value), 64}), std::string(122, '0') + "010203");
}

TEST(Kcdsa, UselessKeysAreRefused)
{
    const Key& key = theKey();
    ZIRC_KcdsaKey read;
    for (std::size_t length = 0; length < key.privateBlob.size(); ++length) {
        const std::unique_ptr<unsigned char[]> copy(new unsigned char[length]);
        std::copy_n(key.privateBlob.begin(), length, copy.get());
        EXPECT_LT(kcdsaReadPrivateKey(read, copy.get(), static_cast<int>(length)), 0);
    }
    const auto number = [](const ZIRC_BN& n) {
        unsigned char out[700];
        DerWriter writer{out, 700};
        derWriteInteger(writer, n);
        return hex({reinterpret_cast<char*>(out), static_cast<std::size_t>(writer.length)});
    };
    const std::string p = number(key.key.p), q = number(key.key.q), g = number(key.key.g), x = number(key.key.x), y = number(key.key.y);
    ZIRC_BN even, above;
    bnSubWord(even, key.key.p, 1);
    bnAddWord(above, key.key.p, 1);
    const struct {
        const char* what;
        std::string numbers;
        bool taken;
    } table[] = {
        {"the key", p + q + g + x + y, true},
        {"an even p", number(even) + q + g + x + y, false},
        {"a p of 1", "020101" + q + g + x + y, false},
        {"a q of 0", p + "020100" + g + x + y, false},
        {"a q of 1", p + "020101" + g + x + y, false},
        {"a q as long as p", p + p + g + x + y, false},
        {"a g of 0", p + q + "020100" + x + y, false},
        {"a g of 1", p + q + "020101" + x + y, false},
        {"a g of p + 1", p + q + number(above) + x + y, false},
        {"an x of q", p + q + g + q + y, false},
        {"a number more", p + q + g + x + y + "020101", false},
        {"a number less", p + q + g + x, false},
    };
    for (const auto& row : table) {
        const std::string blob = der("30{" + row.numbers + "}");
        EXPECT_EQ(kcdsaReadPrivateKey(read, at(blob), static_cast<int>(blob.size())), row.taken ? 0 : -1) << row.what;
    }
    // A p of 2^1016 and a little: no W but in 2^-900 of all cases is as long as p, so that no signature comes out.
    const std::string never = der("30{02{01" + std::string(252, '0') + "0B}" + q + "020103" + x + y + "}") + std::string(200, '\0');
    unsigned char out[512];
    int length = 512;
    EXPECT_EQ(ZIRC_SignData(at(never), static_cast<int>(never.size()), 141401, out, &length, at(p), 1), 3110);
}

TEST(Kcdsa, TheLargerSizeSignsToo)
{
    std::string numbers, shared;
    for (const Case& c : cases("kcdsa2048.txt", 2)) {
        const std::string number = "02{00" + c[1] + "}";
        if (c[0] != "x") shared += number;
        numbers += number;
    }
    const std::string privateBlob = der("30{" + numbers + "}"), publicBlob = der("30{" + shared + "}"), message = "m";
    unsigned char signature[512];
    int length = 512;
    ASSERT_EQ(ZIRC_SignData(at(privateBlob), static_cast<int>(privateBlob.size()), 141402, signature, &length, at(message), 1), 0);
    const auto verify = [&](const std::string& blob, const std::string& text) {
        return ZIRC_VerifyData(at(blob), static_cast<int>(blob.size()), 141402, signature, length, at(text), 1);
    };
    EXPECT_EQ(verify(publicBlob, message), 0);
    EXPECT_EQ(verify(publicBlob, "n"), 3116);
    EXPECT_EQ(verify(publicBlob.substr(0, 820), message), 1107);
    EXPECT_EQ(verify(der("02{" + std::string(1700, '7') + "}"), message), 1107); // y alone is no key
}

TEST(Kcdsa, TheSlotMakesBothBlobs)
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
