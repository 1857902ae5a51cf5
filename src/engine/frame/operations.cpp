// ZIRC_DigestData, ZIRC_GenerateMAC, ZIRC_SignData, ZIRC_VerifyData and ZIRC_GenerateRandom.
#include "engine/frame/operation.h"

namespace vrno {

namespace {

// The checks of every Update but the ciphers', and of every Final with an output.
int checkInput(ZIRC_Context& context, const unsigned char* input, int length)
{
    if (!input) return ZIRC_SetError(context, ZIRC_INVALID_DATA_POINTER);
    return length < 0 ? ZIRC_SetError(context, ZIRC_INVALID_DATA) : 0;
}

int checkOutput(ZIRC_Context& context, const unsigned char* output, int room)
{
    if (!output) return ZIRC_SetError(context, ZIRC_INVALID_DATA_POINTER);
    return room < context.sizes.nOutputBlockLen ? ZIRC_SetError(context, ZIRC_NOT_ENOUGH_BUFFER) : 0;
}

// Runs a slot whose failure is not its own to tell.
template <class Slot, class... Argument> int staged(ZIRC_Context& context, Slot slot, Argument... arguments)
{
    return runSlot(context, slot, arguments...) > 0 ? ZIRC_SetError(context, ZIRC_STAGED_OPERATION_FAILED) : 0;
}

} // namespace

// ---- digest ----

int ZIRC_DigestInit(ZIRC_Context& context, int nAlgID)
{
    if (bindHash(context, nAlgID) > 0) return 1;
    return staged(context, context.slots.fnDigestInit);
}

int ZIRC_DigestUpdate(ZIRC_Context& context, const unsigned char* input, int inputLength)
{
    if (checkInput(context, input, inputLength) > 0) return 1;
    return staged(context, context.slots.fnDigestUpdate, input, inputLength);
}

int ZIRC_DigestFinal(ZIRC_Context& context, unsigned char* output, int* outputLength)
{
    if (checkOutput(context, output, *outputLength) > 0) return 1;
    return staged(context, context.slots.fnDigestFinal, output, outputLength);
}

int ZIRC_DigestData(int nAlgID, unsigned char* output, int* outputLength, const unsigned char* input, int inputLength)
{
    const OwnedContext context = newContext();
    if (!context) return ZIRC_MEMORY_ERROR;
    return stages(
        *context, [&](ZIRC_Context& c) { return ZIRC_DigestInit(c, nAlgID); },
        [&](ZIRC_Context& c) { return ZIRC_DigestUpdate(c, input, inputLength); },
        [&](ZIRC_Context& c) { return ZIRC_DigestFinal(c, output, outputLength); });
}

// ---- MAC ----

int ZIRC_MACInit(ZIRC_Context& context, const unsigned char* key, int keyLength, int nAlgID)
{
    if (bindMAC(context, nAlgID) > 0) return 1;
    if (!key) return ZIRC_SetError(context, ZIRC_INVALID_KEY_POINTER);
    if (keyLength < context.sizes.nUserKeyLen) return ZIRC_SetError(context, ZIRC_INVALID_KEY);
    return staged(context, context.slots.fnMacInit, key, keyLength);
}

int ZIRC_MACUpdate(ZIRC_Context& context, const unsigned char* input, int inputLength)
{
    if (checkInput(context, input, inputLength) > 0) return 1;
    return staged(context, context.slots.fnMacUpdate, input, inputLength);
}

int ZIRC_MACFinal(ZIRC_Context& context, unsigned char* output, int* outputLength)
{
    if (checkOutput(context, output, *outputLength) > 0) return 1;
    return staged(context, context.slots.fnMacFinal, output, outputLength);
}

int ZIRC_GenerateMAC(const unsigned char* key, int keyLength, int nAlgID, unsigned char* output, int* outputLength,
                     const unsigned char* input, int inputLength)
{
    const OwnedContext context = newContext();
    if (!context) return ZIRC_MEMORY_ERROR;
    return stages(
        *context, [&](ZIRC_Context& c) { return ZIRC_MACInit(c, key, keyLength, nAlgID); },
        [&](ZIRC_Context& c) { return ZIRC_MACUpdate(c, input, inputLength); },
        [&](ZIRC_Context& c) { return ZIRC_MACFinal(c, output, outputLength); });
}

int ZIRC_ChainMAC(const unsigned char* key, int keyLength, int nAlgID, unsigned char* output, int* outputLength,
                  const unsigned char* firstLink, int linkLength, int furtherLinks)
{
    const OwnedContext context = newContext();
    if (!context) return ZIRC_MEMORY_ERROR;
    return stages(
        *context, [&](ZIRC_Context& c) { return ZIRC_MACInit(c, key, keyLength, nAlgID); },
        [&](ZIRC_Context& c) {
            if (checkInput(c, firstLink, linkLength) > 0 || checkOutput(c, output, *outputLength) > 0) return 1;
            *outputLength = c.sizes.nOutputBlockLen;
            if (linkLength != *outputLength) return ZIRC_SetError(c, ZIRC_INVALID_DATA);
            return staged(c, c.slots.fnMacChain, output, firstLink, furtherLinks);
        });
}

// ---- signature ----

namespace {

using KeySlot = decltype(Slots::fnSetPublicKey);

// The key comes before the digest, which may hash of it.
int signatureInit(ZIRC_Context& context, const unsigned char* key, int keyLength, int nAlgID, int Sizes::*minimum,
                  KeySlot Slots::*setKey)
{
    if (bindSignature(context, nAlgID) > 0) return 1;
    if (!key) return ZIRC_SetError(context, ZIRC_INVALID_KEY_POINTER);
    if (keyLength < context.sizes.*minimum) return ZIRC_SetError(context, ZIRC_INVALID_KEY);
    if (runSlot(context, context.slots.*setKey, key, keyLength) > 0) return ZIRC_SetError(context, ZIRC_INVALID_KEY);
    context.nBuffered = 0;
    return staged(context, context.slots.fnDigestInit);
}

// Reads the key again and leaves what is to be signed in stagingBuffer.
int signatureDigest(ZIRC_Context& context, const unsigned char* key, int keyLength, const unsigned char* signature, KeySlot setKey)
{
    if (!key) return ZIRC_SetError(context, ZIRC_INVALID_KEY_POINTER);
    if (!signature) return ZIRC_SetError(context, ZIRC_INVALID_DATA_POINTER);
    if (runSlot(context, setKey, key, keyLength) > 0) return ZIRC_SetError(context, ZIRC_INVALID_KEY);
    return staged(context, context.slots.fnDigestFinal, context.stagingBuffer, &context.nBuffered);
}

} // namespace

int ZIRC_SignInit(ZIRC_Context& context, const unsigned char* key, int keyLength, int nAlgID)
{
    return signatureInit(context, key, keyLength, nAlgID, &Sizes::nMinPrivateKeyLen, &Slots::fnSetPrivateKey);
}

int ZIRC_VerifyInit(ZIRC_Context& context, const unsigned char* key, int keyLength, int nAlgID)
{
    return signatureInit(context, key, keyLength, nAlgID, &Sizes::nMinPublicKeyLen, &Slots::fnSetPublicKey);
}

int ZIRC_SignFinal(ZIRC_Context& context, const unsigned char* key, int keyLength, unsigned char* output, int* outputLength)
{
    if (signatureDigest(context, key, keyLength, output, context.slots.fnSetPrivateKey) > 0) return 1;
    if (*outputLength < 0) return ZIRC_SetError(context, ZIRC_INVALID_DATA);
    return context.slots.fnSign(context, output, outputLength);
}

int ZIRC_VerifyFinal(ZIRC_Context& context, const unsigned char* key, int keyLength, const unsigned char* signature,
                     int signatureLength)
{
    if (signatureDigest(context, key, keyLength, signature, context.slots.fnSetPublicKey) > 0) return 1;
    if (signatureLength < 0) return ZIRC_SetError(context, ZIRC_INVALID_DATA);
    return context.slots.fnVerify(context, signature, signatureLength);
}

int ZIRC_SignData(const unsigned char* key, int keyLength, int nAlgID, unsigned char* output, int* outputLength,
                  const unsigned char* input, int inputLength)
{
    const OwnedContext context = newContext();
    if (!context) return ZIRC_MEMORY_ERROR;
    return stages(
        *context, [&](ZIRC_Context& c) { return ZIRC_SignInit(c, key, keyLength, nAlgID); },
        [&](ZIRC_Context& c) { return ZIRC_DigestUpdate(c, input, inputLength); },
        [&](ZIRC_Context& c) { return ZIRC_SignFinal(c, key, keyLength, output, outputLength); });
}

int ZIRC_VerifyData(const unsigned char* key, int keyLength, int nAlgID, const unsigned char* signature, int signatureLength,
                    const unsigned char* input, int inputLength)
{
    const OwnedContext context = newContext();
    if (!context) return ZIRC_MEMORY_ERROR;
    return stages(
        *context, [&](ZIRC_Context& c) { return ZIRC_VerifyInit(c, key, keyLength, nAlgID); },
        [&](ZIRC_Context& c) { return ZIRC_DigestUpdate(c, input, inputLength); },
        [&](ZIRC_Context& c) { return ZIRC_VerifyFinal(c, key, keyLength, signature, signatureLength); });
}

// ---- random ----

int ZIRC_GenerateRandom(int nAlgID, unsigned char* output, int outputLength, const unsigned char* seed, int seedLength)
{
    const OwnedContext context = newContext();
    if (!context) return ZIRC_MEMORY_ERROR;
    if (bindRandom(*context, nAlgID) > 0) return context->nError;
    if (outputLength < 0 || seedLength < 0 || (!output && outputLength > 0)) return ZIRC_INVALID_DATA;
    return context->slots.fnRandom(*context, output, outputLength, seed, seedLength) > 0 ? ZIRC_STAGED_OPERATION_FAILED : 0;
}

} // namespace vrno
