// The session cipher, the digests and key generation, beside the same operations of OpenSSL.
#include "engine/digest/hmac.h"
#include "engine/digest/sha1.h"
#include "pair.h"
#include "vrno.h"

#include <openssl/evp.h>
#include <openssl/provider.h>
#include <openssl/rand.h>

#include <memory>
#include <vector>

namespace bench {

void registerCipherPairs();

namespace {

using Bytes = std::vector<unsigned char>;

// A context with a key, and a message with its cipher text.
struct Session {
    VRNO_API_CTX* context = nullptr;
    Bytes key = Bytes(16, 'k'), iv = Bytes(16, 'i'), plain, cipher;

    explicit Session(std::size_t length) : plain(length, 'p')
    {
        VRNO_BINSTR k{key.data(), 16}, v{iv.data(), 16}, in{plain.data(), static_cast<unsigned>(length)}, out{nullptr, 0};
        VRNO_API_Init(&context, "/");
        VRNO_CRYPT_SetKeyAndIV(context, VRNO_SYM_SEED, &k, &v);
        VRNO_CRYPT_Encrypt(context, &in, &out);
        cipher.assign(out.pData, out.pData + out.nLen);
        VRNO_BINSTR_Delete(&out);
    }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    ~Session() { VRNO_API_Finish(&context); }
};

// One exported call; its result is released.
void ours(const Session& session, int (*call)(VRNO_API_CTX*, const VRNO_BINSTR*, VRNO_BINSTR*), const Bytes& data)
{
    const VRNO_BINSTR in{const_cast<unsigned char*>(data.data()), static_cast<unsigned>(data.size())};
    VRNO_BINSTR out{nullptr, 0};
    if (call(session.context, &in, &out) != 0) std::abort();
    benchmark::DoNotOptimize(out.pData);
    VRNO_BINSTR_Delete(&out);
}

// The same by OpenSSL for one message: a context, key and IV, the output in a block of its own.
void peer(const Session& session, const EVP_CIPHER* algorithm, bool encrypts, const Bytes& data)
{
    const std::unique_ptr<EVP_CIPHER_CTX, decltype(&EVP_CIPHER_CTX_free)> context(EVP_CIPHER_CTX_new(), EVP_CIPHER_CTX_free);
    const std::unique_ptr<unsigned char[]> out(new unsigned char[data.size() + 16]);
    int length = 0, last = 0;
    EVP_CipherInit_ex(context.get(), algorithm, nullptr, session.key.data(), session.iv.data(), encrypts);
    EVP_CipherUpdate(context.get(), out.get(), &length, data.data(), static_cast<int>(data.size()));
    if (EVP_CipherFinal_ex(context.get(), out.get() + length, &last) != 1) std::abort();
    benchmark::DoNotOptimize(out.get());
}

void sealPairs(const EVP_CIPHER* seed)
{
    for (const std::size_t length : {std::size_t{16}, std::size_t{1} << 10, std::size_t{64} << 10, std::size_t{16} << 20}) {
        const auto session = std::make_shared<Session>(length);
        const std::string size = std::to_string(length);
        pair(
            "SEED-CBC encrypt " + size, length, [=] { ours(*session, VRNO_CRYPT_Encrypt, session->plain); },
            [=] { peer(*session, seed, true, session->plain); });
        pair(
            "SEED-CBC decrypt " + size, length, [=] { ours(*session, VRNO_CRYPT_Decrypt, session->cipher); },
            [=] { peer(*session, seed, false, session->cipher); });
    }
}

void digestPairs(const EVP_MD* sha1, EVP_MAC* hmac)
{
    for (const std::size_t length : {std::size_t{64}, std::size_t{1} << 10, std::size_t{64} << 10}) {
        const auto data = std::make_shared<Bytes>(length, 'd');
        const std::string size = std::to_string(length);
        pair(
            "SHA-1 " + size, length,
            [=] {
                unsigned char digest[20];
                vrno::SHA1_Digest(digest, data->data(), data->size());
                benchmark::DoNotOptimize(digest[0]);
            },
            [=] {
                unsigned char digest[20];
                EVP_Digest(data->data(), data->size(), digest, nullptr, sha1, nullptr);
                benchmark::DoNotOptimize(digest[0]);
            });
        pair(
            "HMAC-SHA-1 " + size, length,
            [=] {
                unsigned char mac[20];
                vrno::HMAC_State state;
                vrno::HMAC_Init(state, "sixteen byte key", 16);
                vrno::HMAC_Update(state, data->data(), data->size());
                vrno::HMAC_Final(state, mac);
                benchmark::DoNotOptimize(mac[0]);
            },
            [=] {
                unsigned char mac[20];
                std::size_t macLength = 0;
                static EVP_MAC_CTX* const context = [hmac] {
                    EVP_MAC_CTX* const made = EVP_MAC_CTX_new(hmac);
                    char name[] = "SHA1";
                    const OSSL_PARAM parameters[] = {OSSL_PARAM_construct_utf8_string("digest", name, 0),
                                                     OSSL_PARAM_construct_end()};
                    EVP_MAC_CTX_set_params(made, parameters);
                    return made;
                }();
                EVP_MAC_init(context, reinterpret_cast<const unsigned char*>("sixteen byte key"), 16, nullptr);
                EVP_MAC_update(context, data->data(), data->size());
                EVP_MAC_final(context, mac, &macLength, sizeof mac);
                benchmark::DoNotOptimize(mac[0]);
            });
    }
}

void keyPair()
{
    const auto session = std::make_shared<Session>(16);
    pair(
        "session key and IV", 0, [=] { VRNO_CRYPT_GenKeyAndIV(session->context, VRNO_SYM_SEED); },
        [] {
            unsigned char drawn[32];
            RAND_bytes(drawn, sizeof drawn);
            benchmark::DoNotOptimize(drawn[0]);
        });
}

} // namespace

void registerCipherPairs()
{
    OSSL_PROVIDER_load(nullptr, "legacy");
    OSSL_PROVIDER_load(nullptr, "default");
    sealPairs(EVP_CIPHER_fetch(nullptr, "SEED-CBC", nullptr));
    digestPairs(EVP_MD_fetch(nullptr, "SHA1", nullptr), EVP_MAC_fetch(nullptr, "HMAC", nullptr));
    keyPair();
}

} // namespace bench
