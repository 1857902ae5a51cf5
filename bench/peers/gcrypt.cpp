// libgcrypt.
#include "bench.h"

#include <gcrypt.h>

namespace bench {
namespace {

constexpr char failure[] = "a call of libgcrypt";

using Cipher = std::shared_ptr<gcry_cipher_handle>;

Cipher openSeed()
{
    gcry_cipher_hd_t cipher;
    require(gcry_cipher_open(&cipher, GCRY_CIPHER_SEED, GCRY_CIPHER_MODE_CBC, 0) == 0, failure);
    return {cipher, gcry_cipher_close};
}

// One message; the caller has filled its last block.
void encrypt(const Cipher& cipher, const unsigned char* key, const Bytes& iv, const Bytes& data, Bytes& out)
{
    out.resize(data.size());
    gcry_cipher_setkey(cipher.get(), key, 16);
    gcry_cipher_setiv(cipher.get(), iv.data(), iv.size());
    require(gcry_cipher_encrypt(cipher.get(), out.data(), out.size(), data.data(), data.size()) == 0, failure);
}

// The number of bytes without those that fill the last block.
std::size_t decrypt(const Cipher& cipher, const unsigned char* key, const Bytes& iv, const Bytes& data, Bytes& out)
{
    out.resize(data.size());
    gcry_cipher_setkey(cipher.get(), key, 16);
    gcry_cipher_setiv(cipher.get(), iv.data(), iv.size());
    require(gcry_cipher_decrypt(cipher.get(), out.data(), out.size(), data.data(), data.size()) == 0, failure);
    return out.size() - out.back();
}

Operation seedEncrypt(const Input& in)
{
    return [cipher = openSeed(), data = padded(in.data), out = Bytes(), &in](Bytes* kept) mutable {
        encrypt(cipher, in.key.data(), in.iv, data, out);
        keep(kept, out.data(), out.size());
    };
}

Operation seedDecrypt(const Input& in)
{
    return [cipher = openSeed(), out = Bytes(), &in](Bytes* kept) mutable {
        keep(kept, out.data(), decrypt(cipher, in.key.data(), in.iv, in.data, out));
    };
}

// The key, and for a new protection the IV behind it.
Bytes derive(const Input& in, std::size_t length)
{
    Bytes derived(length);
    require(gcry_kdf_derive(password, passwordLength, GCRY_KDF_PBKDF2, GCRY_MD_SHA1, in.salt.data(), in.salt.size(), iterations,
                            length, derived.data()) == 0,
            failure);
    return derived;
}

Operation protectKey(const Input& in)
{
    return [cipher = openSeed(), data = padded(in.privateKey), out = Bytes(), &in](Bytes* kept) mutable {
        const Bytes key = derive(in, 32);
        encrypt(cipher, key.data(), Bytes(key.begin() + 16, key.end()), data, out);
        keep(kept, out.data(), out.size());
    };
}

Operation openKey(const Input& in)
{
    return [cipher = openSeed(), out = Bytes(), &in](Bytes* kept) mutable {
        keep(kept, out.data(), decrypt(cipher, derive(in, 16).data(), in.iv, in.sealed, out));
    };
}

Operation random(const Input& in)
{
    return [length = in.data.size()](Bytes* kept) {
        unsigned char drawn[64];
        gcry_randomize(drawn, length, GCRY_STRONG_RANDOM);
        keep(kept, drawn, length);
    };
}

Operation sha1(const Input& in)
{
    return [&in](Bytes* kept) {
        unsigned char digest[20];
        gcry_md_hash_buffer(GCRY_MD_SHA1, digest, in.data.data(), in.data.size());
        keep(kept, digest, sizeof digest);
    };
}

Operation hmacSha1(const Input& in)
{
    gcry_md_hd_t opened;
    require(gcry_md_open(&opened, GCRY_MD_SHA1, GCRY_MD_FLAG_HMAC) == 0, failure);
    return [state = std::shared_ptr<gcry_md_handle>(opened, gcry_md_close), &in](Bytes* kept) {
        gcry_md_setkey(state.get(), in.key.data(), in.key.size());
        gcry_md_write(state.get(), in.data.data(), in.data.size());
        keep(kept, gcry_md_read(state.get(), 0), 20);
    };
}

const bool added = addPeer({"libgcrypt",
                            gcry_check_version(nullptr),
                            {{Work::seedEncrypt, seedEncrypt},
                             {Work::seedDecrypt, seedDecrypt},
                             {Work::protectKey, protectKey},
                             {Work::openKey, openKey},
                             {Work::random, random},
                             {Work::drawKey, random},
                             {Work::sha1, sha1},
                             {Work::hmacSha1, hmacSha1}}});

} // namespace
} // namespace bench
