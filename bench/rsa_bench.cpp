// RSA signatures and verification beside OpenSSL: the private and the public operation as users call them.
#include "engine/frame/zirc.h"
#include "pair.h"

#include <openssl/evp.h>
#include <openssl/rsa.h>

#include <cstdlib>
#include <memory>

namespace bench {

void registerRsaPairs();

namespace {

using namespace vrno;

// A key made by OpenSSL, in the form of each side, with a signature.
struct Key {
    EVP_PKEY* key;
    unsigned char *publicBlob = nullptr, *privateBlob = nullptr, signature[256];
    int publicLength, privateLength, signatureLength = 256, id;
    std::string message = "a message to sign";

    explicit Key(unsigned bits)
        : key(EVP_RSA_gen(bits)), publicLength(i2d_PublicKey(key, &publicBlob)), privateLength(i2d_PrivateKey(key, &privateBlob)),
          id(bits == 1024 ? 121401 : 121402)
    {
        sign();
    }
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;

    const unsigned char* text() const { return reinterpret_cast<const unsigned char*>(message.data()); }
    int length() const { return static_cast<int>(message.size()); }

    void sign()
    {
        if (ZIRC_SignData(privateBlob, privateLength, id, signature, &signatureLength, text(), length()) != 0) std::abort();
    }
    void verify() const
    {
        if (ZIRC_VerifyData(publicBlob, publicLength, id, signature, signatureLength, text(), length()) != 0) std::abort();
    }
    void peerSign() const
    {
        unsigned char out[256];
        std::size_t outLength = sizeof out;
        EVP_MD_CTX* const context = EVP_MD_CTX_new();
        EVP_DigestSignInit(context, nullptr, EVP_sha1(), nullptr, key);
        if (EVP_DigestSign(context, out, &outLength, text(), message.size()) != 1) std::abort();
        EVP_MD_CTX_free(context);
    }
    void peerVerify() const
    {
        EVP_MD_CTX* const context = EVP_MD_CTX_new();
        EVP_DigestVerifyInit(context, nullptr, EVP_sha1(), nullptr, key);
        if (EVP_DigestVerify(context, signature, static_cast<std::size_t>(signatureLength), text(), message.size()) != 1)
            std::abort();
        EVP_MD_CTX_free(context);
    }
};

} // namespace

void registerRsaPairs()
{
    for (const unsigned bits : {1024U, 2048U}) {
        const auto key = std::make_shared<Key>(bits);
        const std::string size = std::to_string(bits);
        pair(
            "RSA private " + size, 0, [=] { key->sign(); }, [=] { key->peerSign(); });
        pair(
            "RSA public " + size, 0, [=] { key->verify(); }, [=] { key->peerVerify(); });
    }
}

} // namespace bench
