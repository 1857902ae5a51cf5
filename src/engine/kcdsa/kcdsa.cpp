// Signatures and key blobs of KCDSA.
#include "engine/kcdsa/kcdsa.h"

#include "base/wipe.h"
#include "engine/bignum/rows.h"
#include "engine/der/der.h"
#include "engine/digest/has160.h"
#include "engine/digest/hash_id.h"
#include "engine/digest/sha1.h"

#include <cstring>
#include <initializer_list>

namespace vrno {

namespace {

constexpr int maxBytes = kcdsaMaxBits / 8;

int bnLength(const ZIRC_BN& a) { return (bnBits(a) + 7) / 8; }

bool isKcdsaModulus(const ZIRC_BN& a, int maxBits) { return bnBits(a) > 1 && bnBits(a) <= maxBits; }

bool areKcdsaParameters(const ZIRC_KcdsaKey& key)
{
    if (!isKcdsaModulus(key.p, kcdsaMaxBits) || !isOdd(key.p) || !isKcdsaModulus(key.q, kcdsaMaxOrderBits)) return false;
    ZIRC_BN g;
    bnMod(g, key.g, key.p);
    return bnBits(g) > 1;
}

void kcdsaHash(unsigned int hashId, unsigned char* output, const unsigned char* data, int length)
{
    const auto count = static_cast<std::size_t>(length);
    if (hashId == hashSha1) {
        SHA1_Digest(output, data, count);
    } else {
        HAS160_Digest(output, data, count);
    }
}

// E of the standard: (r XOR digest) modulo q.
void kcdsaE(ZIRC_BN& e, const ZIRC_BN& r, const unsigned char* digest, int digestLength, const ZIRC_BN& q)
{
    ZIRC_BN d, mixed;
    bnFromBytes(d, digest, digestLength);
    bnXor(mixed, r, d);
    bnMod(e, mixed, q);
}

} // namespace

// ---- keys ----

int kcdsaReadPublicKey(ZIRC_KcdsaKey& key, const unsigned char* blob, int length)
{
    DerReader reader(blob, length);
    const DerSequence sequence = derReadSequence(reader);
    for (ZIRC_BN* number : {&key.p, &key.q, &key.g, &key.y}) derReadInteger(reader, *number);
    derFinish(reader, sequence);
    return !reader.failed && areKcdsaParameters(key) ? 0 : -1;
}

int kcdsaReadPrivateKey(ZIRC_KcdsaKey& key, const unsigned char* blob, int length)
{
    DerReader reader(blob, length);
    const DerSequence sequence = derReadSequence(reader);
    for (ZIRC_BN* number : {&key.p, &key.q, &key.g, &key.x, &key.y}) derReadInteger(reader, *number);
    derFinish(reader, sequence);
    if (reader.failed || !areKcdsaParameters(key)) return -1;
    Temporary x;
    bnMod(x, key.x, key.q);
    return bnBits(x) > 0 ? 0 : -1;
}

int kcdsaWritePublicKey(const ZIRC_KcdsaKey& key, unsigned char* blob, int room)
{
    DerWriter writer{blob, room};
    derWriteNumbers(writer, key.p, key.q, key.g, key.y);
    return writer.failed ? -1 : writer.length;
}

int kcdsaWritePrivateKey(const ZIRC_KcdsaKey& key, unsigned char* blob, int room)
{
    DerWriter writer{blob, room};
    derWriteNumbers(writer, key.p, key.q, key.g, key.x, key.y);
    return writer.failed ? -1 : writer.length;
}

// ---- signatures ----

void kcdsaZ(const ZIRC_KcdsaKey& key, unsigned char* z)
{
    ZIRC_BN low;
    bnCopy(low, key.y);
    bnMaskBits(low, 8 * kcdsaZLength);
    bnToBytesFixed(z, low, kcdsaZLength);
}

int kcdsaSign(const ZIRC_KcdsaKey& key, unsigned int hashId, ZIRC_BN& r, ZIRC_BN& s, const unsigned char* digest, int digestLength)
{
    constexpr int maxDraws = 20; // fewer than one in 128 gives a W that is too short, when p fills its octets
    const int pLength = bnLength(key.p), orderBits = (bnBits(key.q) + 31) / 32 * 32;
    for (int draw = 0; draw < maxDraws; ++draw) {
        Temporary drawn, k, difference;
        ZIRC_BN W, e;
        if (bnRandom(drawn, orderBits, true, false) < 0) return -1;
        bnMod(k, drawn, key.q);
        if (bnBits(k) == 0) continue;
        bnModExpSecret(W, key.g, k, key.p);
        if (bnLength(W) != pLength) continue;
        unsigned char bytes[maxBytes], hash[kcdsaDigestLength];
        bnToBytesFixed(bytes, W, pLength);
        kcdsaHash(hashId, hash, bytes, pLength);
        bnFromBytes(r, hash, digestLength);
        kcdsaE(e, r, digest, digestLength, key.q);
        bnModSub(difference, k, e, key.q);
        bnModMul(s, key.x, difference, key.q);
        if (bnBits(s) > 0) return 0;
    }
    return -1;
}

int kcdsaVerify(const ZIRC_KcdsaKey& key, unsigned int hashId, const unsigned char* digest, int digestLength, const ZIRC_BN& r,
                const ZIRC_BN& s)
{
    if (bnBits(s) == 0 || bnIsGreaterOrEqual(s, key.q)) return -1;
    ZIRC_BN e, ofY, ofG, W;
    kcdsaE(e, r, digest, digestLength, key.q);
    bnModExpReduced(ofY, key.y, s, key.p);
    bnModExpReduced(ofG, key.g, e, key.p);
    bnModMul(W, ofY, ofG, key.p);
    unsigned char bytes[maxBytes], hash[kcdsaDigestLength];
    const auto matches = [&](int length) {
        ZIRC_BN expected;
        kcdsaHash(hashId, hash, bytes, length);
        bnFromBytes(expected, hash, digestLength);
        return bnIsEqual(expected, r);
    };
    bnToBytesFixed(bytes, W, bnLength(key.p));
    if (matches(bnLength(key.p))) return 1;
    return matches(bnToBytes(bytes, W)) ? 2 : -1;
}

int kcdsaEncodeSignature(const ZIRC_BN& r, const ZIRC_BN& s, int digestLength, unsigned char* output, int room)
{
    unsigned char bytes[kcdsaDigestLength] = {};
    bnToBytesFixed(bytes, r, digestLength);
    DerWriter writer{output, room};
    derWriteHeader(writer, 0x30, derObjectSize(digestLength, 3) + derObjectSize(derIntegerLength(s), 2));
    derWriteBitString(writer, bytes, digestLength);
    derWriteInteger(writer, s);
    return writer.failed ? -1 : writer.length;
}

int kcdsaDecodeSignature(const unsigned char* signature, int length, ZIRC_BN& r, ZIRC_BN& s)
{
    DerReader reader(signature, length);
    const DerSequence sequence = derReadSequence(reader);
    int octets = 0;
    derReadBitString(reader, r, octets);
    derReadInteger(reader, s);
    derFinish(reader, sequence);
    return reader.failed ? -1 : 0;
}

} // namespace vrno
