// Opening and protecting a private key beside OpenSSL's PKCS #8, on the same blob and with the same parameters.
#include "pair.h"
#include "vrno.h"

#include <openssl/evp.h>
#include <openssl/pkcs12.h>
#include <openssl/provider.h>
#include <openssl/x509.h>

#include <cstdlib>
#include <memory>
#include <vector>

namespace bench {

void registerKeyPairs();

namespace {

constexpr const char* password = "a password of a user";
constexpr int passwordLength = 20, iterations = 1024;

using Bytes = std::vector<unsigned char>;

// A private key, plain and protected by us.
struct Key {
    VRNO_API_CTX* context = nullptr;
    PKCS8_PRIV_KEY_INFO* info;
    EVP_CIPHER* seed = EVP_CIPHER_fetch(nullptr, "SEED-CBC", nullptr);
    Bytes plain, blob;

    explicit Key(unsigned bits)
    {
        EVP_PKEY* const key = EVP_RSA_gen(bits);
        info = EVP_PKEY2PKCS8(key);
        EVP_PKEY_free(key);
        unsigned char* out = nullptr;
        const int length = i2d_PKCS8_PRIV_KEY_INFO(info, &out);
        plain.assign(out, out + length);
        OPENSSL_free(out);
        VRNO_API_Init(&context, "/");
        protect(&blob);
    }
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;

    void protect(Bytes* keep = nullptr)
    {
        const VRNO_BINSTR in{plain.data(), static_cast<unsigned>(plain.size())};
        VRNO_BINSTR out{nullptr, 0};
        if (VRNO_PRIKEY_Encrypt(context, VRNO_SYM_SEED, password, &in, &out) != 0) std::abort();
        if (keep) keep->assign(out.pData, out.pData + out.nLen);
        VRNO_BINSTR_Delete(&out);
    }
    void open()
    {
        const VRNO_BINSTR in{blob.data(), static_cast<unsigned>(blob.size())};
        VRNO_BINSTR out{nullptr, 0};
        if (VRNO_PRIKEY_Decrypt(context, password, &in, &out) != 0) std::abort();
        VRNO_BINSTR_Delete(&out);
    }
    void peerProtect() const
    {
        unsigned char salt[8] = {1, 2, 3, 4, 5, 6, 7, 8}, *out = nullptr;
        X509_ALGOR* const scheme = PKCS5_pbe2_set_iv(seed, iterations, salt, sizeof salt, nullptr, NID_hmacWithSHA1);
        X509_SIG* const sealed = PKCS8_set0_pbe(password, passwordLength, info, scheme);
        if (!sealed || i2d_X509_SIG(sealed, &out) < 1) std::abort();
        OPENSSL_free(out);
        X509_SIG_free(sealed);
    }
    void peerOpen() const
    {
        const unsigned char* from = blob.data();
        unsigned char* out = nullptr;
        X509_SIG* const sealed = d2i_X509_SIG(nullptr, &from, static_cast<long>(blob.size()));
        PKCS8_PRIV_KEY_INFO* const opened = PKCS8_decrypt(sealed, password, passwordLength);
        if (!opened || i2d_PKCS8_PRIV_KEY_INFO(opened, &out) < 1) std::abort();
        OPENSSL_free(out);
        PKCS8_PRIV_KEY_INFO_free(opened);
        X509_SIG_free(sealed);
    }
};

} // namespace

void registerKeyPairs()
{
    OSSL_PROVIDER_load(nullptr, "legacy");
    OSSL_PROVIDER_load(nullptr, "default");
    const auto key = std::make_shared<Key>(2048);
    pair(
        "Protect a private key", 0, [=] { key->protect(); }, [=] { key->peerProtect(); });
    pair(
        "Open a private key", 0, [=] { key->open(); }, [=] { key->peerOpen(); });
}

} // namespace bench
