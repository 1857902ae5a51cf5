// nettle, with hogweed for RSA. It does not blind the private operation.
#include "bench.h"

#include <nettle/base64.h>
#include <nettle/hmac.h>
#include <nettle/rsa.h>
#include <nettle/sha1.h>
#include <nettle/version.h>

namespace bench {
namespace {

Operation base64Encode(const Input& in)
{
    return [out = std::string(BASE64_ENCODE_RAW_LENGTH(in.data.size()), 0), &in](Bytes* kept) mutable {
        base64_encode_raw(out.data(), in.data.size(), in.data.data());
        keep(kept, out);
    };
}

Operation base64Decode(const Input& in)
{
    return [out = Bytes(BASE64_DECODE_LENGTH(in.data.size())), &in](Bytes* kept) mutable {
        base64_decode_ctx state;
        std::size_t length = out.size();
        base64_decode_init(&state);
        require(base64_decode_update(&state, &length, out.data(), in.data.size(), reinterpret_cast<const char*>(in.data.data())) &&
                    base64_decode_final(&state),
                "base64_decode_update");
        keep(kept, out.data(), length);
    };
}

Operation sha1(const Input& in)
{
    return [&in](Bytes* kept) {
        unsigned char digest[SHA1_DIGEST_SIZE];
        sha1_ctx state;
        sha1_init(&state);
        sha1_update(&state, in.data.size(), in.data.data());
        sha1_digest(&state, sizeof digest, digest);
        keep(kept, digest, sizeof digest);
    };
}

Operation hmacSha1(const Input& in)
{
    return [&in](Bytes* kept) {
        unsigned char mac[SHA1_DIGEST_SIZE];
        hmac_sha1_ctx state;
        hmac_sha1_set_key(&state, in.key.size(), in.key.data());
        hmac_sha1_update(&state, in.data.size(), in.data.data());
        hmac_sha1_digest(&state, sizeof mac, mac);
        keep(kept, mac, sizeof mac);
    };
}

struct Pair {
    rsa_public_key open;
    rsa_private_key secret;
    mpz_t signature;

    // The RSAPrivateKey stands behind the 26 bytes that a PrivateKeyInfo begins with.
    explicit Pair(const Bytes& key)
    {
        rsa_public_key_init(&open);
        rsa_private_key_init(&secret);
        mpz_init(signature);
        require(rsa_keypair_from_der(&open, &secret, 0, key.size() - 26, key.data() + 26), "rsa_keypair_from_der");
    }
    Pair(const Pair&) = delete;
    Pair& operator=(const Pair&) = delete;
    ~Pair()
    {
        rsa_public_key_clear(&open);
        rsa_private_key_clear(&secret);
        mpz_clear(signature);
    }
};

Operation keyPair(const Input& in)
{
    return [&in](Bytes* kept) {
        Pair pair(in.privateKey);
        sha1_ctx state;
        sha1_init(&state);
        require(rsa_sha1_sign(&pair.secret, &state, pair.signature), "rsa_sha1_sign");
        keep(kept, rsa_sha1_verify(&pair.open, &state, pair.signature) ? "pair" : "no pair");
    };
}

const bool added = addPeer({"nettle",
                            std::to_string(NETTLE_VERSION_MAJOR) + "." + std::to_string(NETTLE_VERSION_MINOR),
                            {{Work::base64Encode, base64Encode},
                             {Work::base64Decode, base64Decode},
                             {Work::sha1, sha1},
                             {Work::hmacSha1, hmacSha1},
                             {Work::keyPair, keyPair}}});

} // namespace
} // namespace bench
