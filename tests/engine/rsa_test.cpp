// RSA of the engine against OpenSSL, both ways.
#include "engine/calls.h"
#include "engine/der/der.h"
#include "engine/frame/context.h"
#include "engine/kcdsa/kcdsa.h"
#include "engine/peer.h"
#include "engine/rsa/rsa.h"
#include "support/cases.h"
#include "support/guarded.h"
#include "support/openssl.h"

#include <openssl/rsa.h>

#include <algorithm>
#include <map>

using namespace vrno;
using namespace test;

namespace {

using Buffer = std::vector<unsigned char>;

struct Key {
    Owned<EVP_PKEY> key;
    std::string publicBlob, privateBlob;

    explicit Key(unsigned bits)
        : key(EVP_RSA_gen(bits)), publicBlob(encoded(i2d_PublicKey, key.get())), privateBlob(encoded(i2d_PrivateKey, key.get()))
    {}
};

const Key& keyOf(unsigned bits)
{
    static std::map<unsigned, Key> keys;
    return keys.try_emplace(bits, bits).first->second;
}

using Start = int (*)(EVP_PKEY_CTX*);
using Run = int (*)(EVP_PKEY_CTX*, unsigned char*, std::size_t*, const unsigned char*, std::size_t);

// One operation of OpenSSL; empty where it fails.
std::string openssl(const Key& key, Start start, Run run, int padding, const std::string& in, const EVP_MD* digest = nullptr)
{
    const Owned<EVP_PKEY_CTX> context(EVP_PKEY_CTX_new(key.key.get(), nullptr));
    Buffer out(512);
    std::size_t length = out.size();
    start(context.get());
    EVP_PKEY_CTX_set_rsa_padding(context.get(), padding);
    if (digest) EVP_PKEY_CTX_set_signature_md(context.get(), digest);
    if (padding == RSA_PKCS1_PSS_PADDING) EVP_PKEY_CTX_set_rsa_pss_saltlen(context.get(), 0);
    return run(context.get(), out.data(), &length, at(in), in.size()) > 0 ? text(out.data(), length) : "";
}

std::string digestOf(const EVP_MD* algorithm, const std::string& in)
{
    Buffer out(64);
    unsigned length = 0;
    EVP_Digest(in.data(), in.size(), out.data(), &length, algorithm, nullptr);
    return text(out.data(), length);
}

} // namespace

TEST(Rsa, OpensslDecryptsOursAndWeDecryptOpenssls)
{
    const struct {
        int id;
        unsigned bits;
        int padding, longest;
    } table[] = {
        {12000, 512, RSA_PKCS1_PADDING, 53},        {12001, 1024, RSA_PKCS1_PADDING, 117},
        {12002, 2048, RSA_PKCS1_PADDING, 245},      {13101, 1024, RSA_PKCS1_OAEP_PADDING, 86},
        {13102, 2048, RSA_PKCS1_OAEP_PADDING, 214},
    };
    for (const auto& row : table) {
        const Key& key = keyOf(row.bits);
        for (const int length : {0, 1, 16, row.longest - 1, row.longest}) {
            SCOPED_TRACE(std::to_string(row.id) + " " + std::to_string(length));
            const std::string in(static_cast<std::size_t>(length), 'm');
            std::string out, back;
            ASSERT_EQ(cipher(true, row.id, 6, key.publicBlob, in, out), 0);
            EXPECT_EQ(openssl(key, EVP_PKEY_decrypt_init, EVP_PKEY_decrypt, row.padding, out), in);
            const std::string theirs = openssl(key, EVP_PKEY_encrypt_init, EVP_PKEY_encrypt, row.padding, in);
            ASSERT_EQ(cipher(false, row.id, 7, key.privateBlob, theirs, back), 0);
            EXPECT_EQ(back, in);
        }
        std::string out;
        const std::string tooLong(static_cast<std::size_t>(row.longest) + 1, 'm'), shorter(row.bits / 8 - 1, 'c');
        EXPECT_EQ(cipher(true, row.id, 6, key.publicBlob, tooLong, out), 3110);
        EXPECT_EQ(cipher(false, row.id, 7, key.privateBlob, shorter, out), 2114);
        EXPECT_EQ(cipher(true, row.id, 3, key.publicBlob, "m", out), 1104);                    // the mode of SEED
        EXPECT_EQ(cipher(true, row.id, 6, key.publicBlob, std::string(1001, 'm'), out), 2101); // more than the buffer holds
        if (row.id > 13000) {
            EXPECT_EQ(cipher(true, row.id, 7, key.privateBlob, "m", out), 3110);
            EXPECT_EQ(cipher(false, row.id, 6, key.publicBlob, std::string(row.bits / 8, 'c'), out), 3110);
        } else {
            ASSERT_EQ(cipher(true, row.id, 7, key.privateBlob, "signed", out), 0); // the private key first
            std::string back;
            ASSERT_EQ(cipher(false, row.id, 6, key.publicBlob, out, back), 0);
            EXPECT_EQ(back, "signed");
        }
    }
}

TEST(Rsa, SignaturesAreThoseOfOpenssl)
{
    const struct {
        int id;
        unsigned bits;
        const EVP_MD* digest;
        int padding;
    } table[] = {
        {121200, 512, EVP_md5(), RSA_PKCS1_PADDING},       {121201, 1024, EVP_md5(), RSA_PKCS1_PADDING},
        {121202, 2048, EVP_md5(), RSA_PKCS1_PADDING},      {121400, 512, EVP_sha1(), RSA_PKCS1_PADDING},
        {121401, 1024, EVP_sha1(), RSA_PKCS1_PADDING},     {121402, 2048, EVP_sha1(), RSA_PKCS1_PADDING},
        {131401, 1024, EVP_sha1(), RSA_PKCS1_PSS_PADDING}, {131402, 2048, EVP_sha1(), RSA_PKCS1_PSS_PADDING},
    };
    const std::string message = "a message to sign";
    for (const auto& row : table) {
        SCOPED_TRACE(row.id);
        const Key& key = keyOf(row.bits);
        std::string signature;
        ASSERT_EQ(sign(row.id, key.privateBlob, message, signature), 0);
        EXPECT_EQ(hex(signature),
                  hex(openssl(key, EVP_PKEY_sign_init, EVP_PKEY_sign, row.padding, digestOf(row.digest, message), row.digest)));
        EXPECT_EQ(verify(row.id, key.publicBlob, message, signature), 0);
        EXPECT_EQ(verify(row.id, key.publicBlob, message + " ", signature), 3116);
        EXPECT_EQ(verify(row.id, key.publicBlob, message, signature.substr(1)), 3116);
        EXPECT_EQ(verify(row.id, key.publicBlob, message, ""), 3116);
        for (const std::size_t spoiled : {std::size_t{0}, signature.size() / 2, signature.size() - 1}) {
            std::string bad = signature;
            bad[spoiled] = static_cast<char>(bad[spoiled] ^ 1);
            EXPECT_EQ(verify(row.id, key.publicBlob, message, bad), 3116);
        }
    }
}

// Encoded messages under OpenSSL's bare operation.
TEST(Rsa, BadPaddingsAreRefused)
{
    const Key& key = keyOf(1024);
    for (const Case& c : cases("blocks.txt", 5)) {
        SCOPED_TRACE(c.where + " " + c[0]);
        const std::string front = der(c[1]), back = der(c[2]);
        const std::string em = front + std::string(128 - front.size() - back.size(), front.back()) + back;
        std::string out;
        const std::string forPrivate = openssl(key, EVP_PKEY_encrypt_init, EVP_PKEY_encrypt, RSA_NO_PADDING, em);
        const std::string forPublic = openssl(key, EVP_PKEY_decrypt_init, EVP_PKEY_decrypt, RSA_NO_PADDING, em);
        ASSERT_FALSE(forPrivate.empty() || forPublic.empty());
        EXPECT_EQ(cipher(false, 12001, 7, key.privateBlob, forPrivate, out), std::stoi(c[3]));
        EXPECT_EQ(verify(121401, key.publicBlob, "m", forPublic), std::stoi(c[4]));
    }
}

// Its octets XOR the mask that MGF1 makes of the seed.
static std::string masked(const std::string& octets, const std::string& seed)
{
    std::string mask(octets.size(), '\0');
    rsaMgf1(hashSha1, reinterpret_cast<unsigned char*>(mask.data()), size(mask), at(seed), size(seed));
    for (std::size_t i = 0; i < mask.size(); ++i) mask[i] = static_cast<char>(mask[i] ^ octets[i]);
    return mask;
}

// The block of PSS with this octet before no salt, and this one at its end.
TEST(Rsa, BadPssIsRefused)
{
    const Key& key = keyOf(1024);
    const std::string digest = digestOf(EVP_sha1(), "m"), hash = digestOf(EVP_sha1(), std::string(8, '\0') + digest);
    const auto pss = [&](char separator, char last, char top = 0) {
        std::string em = masked(std::string(106, '\0') + separator, hash) + hash + last;
        em[0] = static_cast<char>((em[0] & 0x7F) | top);
        return em;
    };
    const std::tuple<const char*, std::string, int> table[] = {
        {"a good signature", pss(1, '\xBC'), 0},
        {"another last octet", pss(1, '\xBD'), 3116},
        {"another octet before the salt", pss(2, '\xBC'), 3116},
        {"a bit too many", pss(1, '\xBC', '\x80'), 3116},
    };
    for (const auto& [what, em, code] : table) {
        const std::string signature = openssl(key, EVP_PKEY_decrypt_init, EVP_PKEY_decrypt, RSA_NO_PADDING, em);
        EXPECT_EQ(verify(131401, key.publicBlob, "m", signature), code) << what;
    }
    std::string message, signature = "none";
    for (; signature[0] != 0; message += 'm') ASSERT_EQ(sign(121401, key.privateBlob, message + 'm', signature), 0);
    EXPECT_EQ(verify(121401, key.publicBlob, message, signature), 0);
    EXPECT_EQ(verify(121401, key.publicBlob, message, signature.substr(1)), 3116);
}

// X.690, 8.3. A number is read without its sign.
TEST(Der, IntegersAreWrittenInTwosComplement)
{
    const std::pair<int, const char*> table[] = {{0, "020100"},    {127, "02017f"},    {128, "02020080"}, {-1, "0201ff"},
                                                 {-128, "020180"}, {-129, "0202ff7f"}, {-256, "0202ff00"}};
    for (const auto& [value, octets] : table) {
        ZIRC_BN number, back;
        unsigned char out[4];
        DerWriter writer{out, 4};
        bnSetWord(number, static_cast<unsigned>(std::abs(value)));
        number.neg = value < 0;
        derWriteInteger(writer, number);
        EXPECT_EQ(hex(text(out, static_cast<std::size_t>(writer.length))), octets);
        DerReader reader(out, writer.length);
        derReadInteger(reader, back);
        EXPECT_TRUE(bnIsEqual(back, number)) << value;
    }
}

TEST(Keys, BadBlobsAreRefused)
{
    const auto reads = [](const std::string& reader, const std::string& blob) {
        const Guarded copy(blob);
        ZIRC_RsaKey rsa;
        ZIRC_KcdsaKey kcdsa;
        if (reader == "kcdsa") return kcdsaReadPrivateKey(kcdsa, copy.data(), copy.size()) == 0;
        return (reader == "private" ? rsaReadPrivateKey : rsaReadPublicKey)(rsa, copy.data(), copy.size()) == 0;
    };
    for (const Case& c : cases("blobs.txt", 4)) {
        SCOPED_TRACE(c.where + " " + c[1]);
        const std::string blob = der(c[2]);
        EXPECT_EQ(reads(c[0], blob), c[3] == "yes");
        for (std::size_t length = 0; c[3] == "yes" && length < blob.size(); ++length)
            EXPECT_FALSE(reads(c[0], blob.substr(0, length))) << length;
    }
}

static Peer numberOf(const Key& key, const char* name)
{
    Peer number;
    BIGNUM* to = number;
    EXPECT_EQ(EVP_PKEY_get_bn_param(key.key.get(), name, &to), 1);
    return number;
}

// The key's blob with `other` for one of its numbers, and with or without those that come of its primes.
static std::string blobWith(const Key& key, const std::string& name, const Peer& other, bool withPrimes = true)
{
    std::string numbers = "020100";
    for (const char* const each :
         {"n", "e", "d", "rsa-factor1", "rsa-factor2", "rsa-exponent1", "rsa-exponent2", "rsa-coefficient1"}) {
        const Peer own = numberOf(key, each);
        const Peer& number = name == each ? other : own;
        const bool isLeftOut = each[0] == 'r' && !withPrimes;
        numbers += "02{00" + (isLeftOut ? "" : hex(number.bytes(BN_num_bytes(number)))) + "}";
    }
    return der("30{" + numbers + "}");
}

// d with multiples of the order added to it signs alike. An operation needs it only without the numbers of the primes.
TEST(Rsa, APrivateExponentMayBeLongerThanTheModulus)
{
    for (const unsigned bits : {1024U, 2048U}) {
        const Key& key = keyOf(bits);
        const int id = bits == 1024 ? 121401 : 121402;
        std::string expected, signature;
        ASSERT_EQ(sign(id, key.privateBlob, "m", expected), 0);
        const Peer d = numberOf(key, "d"), p = numberOf(key, "rsa-factor1"), q = numberOf(key, "rsa-factor2");
        Peer order;
        BN_sub_word(p, 1);
        BN_sub_word(q, 1);
        BN_mul(order, p, q, bnContext());
        for (const int length : {2049, 2112, 2113, 4800, 4801}) {
            Peer longer; // the largest of this length
            BN_set_bit(longer, length);
            BN_sub_word(longer, 1);
            BN_sub(longer, longer, d);
            BN_div(longer, nullptr, longer, order, bnContext());
            BN_mul(longer, longer, order, bnContext());
            BN_add(longer, longer, d);
            ASSERT_EQ(BN_num_bits(longer), length);
            for (const bool withPrimes : {true, false}) {
                SCOPED_TRACE(std::to_string(length) + (withPrimes ? " with primes" : ""));
                const bool isTaken = length <= (withPrimes ? 4800 : 2112);
                EXPECT_EQ(sign(id, blobWith(key, "d", longer, withPrimes), "m", signature), isTaken ? 0 : 1107);
                EXPECT_EQ(signature, isTaken ? expected : "");
            }
        }
    }
}

// A number from the modulus on is no input, and a result is below the modulus even if that is not the product of the primes.
TEST(Rsa, NumbersAreBelowTheModulus)
{
    const Key& shorter = keyOf(1020); // whose double has as many octets
    const Peer n = numberOf(shorter, "n");
    std::string signature, cipherText, out;
    ASSERT_EQ(sign(121401, shorter.privateBlob, "m", signature), 0);
    ASSERT_EQ(cipher(true, 12001, 6, shorter.publicBlob, "m", cipherText), 0);
    EXPECT_EQ(verify(121401, shorter.publicBlob, "m", signature), 0);
    EXPECT_EQ(cipher(false, 12001, 7, shorter.privateBlob, cipherText, out), 0);
    for (std::string* const number : {&signature, &cipherText}) {
        const Peer sum(*number);
        BN_add(sum, sum, n);
        *number = sum.bytes(128);
    }
    EXPECT_EQ(verify(121401, shorter.publicBlob, "m", signature), 3116);
    EXPECT_EQ(cipher(false, 12001, 7, shorter.privateBlob, cipherText, out), 3110);

    Peer least; // the least odd number of 1024 bits
    BN_set_bit(least, 1023);
    BN_add_word(least, 1);
    const std::string blob = blobWith(keyOf(1024), "n", least);
    for (int i = 0; i < 32; ++i) {
        ASSERT_EQ(sign(121401, blob, std::to_string(i), signature, true), 0);
        EXPECT_LT(BN_cmp(Peer(signature), least), 0);
    }
}

// A result that is right modulo one prime only gives the other away.
TEST(Rsa, AWrongCrtResultStaysInside)
{
    const Key& key = keyOf(1024);
    const std::string wrong = blobWith(key, "rsa-exponent1", Peer("other"));
    const std::pair<std::string, int> table[] = {
        {wrong, 3110},
        {blobWith(key, "e", Peer("\5")), 3110},
        {blobWith(key, "e", Peer()), 0},        // nothing to verify with
        {blobWith(key, "d", Peer("other")), 0}, // which is not used
    };
    std::string out, cipherText[2];
    ASSERT_EQ(cipher(true, 12001, 6, key.publicBlob, "m", cipherText[0]), 0);
    ASSERT_EQ(cipher(true, 13101, 6, key.publicBlob, "m", cipherText[1]), 0);
    for (const auto& [blob, code] : table) {
        SCOPED_TRACE(&blob - &table[0].first);
        for (const int id : {121401, 131401}) EXPECT_EQ(sign(id, blob, "m", out), code);
        EXPECT_EQ(cipher(true, 12001, 7, blob, "m", out), code);
        EXPECT_EQ(cipher(false, 12001, 7, blob, cipherText[0], out), code);
        EXPECT_EQ(cipher(false, 13101, 7, blob, cipherText[1], out), code);
    }
    ZIRC_RsaKey read;
    Buffer result(128);
    ASSERT_EQ(rsaReadPrivateKey(read, at(wrong), size(wrong)), 0);
    EXPECT_EQ(rsaPrivateEncrypt(read, result.data(), at(wrong), 20), -1);
    EXPECT_EQ(result, Buffer(128));
}

TEST(Rsa, GeneratedKeysAreValidForOpenssl)
{
    for (const int primes : {2, 3, 4, 0}) { // 0: the form for two primes alone
        SCOPED_TRACE(primes);
        ZIRC_RsaKey key;
        for (int turn = 0; turn < (primes > 2 ? 8 : 1); ++turn) { // several primes often make a product that is too short
            ASSERT_EQ(primes ? rsaGenerateMultiPrimeKeyPair(key, 512, 65537, primes) : rsaGenerateKeyPair(key, 512, 65537), 0);
            EXPECT_EQ(bnBits(key.n), 512);
        }
        EXPECT_GT(bnCompareMagnitude(key.p, key.q), 0);
        Buffer priv(2048), pub(2048);
        const int privateLength = rsaWritePrivateKey(key, priv.data(), 2048),
                  publicLength = rsaWritePublicKey(key, pub.data(), 2048);
        ASSERT_GT(privateLength, 0);
        EXPECT_EQ(rsaWritePrivateKey(key, priv.data(), privateLength - 1), -1);
        ASSERT_EQ(rsaWritePrivateKey(key, priv.data(), privateLength), privateLength);
        const unsigned char* from = priv.data();
        const Owned<EVP_PKEY> read(d2i_PrivateKey(EVP_PKEY_RSA, nullptr, &from, privateLength));
        ASSERT_TRUE(read);
        const Owned<EVP_PKEY_CTX> context(EVP_PKEY_CTX_new(read.get(), nullptr));
        EXPECT_TRUE(primes > 2 || EVP_PKEY_pairwise_check(context.get()) == 1);
        std::string signature;
        ASSERT_EQ(sign(121400, text(priv.data(), static_cast<std::size_t>(privateLength)), "m", signature), 0);
        EXPECT_EQ(verify(121400, text(pub.data(), static_cast<std::size_t>(publicLength)), "m", signature), 0);
    }
}

TEST(Rsa, KeyGenerationReadsItsExponentParameter)
{
    const struct {
        const char* parameter;
        const char* tail; // of the public blob; empty for a refusal
    } table[] = {{"", "0203010001"},
                 {"020103", "020103"},
                 {"0203010001", "0203010001"},
                 {"02050000000003", "0203010001"},
                 {"020203", "0203010001"},
                 {"030103", "0203010001"},
                 {"020101", "020101"},
                 {"020102", ""},
                 {"0200", ""}};
    for (const auto& row : table) {
        SCOPED_TRACE(row.parameter);
        ZIRC_Context context;
        ASSERT_EQ(bindSignature(context, 121400), 0);
        unsigned char pub[512], priv[1024];
        int publicLength = 512, privateLength = 1024;
        const std::string parameter = der(row.parameter), tail = row.tail;
        const auto generate = context.slots->fnGenerateKeyPair;
        const int result = generate(context, pub, &publicLength, priv, &privateLength, at(parameter), size(parameter));
        EXPECT_EQ(result, tail.empty() ? 1 : 0);
        if (result != 0) {
            EXPECT_EQ(context.nError, ZIRC_INVALID_DATA);
            continue;
        }
        const std::string blob = hex(text(pub, static_cast<std::size_t>(publicLength)));
        EXPECT_EQ(blob.substr(blob.size() - tail.size()), tail);
        publicLength = 20;
        EXPECT_EQ(generate(context, pub, &publicLength, priv, &privateLength, nullptr, 0), 1);
        EXPECT_EQ(context.nError, ZIRC_NOT_ENOUGH_BUFFER);
        EXPECT_EQ(std::count(priv, priv + privateLength, 0), privateLength);
    }
}

TEST(Rsa, AKeyLargerThanItsIdNeedsRoomForItsModulus)
{
    const Key& key = keyOf(2048);
    std::string out, signature;
    for (const int id : {12000, 12001, 13101}) {
        for (const int room : {128, 255, 256}) {
            EXPECT_EQ(cipher(true, id, 6, key.publicBlob, "m", out, room), room == 256 ? 0 : 3110) << id << " " << room;
        }
    }
    ASSERT_EQ(sign(131402, key.privateBlob, "m", signature), 0);
    EXPECT_EQ(verify(131402, key.publicBlob, "m", signature.substr(0, 255)), 3116);
    EXPECT_EQ(verify(131402, key.publicBlob, "m", '\0' + signature), 3116);
}
