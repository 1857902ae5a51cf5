// KCDSA as an algorithm of the engine.
#include "engine/frame/key_slots.h"
#include "engine/frame/slots.h"
#include "engine/kcdsa/kcdsa.h"

namespace vrno {

namespace {

struct Kcdsa {
    using Key = ZIRC_KcdsaKey;
    static constexpr Key KeyPair::*area = &KeyPair::kcdsa;
    static constexpr auto readPublicKey = kcdsaReadPublicKey, readPrivateKey = kcdsaReadPrivateKey;
    static constexpr auto writePublicKey = kcdsaWritePublicKey, writePrivateKey = kcdsaWritePrivateKey;
};

// The digest begins with z, a value of the key.
int digestInitWithZ(ZIRC_Context& context)
{
    if (context.nHashId != hashSha1) return ZIRC_SetError(context, ZIRC_INVALID_ALGORITHM);
    unsigned char z[kcdsaZLength];
    kcdsaZ(context.keyPair->kcdsa, z);
    SHA1_Init(context.digestState.sha1);
    SHA1_Update(context.digestState.sha1, z, sizeof z);
    return 0;
}

int sign(ZIRC_Context& context, unsigned char* output, int* outputLength)
{
    ZIRC_BN r, s;
    if (kcdsaSign(context.keyPair->kcdsa, context.nHashId, r, s, context.stagingBuffer, context.nBuffered) < 0) {
        return ZIRC_SetError(context, ZIRC_STAGED_OPERATION_FAILED);
    }
    constexpr int maxLength = 2 * kcdsaMaxOrderBits / 8 + 32; // of the encoding, whose room the frame does not check
    const int length = kcdsaEncodeSignature(r, s, context.nBuffered, output, maxLength);
    if (length < 0) return ZIRC_SetError(context, ZIRC_ASN1_OPERATION_FAILED);
    *outputLength = length;
    return 0;
}

int verify(ZIRC_Context& context, const unsigned char* signature, int length)
{
    ZIRC_BN r, s;
    if (kcdsaDecodeSignature(signature, length, r, s) < 0) return ZIRC_SetError(context, ZIRC_INVALID_SIGNATURE);
    const unsigned char* const digest = context.stagingBuffer;
    return verifyResult(context, kcdsaVerify(context.keyPair->kcdsa, context.nHashId, digest, context.nBuffered, r, s));
}

// The bits of q for so many bits of p.
int orderBits(int pBits)
{
    if (pBits == 2048) return 256;
    if (pBits == 512) return 128;
    return 160;
}

int generateKeyPair(ZIRC_Context& context, unsigned char* publicBlob, int* publicLength, unsigned char* privateBlob,
                    int* privateLength, const unsigned char*, int)
{
    ZIRC_KcdsaKey* const made = newKey<Kcdsa>(context, true);
    if (!made) return 1;
    ZIRC_KcdsaKey& key = *made;
    if (kcdsaGenerateKeyPair(key, context.sizes.nKeyBits, orderBits(context.sizes.nKeyBits)) < 0) {
        return ZIRC_SetError(context, ZIRC_STAGED_OPERATION_FAILED);
    }
    return writeKeyPair<Kcdsa>(context, key, publicBlob, publicLength, privateBlob, privateLength);
}

// SHA-1 that begins with z.
constexpr Slots withZ(Slots slots)
{
    slots = withDigest<Sha1Kind>(slots);
    slots.fnDigestInit = digestInitWithZ;
    return slots;
}

} // namespace

constexpr Slots kcdsaSlots = withZ({.fnGenerateKeyPair = generateKeyPair,
                                    .fnSetPublicKey = setPublicKey<Kcdsa>,
                                    .fnSetPrivateKey = setPrivateKey<Kcdsa>,
                                    .fnSign = sign,
                                    .fnVerify = verify});

} // namespace vrno
