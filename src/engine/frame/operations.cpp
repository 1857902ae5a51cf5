// ZIRC_DigestData, ZIRC_GenerateMAC, ZIRC_ChainMAC, ZIRC_SignData, ZIRC_VerifyData and ZIRC_GenerateRandom.
#include "engine/frame/operation.h"

#include <algorithm>

namespace vrno {

namespace {

int checkInput(ZIRC_Context& context, const unsigned char* input, int length)
{
    if (!input) return ZIRC_SetError(context, ZIRC_INVALID_DATA_POINTER);
    return length < 0 ? ZIRC_SetError(context, ZIRC_INVALID_DATA) : 0;
}

} // namespace

// ---- digest ----

int ZIRC_DigestInit(ZIRC_Context& context, int nAlgID)
{
    if (bindHash(context, nAlgID) > 0) return 1;
    return runStagedSlot(context, &Slots::fnDigestInit);
}

int ZIRC_DigestUpdate(ZIRC_Context& context, const unsigned char* input, int inputLength)
{
    if (checkInput(context, input, inputLength) > 0) return 1;
    return runStagedSlot(context, &Slots::fnDigestUpdate, input, inputLength);
}

int ZIRC_DigestFinal(ZIRC_Context& context, unsigned char* output, int* outputLength)
{
    if (checkOutput(context, output, *outputLength, context.sizes.nOutputBlockLen) > 0) return 1;
    return runStagedSlot(context, &Slots::fnDigestFinal, output, outputLength);
}

int ZIRC_DigestData(int nAlgID, unsigned char* output, int* outputLength, const unsigned char* input, int inputLength)
{
    return stages([&](auto& c) { return ZIRC_DigestInit(c, nAlgID); },
                  [&](auto& c) { return ZIRC_DigestUpdate(c, input, inputLength); },
                  [&](auto& c) { return ZIRC_DigestFinal(c, output, outputLength); });
}

// ---- MAC ----

int ZIRC_MACInit(ZIRC_Context& context, const unsigned char* key, int keyLength, int nAlgID)
{
    if (bindMAC(context, nAlgID) > 0) return 1;
    if (!key) return ZIRC_SetError(context, ZIRC_INVALID_KEY_POINTER);
    if (keyLength < context.sizes.nUserKeyLen) return ZIRC_SetError(context, ZIRC_INVALID_KEY);
    return runStagedSlot(context, &Slots::fnMacInit, key, keyLength);
}

int ZIRC_MACUpdate(ZIRC_Context& context, const unsigned char* input, int inputLength)
{
    if (checkInput(context, input, inputLength) > 0) return 1;
    return runStagedSlot(context, &Slots::fnMacUpdate, input, inputLength);
}

int ZIRC_MACFinal(ZIRC_Context& context, unsigned char* output, int* outputLength)
{
    if (checkOutput(context, output, *outputLength, context.sizes.nOutputBlockLen) > 0) return 1;
    return runStagedSlot(context, &Slots::fnMacFinal, output, outputLength);
}

int ZIRC_GenerateMAC(const unsigned char* key, int keyLength, int nAlgID, unsigned char* output, int* outputLength,
                     const unsigned char* input, int inputLength)
{
    return stages([&](auto& c) { return ZIRC_MACInit(c, key, keyLength, nAlgID); },
                  [&](auto& c) { return ZIRC_MACUpdate(c, input, inputLength); },
                  [&](auto& c) { return ZIRC_MACFinal(c, output, outputLength); });
}

int ZIRC_ChainMAC(const unsigned char* key, int keyLength, int nAlgID, unsigned char* output, int* outputLength,
                  const unsigned char* firstLinks, int linksLength, int furtherLinks)
{
    return stages([&](auto& c) { return ZIRC_MACInit(c, key, keyLength, nAlgID); },
                  [&](auto& c) {
                      const int link = c.sizes.nOutputBlockLen;
                      if (checkInput(c, firstLinks, linksLength) > 0) return 1;
                      if (checkOutput(c, output, *outputLength, std::max(link, linksLength)) > 0) return 1;
                      if (linksLength == 0 || linksLength % link != 0) return ZIRC_SetError(c, ZIRC_INVALID_DATA);
                      *outputLength = linksLength;
                      return runStagedSlot(c, &Slots::fnMacChain, output, firstLinks, linksLength, furtherLinks);
                  });
}

// ---- signature ----

namespace {

// The key comes before the digest, which may begin with a value of the key.
int signatureInit(ZIRC_Context& context, const KeyKind& kind, const unsigned char* key, int keyLength, int nAlgID)
{
    if (bindSignature(context, nAlgID) > 0) return 1;
    if (!key) return ZIRC_SetError(context, ZIRC_INVALID_KEY_POINTER);
    if (keyLength < context.sizes.*kind.minLength) return ZIRC_SetError(context, ZIRC_INVALID_KEY);
    if (setKey(context, kind, key, keyLength) > 0) return 1;
    context.nBuffered = 0;
    return runStagedSlot(context, &Slots::fnDigestInit);
}

// Reads the key again, and leaves what is signed in stagingBuffer.
int readKeyAndFinishDigest(ZIRC_Context& context, const KeyKind& kind, const unsigned char* key, int keyLength,
                           const unsigned char* signature)
{
    if (!key) return ZIRC_SetError(context, ZIRC_INVALID_KEY_POINTER);
    if (!signature) return ZIRC_SetError(context, ZIRC_INVALID_DATA_POINTER);
    if (setKey(context, kind, key, keyLength) > 0) return 1;
    return runStagedSlot(context, &Slots::fnDigestFinal, context.stagingBuffer, &context.nBuffered);
}

} // namespace

int ZIRC_SignInit(ZIRC_Context& context, const unsigned char* key, int keyLength, int nAlgID)
{
    return signatureInit(context, privateKey, key, keyLength, nAlgID);
}

int ZIRC_VerifyInit(ZIRC_Context& context, const unsigned char* key, int keyLength, int nAlgID)
{
    return signatureInit(context, publicKey, key, keyLength, nAlgID);
}

int ZIRC_SignFinal(ZIRC_Context& context, const unsigned char* key, int keyLength, unsigned char* output, int* outputLength)
{
    if (readKeyAndFinishDigest(context, privateKey, key, keyLength, output) > 0) return 1;
    if (*outputLength < 0) return ZIRC_SetError(context, ZIRC_INVALID_DATA);
    return runSlot(context, &Slots::fnSign, output, outputLength);
}

int ZIRC_VerifyFinal(ZIRC_Context& context, const unsigned char* key, int keyLength, const unsigned char* signature,
                     int signatureLength)
{
    if (readKeyAndFinishDigest(context, publicKey, key, keyLength, signature) > 0) return 1;
    if (signatureLength < 0) return ZIRC_SetError(context, ZIRC_INVALID_DATA);
    return runSlot(context, &Slots::fnVerify, signature, signatureLength);
}

int ZIRC_SignData(const unsigned char* key, int keyLength, int nAlgID, unsigned char* output, int* outputLength,
                  const unsigned char* input, int inputLength, bool isVerifiedNext)
{
    return stages([&](auto& c) { return ZIRC_SignInit(c, key, keyLength, nAlgID); },
                  [&](auto& c) { return ZIRC_DigestUpdate(c, input, inputLength); },
                  [&](auto& c) {
                      c.isVerifiedNext = isVerifiedNext;
                      return ZIRC_SignFinal(c, key, keyLength, output, outputLength);
                  });
}

int ZIRC_VerifyData(const unsigned char* key, int keyLength, int nAlgID, const unsigned char* signature, int signatureLength,
                    const unsigned char* input, int inputLength)
{
    return stages([&](auto& c) { return ZIRC_VerifyInit(c, key, keyLength, nAlgID); },
                  [&](auto& c) { return ZIRC_DigestUpdate(c, input, inputLength); },
                  [&](auto& c) { return ZIRC_VerifyFinal(c, key, keyLength, signature, signatureLength); });
}

// ---- random ----

int ZIRC_GenerateRandom(int nAlgID, unsigned char* output, int outputLength, const unsigned char* seed, int seedLength)
{
    ZIRC_Context context;
    if (bindRandom(context, nAlgID) > 0) return context.nError;
    if (outputLength < 0 || seedLength < 0 || (!output && outputLength > 0)) return ZIRC_INVALID_DATA;
    if (runSlot(context, &Slots::fnRandom, output, outputLength, seed, seedLength) > 0) return ZIRC_STAGED_OPERATION_FAILED;
    return 0;
}

} // namespace vrno
