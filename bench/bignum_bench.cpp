// Exponentiation with a secret exponent, and the private operation of RSA made of two of them, beside OpenSSL's.
#include "engine/bignum/bignum.h"
#include "pair.h"

#include <openssl/bn.h>
#include <openssl/evp.h>
#include <openssl/rsa.h>

#include <memory>
#include <vector>

namespace bench {

void registerBignumPairs();

namespace {

struct Numbers {
    vrno::ZIRC_BN a, p, m;
    BIGNUM *peerA = BN_new(), *peerP = BN_new(), *peerM = BN_new();
    BN_CTX* context = BN_CTX_new();
    BN_MONT_CTX* montgomery = BN_MONT_CTX_new();

    explicit Numbers(int bits)
    {
        for (const auto& [number, peer] : {std::pair{&a, peerA}, std::pair{&p, peerP}, std::pair{&m, peerM}}) {
            vrno::bnRandom(*number, bits, number == &m, number == &m);
            std::vector<unsigned char> bytes(static_cast<std::size_t>(bits) / 8);
            BN_bin2bn(bytes.data(), vrno::bnToBytes(bytes.data(), *number), peer);
        }
        vrno::bnMod(a, a, m);
        BN_mod(peerA, peerA, peerM, context);
        BN_MONT_CTX_set(montgomery, peerM, context);
    }
    Numbers(const Numbers&) = delete;
    Numbers& operator=(const Numbers&) = delete;
    ~Numbers()
    {
        for (BIGNUM* const number : {peerA, peerP, peerM}) BN_free(number);
        BN_CTX_free(context);
        BN_MONT_CTX_free(montgomery);
    }

    void ours() const
    {
        vrno::ZIRC_BN r;
        vrno::bnModExpSecret(r, a, p, m);
        benchmark::DoNotOptimize(r.d[0]);
    }
    void peer() const
    {
        BIGNUM* const r = BN_new();
        BN_mod_exp_mont_consttime(r, peerA, peerP, peerM, context, montgomery);
        benchmark::DoNotOptimize(r);
        BN_free(r);
    }
};

// The raw operation, without padding.
void rsaPrivate(EVP_PKEY* key, std::size_t bytes)
{
    EVP_PKEY_CTX* const context = EVP_PKEY_CTX_new(key, nullptr);
    std::vector<unsigned char> in(bytes, 0x42), out(bytes);
    EVP_PKEY_sign_init(context);
    EVP_PKEY_CTX_set_rsa_padding(context, RSA_NO_PADDING);
    if (EVP_PKEY_sign(context, out.data(), &bytes, in.data(), in.size()) != 1) std::abort();
    EVP_PKEY_CTX_free(context);
}

} // namespace

void registerBignumPairs()
{
    for (const int bits : {512, 1024, 2048}) {
        const auto numbers = std::make_shared<Numbers>(bits);
        const std::string name = std::to_string(bits);
        pair(
            "modular power, " + name + " bits", 0, [=] { numbers->ours(); }, [=] { numbers->peer(); });
        if (bits == 2048) continue;
        EVP_PKEY* const key = EVP_RSA_gen(static_cast<unsigned>(2 * bits));
        pair(
            "two powers, RSA-" + std::to_string(2 * bits), 0, [=] { numbers->ours(), numbers->ours(); },
            [=] { rsaPrivate(key, static_cast<std::size_t>(bits) / 4); });
    }
}

} // namespace bench
