// The table of algorithm ids, and the binders that read it.
#include "engine/frame/context.h"
#include "engine/frame/kcdsa_slots.h"
#include "engine/frame/rsa_slots.h"
#include "engine/frame/seed_slots.h"
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

enum Use : unsigned char { none, cipher, signature, mac, random }; // beside being a digest

struct Algorithm {
    int id;
    Use use;
    const DigestKind* digest; // null: none
    const Sizes* sizes;
    const Slots* slots;
    const Slots* refinement; // what takes the place of some of them
};

// In the order of the ids.
constexpr Algorithm algorithms[] = {
    {1200, none, &md5Digest, nullptr, nullptr, nullptr},
    {1400, none, &sha1Digest, nullptr, nullptr, nullptr},
    {3420, random, nullptr, nullptr, &randomSlots, nullptr},
    {11110, cipher, nullptr, &seed, &seedSlots, nullptr},
    {12000, cipher, nullptr, &rsa512, &rsaSlots, &rsaDigestInfoSlots},
    {12001, cipher, nullptr, &rsa1024, &rsaSlots, &rsaDigestInfoSlots},
    {12002, cipher, nullptr, &rsa2048, &rsaSlots, &rsaDigestInfoSlots},
    {13101, cipher, &sha1Digest, &rsa1024Oaep, &rsaSlots, &rsaOaepPssSlots},
    {13102, cipher, &sha1Digest, &rsa2048Oaep, &rsaSlots, &rsaOaepPssSlots},
    {31400, mac, nullptr, &hmac, &hmacSlots, nullptr},
    {121200, signature, &md5Digest, &rsa512, &rsaSlots, &rsaDigestInfoSlots},
    {121201, signature, &md5Digest, &rsa1024, &rsaSlots, &rsaDigestInfoSlots},
    {121202, signature, &md5Digest, &rsa2048, &rsaSlots, &rsaDigestInfoSlots},
    {121400, signature, &sha1Digest, &rsa512, &rsaSlots, &rsaDigestInfoSlots},
    {121401, signature, &sha1Digest, &rsa1024, &rsaSlots, &rsaDigestInfoSlots},
    {121402, signature, &sha1Digest, &rsa2048, &rsaSlots, &rsaDigestInfoSlots},
    {131401, signature, &sha1Digest, &rsa1024Oaep, &rsaSlots, &rsaOaepPssSlots},
    {131402, signature, &sha1Digest, &rsa2048Oaep, &rsaSlots, &rsaOaepPssSlots},
    {141401, signature, &sha1Digest, &kcdsa1024, &kcdsaSlots, nullptr},
    {141402, signature, &sha1Digest, &kcdsa2048, &kcdsaSlots, nullptr},
    {171401, none, &sha1Digest, nullptr, nullptr, nullptr},
    {171402, none, &sha1Digest, nullptr, nullptr, nullptr},
    {171404, none, &sha1Digest, nullptr, nullptr, nullptr},
};

const Algorithm* find(int id)
{
    for (const Algorithm& algorithm : algorithms) {
        if (algorithm.id == id) return &algorithm;
    }
    return nullptr;
}

// ---- binding ----

template <class Slot> void take(Slot& slot, Slot given)
{
    if (given) slot = given;
}

// Takes over the slots that the group fills.
void takeSlots(Slots& slots, const Slots& group)
{
    take(slots.fnRandom, group.fnRandom);
    take(slots.fnGenerateKey, group.fnGenerateKey);
    take(slots.fnGenerateKeyPair, group.fnGenerateKeyPair);
    take(slots.fnSetKey, group.fnSetKey);
    take(slots.fnSetPublicKey, group.fnSetPublicKey);
    take(slots.fnSetPrivateKey, group.fnSetPrivateKey);
    take(slots.fnEncrypt, group.fnEncrypt);
    take(slots.fnDecrypt, group.fnDecrypt);
    take(slots.fnSign, group.fnSign);
    take(slots.fnVerify, group.fnVerify);
    take(slots.fnDigestInit, group.fnDigestInit);
    take(slots.fnDigestUpdate, group.fnDigestUpdate);
    take(slots.fnDigestFinal, group.fnDigestFinal);
    take(slots.fnMacInit, group.fnMacInit);
    take(slots.fnMacUpdate, group.fnMacUpdate);
    take(slots.fnMacFinal, group.fnMacFinal);
    take(slots.fnMacChain, group.fnMacChain);
}

void bindRow(ZIRC_Context& context, const Algorithm& algorithm)
{
    if (algorithm.sizes) context.sizes = *algorithm.sizes;
    if (algorithm.slots) takeSlots(context.slots, *algorithm.slots);
    if (algorithm.refinement) takeSlots(context.slots, *algorithm.refinement);
}

void bindDigest(ZIRC_Context& context, const DigestKind& digest)
{
    context.nHashId = digest.nHashId;
    context.sizes.nOutputBlockLen = digest.nOutputBlockLen;
    takeSlots(context.slots, digest.slots);
}

// The row of an id that serves for `use`; null, with the refusal stored, when there is none.
const Algorithm* rowFor(ZIRC_Context& context, int id, Use use)
{
    const Algorithm* const algorithm = find(id);
    if (algorithm && algorithm->use == use) return algorithm;
    ZIRC_SetError(context, ZIRC_INVALID_ALGORITHM);
    return nullptr;
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
    bindDigest(context, *algorithm->digest);
    return 0;
}

int bindCipher(ZIRC_Context& context, int nAlgID, int mode)
{
    context.nClass = ZIRC_CLASS_SYMMETRIC;
    const Algorithm* const algorithm = rowFor(context, nAlgID, cipher);
    if (!algorithm) return 1;
    const bool symmetric = algorithm->sizes->nKeyLen > 0;
    if (symmetric && mode != ZIRC_MODE_CBC) return ZIRC_SetError(context, ZIRC_INVALID_MODE);
    if (!symmetric) context.nClass = ZIRC_CLASS_ASYMMETRIC;
    if (algorithm->digest) bindDigest(context, *algorithm->digest);
    bindRow(context, *algorithm);
    return 0;
}

int bindSignature(ZIRC_Context& context, int nAlgID)
{
    if (bindHash(context, nAlgID) > 0) return 1;
    const Algorithm* const algorithm = rowFor(context, nAlgID, signature);
    if (!algorithm) return 1;
    context.nClass = ZIRC_CLASS_ASYMMETRIC;
    bindRow(context, *algorithm);
    return 0;
}

int bindMAC(ZIRC_Context& context, int nAlgID)
{
    const Algorithm* const algorithm = rowFor(context, nAlgID, mac);
    if (!algorithm) return 1;
    bindRow(context, *algorithm);
    return 0;
}

int bindRandom(ZIRC_Context& context, int nAlgID)
{
    const Algorithm* const algorithm = rowFor(context, nAlgID, random);
    if (!algorithm) return 1;
    bindRow(context, *algorithm);
    return 0;
}

} // namespace vrno
