// What the library does: through the exported interface, or through the engine where no exported function is the work alone.
#include "bench.h"
#include "engine/bignum/bignum.h"
#include "engine/digest/hmac.h"
#include "engine/random/random.h"
#include "vrno.h"

#include <memory>

namespace bench {
namespace {

using Context = std::shared_ptr<VRNO_API_CTX>;

Context makeContext()
{
    VRNO_API_CTX* context = nullptr;
    require(VRNO_API_Init(&context, "/") == 0, "VRNO_API_Init");
    return {context, [](VRNO_API_CTX* last) { VRNO_API_Finish(&last); }};
}

VRNO_BINSTR view(const Bytes& bytes) { return {const_cast<unsigned char*>(bytes.data()), static_cast<unsigned>(bytes.size())}; }

// A call with one output, which is released. That is the caller's part, and overwrites all of the result; for a small one the
// clock would take longer, so its release is counted.
template <class Call> void deliver(Bytes* kept, const Call& call)
{
    VRNO_BINSTR out{nullptr, 0};
    require(call(&out) == 0, "a call of ours");
    keep(kept, out.pData, out.nLen);
    const auto release = [&] { VRNO_BINSTR_Delete(&out); };
    out.nLen < 16384 ? release() : untimed(release);
}

template <auto function> Operation conversion(const Input& in)
{
    const Context context = makeContext();
    const VRNO_BINSTR key = view(in.key), iv = view(in.iv);
    if (!in.iv.empty()) require(VRNO_CRYPT_SetKeyAndIV(context.get(), VRNO_SYM_SEED, &key, &iv) == 0, "SetKeyAndIV");
    return [=, &in](Bytes* kept) {
        const VRNO_BINSTR data = view(in.data);
        deliver(kept, [&](VRNO_BINSTR* out) { return function(context.get(), &data, out); });
    };
}

Operation protectKey(const Input& in)
{
    return [context = makeContext(), &in](Bytes* kept) {
        const VRNO_BINSTR key = view(in.privateKey);
        deliver(kept, [&](VRNO_BINSTR* out) { return VRNO_PRIKEY_Encrypt(context.get(), VRNO_SYM_SEED, password, &key, out); });
    };
}

Operation openKey(const Input& in)
{
    return [context = makeContext(), &in](Bytes* kept) {
        const VRNO_BINSTR key = view(in.data);
        deliver(kept, [&](VRNO_BINSTR* out) { return VRNO_PRIKEY_Decrypt(context.get(), password, &key, out); });
    };
}

Operation keyPair(const Input& in)
{
    return [context = makeContext(), &in](Bytes* kept) {
        const VRNO_BINSTR certificate = view(in.certificate), key = view(in.privateKey);
        keep(kept, VRNO_PRIKEY_CheckKeyPair(context.get(), &certificate, &key) == 0 ? "pair" : "no pair");
    };
}

Operation message(const Input& in)
{
    return [context = makeContext(), &in](Bytes* kept) {
        const VRNO_BINSTR certificate = view(in.certificate), data = view(in.data);
        deliver(kept, [&](VRNO_BINSTR* out) {
            return VRNO_CMS_EncryptData(context.get(), VRNO_CMS_CONTENT_INFO, &certificate, &data, VRNO_SYM_SEED, out);
        });
    };
}

using TextGetter = int(VRNO_API_CTX*, int, char*);
constexpr int room = 8192;

void load(const Context& context, const Input& in)
{
    const VRNO_BINSTR certificate = view(in.certificate);
    require(VRNO_CERT_Load(context.get(), &certificate) == 0, "VRNO_CERT_Load");
}

Operation certificateLoad(const Input& in)
{
    return [context = makeContext(), &in](Bytes* kept) {
        load(context, in);
        if (!kept) return;
        char serial[room];
        require(VRNO_CERT_GetSerialNum(context.get(), room, serial) == 0, "VRNO_CERT_GetSerialNum");
        keep(kept, serial);
    };
}

Operation certificateFields(const Input& in)
{
    return [context = makeContext(), &in](Bytes* kept) {
        char text[room], more[room], key[room], from[20], to[20];
        int version = 0;
        std::string all;
        const auto note = [&] {
            if (kept) all += std::string(text) + "\n";
        };
        load(context, in);
        require(VRNO_CERT_GetVersion(context.get(), &version) == 0, "VRNO_CERT_GetVersion");
        for (TextGetter* const get : {VRNO_CERT_GetSerialNum, VRNO_CERT_GetSignatureAlgorithm, VRNO_CERT_GetIssuerName,
                                      VRNO_CERT_GetSubjectName, VRNO_CERT_GetSignature}) {
            require(get(context.get(), room, text) == 0, "a getter");
            note();
        }
        require(VRNO_CERT_GetValidity(context.get(), from, to) == 0, "VRNO_CERT_GetValidity");
        require(VRNO_CERT_GetPubKey(context.get(), room, more, key) == 0, "VRNO_CERT_GetPubKey");
        keep(kept, kept ? all + key : all);
    };
}

Operation certificateTexts(const Input& in)
{
    return [context = makeContext(), &in](Bytes* kept) {
        char text[room];
        std::string all;
        load(context, in);
        for (TextGetter* const get : {VRNO_CERT_GetKeyUsage, VRNO_CERT_GetBasicConstraints, VRNO_CERT_GetSubKeyID,
                                      VRNO_CERT_GetCertPolicy, VRNO_CERT_GetExtKeyUsage, VRNO_CERT_GetSubjectAltName,
                                      VRNO_CERT_GetAuthKeyID, VRNO_CERT_GetCRLDP, VRNO_CERT_GetAIA}) {
            require(get(context.get(), room, text) == 0, "a getter of an extension");
            if (kept) all += std::string(text) + "\n";
        }
        keep(kept, all);
    };
}

Operation drawKey(const Input&)
{
    return [context = makeContext()](Bytes* kept) {
        require(VRNO_CRYPT_GenKeyAndIV(context.get(), VRNO_SYM_SEED) == 0, "VRNO_CRYPT_GenKeyAndIV");
        if (!kept) return;
        int algorithm = 0;
        VRNO_BINSTR iv{nullptr, 0};
        deliver(kept, [&](VRNO_BINSTR* key) { return VRNO_CRYPT_GetKeyAndIV(context.get(), &algorithm, key, &iv); });
        kept->insert(kept->end(), iv.pData, iv.pData + iv.nLen);
        VRNO_BINSTR_Delete(&iv);
    };
}

Operation random(const Input& in)
{
    return [length = in.data.size()](Bytes* kept) {
        Bytes drawn(length);
        require(vrno::randBytesLocal(drawn.data(), static_cast<int>(length)) == 0, "randBytesLocal");
        keep(kept, drawn.data(), length);
    };
}

Operation sha1(const Input& in)
{
    return [&in](Bytes* kept) {
        unsigned char digest[20];
        vrno::SHA1_Digest(digest, in.data.data(), in.data.size());
        keep(kept, digest, sizeof digest);
    };
}

Operation hmacSha1(const Input& in)
{
    return [&in](Bytes* kept) {
        unsigned char mac[20];
        vrno::HMAC_State state;
        vrno::HMAC_Init(state, in.key.data(), in.key.size());
        vrno::HMAC_Update(state, in.data.data(), in.data.size());
        vrno::HMAC_Final(state, mac);
        keep(kept, mac, sizeof mac);
    };
}

Operation modularPower(const Input& in)
{
    const auto numberOf = [](const Bytes& bytes) {
        const auto made = std::make_shared<vrno::ZIRC_BN>();
        vrno::bnFromBytes(*made, bytes.data(), static_cast<int>(bytes.size()));
        return made;
    };
    return [base = numberOf(in.data), exponent = numberOf(in.key), modulus = numberOf(in.privateKey)](Bytes* kept) {
        vrno::ZIRC_BN r;
        vrno::bnModExpSecret(r, *base, *exponent, *modulus);
        unsigned char bytes[256];
        keep(kept, bytes, static_cast<std::size_t>(vrno::bnToBytes(bytes, r)));
    };
}

} // namespace

Library ours()
{
    return {"ours",
            "",
            {{Work::seedEncrypt, conversion<VRNO_CRYPT_Encrypt>},
             {Work::seedDecrypt, conversion<VRNO_CRYPT_Decrypt>},
             {Work::protectKey, protectKey},
             {Work::openKey, openKey},
             {Work::keyPair, keyPair},
             {Work::message, message},
             {Work::certificateLoad, certificateLoad},
             {Work::certificateFields, certificateFields},
             {Work::certificateTexts, certificateTexts},
             {Work::base64Encode, conversion<VRNO_BASE64_Encode>},
             {Work::base64Decode, conversion<VRNO_BASE64_Decode>},
             {Work::random, random},
             {Work::drawKey, drawKey},
             {Work::sha1, sha1},
             {Work::hmacSha1, hmacSha1},
             {Work::modularPower, modularPower}}};
}

} // namespace bench
