#include "engine/frame/kcdsa_slots.h"

#include "base/wipe.h"
#include "engine/kcdsa/kcdsa.h"

#include <new>

namespace vrno {

// An empty key in the context's area.
static ZIRC_KcdsaKey& newKey(ZIRC_Context& context)
{
    context.keyAreaUsed = sizeof(ZIRC_KcdsaKey);
    return *new (&context.keyArea.kcdsa) ZIRC_KcdsaKey;
}

static int setPublicKey(ZIRC_Context& context, const unsigned char* blob, int length)
{
    ZIRC_KcdsaKey& key = newKey(context);
    return kcdsaReadPublicKey(key, blob, length) ? 0 : ZIRC_SetError(context, ZIRC_ASN1_OPERATION_FAILED);
}

static int setPrivateKey(ZIRC_Context& context, const unsigned char* blob, int length)
{
    ZIRC_KcdsaKey& key = newKey(context);
    return kcdsaReadPrivateKey(key, blob, length) ? 0 : ZIRC_SetError(context, ZIRC_ASN1_OPERATION_FAILED);
}

// The digest begins with z, which is made of the key.
static int digestInit(ZIRC_Context& context)
{
    if (context.nHashId != hashSha1) return ZIRC_SetError(context, ZIRC_INVALID_ALGORITHM);
    unsigned char z[kcdsaZLength];
    kcdsaZ(context.keyArea.kcdsa, z);
    SHA1_Init(context.digestState.sha1);
    SHA1_Update(context.digestState.sha1, z, sizeof z);
    return 0;
}

static int sign(ZIRC_Context& context, unsigned char* output, int* outputLength)
{
    ZIRC_BN r, s;
    if (!kcdsaSign(context.keyArea.kcdsa, context.nHashId, r, s, context.stagingBuffer, context.nBuffered)) {
        return ZIRC_SetError(context, ZIRC_STAGED_OPERATION_FAILED);
    }
    constexpr int longest = 2 * kcdsaMostOrderBits / 8 + 32; // of the encoding, whose room nobody checks
    const int length = kcdsaEncodeSignature(r, s, context.nBuffered, output, longest);
    if (length <= 0) return ZIRC_SetError(context, ZIRC_ASN1_OPERATION_FAILED);
    *outputLength = length;
    return 0;
}

static int verify(ZIRC_Context& context, const unsigned char* signature, int length)
{
    ZIRC_BN r, s;
    if (!kcdsaDecodeSignature(signature, length, r, s)) return ZIRC_SetError(context, ZIRC_INVALID_SIGNATURE);
    const int result = kcdsaVerify(context.keyArea.kcdsa, context.nHashId, context.stagingBuffer, context.nBuffered, r, s);
    return result < 0 ? ZIRC_SetError(context, ZIRC_VERIFY_FAIL) : 0;
}

// The order's bits for a p of that many.
static int orderBits(int pBits)
{
    return pBits == 2048 ? 256 : pBits == 512 ? 128 : 160;
}

static int generateKeyPair(ZIRC_Context& context, unsigned char* publicBlob, int* publicLength, unsigned char* privateBlob,
                           int* privateLength, const unsigned char*, int)
{
    ZIRC_KcdsaKey& key = newKey(context);
    if (!kcdsaGenerateKeyPair(key, context.sizes.nKeyBits, orderBits(context.sizes.nKeyBits))) {
        return ZIRC_SetError(context, ZIRC_STAGED_OPERATION_FAILED);
    }
    const int written = kcdsaWritePublicKey(key, publicBlob, *publicLength);
    const int secret = kcdsaWritePrivateKey(key, privateBlob, *privateLength);
    if (written < 0 || secret < 0) {
        wipe(privateBlob, static_cast<std::size_t>(*privateLength));
        return ZIRC_SetError(context, ZIRC_NOT_ENOUGH_BUFFER);
    }
    *publicLength = written;
    *privateLength = secret;
    return 0;
}

const Slots kcdsaSlots{.fnGenerateKeyPair = generateKeyPair,
                       .fnSetPublicKey = setPublicKey,
                       .fnSetPrivateKey = setPrivateKey,
                       .fnSign = sign,
                       .fnVerify = verify,
                       .fnDigestInit = digestInit};

} // namespace vrno
