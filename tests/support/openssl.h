// OpenSSL as the oracle: owners for its objects, and what the library must agree with.
#pragma once

#include "support/bytes.h"

#include <openssl/cms.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>

#include <memory>

namespace test {

struct Freed {
    void operator()(X509* x) const { X509_free(x); }
    void operator()(ASN1_STRING* s) const { ASN1_STRING_free(s); }
    void operator()(BIO* b) const { BIO_free(b); }
    void operator()(ASN1_OBJECT* o) const { ASN1_OBJECT_free(o); }
    void operator()(EVP_PKEY* k) const { EVP_PKEY_free(k); }
    void operator()(EVP_PKEY_CTX* c) const { EVP_PKEY_CTX_free(c); }
    void operator()(PKCS8_PRIV_KEY_INFO* p) const { PKCS8_PRIV_KEY_INFO_free(p); }
    void operator()(EVP_CIPHER* c) const { EVP_CIPHER_free(c); }
    void operator()(EVP_MD_CTX* c) const { EVP_MD_CTX_free(c); }
    void operator()(CMS_ContentInfo* c) const { CMS_ContentInfo_free(c); }
    void operator()(X509_SIG* s) const { X509_SIG_free(s); }
    void operator()(unsigned char* p) const { OPENSSL_free(p); }
};
template <class T> using Owned = std::unique_ptr<T, Freed>;
using Certificate = Owned<X509>;

inline Certificate readPem(const std::string& path)
{
    const Owned<BIO> file(BIO_new_file(path.c_str(), "r"));
    return Certificate(PEM_read_bio_X509(file.get(), nullptr, nullptr, nullptr));
}
// What an i2d function writes, and what a d2i function reads.
template <class Encode, class T> std::string encoded(Encode encode, T* object)
{
    unsigned char* out = nullptr;
    const int length = encode(object, &out);
    const Owned<unsigned char> owner(out);
    return {reinterpret_cast<char*>(out), static_cast<std::size_t>(length)};
}

template <class T> Owned<T> decoded(T* (*decode)(T**, const unsigned char**, long), const std::string& from)
{
    const unsigned char* octets = at(from);
    return Owned<T>(decode(nullptr, &octets, static_cast<long>(from.size())));
}
inline std::string contents(BIO* memory)
{
    const char* data = nullptr;
    const long length = BIO_get_mem_data(memory, &data);
    return {data, static_cast<std::size_t>(length)};
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
