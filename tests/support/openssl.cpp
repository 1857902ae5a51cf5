#include "support/openssl.h"

#include <gtest/gtest.h>
#include <openssl/provider.h>

#include <vector>

namespace test {

std::string seedByOpenssl(const std::string& key, const std::string& iv, const std::string& in, bool encrypts)
{
    static OSSL_PROVIDER* const providers[] = {OSSL_PROVIDER_load(nullptr, "legacy"), OSSL_PROVIDER_load(nullptr, "default")};
    EXPECT_TRUE(providers[0] && providers[1]);
    EVP_CIPHER* const cipher = EVP_CIPHER_fetch(nullptr, "SEED-CBC", nullptr);
    EVP_CIPHER_CTX* const context = EVP_CIPHER_CTX_new();
    std::vector<unsigned char> out(in.size() + 32);
    int first = 0, last = 0;
    EVP_CipherInit_ex(context, cipher, nullptr, at(key), at(iv), encrypts);
    EVP_CipherUpdate(context, out.data(), &first, at(in), static_cast<int>(in.size()));
    const bool done = EVP_CipherFinal_ex(context, out.data() + first, &last) == 1;
    EVP_CIPHER_CTX_free(context);
    EVP_CIPHER_free(cipher);
    return done ? text(out.data(), static_cast<std::size_t>(first + last)) : "";
}

std::string sha1ByOpenssl(const std::string& in)
{
    unsigned char digest[20];
    EXPECT_EQ(EVP_Digest(in.data(), in.size(), digest, nullptr, EVP_sha1(), nullptr), 1);
    return text(digest, 20);
}

} // namespace test
