// RSA of the engine against OpenSSL, both ways.
#include "engine/calls.h"
#include "engine/der/der.h"
#include "engine/frame/context.h"
#include "engine/peer.h"
#include "engine/rsa/rsa.h"
#include "support/guarded.h"

#include <openssl/evp.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>

#include <algorithm>
#include <map>
#include <memory>

using namespace vrno;
using namespace test;

namespace {

using Buffer = std::vector<unsigned char>;

struct FreeKey {
    void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
    void operator()(EVP_PKEY_CTX* context) const { EVP_PKEY_CTX_free(context); }
};

struct Key {
    std::unique_ptr<EVP_PKEY, FreeKey> key;
    std::string publicBlob, privateBlob;

    explicit Key(unsigned bits) : key(EVP_RSA_gen(bits))
    {
        unsigned char *pub = nullptr, *priv = nullptr;
        const int publicLength = i2d_PublicKey(key.get(), &pub), privateLength = i2d_PrivateKey(key.get(), &priv);
        publicBlob.assign(reinterpret_cast<char*>(pub), static_cast<std::size_t>(publicLength));
        privateBlob.assign(reinterpret_cast<char*>(priv), static_cast<std::size_t>(privateLength));
        OPENSSL_free(pub);
        OPENSSL_free(priv);
    }
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
    const std::unique_ptr<EVP_PKEY_CTX, FreeKey> context(EVP_PKEY_CTX_new(key.key.get(), nullptr));
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

// Encoded messages under OpenSSL's bare operation. `block` repeats the last octet of its front to fill the block.
TEST(Rsa, BadPaddingsAreRefused)
{
    const Key& key = keyOf(1024);
    const std::string digest = digestOf(EVP_sha1(), "m"), info = der("3021300906052B0E03021A05000414") + digest;
    const auto block = [](const std::string& front, const std::string& back) {
        return front + std::string(128 - front.size() - back.size(), front.back()) + back;
    };
    const struct {
        const char* what;
        std::string em;
        int decrypt, check;
    } table[] = {
        {"a good block of type 2", block(der("0002AA"), der("00") + "m"), 0, 3116},
        {"type 1", block(der("0001FF"), der("00") + info), 3110, 0},
        {"a first byte that is not 0", block(der("0102AA"), der("00") + "m"), 3110, 3116},
        {"type 2 without the zero in front", block(der("02AA"), der("00") + "m"), 3110, 3116},
        {"type 1 without the zero in front", block(der("01FF"), der("00") + info), 3110, 3116},
        {"type 2 behind two zeros", block(der("000002AA"), der("00") + "m"), 3110, 3116},
        {"type 1 behind two zeros", block(der("000001FF"), der("00") + info), 3110, 3116},
        {"type 3", block(der("0003AA"), der("00") + "m"), 3110, 3116},
        {"no separator", block(der("0002AA"), ""), 3110, 3116},
        {"no separator in type 1", block(der("0001FF"), ""), 3110, 3116},
        {"seven bytes of padding", block(der("0002AAAAAAAAAAAAAA00") + "m", ""), 3110, 3116},
        {"seven bytes of 0xFF", block(der("0001FFFFFFFFFFFFFF00") + info + der("00"), ""), 3110, 3116},
        {"another byte in the padding", block(der("0001FF"), der("FE00") + info), 3110, 3116},
        {"another separator", block(der("0001FF"), der("01") + info), 3110, 3116},
        {"nothing behind the separator", block(der("0002AA"), der("00")), 0, 3116},
        {"the digest alone", block(der("0001FF"), der("00") + digest), 3110, 0},
        {"something behind the DigestInfo", block(der("0001FF"), der("00") + info + "more"), 3110, 0},
        {"a DigestInfo without NULL", block(der("0001FF"), der("00301F300706052B0E03021A0414") + digest), 3110, 3116},
        {"a length that is not minimal", block(der("0001FF"), der("00308121300906052B0E03021A05000414") + digest), 3110, 3116},
        {"a cut digest", block(der("0001FF"), der("00") + info.substr(0, 34)), 3110, 3116},
        {"more than a signature holds", block(der("0001FFFFFFFFFFFFFFFF00") + info + der("11"), ""), 3110, 3116},
    };
    for (const auto& row : table) {
        SCOPED_TRACE(row.what);
        ASSERT_EQ(row.em.size(), 128U);
        std::string out;
        const std::string forPrivate = openssl(key, EVP_PKEY_encrypt_init, EVP_PKEY_encrypt, RSA_NO_PADDING, row.em);
        const std::string forPublic = openssl(key, EVP_PKEY_decrypt_init, EVP_PKEY_decrypt, RSA_NO_PADDING, row.em);
        ASSERT_FALSE(forPrivate.empty() || forPublic.empty());
        EXPECT_EQ(cipher(false, 12001, 7, key.privateBlob, forPrivate, out), row.decrypt);
        EXPECT_EQ(verify(121401, key.publicBlob, "m", forPublic), row.check);
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

// The block of OAEP with this front before its zeros and this seed, and that of PSS with this end and no salt.
TEST(Rsa, BadOaepAndPssAreRefused)
{
    const Key& key = keyOf(1024);
    const std::string label = digestOf(EVP_sha1(), ""), seed(20, 's'), digest = digestOf(EVP_sha1(), "m"),
                      hash = digestOf(EVP_sha1(), std::string(8, '\0') + digest);
    const auto oaep = [&](const std::string& front, char separator) {
        const std::string db = front + std::string(85, '\0') + separator + "m", hidden = masked(db, seed);
        return '\0' + masked(seed, hidden) + hidden;
    };
    const auto pss = [&](char separator, char last) {
        std::string em = masked(std::string(106, '\0') + separator, hash) + hash + last;
        em[0] = static_cast<char>(em[0] & 0x7F);
        return em;
    };
    std::string topBit = pss(1, '\xBC'), otherLabel = label, out;
    topBit[0] = static_cast<char>(topBit[0] | 0x80);
    otherLabel[3] = static_cast<char>(otherLabel[3] ^ 1);
    const struct {
        const char* what;
        std::string em;
        bool isTaken, isSignature;
    } table[] = {
        {"a good block", oaep(label, 1), true, false},
        {"another label", oaep(otherLabel, 1), false, false},
        {"another separator", oaep(label, 2), false, false},
        {"a good signature", pss(1, '\xBC'), true, true},
        {"another last octet", pss(1, '\xBD'), false, true},
        {"another octet before the salt", pss(2, '\xBC'), false, true},
        {"a bit too many", topBit, false, true},
    };
    for (const auto& row : table) {
        const std::string in = row.isSignature ? openssl(key, EVP_PKEY_decrypt_init, EVP_PKEY_decrypt, RSA_NO_PADDING, row.em)
                                               : openssl(key, EVP_PKEY_encrypt_init, EVP_PKEY_encrypt, RSA_NO_PADDING, row.em);
        const int code =
            row.isSignature ? verify(131401, key.publicBlob, "m", in) : cipher(false, 13101, 7, key.privateBlob, in, out);
        EXPECT_EQ(code == 0, row.isTaken) << row.what << " " << code;
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

TEST(Rsa, BadBlobsAreRefused)
{
    const Key& key = keyOf(512);
    ZIRC_RsaKey read;
    const auto reads = [&read](bool isPrivate, const std::string& blob) {
        const Guarded copy(blob);
        return (isPrivate ? rsaReadPrivateKey : rsaReadPublicKey)(read, copy.data(), copy.size()) == 0;
    };
    EXPECT_TRUE(reads(false, key.publicBlob));
    EXPECT_TRUE(reads(true, key.privateBlob));
    for (std::size_t length = 0; length < key.privateBlob.size(); ++length) {
        EXPECT_FALSE(reads(true, key.privateBlob.substr(0, length)));
        EXPECT_FALSE(reads(false, key.publicBlob.substr(0, std::min(length, key.publicBlob.size() - 1))));
    }
    for (std::size_t i = 0; i < key.privateBlob.size(); ++i) {
        for (const int flip : {1, 0x80, 0xFF}) {
            std::string changed = key.privateBlob, out;
            changed[i] = static_cast<char>(changed[i] ^ flip);
            if (!reads(true, changed)) continue;
            const int code = sign(121400, changed, "m", out);
            EXPECT_TRUE(code == 0 || code == 1107 || code == 3107 || code == 3110) << code;
        }
    }
    const std::string n = "02{C000000000000001}", one = "020101", five = "020105", seven = "0203010001";
    const std::string big = "02{" + hex(std::string(600, '\x7F')) + "}", tooBig = "02{" + hex(std::string(601, '\x7F')) + "}";
    const struct {
        const char* what;
        bool isPrivate;
        std::string blob;
        bool taken;
    } table[] = {
        {"a negative number", false, "30{" + n + seven + "}", true},
        {"the indefinite form", false, "3080" + n + seven + "0000", true},
        {"an indefinite form without end", false, "3080" + n + seven, false},
        {"lengths that are not minimal", false, "3082000E" + n.substr(0, 2) + "8108C000000000000001" + "020103", true},
        {"another tag", false, "31{" + n + seven + "}", false},
        {"a tag number in the form for high ones", false, "3F100F" + n + seven, true},
        {"a tag number above 30", false, "3F820F0F" + n + seven, false},
        {"a tag number that is 16 in its low 32 bits", false, "3F90808080100F" + n + seven, false},
        {"a tag number without end", false, "3F90", false},
        {"a byte left", false, "30{" + n + seven + "00}", false},
        {"one number", false, "30{" + n + "}", false},
        {"a zero modulus", false, "30{020100" + seven + "}", false},
        {"a modulus of 1", false, "30{" + one + seven + "}", false},
        {"an even modulus", false, "30{020106" + seven + "}", false},
        {"an exponent of 0", false, "30{" + n + "020100}", false},
        {"an exponent of 1", false, "30{" + n + one + "}", false},
        {"an exponent of 2", false, "30{" + n + "020102}", false},
        {"an exponent of 3", false, "30{" + n + "020103}", true},
        {"an exponent of 4", false, "30{" + n + "020104}", false},
        {"a long even exponent", false, "30{" + n + "02{" + std::string(510, '7') + "76}}", false},
        {"a long odd exponent", false, "30{" + n + "02{" + std::string(510, '7') + "77}}", true},
        {"an exponent beyond 2048 bits", false, "30{" + n + "02{01" + std::string(512, '7') + "}}", false},
        {"a modulus of 4800 bits", false, "30{" + big + seven + "}", false},
        {"a version beyond 600 bytes", true, "30{" + tooBig + n + seven + "020103 020103 020100 020100 020100 020100 020100}",
         false},
        {"a length of nine octets", false, "308901000000000000000F" + n + seven, false},
        {"a number without octets", true, "30{020100 0203010001 020103 020103 0200 020100 020100 020100 020100}", false},
        {"a negative number beyond 600 bytes", false, "30{02{" + hex(std::string(700, '\x80')) + "}" + seven + "}", false},
        {"no primes", true, "30{020100 0203010001 020103 020103 020100 020100 020100 020100 020100}", true},
        {"a prime of 1", true, "30{020100 0203010001 020103 020103 020101 0203010001 020100 020100 020101}", false},
        {"primes longer than the modulus", true, "30{020100 020123 020103 020103 0203010001 0203010001 020100 020100 020101}",
         false},
        {"further primes under version 0", true,
         "30{020100 02020AEF 020103 020103 02010D 020107 020105 020103 020102 30{30{02011F 020101 020101}}}", false},
        {"further primes under version 1", true,
         "30{020101 02020AEF 020103 020103 02010D 020107 020105 020103 020102 30{30{02011F 020101 020101}}}", true},
        {"three further primes", true,
         "30{020101 02020AEF 020103 020103 02010D 020107 020105 020103 020102 30{30{020103 020101 020101} 30{020103 020101 020101} "
         "30{020103 020101 020101}}}",
         false},
    };
    for (const auto& row : table) EXPECT_EQ(reads(row.isPrivate, der(row.blob)), row.taken) << row.what;
    ASSERT_TRUE(reads(false, der("30{" + n + seven + "}")));
    unsigned char magnitude[600];
    EXPECT_EQ(hex({reinterpret_cast<char*>(magnitude), static_cast<std::size_t>(bnToBytes(magnitude, read.n))}),
              "3fffffffffffffff");
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
        const std::unique_ptr<EVP_PKEY, FreeKey> read(d2i_PrivateKey(EVP_PKEY_RSA, nullptr, &from, privateLength));
        ASSERT_TRUE(read);
        const std::unique_ptr<EVP_PKEY_CTX, FreeKey> context(EVP_PKEY_CTX_new(read.get(), nullptr));
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
