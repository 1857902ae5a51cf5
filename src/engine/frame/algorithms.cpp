// The table of algorithm ids, and the binders that read it.
#include "engine/frame/context.h"
#include "engine/frame/slots.h"

namespace vrno {

namespace {

// ---- sizes ----

constexpr Sizes seed{.nKeyLen = seedScheduleLength,
                     .nUserKeyLen = seedKeyLength,
                     .nIvLen = seedBlockLength,
                     .nInputBlockLen = seedBlockLength,
                     .nOutputBlockLen = seedBlockLength};
constexpr Sizes hmac{.nOutputBlockLen = 20};

constexpr Sizes rsaSizes(int minPublic, int minPrivate, int input, int output)
{
    return {.nMinPublicKeyLen = minPublic,
            .nMinPrivateKeyLen = minPrivate,
            .nInputBlockLen = input,
            .nOutputBlockLen = output,
            .nKeyBits = 8 * output,
            .nPrimeCount = 2};
}
constexpr Sizes rsa512 = rsaSizes(71, 208, 53, 64);
constexpr Sizes rsa1024 = rsaSizes(136, 100, 117, 128);
constexpr Sizes rsa2048 = rsaSizes(265, 500, 245, 256);
constexpr Sizes rsa1024Oaep = rsaSizes(136, 100, 86, 128); // also PSS
constexpr Sizes rsa2048Oaep = rsaSizes(265, 500, 214, 256);

constexpr Sizes kcdsa1024{.nMinPublicKeyLen = 412, .nMinPrivateKeyLen = 434, .nOutputBlockLen = 20, .nKeyBits = 1024};
constexpr Sizes kcdsa2048{.nMinPublicKeyLen = 799, .nMinPrivateKeyLen = 821, .nOutputBlockLen = 20, .nKeyBits = 2048};

// ---- ids ----

enum Use : unsigned char { none, cipher, signature, mac, random }; // besides ZIRC_DigestData

struct Algorithm {
    int id;
    Use use;
    const DigestKind* digest; // null: none
    const Sizes* sizes = nullptr;
    const Slots* slots = &noSlots; // of the use
};

// In the order of the ids.
constexpr Algorithm algorithms[] = {
    {1200, none, &md5Digest},
    {1400, none, &sha1Digest},
    {3420, random, nullptr, nullptr, &randomSlots},
    {11110, cipher, nullptr, &seed, &seedSlots},
    {12000, cipher, nullptr, &rsa512, &rsaSlots},
    {12001, cipher, nullptr, &rsa1024, &rsaSlots},
    {12002, cipher, nullptr, &rsa2048, &rsaSlots},
    {13101, cipher, &sha1Digest, &rsa1024Oaep, &rsaOaepPssSlots},
    {13102, cipher, &sha1Digest, &rsa2048Oaep, &rsaOaepPssSlots},
    {31400, mac, nullptr, &hmac, &hmacSlots},
    {121200, signature, &md5Digest, &rsa512, &rsaMd5Slots},
    {121201, signature, &md5Digest, &rsa1024, &rsaMd5Slots},
    {121202, signature, &md5Digest, &rsa2048, &rsaMd5Slots},
    {121400, signature, &sha1Digest, &rsa512, &rsaSha1Slots},
    {121401, signature, &sha1Digest, &rsa1024, &rsaSha1Slots},
    {121402, signature, &sha1Digest, &rsa2048, &rsaSha1Slots},
    {131401, signature, &sha1Digest, &rsa1024Oaep, &rsaOaepPssSlots},
    {131402, signature, &sha1Digest, &rsa2048Oaep, &rsaOaepPssSlots},
    {141401, signature, &sha1Digest, &kcdsa1024, &kcdsaSlots},
    {141402, signature, &sha1Digest, &kcdsa2048, &kcdsaSlots},
    {171401, none, &sha1Digest},
    {171402, none, &sha1Digest},
    {171404, none, &sha1Digest},
};

const Algorithm* find(int id)
{
    for (const Algorithm& algorithm : algorithms) {
        if (algorithm.id == id) return &algorithm;
    }
    return nullptr;
}

int bindRow(ZIRC_Context& context, int id, Use use)
{
    const Algorithm* const algorithm = find(id);
    if (!algorithm || algorithm->use != use) return ZIRC_SetError(context, ZIRC_INVALID_ALGORITHM);
    if (algorithm->digest) context.nHashId = algorithm->digest->nHashId;
    if (algorithm->sizes) context.sizes = *algorithm->sizes;
    context.slots = algorithm->slots;
    return 0;
}

} // namespace

int ZIRC_SetError(ZIRC_Context& context, int code)
{
    context.nError = code;
    return 1;
}

int bindHash(ZIRC_Context& context, int nAlgID)
{
    const Algorithm* const algorithm = find(nAlgID);
    if (!algorithm || !algorithm->digest) return ZIRC_SetError(context, ZIRC_INVALID_ALGORITHM);
    context.nHashId = algorithm->digest->nHashId;
    context.sizes.nOutputBlockLen = algorithm->digest->nOutputBlockLen;
    context.slots = &algorithm->digest->slots;
    return 0;
}

int bindCipher(ZIRC_Context& context, int nAlgID, int mode)
{
    if (bindRow(context, nAlgID, cipher) > 0) return 1;
    const bool symmetric = context.sizes.nKeyLen > 0;
    context.nClass = symmetric ? ZIRC_CLASS_SYMMETRIC : ZIRC_CLASS_ASYMMETRIC;
    return symmetric && mode != ZIRC_MODE_CBC ? ZIRC_SetError(context, ZIRC_INVALID_MODE) : 0;
}

int bindSignature(ZIRC_Context& context, int nAlgID)
{
    context.nClass = ZIRC_CLASS_ASYMMETRIC;
    return bindRow(context, nAlgID, signature);
}

int bindMAC(ZIRC_Context& context, int nAlgID) { return bindRow(context, nAlgID, mac); }

int bindRandom(ZIRC_Context& context, int nAlgID) { return bindRow(context, nAlgID, random); }

} // namespace vrno
