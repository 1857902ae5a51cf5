// OpenSSL as the oracle: owners for its objects, and what the library must agree with.
#pragma once

#include "support/bytes.h"

#include <openssl/cms.h>
#include <openssl/conf.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>

#include <memory>

namespace test {

struct Freed {
    void operator()(X509* x) const { X509_free(x); }
    void operator()(BIO* b) const { BIO_free(b); }
    void operator()(ASN1_OBJECT* o) const { ASN1_OBJECT_free(o); }
    void operator()(EVP_PKEY* k) const { EVP_PKEY_free(k); }
    void operator()(EVP_PKEY_CTX* c) const { EVP_PKEY_CTX_free(c); }
    void operator()(PKCS8_PRIV_KEY_INFO* p) const { PKCS8_PRIV_KEY_INFO_free(p); }
    void operator()(CONF* c) const { NCONF_free(c); }
    void operator()(unsigned char* p) const { OPENSSL_free(p); }
};
using Certificate = std::unique_ptr<X509, Freed>;

inline Certificate readPem(const std::string& path)
{
    const std::unique_ptr<BIO, Freed> file(BIO_new_file(path.c_str(), "r"));
    return Certificate(PEM_read_bio_X509(file.get(), nullptr, nullptr, nullptr));
}

template <class T> std::string encoded(int (*encode)(const T*, unsigned char**), const T* object)
{
    unsigned char* out = nullptr;
    const int length = encode(object, &out);
    const std::unique_ptr<unsigned char, Freed> owner(out);
    return {reinterpret_cast<char*>(out), static_cast<std::size_t>(length)};
}

inline std::string hexOf(const ASN1_STRING* octets)
{
    return hex(
        {reinterpret_cast<const char*>(ASN1_STRING_get0_data(octets)), static_cast<std::size_t>(ASN1_STRING_length(octets))});
}

// SEED-CBC of its legacy provider, with the padding of PKCS #7; empty where that is wrong.
std::string seedByOpenssl(const std::string& key, const std::string& iv, const std::string& in, bool encrypts);
std::string sha1ByOpenssl(const std::string& in);

} // namespace test
