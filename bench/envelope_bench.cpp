// Enveloped messages beside OpenSSL's, for the same recipient and cipher: both read the certificate and write DER.
#include "pair.h"
#include "vrno.h"

#include <openssl/cms.h>
#include <openssl/evp.h>
#include <openssl/provider.h>
#include <openssl/x509.h>

#include <cstdlib>
#include <memory>
#include <vector>

namespace bench {

void registerEnvelopePairs();

namespace {

// A certificate made by OpenSSL, in the form that each side reads, and a content.
struct Mail {
    std::vector<unsigned char> certificate, content;
    VRNO_API_CTX* context = nullptr;
    EVP_CIPHER* seed = EVP_CIPHER_fetch(nullptr, "SEED-CBC", nullptr);

    Mail(EVP_PKEY* key, std::size_t length) : content(length, 'c')
    {
        X509* const x509 = X509_new();
        ASN1_INTEGER_set(X509_get_serialNumber(x509), 42);
        X509_gmtime_adj(X509_getm_notBefore(x509), 0);
        X509_gmtime_adj(X509_getm_notAfter(x509), 3600);
        X509_set_pubkey(x509, key);
        X509_sign(x509, key, EVP_sha256());
        unsigned char* out = nullptr;
        const int octets = i2d_X509(x509, &out);
        certificate.assign(out, out + octets);
        OPENSSL_free(out);
        X509_free(x509);
        VRNO_API_Init(&context, "/");
    }
    Mail(const Mail&) = delete;
    Mail& operator=(const Mail&) = delete;
    ~Mail()
    {
        VRNO_API_Finish(&context);
        EVP_CIPHER_free(seed);
    }

    void ours()
    {
        const VRNO_BINSTR cert{certificate.data(), static_cast<unsigned>(certificate.size())};
        const VRNO_BINSTR data{content.data(), static_cast<unsigned>(content.size())};
        VRNO_BINSTR out{nullptr, 0};
        if (VRNO_CMS_EncryptData(context, VRNO_CMS_CONTENT_INFO, &cert, &data, VRNO_SYM_SEED, &out) != 0) std::abort();
        benchmark::DoNotOptimize(out.pData);
        VRNO_BINSTR_Delete(&out);
    }

    void peer() const
    {
        const unsigned char* from = certificate.data();
        X509* const x509 = d2i_X509(nullptr, &from, static_cast<long>(certificate.size()));
        STACK_OF(X509)* const recipients = sk_X509_new_null();
        sk_X509_push(recipients, x509);
        BIO* const in = BIO_new_mem_buf(content.data(), static_cast<int>(content.size()));
        CMS_ContentInfo* const message = CMS_encrypt(recipients, in, seed, CMS_BINARY);
        unsigned char* out = nullptr;
        if (i2d_CMS_ContentInfo(message, &out) <= 0) std::abort();
        benchmark::DoNotOptimize(out);
        OPENSSL_free(out);
        CMS_ContentInfo_free(message);
        BIO_free(in);
        sk_X509_pop_free(recipients, X509_free);
    }
};

} // namespace

void registerEnvelopePairs()
{
    OSSL_PROVIDER_load(nullptr, "legacy");
    OSSL_PROVIDER_load(nullptr, "default");
    EVP_PKEY* const key = EVP_RSA_gen(2048);
    for (const auto& [length, size] : {std::pair{std::size_t{64} << 10, "64 KiB"}, {std::size_t{1} << 20, "1 MiB"}}) {
        const auto mail = std::make_shared<Mail>(key, length);
        pair(
            std::string("CMS encrypt ") + size, length, [=] { mail->ours(); }, [=] { mail->peer(); });
    }
    EVP_PKEY_free(key);
}

} // namespace bench
