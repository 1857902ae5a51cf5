// Botan.
#include "bench.h"

#include <botan/auto_rng.h>
#include <botan/base64.h>
#include <botan/cipher_mode.h>
#include <botan/data_src.h>
#include <botan/hash.h>
#include <botan/mac.h>
#include <botan/pkcs8.h>
#include <botan/pkix_types.h>
#include <botan/pubkey.h>
#include <botan/pwdhash.h>
#include <botan/version.h>
#include <botan/x509cert.h>

namespace bench {
namespace {

using Octets = Botan::secure_vector<std::uint8_t>;

Botan::AutoSeeded_RNG& generator()
{
    static Botan::AutoSeeded_RNG one;
    return one;
}

std::shared_ptr<Botan::Cipher_Mode> makeSeed(bool encrypts)
{
    return Botan::Cipher_Mode::create_or_throw("SEED/CBC/PKCS7", encrypts ? Botan::ENCRYPTION : Botan::DECRYPTION);
}

// One message. The mode works in place, so the data are copied first.
void run(Botan::Cipher_Mode& mode, const std::uint8_t* key, const Bytes& iv, const Bytes& data, Bytes* kept)
{
    Octets text(data.begin(), data.end());
    mode.set_key(key, 16);
    mode.start(iv.data(), iv.size());
    mode.finish(text);
    keep(kept, text.data(), text.size());
}

template <bool encrypts> Operation seed(const Input& in)
{
    return [mode = makeSeed(encrypts), &in](Bytes* kept) { run(*mode, in.key.data(), in.iv, in.data, kept); };
}

template <bool encrypts> Operation keyUnderPassword(const Input& in)
{
    const std::shared_ptr<Botan::PasswordHash> derivation =
        Botan::PasswordHashFamily::create_or_throw("PBKDF2(SHA-160)")->from_params(iterations);
    return [mode = makeSeed(encrypts), derivation, &in](Bytes* kept) {
        Bytes derived(encrypts ? 32 : 16); // the key, and for a new protection the IV
        derivation->derive_key(derived.data(), derived.size(), password, passwordLength, in.salt.data(), in.salt.size());
        const Bytes iv = encrypts ? Bytes(derived.begin() + 16, derived.end()) : in.iv;
        run(*mode, derived.data(), iv, encrypts ? in.privateKey : in.sealed, kept);
    };
}

// The private operation is blinded: this library has no other.
Operation keyPair(const Input& in)
{
    return [&in](Bytes* kept) {
        const std::uint8_t text[] = "text";
        Botan::DataSource_Memory source(in.privateKey.data(), in.privateKey.size());
        const std::unique_ptr<Botan::Private_Key> secret = Botan::PKCS8::load_key(source);
        const std::unique_ptr<Botan::Public_Key> open = Botan::X509_Certificate(in.certificate).load_subject_public_key();
        Botan::PK_Signer signs(*secret, generator(), "EMSA3(SHA-160)");
        Botan::PK_Verifier verifies(*open, "EMSA3(SHA-160)");
        const std::vector<std::uint8_t> signature = signs.sign_message(text, sizeof text, generator());
        keep(kept, verifies.verify_message(text, sizeof text, signature.data(), signature.size()) ? "pair" : "no pair");
    };
}

Operation certificateLoad(const Input& in)
{
    return [&in](Bytes* kept) {
        const Botan::X509_Certificate certificate(in.certificate);
        if (kept) keep(kept, hex(certificate.serial_number().data(), certificate.serial_number().size()));
    };
}

Operation certificateFields(const Input& in)
{
    return [&in](Bytes* kept) {
        const Botan::X509_Certificate c(in.certificate);
        std::string all = std::to_string(c.x509_version()) + c.issuer_dn().to_string() + c.subject_dn().to_string() +
                          c.not_before().readable_string() + c.not_after().readable_string() +
                          c.signature_algorithm().get_oid().to_string();
        for (const auto& octets : {c.serial_number(), c.subject_public_key_bitstring(), c.signature()})
            all += hex(octets.data(), octets.size());
        keep(kept, all);
    };
}

Operation base64Encode(const Input& in)
{
    return [&in](Bytes* kept) { keep(kept, Botan::base64_encode(in.data)); };
}

Operation base64Decode(const Input& in)
{
    return [out = Bytes(in.data.size()), &in](Bytes* kept) mutable {
        const auto* const text = reinterpret_cast<const char*>(in.data.data());
        keep(kept, out.data(), Botan::base64_decode(out.data(), text, in.data.size()));
    };
}

Operation random(const Input& in)
{
    return [length = in.data.size()](Bytes* kept) {
        std::uint8_t drawn[64];
        generator().randomize(drawn, length);
        keep(kept, drawn, length);
    };
}

Operation sha1(const Input& in)
{
    return [state = std::shared_ptr<Botan::HashFunction>(Botan::HashFunction::create_or_throw("SHA-160")), &in](Bytes* kept) {
        std::uint8_t digest[20];
        state->update(in.data);
        state->final(digest);
        keep(kept, digest, sizeof digest);
    };
}

Operation hmacSha1(const Input& in)
{
    return [state = std::shared_ptr<Botan::MessageAuthenticationCode>(
                Botan::MessageAuthenticationCode::create_or_throw("HMAC(SHA-160)")),
            &in](Bytes* kept) {
        std::uint8_t mac[20];
        state->set_key(in.key.data(), in.key.size());
        state->update(in.data);
        state->final(mac);
        keep(kept, mac, sizeof mac);
    };
}

const bool added = addPeer({"Botan",
                            Botan::short_version_string(),
                            {{Work::seedEncrypt, seed<true>},
                             {Work::seedDecrypt, seed<false>},
                             {Work::protectKey, keyUnderPassword<true>},
                             {Work::openKey, keyUnderPassword<false>},
                             {Work::keyPair, keyPair},
                             {Work::certificateLoad, certificateLoad},
                             {Work::certificateFields, certificateFields},
                             {Work::base64Encode, base64Encode},
                             {Work::base64Decode, base64Decode},
                             {Work::random, random},
                             {Work::drawKey, random},
                             {Work::sha1, sha1},
                             {Work::hmacSha1, hmacSha1}}});

} // namespace
} // namespace bench
