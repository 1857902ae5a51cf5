// Signatures of KCDSA and its key blobs.
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

constexpr int mostBytes = kcdsaMostBits / 8;

int bytesOf(const ZIRC_BN& a)
{
    return (bnBits(a) + 7) / 8;
}

bool isModulus(const ZIRC_BN& a, int mostBits)
{
    return bnBits(a) > 1 && bnBits(a) <= mostBits;
}

bool areParameters(const ZIRC_KcdsaKey& key)
{
    if (!isModulus(key.p, kcdsaMostBits) || bnTestBit(key.p, 0) == 0 || !isModulus(key.q, kcdsaMostOrderBits)) return false;
    ZIRC_BN g;
    bnMod(g, key.g, key.p);
    return bnBits(g) > 1;
}

void hashOf(unsigned int hashId, unsigned char* output, const unsigned char* data, int length)
{
    const auto count = static_cast<std::size_t>(length);
    hashId == hashSha1 ? SHA1_Digest(output, data, count) : HAS160_Digest(output, data, count);
}

// (r XOR digest) modulo q.
void combine(ZIRC_BN& e, const ZIRC_BN& r, const unsigned char* digest, int digestLength, const ZIRC_BN& q)
{
    ZIRC_BN d, mixed;
    bnFromBytes(d, digest, digestLength);
    bnXor(mixed, r, d);
    bnMod(e, mixed, q);
}

} // namespace

// ---- keys ----

bool kcdsaReadPublicKey(ZIRC_KcdsaKey& key, const unsigned char* blob, int length)
{
    DerReader reader(blob, length);
    const DerSequence sequence = derReadSequence(reader);
    for (ZIRC_BN* number : {&key.p, &key.q, &key.g, &key.y}) derReadInteger(reader, *number);
    derFinish(reader, sequence);
    return !reader.failed && areParameters(key);
}

bool kcdsaReadPrivateKey(ZIRC_KcdsaKey& key, const unsigned char* blob, int length)
{
    DerReader reader(blob, length);
    const DerSequence sequence = derReadSequence(reader);
    for (ZIRC_BN* number : {&key.p, &key.q, &key.g, &key.x, &key.y}) derReadInteger(reader, *number);
    derFinish(reader, sequence);
    if (reader.failed || !areParameters(key)) return false;
    Temporary x;
    bnMod(x, key.x, key.q);
    return bnBits(x) > 0;
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

bool kcdsaSign(const ZIRC_KcdsaKey& key, unsigned int hashId, ZIRC_BN& r, ZIRC_BN& s, const unsigned char* digest, int digestLength)
{
    constexpr int mostDraws = 20; // with a p of whole octets, fewer than one in 128 gives a W that is too short
    const int pLength = bytesOf(key.p), orderBits = (bnBits(key.q) + 31) / 32 * 32;
    for (int draw = 0; draw < mostDraws; ++draw) {
        Temporary drawn, k, difference;
        ZIRC_BN W, e;
        if (!bnRandom(drawn, orderBits, 1, 0)) return false;
        bnMod(k, drawn, key.q);
        if (bnBits(k) == 0) continue;
        bnModExpSecret(W, key.g, k, key.p);
        if (bytesOf(W) != pLength) continue;
        unsigned char bytes[mostBytes], hash[kcdsaDigestLength];
        bnToBytesFixed(bytes, W, pLength);
        hashOf(hashId, hash, bytes, pLength);
        bnFromBytes(r, hash, digestLength);
        combine(e, r, digest, digestLength, key.q);
        bnModSub(difference, k, e, key.q);
        bnModMul(s, key.x, difference, key.q);
        if (bnBits(s) > 0) return true;
    }
    return false;
}

int kcdsaVerify(const ZIRC_KcdsaKey& key, unsigned int hashId, const unsigned char* digest, int digestLength, const ZIRC_BN& r,
                const ZIRC_BN& s)
{
    if (bnBits(s) == 0 || bnIsGreaterOrEqual(s, key.q)) return -1;
    ZIRC_BN e, ofY, ofG, W;
    combine(e, r, digest, digestLength, key.q);
    bnModExpReduced(ofY, key.y, s, key.p);
    bnModExpReduced(ofG, key.g, e, key.p);
    bnModMul(W, ofY, ofG, key.p);
    unsigned char bytes[mostBytes], hash[kcdsaDigestLength];
    const auto matches = [&](int length) {
        ZIRC_BN expected;
        hashOf(hashId, hash, bytes, length);
        bnFromBytes(expected, hash, digestLength);
        return bnIsEqual(expected, r) == 1;
    };
    bnToBytesFixed(bytes, W, bytesOf(key.p));
    if (matches(bytesOf(key.p))) return 1;
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

bool kcdsaDecodeSignature(const unsigned char* signature, int length, ZIRC_BN& r, ZIRC_BN& s)
{
    DerReader reader(signature, length);
    const DerSequence sequence = derReadSequence(reader);
    int octets = 0;
    derReadBitString(reader, r, octets);
    derReadInteger(reader, s);
    derFinish(reader, sequence);
    return !reader.failed;
}

} // namespace vrno
