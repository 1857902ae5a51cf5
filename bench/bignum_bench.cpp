// Exponentiation with a secret exponent beside OpenSSL's.
#include "engine/bignum/bignum.h"
#include "pair.h"

#include <openssl/bn.h>

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

} // namespace

void registerBignumPairs()
{
    for (const int bits : {512, 1024, 2048}) {
        const auto numbers = std::make_shared<Numbers>(bits);
        const std::string name = std::to_string(bits);
        pair(
            "modular power, " + name + " bits", 0, [=] { numbers->ours(); }, [=] { numbers->peer(); });
    }
}

} // namespace bench
