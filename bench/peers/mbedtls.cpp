// mbedTLS.
#include "bench.h"

#include <mbedtls/base64.h>
#include <mbedtls/ctr_drbg.h>
#include <mbedtls/entropy.h>
#include <mbedtls/md.h>
#include <mbedtls/pk.h>
#include <mbedtls/sha1.h>
#include <mbedtls/version.h>
#include <mbedtls/x509_crt.h>

namespace bench {
namespace {

constexpr char failure[] = "a call of mbedTLS";

struct Certificate {
    mbedtls_x509_crt parsed;

    explicit Certificate(const Bytes& der)
    {
        mbedtls_x509_crt_init(&parsed);
        require(mbedtls_x509_crt_parse_der(&parsed, der.data(), der.size()) == 0, failure);
    }
    Certificate(const Certificate&) = delete;
    Certificate& operator=(const Certificate&) = delete;
    ~Certificate() { mbedtls_x509_crt_free(&parsed); }
};

struct Generator {
    mbedtls_entropy_context entropy;
    mbedtls_ctr_drbg_context drbg;

    Generator()
    {
        mbedtls_entropy_init(&entropy);
        mbedtls_ctr_drbg_init(&drbg);
        require(mbedtls_ctr_drbg_seed(&drbg, mbedtls_entropy_func, &entropy, nullptr, 0) == 0, failure);
    }
};

Generator& generator()
{
    static Generator one;
    return one;
}

Operation certificateLoad(const Input& in)
{
    return [&in](Bytes* kept) {
        const Certificate certificate(in.certificate);
        if (kept) keep(kept, hex(certificate.parsed.serial.p, certificate.parsed.serial.len));
    };
}

Operation certificateFields(const Input& in)
{
    return [&in](Bytes* kept) {
        const Certificate certificate(in.certificate);
        const mbedtls_x509_crt& c = certificate.parsed;
        char text[4096], *at = text, *const end = text + sizeof text;
        const auto left = [&] { return static_cast<std::size_t>(end - at); };
        const auto date = [&](const mbedtls_x509_time& t) {
            return std::snprintf(at, left(), "%04d-%02d-%02d %02d:%02d:%02d\n", t.year, t.mon, t.day, t.hour, t.min, t.sec);
        };
        at += std::snprintf(at, left(), "%d\n", c.version);
        at += mbedtls_x509_dn_gets(at, left(), &c.issuer);
        at += mbedtls_x509_dn_gets(at, left(), &c.subject);
        at += mbedtls_x509_sig_alg_gets(at, left(), &c.sig_oid, c.sig_pk, c.sig_md, c.sig_opts);
        at += date(c.valid_from);
        at += date(c.valid_to);
        std::string all(text, at);
        for (const mbedtls_x509_buf& octets : {c.serial, c.pk_raw, c.sig}) all += hex(octets.p, octets.len);
        keep(kept, all);
    };
}

// The private operation is blinded: this library has no other.
Operation keyPair(const Input& in)
{
    return [&in](Bytes* kept) {
        const Certificate certificate(in.certificate);
        mbedtls_pk_context key;
        mbedtls_pk_init(&key);
        require(mbedtls_pk_parse_key(&key, in.privateKey.data(), in.privateKey.size(), nullptr, 0) == 0, failure);
        unsigned char digest[20], signature[256];
        std::size_t length = 0;
        mbedtls_sha1_ret(reinterpret_cast<const unsigned char*>("text"), 4, digest);
        require(mbedtls_pk_sign(&key, MBEDTLS_MD_SHA1, digest, sizeof digest, signature, &length, mbedtls_ctr_drbg_random,
                                &generator().drbg) == 0,
                failure);
        mbedtls_pk_free(&key);
        auto* const open = const_cast<mbedtls_pk_context*>(&certificate.parsed.pk);
        keep(kept, mbedtls_pk_verify(open, MBEDTLS_MD_SHA1, digest, sizeof digest, signature, length) == 0 ? "pair" : "no pair");
    };
}

template <auto convert> Operation base64(const Input& in)
{
    return [out = Bytes(2 * in.data.size() + 5), &in](Bytes* kept) mutable {
        std::size_t length = 0;
        require(convert(out.data(), out.size(), &length, in.data.data(), in.data.size()) == 0, failure);
        keep(kept, out.data(), length);
    };
}

Operation random(const Input& in)
{
    return [length = in.data.size()](Bytes* kept) {
        unsigned char drawn[64];
        require(mbedtls_ctr_drbg_random(&generator().drbg, drawn, length) == 0, failure);
        keep(kept, drawn, length);
    };
}

Operation sha1(const Input& in)
{
    return [&in](Bytes* kept) {
        unsigned char digest[20];
        mbedtls_sha1_ret(in.data.data(), in.data.size(), digest);
        keep(kept, digest, sizeof digest);
    };
}

Operation hmacSha1(const Input& in)
{
    return [&in](Bytes* kept) {
        unsigned char mac[20];
        mbedtls_md_hmac(mbedtls_md_info_from_type(MBEDTLS_MD_SHA1), in.key.data(), in.key.size(), in.data.data(), in.data.size(),
                        mac);
        keep(kept, mac, sizeof mac);
    };
}

const bool added = addPeer({"mbedTLS",
                            MBEDTLS_VERSION_STRING,
                            {{Work::certificateLoad, certificateLoad},
                             {Work::certificateFields, certificateFields},
                             {Work::keyPair, keyPair},
                             {Work::base64Encode, base64<mbedtls_base64_encode>},
                             {Work::base64Decode, base64<mbedtls_base64_decode>},
                             {Work::random, random},
                             {Work::drawKey, random},
                             {Work::sha1, sha1},
                             {Work::hmacSha1, hmacSha1}}});

} // namespace
} // namespace bench
