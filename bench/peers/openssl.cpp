// OpenSSL, twice: as one would write it for one job, and by its bare calls, which keep contexts and buffers and find what they
// need of a certificate in its encoding, since d2i_X509 takes long over the key.
#define OPENSSL_SUPPRESS_DEPRECATED
#include "bench.h"

#include <openssl/cms.h>
#include <openssl/hmac.h>
#include <openssl/opensslv.h>
#include <openssl/pkcs12.h>
#include <openssl/provider.h>
#include <openssl/rand.h>
#include <openssl/rsa.h>
#include <openssl/sha.h>
#include <openssl/x509v3.h>

namespace bench {
namespace {

constexpr char failure[] = "a call of OpenSSL";

template <auto release> struct Release {
    template <class T> void operator()(T* object) const { release(object); }
};
template <class T, auto release> using Owned = std::unique_ptr<T, Release<release>>;
using Cipher = Owned<EVP_CIPHER, EVP_CIPHER_free>;
using CipherContext = Owned<EVP_CIPHER_CTX, EVP_CIPHER_CTX_free>;
using Certificate = Owned<X509, X509_free>;
using Key = Owned<EVP_PKEY, EVP_PKEY_free>;
using Buffer = Owned<BIO, BIO_free>;

Cipher fetchSeed()
{
    OSSL_PROVIDER_load(nullptr, "legacy");
    OSSL_PROVIDER_load(nullptr, "default");
    return Cipher(EVP_CIPHER_fetch(nullptr, "SEED-CBC", nullptr));
}

Certificate readCertificate(const Input& in)
{
    const unsigned char* from = in.certificate.data();
    return Certificate(d2i_X509(nullptr, &from, static_cast<long>(in.certificate.size())));
}

Key readKey(const Input& in)
{
    const unsigned char* from = in.privateKey.data();
    return Key(d2i_AutoPrivateKey(nullptr, &from, static_cast<long>(in.privateKey.size())));
}

// An element in DER: its first octet, its content, and what stands behind it.
struct Element {
    const unsigned char *start, *content, *end;
};

Element elementAt(const unsigned char* at, const unsigned char* end)
{
    const unsigned char* content = at;
    long length = 0;
    int tag = 0, kind = 0;
    require((ASN1_get_object(&content, &length, &tag, &kind, end - at) & 0x80) == 0, failure);
    return {at, content, content + length};
}

Element component(const Element& container, int index)
{
    Element found = elementAt(container.content, container.end);
    for (; index > 0; --index) found = elementAt(found.end, container.end);
    return found;
}

Element whole(const Bytes& der) { return elementAt(der.data(), der.data() + der.size()); }

// The components of a TBSCertificate of version 3 without unique identifiers.
enum { serial = 1, issuer = 3, subjectKey = 6, extensions = 7 };
Element tbsCertificate(const Input& in) { return component(whole(in.certificate), 0); }

using RsaKey = Owned<RSA, RSA_free>;

RsaKey barePublicKey(const Input& in)
{
    const Element bits = component(component(tbsCertificate(in), subjectKey), 1);
    const unsigned char* from = bits.content + 1; // behind the count of unused bits
    return RsaKey(d2i_RSAPublicKey(nullptr, &from, bits.end - from));
}

RsaKey barePrivateKey(const Input& in)
{
    const Element octets = component(whole(in.privateKey), 2);
    const unsigned char* from = octets.content;
    return RsaKey(d2i_RSAPrivateKey(nullptr, &from, octets.end - from));
}

// One message in CBC mode; the number of bytes written.
std::size_t cbc(EVP_CIPHER_CTX* context, const EVP_CIPHER* cipher, bool encrypts, const unsigned char* key, const unsigned char* iv,
                const Bytes& data, unsigned char* out)
{
    int length = 0, last = 0;
    EVP_CipherInit_ex(context, cipher, nullptr, key, iv, encrypts);
    EVP_CipherUpdate(context, out, &length, data.data(), static_cast<int>(data.size()));
    require(EVP_CipherFinal_ex(context, out + length, &last) == 1, failure);
    return static_cast<std::size_t>(length + last);
}

template <bool encrypts> Operation seed(const Input& in)
{
    static const bool loaded = fetchSeed() != nullptr;
    require(loaded, failure);
    return [&in](Bytes* kept) {
        const Cipher cipher(EVP_CIPHER_fetch(nullptr, "SEED-CBC", nullptr));
        const CipherContext context(EVP_CIPHER_CTX_new());
        const std::unique_ptr<unsigned char[]> out(new unsigned char[in.data.size() + 16]);
        const std::size_t length = cbc(context.get(), cipher.get(), encrypts, in.key.data(), in.iv.data(), in.data, out.get());
        keep(kept, out.get(), length);
    };
}

// What the bare calls use again.
struct Reused {
    Cipher cipher = fetchSeed();
    CipherContext context{EVP_CIPHER_CTX_new()};
    Bytes out;
};

template <bool encrypts> Operation bareSeed(const Input& in)
{
    const auto reused = std::make_shared<Reused>();
    reused->out.resize(in.data.size() + 16);
    return [=, &in](Bytes* kept) {
        Reused& r = *reused;
        keep(kept, r.out.data(),
             cbc(r.context.get(), r.cipher.get(), encrypts, in.key.data(), in.iv.data(), in.data, r.out.data()));
    };
}

// ---- protected keys ----

template <class T> void keepDer(Bytes* kept, int (*encode)(const T*, unsigned char**), const T* value)
{
    unsigned char* out = nullptr;
    const int length = encode(value, &out);
    require(length > 0, failure);
    keep(kept, out, static_cast<std::size_t>(length));
    OPENSSL_free(out);
}

Operation protectKey(const Input& in)
{
    const unsigned char* from = in.privateKey.data();
    using Info = Owned<PKCS8_PRIV_KEY_INFO, PKCS8_PRIV_KEY_INFO_free>;
    const std::shared_ptr<PKCS8_PRIV_KEY_INFO> info =
        Info(d2i_PKCS8_PRIV_KEY_INFO(nullptr, &from, static_cast<long>(in.privateKey.size())));
    return [=](Bytes* kept) {
        const Cipher cipher = fetchSeed();
        X509_ALGOR* const scheme = PKCS5_pbe2_set_iv(cipher.get(), iterations, nullptr, 8, nullptr, NID_hmacWithSHA1);
        const Owned<X509_SIG, X509_SIG_free> sealed(PKCS8_set0_pbe(password, passwordLength, info.get(), scheme));
        require(sealed != nullptr, failure);
        keepDer(kept, i2d_X509_SIG, sealed.get());
    };
}

Operation openKey(const Input& in)
{
    return [&in](Bytes* kept) {
        const unsigned char* from = in.data.data();
        const Owned<X509_SIG, X509_SIG_free> sealed(d2i_X509_SIG(nullptr, &from, static_cast<long>(in.data.size())));
        const Owned<PKCS8_PRIV_KEY_INFO, PKCS8_PRIV_KEY_INFO_free> opened(PKCS8_decrypt(sealed.get(), password, passwordLength));
        keepDer(kept, i2d_PKCS8_PRIV_KEY_INFO, opened.get());
    };
}

template <bool encrypts> Operation bareKey(const Input& in)
{
    const auto reused = std::make_shared<Reused>();
    reused->out.resize(in.sealed.size() + 16);
    return [=, &in](Bytes* kept) {
        unsigned char derived[32]; // the key, and for a new protection the IV
        PKCS5_PBKDF2_HMAC_SHA1(password, passwordLength, in.salt.data(), static_cast<int>(in.salt.size()), iterations,
                               encrypts ? 32 : 16, derived);
        const unsigned char* const iv = encrypts ? derived + 16 : in.iv.data();
        const Bytes& data = encrypts ? in.privateKey : in.sealed;
        Reused& r = *reused;
        keep(kept, r.out.data(), cbc(r.context.get(), r.cipher.get(), encrypts, derived, iv, data, r.out.data()));
    };
}

// ---- key pairs ----

constexpr unsigned char text[] = "a text to sign";

Operation keyPair(const Input& in)
{
    return [&in](Bytes* kept) {
        const Certificate certificate = readCertificate(in);
        const Key key = readKey(in);
        const Owned<EVP_MD_CTX, EVP_MD_CTX_free> signs(EVP_MD_CTX_new()), verifies(EVP_MD_CTX_new());
        unsigned char signature[256];
        std::size_t length = sizeof signature;
        EVP_DigestSignInit(signs.get(), nullptr, EVP_sha1(), nullptr, key.get());
        EVP_DigestSign(signs.get(), signature, &length, text, sizeof text);
        EVP_DigestVerifyInit(verifies.get(), nullptr, EVP_sha1(), nullptr, X509_get0_pubkey(certificate.get()));
        keep(kept, EVP_DigestVerify(verifies.get(), signature, length, text, sizeof text) == 1 ? "pair" : "no pair");
    };
}

// The private operation without blinding, which ours does not have.
Operation bareKeyPair(const Input& in)
{
    return [&in](Bytes* kept) {
        const RsaKey open = barePublicKey(in), secret = barePrivateKey(in);
        unsigned char digest[20], signature[256];
        unsigned length = 0;
        RSA_blinding_off(secret.get());
        SHA1(text, sizeof text, digest);
        RSA_sign(NID_sha1, digest, sizeof digest, signature, &length, secret.get());
        keep(kept, RSA_verify(NID_sha1, digest, sizeof digest, signature, length, open.get()) == 1 ? "pair" : "no pair");
    };
}

// ---- messages ----

Operation message(const Input& in)
{
    return [&in](Bytes* kept) {
        const Cipher cipher = fetchSeed();
        const Owned<STACK_OF(X509), [](STACK_OF(X509) * all) { sk_X509_pop_free(all, X509_free); }> recipients(sk_X509_new_null());
        sk_X509_push(recipients.get(), readCertificate(in).release());
        const Buffer content(BIO_new_mem_buf(in.data.data(), static_cast<int>(in.data.size())));
        const Owned<CMS_ContentInfo, CMS_ContentInfo_free> made(
            CMS_encrypt(recipients.get(), content.get(), cipher.get(), CMS_BINARY));
        keepDer(kept, i2d_CMS_ContentInfo, made.get());
    };
}

// Puts the header of an element in front of the beginning of its content, of which `rest` octets follow later.
void enclose(unsigned char tag, Bytes& content, std::size_t rest = 0)
{
    const std::size_t length = content.size() + rest;
    Bytes header{tag};
    if (length < 128) {
        header.push_back(static_cast<unsigned char>(length));
    } else {
        header.push_back(0x84);
        for (int shift = 24; shift >= 0; shift -= 8) header.push_back(static_cast<unsigned char>(length >> shift));
    }
    content.insert(content.begin(), header.begin(), header.end());
}

void putBefore(Bytes& content, const Bytes& part) { content.insert(content.begin(), part.begin(), part.end()); }

// KeyTransRecipientInfo of RFC 5652.
Bytes bareRecipient(const Input& in, const unsigned char* key)
{
    static const Bytes version{2, 1, 0}, rsa{0x30, 0x0D, 6, 9, 0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 1, 1, 1, 5, 0};
    const RsaKey holder = barePublicKey(in);
    Bytes all(static_cast<std::size_t>(RSA_size(holder.get())));
    require(RSA_public_encrypt(16, key, all.data(), holder.get(), RSA_PKCS1_PADDING) > 0, failure);
    const Element tbs = tbsCertificate(in), name = component(tbs, issuer), number = component(tbs, serial);
    Bytes identifier(name.start, name.end);
    identifier.insert(identifier.end(), number.start, number.end);
    enclose(0x30, identifier);
    enclose(4, all);
    for (const Bytes& part : {rsa, identifier, version}) putBefore(all, part);
    enclose(0x30, all);
    return all;
}

// ContentInfo and EnvelopedData of RFC 5652, from the inside to the outside; the content is encrypted into its place.
Operation bareMessage(const Input& in)
{
    return [reused = std::make_shared<Reused>(), &in](Bytes* kept) {
        static const Bytes version{2, 1, 0}, enveloped{6, 9, 0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 1, 7, 3},
            data{6, 9, 0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 1, 7, 1}, seedId{6, 8, 0x2A, 0x83, 0x1A, 0x8C, 0x9A, 0x44, 1, 4};
        const std::size_t length = in.data.size() / 16 * 16 + 16;
        unsigned char drawn[32]; // key and IV
        RAND_bytes(drawn, sizeof drawn);
        Bytes recipients = bareRecipient(in, drawn), algorithm(drawn + 16, drawn + 32), all;
        enclose(0x31, recipients);
        enclose(4, algorithm);
        putBefore(algorithm, seedId);
        enclose(0x30, algorithm);
        enclose(0x80, all, length);
        for (const Bytes& part : {algorithm, data}) putBefore(all, part);
        enclose(0x30, all, length);
        for (const Bytes& part : {recipients, version}) putBefore(all, part);
        enclose(0x30, all, length);
        enclose(0xA0, all, length);
        putBefore(all, enveloped);
        enclose(0x30, all, length);
        const std::unique_ptr<unsigned char[]> out(new unsigned char[all.size() + length]);
        std::memcpy(out.get(), all.data(), all.size());
        cbc(reused->context.get(), reused->cipher.get(), true, drawn, drawn + 16, in.data, out.get() + all.size());
        keep(kept, out.get(), all.size() + length);
    };
}

// ---- certificates ----

std::string hexOf(const ASN1_STRING* octets)
{
    return hex(ASN1_STRING_get0_data(octets), static_cast<std::size_t>(ASN1_STRING_length(octets)));
}

Operation certificateLoad(const Input& in)
{
    return [&in](Bytes* kept) {
        const Certificate certificate = readCertificate(in);
        if (kept) keep(kept, hexOf(X509_get0_serialNumber(certificate.get())));
    };
}

Operation certificateFields(const Input& in)
{
    return [&in](Bytes* kept) {
        const Certificate certificate = readCertificate(in);
        const X509* const c = certificate.get();
        const Buffer out(BIO_new(BIO_s_mem()));
        const ASN1_BIT_STRING* signature = nullptr;
        const X509_ALGOR* algorithm = nullptr;
        X509_get0_signature(&signature, &algorithm, c);
        BIO_printf(out.get(), "%ld\n%s\n", X509_get_version(c) + 1, hexOf(X509_get0_serialNumber(c)).c_str());
        i2a_ASN1_OBJECT(out.get(), algorithm->algorithm);
        X509_NAME_print_ex(out.get(), X509_get_issuer_name(c), 0, XN_FLAG_RFC2253);
        X509_NAME_print_ex(out.get(), X509_get_subject_name(c), 0, XN_FLAG_RFC2253);
        ASN1_TIME_print(out.get(), X509_get0_notBefore(c));
        ASN1_TIME_print(out.get(), X509_get0_notAfter(c));
        const std::string key = hexOf(X509_get0_pubkey_bitstr(c)), end = hexOf(signature);
        BIO_write(out.get(), key.data(), static_cast<int>(key.size()));
        BIO_write(out.get(), end.data(), static_cast<int>(end.size()));
        char* made = nullptr;
        const long length = BIO_get_mem_data(out.get(), &made);
        keep(kept, made, static_cast<std::size_t>(length));
    };
}

Operation certificateTexts(const Input& in)
{
    return [&in](Bytes* kept) {
        const Certificate certificate = readCertificate(in);
        const Buffer out(BIO_new(BIO_s_mem()));
        for (int i = 0; i < X509_get_ext_count(certificate.get()); ++i)
            require(X509V3_EXT_print(out.get(), X509_get_ext(certificate.get(), i), 0, 0) == 1, failure);
        char* made = nullptr;
        const long length = BIO_get_mem_data(out.get(), &made);
        keep(kept, made, static_cast<std::size_t>(length));
    };
}

Operation bareTexts(const Input& in)
{
    return [out = std::shared_ptr<BIO>(BIO_new(BIO_s_mem()), BIO_free), &in](Bytes* kept) {
        const Element list = component(component(tbsCertificate(in), extensions), 0);
        const unsigned char* from = list.start;
        const Owned<X509_EXTENSIONS, [](X509_EXTENSIONS* all) { sk_X509_EXTENSION_pop_free(all, X509_EXTENSION_free); }> all(
            d2i_X509_EXTENSIONS(nullptr, &from, list.end - from));
        BIO_reset(out.get());
        for (int i = 0; i < sk_X509_EXTENSION_num(all.get()); ++i)
            require(X509V3_EXT_print(out.get(), sk_X509_EXTENSION_value(all.get(), i), 0, 0) == 1, failure);
        char* made = nullptr;
        const long octets = BIO_get_mem_data(out.get(), &made);
        keep(kept, made, static_cast<std::size_t>(octets));
    };
}

// ---- the small ones ----

Operation base64Encode(const Input& in)
{
    return [out = Bytes((in.data.size() + 2) / 3 * 4 + 1), &in](Bytes* kept) mutable {
        keep(kept, out.data(),
             static_cast<std::size_t>(EVP_EncodeBlock(out.data(), in.data.data(), static_cast<int>(in.data.size()))));
    };
}

Operation base64Decode(const Input& in)
{
    return [out = Bytes(in.data.size() / 4 * 3), &in](Bytes* kept) mutable {
        int length = EVP_DecodeBlock(out.data(), in.data.data(), static_cast<int>(in.data.size()));
        require(length > 0, failure);
        for (std::size_t end = in.data.size(); in.data[end - 1] == '='; --end) --length; // it counts the padding as bytes
        keep(kept, out.data(), static_cast<std::size_t>(length));
    };
}

Operation random(const Input& in)
{
    return [length = in.data.size()](Bytes* kept) {
        unsigned char drawn[64];
        require(RAND_bytes(drawn, static_cast<int>(length)) == 1, failure);
        keep(kept, drawn, length);
    };
}

Operation sha1(const Input& in)
{
    return [&in](Bytes* kept) {
        unsigned char digest[20];
        EVP_Digest(in.data.data(), in.data.size(), digest, nullptr, EVP_sha1(), nullptr);
        keep(kept, digest, sizeof digest);
    };
}

Operation bareSha1(const Input& in)
{
    return [&in](Bytes* kept) {
        unsigned char digest[20];
        SHA1(in.data.data(), in.data.size(), digest);
        keep(kept, digest, sizeof digest);
    };
}

Operation hmacSha1(const Input& in)
{
    return [&in](Bytes* kept) {
        unsigned char mac[20];
        HMAC(EVP_sha1(), in.key.data(), 16, in.data.data(), in.data.size(), mac, nullptr);
        keep(kept, mac, sizeof mac);
    };
}

Operation bareHmacSha1(const Input& in)
{
    const std::shared_ptr<HMAC_CTX> context(HMAC_CTX_new(), HMAC_CTX_free);
    return [=, &in](Bytes* kept) {
        unsigned char mac[20];
        HMAC_Init_ex(context.get(), in.key.data(), 16, EVP_sha1(), nullptr);
        HMAC_Update(context.get(), in.data.data(), in.data.size());
        HMAC_Final(context.get(), mac, nullptr);
        keep(kept, mac, sizeof mac);
    };
}

Operation bareModularPower(const Input& in)
{
    const auto numberOf = [](const Bytes& bytes) {
        return std::shared_ptr<BIGNUM>(BN_bin2bn(bytes.data(), static_cast<int>(bytes.size()), nullptr), BN_free);
    };
    const auto base = numberOf(in.data), exponent = numberOf(in.key), modulus = numberOf(in.privateKey);
    const std::shared_ptr<BN_CTX> context(BN_CTX_new(), BN_CTX_free);
    const std::shared_ptr<BN_MONT_CTX> montgomery(BN_MONT_CTX_new(), BN_MONT_CTX_free);
    BN_MONT_CTX_set(montgomery.get(), modulus.get(), context.get());
    return [=, r = std::shared_ptr<BIGNUM>(BN_new(), BN_free)](Bytes* kept) {
        BN_mod_exp_mont_consttime(r.get(), base.get(), exponent.get(), modulus.get(), context.get(), montgomery.get());
        unsigned char bytes[256];
        keep(kept, bytes, static_cast<std::size_t>(BN_bn2bin(r.get(), bytes)));
    };
}

const bool added = addPeer({"OpenSSL",
                            OPENSSL_VERSION_STR,
                            {{Work::seedEncrypt, seed<true>},
                             {Work::seedDecrypt, seed<false>},
                             {Work::protectKey, protectKey},
                             {Work::openKey, openKey},
                             {Work::keyPair, keyPair},
                             {Work::message, message},
                             {Work::certificateLoad, certificateLoad},
                             {Work::certificateFields, certificateFields},
                             {Work::certificateTexts, certificateTexts},
                             {Work::sha1, sha1},
                             {Work::hmacSha1, hmacSha1}}});
const bool addedBare = addPeer({"OpenSSL bare",
                                "",
                                {{Work::seedEncrypt, bareSeed<true>},
                                 {Work::seedDecrypt, bareSeed<false>},
                                 {Work::protectKey, bareKey<true>},
                                 {Work::openKey, bareKey<false>},
                                 {Work::keyPair, bareKeyPair},
                                 {Work::message, bareMessage},
                                 {Work::certificateTexts, bareTexts},
                                 {Work::base64Encode, base64Encode},
                                 {Work::base64Decode, base64Decode},
                                 {Work::random, random},
                                 {Work::drawKey, random},
                                 {Work::sha1, bareSha1},
                                 {Work::hmacSha1, bareHmacSha1},
                                 {Work::modularPower, bareModularPower}}});

} // namespace
} // namespace bench
