// Generation of domain parameters and keys of KCDSA.
#include "engine/kcdsa/kcdsa.h"

#include "engine/bignum/rows.h"
#include "engine/digest/has160.h"

#include <algorithm>
#include <cstring>

namespace vrno {

void has160Expand(unsigned char* output, int bits, const unsigned char* seed, int seedLength)
{
    constexpr int digestLength = has160DigestLength, maxSeed = kcdsaMaxOrderBits / 8 + 4;
    unsigned char block[maxSeed + 1], digest[digestLength];
    std::memcpy(block, seed, static_cast<std::size_t>(seedLength));
    int remaining = (bits + 7) / 8;
    for (unsigned char counter = 0; remaining > 0; ++counter) {
        block[seedLength] = counter;
        HAS160_Digest(digest, block, static_cast<std::size_t>(seedLength) + 1);
        const int taken = std::min(remaining, digestLength);
        std::memcpy(output + remaining - taken, digest + digestLength - taken, static_cast<std::size_t>(taken));
        remaining -= taken;
    }
    if (bits % 8 != 0) output[0] = static_cast<unsigned char>(output[0] & 0xFF >> (8 - bits % 8));
}

namespace {

constexpr int maxBytes = kcdsaMaxBits / 8, maxSeedBytes = kcdsaMaxOrderBits / 8;

void setBit(ZIRC_BN& number, int bit)
{
    ZIRC_BN one, shifted, sum;
    if (bnTestBit(number, bit)) return;
    bnSetWord(one, 1);
    bnShiftLeft(shifted, one, bit);
    bnAdd(sum, number, shifted);
    bnCopy(number, sum);
}

// An odd number of so many bits of the expanded seed, with `topBit` set.
void expandOdd(ZIRC_BN& number, int bits, int topBit, const unsigned char* seed, int seedLength)
{
    unsigned char bytes[maxBytes];
    has160Expand(bytes, bits, seed, seedLength);
    bnFromBytes(number, bytes, (bits + 7) / 8);
    setBit(number, topBit);
    setBit(number, 0);
}

// q of a seed and a count, and p = 2Jq + 1. Whether both are primes and p is not too long.
bool findPrimes(ZIRC_BN& p, ZIRC_BN& q, const ZIRC_BN& J, const unsigned char* seed, int seedLength, int pBits, int qBits)
{
    ZIRC_BN product, twice;
    expandOdd(q, qBits, qBits - 1, seed, seedLength);
    bnMul(product, J, q);
    bnShiftLeftOne(twice, product);
    bnAddWord(p, twice, 1);
    return bnBits(p) <= pBits && bnIsPrime(q, 0) && bnIsPrime(p, 0);
}

// h to the 2J modulo p, drawn until it is not 1.
int findGenerator(ZIRC_BN& g, const ZIRC_BN& p, const ZIRC_BN& J, int pBits)
{
    ZIRC_BN drawn, h, exponent;
    bnShiftLeftOne(exponent, J);
    do {
        if (bnRandom(drawn, pBits, false, false) < 0) return -1;
        bnMod(h, drawn, p);
        bnModExpReduced(g, h, exponent, p);
    } while (bnBits(g) <= 1);
    return 0;
}

} // namespace

int kcdsaGenerateParameters(unsigned char* seed, ZIRC_BN& p, ZIRC_BN& q, ZIRC_BN& J, int& count, ZIRC_BN& g, int pBits, int qBits)
{
    constexpr int maxCount = 1 << 24;
    const int seedLength = (qBits + 7) / 8;
    for (;;) {
        if (fipsRandom(seed, seedLength) < 0) return -1;
        unsigned char block[maxSeedBytes + 4];
        std::memcpy(block, seed, static_cast<std::size_t>(seedLength));
        expandOdd(J, pBits - qBits - 4, pBits - qBits - 1, block, seedLength);
        if (!bnIsPrime(J, 0)) continue;
        for (count = 1; count <= maxCount; ++count) {
            for (int i = 0; i < 4; ++i) block[seedLength + i] = static_cast<unsigned char>(count >> (24 - 8 * i) & 0xFF);
            if (findPrimes(p, q, J, block, seedLength + 4, pBits, qBits)) return findGenerator(g, p, J, pBits);
        }
    }
}

int kcdsaGenerateKeyPair(ZIRC_KcdsaKey& key, int pBits, int qBits)
{
    unsigned char seed[maxSeedBytes];
    Temporary J, drawn, inverse;
    int count = 0;
    if (kcdsaGenerateParameters(seed, key.p, key.q, J, count, key.g, pBits, qBits) < 0) return -1;
    do {
        if (bnRandom(drawn, qBits, true, true) < 0) return -1;
        bnMod(key.x, drawn, key.q);
        bnModInverse(inverse, key.x, key.q);
    } while (bnBits(inverse) == 0);
    bnModExpSecret(key.y, key.g, inverse, key.p);
    return 0;
}

} // namespace vrno
