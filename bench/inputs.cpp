// The inputs of the works, made by OpenSSL, and what their results must be.
#define OPENSSL_SUPPRESS_DEPRECATED
#include "bench.h"

#include <openssl/bn.h>
#include <openssl/cms.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <openssl/pkcs12.h>
#include <openssl/provider.h>
#include <openssl/sha.h>
#include <openssl/x509v3.h>

#include <memory>

namespace bench {
namespace {

template <class T> Bytes derOf(int (*encode)(const T*, unsigned char**), const T* value)
{
    unsigned char* out = nullptr;
    const int length = encode(value, &out);
    require(length > 0, "an encoding by OpenSSL");
    Bytes bytes(out, out + length);
    OPENSSL_free(out);
    return bytes;
}

EVP_PKEY* keyOf(unsigned bits)
{
    static std::map<unsigned, EVP_PKEY*> keys;
    EVP_PKEY*& key = keys[bits];
    if (!key) key = EVP_RSA_gen(bits);
    return key;
}

const EVP_CIPHER* seedCbc()
{
    OSSL_PROVIDER_load(nullptr, "legacy");
    OSSL_PROVIDER_load(nullptr, "default");
    static const EVP_CIPHER* const seed = EVP_CIPHER_fetch(nullptr, "SEED-CBC", nullptr);
    require(seed, "SEED of OpenSSL's legacy provider");
    return seed;
}

Bytes seedEncrypt(const Bytes& plain, const Input& in)
{
    const std::unique_ptr<EVP_CIPHER_CTX, decltype(&EVP_CIPHER_CTX_free)> context(EVP_CIPHER_CTX_new(), EVP_CIPHER_CTX_free);
    Bytes out(plain.size() + 16);
    int length = 0, last = 0;
    EVP_EncryptInit_ex(context.get(), seedCbc(), nullptr, in.key.data(), in.iv.data());
    EVP_EncryptUpdate(context.get(), out.data(), &length, plain.data(), static_cast<int>(plain.size()));
    EVP_EncryptFinal_ex(context.get(), out.data() + length, &last);
    out.resize(static_cast<std::size_t>(length + last));
    return out;
}

// Numbers without a pattern, the same in each run.
Bytes noise(std::size_t size)
{
    Bytes bytes(size);
    unsigned state = 1;
    for (unsigned char& byte : bytes) {
        state = state * 1664525 + 1013904223;
        byte = static_cast<unsigned char>(state >> 24);
    }
    return bytes;
}

// ---- certificates ----

using Certificate = std::unique_ptr<X509, decltype(&X509_free)>;

void addToName(X509_NAME* name, const char* field, const char* text)
{
    X509_NAME_add_entry_by_txt(name, field, MBSTRING_UTF8, reinterpret_cast<const unsigned char*>(text), -1, -1, 0);
}

Certificate plainCertificate(unsigned bits)
{
    Certificate made(X509_new(), X509_free);
    X509_set_version(made.get(), 2);
    BIGNUM* serial = nullptr;
    BN_hex2bn(&serial, "435a2b1f4d");
    BN_to_ASN1_INTEGER(serial, X509_get_serialNumber(made.get()));
    BN_free(serial);
    ASN1_TIME_set_string_X509(X509_getm_notBefore(made.get()), "20200101000000Z");
    ASN1_TIME_set_string_X509(X509_getm_notAfter(made.get()), "20350101000000Z");
    for (X509_NAME* const name : {X509_get_issuer_name(made.get()), X509_get_subject_name(made.get())}) {
        addToName(name, "C", "KR");
        addToName(name, "O", "VRNO");
        addToName(name, "OU", "Personal");
        addToName(name, "OU", "Branch 0042");
    }
    addToName(X509_get_issuer_name(made.get()), "CN", "Benchmark CA");
    addToName(X509_get_subject_name(made.get()), "CN", "Hong Gildong 0001");
    X509_set_pubkey(made.get(), keyOf(bits));
    return made;
}

Bytes sign(const Certificate& made, unsigned bits)
{
    require(X509_sign(made.get(), keyOf(bits), EVP_sha1()) > 0, "X509_sign");
    return derOf(i2d_X509, made.get());
}

// `sections` are those that the value names, in the form of OpenSSL's configuration.
void addExtension(const Certificate& made, const char* name, const char* value, CONF* sections = nullptr)
{
    static CONF* const none = NCONF_new(nullptr); // OpenSSL demands one for policies
    CONF* const known = sections ? sections : none;
    X509V3_CTX context;
    X509V3_set_ctx(&context, made.get(), made.get(), nullptr, nullptr, 0);
    X509V3_set_nconf(&context, known);
    X509_EXTENSION* const extension = X509V3_EXT_nconf(known, &context, name, value);
    require(extension, name);
    X509_add_ext(made.get(), extension, -1);
    X509_EXTENSION_free(extension);
}

// With the extensions of a holder's certificate of the Korean PKI, and the others that have a getter.
Bytes fullCertificate(unsigned bits)
{
    static constexpr char text[] = "[policy]\npolicyIdentifier = 1.2.410.200004.5.2.1.2\nCPS.1 = http://www.example.kr/cps.html\n"
                                   "userNotice.1 = @notice\n[notice]\nexplicitText = UTF8:이 인증서는 시험용입니다\n";
    const Certificate made = plainCertificate(bits);
    const std::unique_ptr<BIO, decltype(&BIO_free)> lines(BIO_new_mem_buf(text, -1), BIO_free);
    const std::unique_ptr<CONF, decltype(&NCONF_free)> sections(NCONF_new(nullptr), NCONF_free);
    require(NCONF_load_bio(sections.get(), lines.get(), nullptr) == 1, "NCONF_load_bio");
    for (const auto& [name, value] : {
             std::pair{"subjectKeyIdentifier", "hash"},
             {"authorityKeyIdentifier", "keyid,issuer:always"},
             {"keyUsage", "critical,digitalSignature,nonRepudiation,keyEncipherment"},
             {"basicConstraints", "CA:FALSE"},
             {"certificatePolicies", "@policy"},
             {"extendedKeyUsage", "clientAuth,emailProtection"},
             {"subjectAltName", "email:gildong@example.kr,DNS:example.kr"},
             {"crlDistributionPoints", "URI:ldap://ds.example.kr:389/ou=dp1"},
             {"authorityInfoAccess", "OCSP;URI:http://ocsp.example.kr:4612"},
         })
        addExtension(made, name, value, sections.get());
    return sign(made, bits);
}

// ---- what a result must be ----

std::function<bool(const Bytes&)> equals(Bytes expected)
{
    return [expected = std::move(expected)](const Bytes& result) { return result == expected; };
}
std::function<bool(const Bytes&)> equals(const char* text) { return equals(Bytes(text, text + std::strlen(text))); }

std::function<bool(const Bytes&)> contains(std::vector<std::string> texts)
{
    return [texts = std::move(texts)](const Bytes& result) {
        const std::string all(result.begin(), result.end());
        for (const std::string& text : texts) {
            if (all.find(text) == std::string::npos) return false;
        }
        return true;
    };
}

bool decryptsTo(const Bytes& message, const Bytes& content, unsigned bits)
{
    const unsigned char* from = message.data();
    CMS_ContentInfo* const parsed = d2i_CMS_ContentInfo(nullptr, &from, static_cast<long>(message.size()));
    BIO* const out = BIO_new(BIO_s_mem());
    char* text = nullptr;
    const bool good = parsed && CMS_decrypt(parsed, keyOf(bits), nullptr, nullptr, out, CMS_BINARY) == 1;
    const long length = BIO_get_mem_data(out, &text);
    const bool same = good && length == static_cast<long>(content.size()) && std::memcmp(text, content.data(), content.size()) == 0;
    BIO_free(out);
    CMS_ContentInfo_free(parsed);
    return same;
}

bool opensTo(const Bytes& blob, const Bytes& key)
{
    const unsigned char* from = blob.data();
    X509_SIG* const sealed = d2i_X509_SIG(nullptr, &from, static_cast<long>(blob.size()));
    PKCS8_PRIV_KEY_INFO* const opened = sealed ? PKCS8_decrypt(sealed, password, passwordLength) : nullptr;
    const bool same = opened && derOf(i2d_PKCS8_PRIV_KEY_INFO, opened) == key;
    PKCS8_PRIV_KEY_INFO_free(opened);
    X509_SIG_free(sealed);
    return same;
}

// ---- the inputs by work ----

void makeCertificate(Input& in, Work work, unsigned bits)
{
    in.certificate = work == Work::message || work == Work::keyPair ? sign(plainCertificate(bits), bits) : fullCertificate(bits);
    const unsigned char* from = in.certificate.data();
    const Certificate read(d2i_X509(nullptr, &from, static_cast<long>(in.certificate.size())), X509_free);
    const Bytes key = derOf(i2d_PublicKey, static_cast<const EVP_PKEY*>(X509_get0_pubkey(read.get())));
    const ASN1_BIT_STRING* signature = nullptr;
    X509_get0_signature(&signature, nullptr, read.get());
    if (work == Work::certificateLoad) in.holds = equals("435a2b1f4d");
    if (work == Work::certificateFields) {
        in.holds = contains({"435a2b1f4d", "Benchmark CA", "Hong Gildong 0001", hex(key.data(), key.size()),
                             hex(signature->data, static_cast<std::size_t>(signature->length))});
    }
    if (work == Work::certificateTexts)
        in.holds = contains({"gildong@example.kr", "ldap://ds.example.kr:389/ou=dp1", "cps.html", "http://ocsp"});
    if (work == Work::message) in.holds = [&in, bits](const Bytes& result) { return decryptsTo(result, in.data, bits); };
}

void makeKey(Input& in, Work work, unsigned bits)
{
    PKCS8_PRIV_KEY_INFO* const info = EVP_PKEY2PKCS8(keyOf(bits));
    in.privateKey = derOf(i2d_PKCS8_PRIV_KEY_INFO, info);
    // Key and IV are derived together.
    in.iv.resize(32);
    PKCS5_PBKDF2_HMAC_SHA1(password, passwordLength, in.salt.data(), static_cast<int>(in.salt.size()), iterations, 32,
                           in.iv.data());
    in.iv.erase(in.iv.begin(), in.iv.begin() + 16);
    X509_ALGOR* const scheme =
        PKCS5_pbe2_set_iv(seedCbc(), iterations, in.salt.data(), static_cast<int>(in.salt.size()), in.iv.data(), NID_hmacWithSHA1);
    X509_SIG* const sealed = PKCS8_set0_pbe(password, passwordLength, info, scheme);
    require(sealed, "PKCS8_set0_pbe");
    const ASN1_OCTET_STRING* octets = nullptr;
    X509_SIG_get0(sealed, nullptr, &octets);
    in.sealed.assign(octets->data, octets->data + octets->length);
    in.data = derOf(i2d_X509_SIG, sealed);
    if (work == Work::openKey) in.holds = equals(in.privateKey);
    // Either the whole record, with parameters of its own, or the data under those of the input.
    if (work == Work::protectKey)
        in.holds = [&in](const Bytes& result) { return result == in.sealed || opensTo(result, in.privateKey); };
    if (work == Work::keyPair) in.holds = equals("pair");
    X509_SIG_free(sealed);
    PKCS8_PRIV_KEY_INFO_free(info);
}

void makeBase64(Input& in, Work work)
{
    Bytes text((in.data.size() + 2) / 3 * 4 + 1);
    text.resize(static_cast<std::size_t>(EVP_EncodeBlock(text.data(), in.data.data(), static_cast<int>(in.data.size()))));
    if (work == Work::base64Decode) in.data.swap(text);
    in.holds = equals(text);
}

void makeSeed(Input& in, Work work)
{
    Bytes cipher = seedEncrypt(in.data, in);
    if (work == Work::seedDecrypt) in.data.swap(cipher);
    in.holds = equals(cipher);
}

// A power modulo an odd number with its highest bit set.
void makePower(Input& in, std::size_t size)
{
    in.key = noise(size);
    in.privateKey = noise(2 * size);
    in.privateKey.erase(in.privateKey.begin(), in.privateKey.begin() + static_cast<long>(size));
    in.privateKey.front() |= 0x80;
    in.privateKey.back() |= 1;
    in.data.front() = 0;
    BIGNUM *r = BN_new(), *const m = BN_bin2bn(in.privateKey.data(), static_cast<int>(size), nullptr);
    BIGNUM *const a = BN_bin2bn(in.data.data(), static_cast<int>(size), nullptr), *const p =
                                                                                      BN_bin2bn(in.key.data(),
                                                                                                static_cast<int>(size), nullptr);
    BN_CTX* const context = BN_CTX_new();
    require(BN_mod_exp(r, a, p, m, context) == 1, "BN_mod_exp");
    Bytes result(static_cast<std::size_t>(BN_num_bytes(r)));
    BN_bn2bin(r, result.data());
    in.holds = equals(result);
    for (BIGNUM* const number : {r, a, p, m}) BN_free(number);
    BN_CTX_free(context);
}

} // namespace

std::string hex(const unsigned char* data, std::size_t length)
{
    std::string text;
    for (std::size_t i = 0; i < length; ++i) {
        for (const int digit : {data[i] >> 4, data[i] & 15}) text += "0123456789abcdef"[digit];
    }
    return text;
}

std::unique_ptr<Input> makeInput(Work work, std::size_t size, unsigned bits)
{
    auto made = std::make_unique<Input>();
    Input& in = *made;
    in.data = noise(size);
    in.key = Bytes(16, 'k');
    in.iv = Bytes(16, 'i');
    in.salt = Bytes(8, 's');
    if (bits > 0) makeCertificate(in, work, bits);
    switch (work) {
    case Work::seedEncrypt:
    case Work::seedDecrypt:
        makeSeed(in, work);
        break;
    case Work::protectKey:
    case Work::openKey:
    case Work::keyPair:
        makeKey(in, work, bits);
        break;
    case Work::base64Encode:
    case Work::base64Decode:
        makeBase64(in, work);
        break;
    case Work::random:
    case Work::drawKey:
        // Each draw is another, and of full length.
        in.holds = [last = Bytes(32)](const Bytes& result) mutable {
            const bool good = result.size() == 32 && result != last;
            last = result;
            return good;
        };
        break;
    case Work::sha1: {
        Bytes digest(20);
        SHA1(in.data.data(), in.data.size(), digest.data());
        in.holds = equals(digest);
        break;
    }
    case Work::hmacSha1: {
        Bytes mac(20);
        HMAC(EVP_sha1(), in.key.data(), 16, in.data.data(), in.data.size(), mac.data(), nullptr);
        in.holds = equals(mac);
        break;
    }
    case Work::modularPower:
        makePower(in, size);
        break;
    default:
        break;
    }
    return made;
}

Bytes certificateWithExtensions(int count)
{
    const Certificate made = plainCertificate(2048);
    for (int i = 1; i < count; ++i) addExtension(made, ("1.2.3." + std::to_string(i)).c_str(), "DER:0500");
    addExtension(made, "subjectKeyIdentifier", "hash");
    return sign(made, 2048);
}

Bytes certificateWithNames(int count)
{
    const Certificate made = plainCertificate(2048);
    GENERAL_NAMES* const names = GENERAL_NAMES_new();
    for (int i = 0; i < count; ++i) {
        const std::string host = "host" + std::to_string(i) + ".example.kr";
        sk_GENERAL_NAME_push(names, a2i_GENERAL_NAME(nullptr, nullptr, nullptr, GEN_DNS, host.c_str(), 0));
    }
    X509_add1_ext_i2d(made.get(), NID_subject_alt_name, names, 0, X509V3_ADD_DEFAULT);
    GENERAL_NAMES_free(names);
    return sign(made, 2048);
}

Bytes certificateWithPolicies(int count)
{
    const Certificate made = plainCertificate(2048);
    CERTIFICATEPOLICIES* const policies = CERTIFICATEPOLICIES_new();
    for (int i = 0; i < count; ++i) {
        POLICYINFO* const policy = POLICYINFO_new();
        policy->policyid = OBJ_txt2obj(("1.2.410.200004." + std::to_string(i)).c_str(), 1);
        sk_POLICYINFO_push(policies, policy);
    }
    X509_add1_ext_i2d(made.get(), NID_certificate_policies, policies, 0, X509V3_ADD_DEFAULT);
    CERTIFICATEPOLICIES_free(policies);
    return sign(made, 2048);
}

} // namespace bench
