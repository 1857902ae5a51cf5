// Key blobs of RSA, and key generation.
#include "engine/rsa/rsa.h"

#include "engine/bignum/rows.h"
#include "engine/der/der.h"

#include <initializer_list>
#include <utility>

namespace vrno {

namespace {

bool isOne(const ZIRC_BN& a) { return bnBits(a) == 1; }

// Whether this can be a modulus or a prime of a key.
bool isOddModulus(const ZIRC_BN& a) { return isOdd(a) && !isOne(a) && bnBits(a) <= rsaMaxBits; }

template <class... Number> bool fitRsa(const Number&... numbers) { return ((bnBits(numbers) <= rsaMaxBits) && ...); }

// The conditions on a private key but for those on its primes. A d may be somewhat longer than the modulus, as some programs
// write it; the length that is used bounds the time of an operation.
bool isUsableRsaKey(const ZIRC_RsaKey& key)
{
    const bool isExponentUsable = rsaUsesPrimes(key) || bnBits(key.d) <= rsaMaxBits + 64;
    return isOddModulus(key.n) && isExponentUsable && fitRsa(key.e, key.p, key.q, key.dP, key.dQ, key.qInv);
}

// Primes that are used have as many bits together as the modulus; a product may have fewer, by one for each factor.
bool rsaPrimesFit(const ZIRC_RsaKey& key)
{
    if (!rsaUsesPrimes(key)) return true;
    int bits = bnBits(key.p) + bnBits(key.q);
    bool usable = isOddModulus(key.p) && isOddModulus(key.q);
    for (int i = 0; i < key.nPrimes - 2; ++i) {
        usable = usable && isOddModulus(key.r[i]) && fitRsa(key.dR[i], key.t[i]);
        bits += bnBits(key.r[i]);
    }
    return usable && bits <= bnBits(key.n) + key.nPrimes;
}

void rsaReadOtherPrimes(DerReader& reader, ZIRC_RsaKey& key)
{
    const DerSequence list = derReadSequence(reader);
    for (int i = 0; i < 2 && derHasMore(reader, list); ++i) {
        const DerSequence entry = derReadSequence(reader);
        derReadInteger(reader, key.r[i]);
        derReadInteger(reader, key.dR[i]);
        derReadInteger(reader, key.t[i]);
        derFinish(reader, entry);
        ++key.nPrimes;
    }
    derFinish(reader, list);
}

} // namespace

bool rsaUsesPrimes(const ZIRC_RsaKey& key) { return !bnIsZero(key.qInv); }

bool rsaIsUsableExponent(const ZIRC_BN& e) { return isOdd(e) && !isOne(e) && fitRsa(e); }

int rsaReadPublicKey(ZIRC_RsaKey& key, const unsigned char* blob, int length)
{
    DerReader reader(blob, length);
    const DerSequence sequence = derReadSequence(reader);
    derReadInteger(reader, key.n);
    derReadInteger(reader, key.e);
    derFinish(reader, sequence);
    return !reader.failed && isOddModulus(key.n) && rsaIsUsableExponent(key.e) ? 0 : -1;
}

int rsaReadPrivateKey(ZIRC_RsaKey& key, const unsigned char* blob, int length)
{
    DerReader reader(blob, length);
    const DerSequence sequence = derReadSequence(reader);
    ZIRC_BN version;
    for (ZIRC_BN* number : {&version, &key.n, &key.e, &key.d, &key.p, &key.q, &key.dP, &key.dQ, &key.qInv}) {
        derReadInteger(reader, *number);
    }
    key.nPrimes = 2;
    if (!bnIsZero(version) && derHasMore(reader, sequence)) rsaReadOtherPrimes(reader, key);
    derFinish(reader, sequence);
    return !reader.failed && isUsableRsaKey(key) && rsaPrimesFit(key) ? 0 : -1;
}

int rsaWritePublicKey(const ZIRC_RsaKey& key, unsigned char* blob, int room)
{
    DerWriter writer{blob, room};
    derWriteNumbers(writer, key.n, key.e);
    return writer.failed ? -1 : writer.length;
}

int rsaWritePrivateKey(const ZIRC_RsaKey& key, unsigned char* blob, int room)
{
    const auto size = [](const auto&... numbers) { return (derObjectSize(derIntegerLength(numbers), 2) + ...); };
    const auto entrySize = [&](int i) { return size(key.r[i], key.dR[i], key.t[i]); };
    const int others = key.nPrimes - 2;
    int listLength = 0;
    for (int i = 0; i < others; ++i) listLength += derObjectSize(entrySize(i), 16);
    ZIRC_BN version;
    bnSetWord(version, others > 0 ? 1 : 0);
    const int length = size(version, key.n, key.e, key.d, key.p, key.q, key.dP, key.dQ, key.qInv) +
                       (others > 0 ? derObjectSize(listLength, 16) : 0);

    DerWriter writer{blob, room};
    derWriteHeader(writer, 0x30, length);
    for (const ZIRC_BN* number : {&std::as_const(version), &key.n, &key.e, &key.d, &key.p, &key.q, &key.dP, &key.dQ, &key.qInv}) {
        derWriteInteger(writer, *number);
    }
    if (others > 0) derWriteHeader(writer, 0x30, listLength);
    for (int i = 0; i < others; ++i) derWriteNumbers(writer, key.r[i], key.dR[i], key.t[i]);
    return writer.failed ? -1 : writer.length;
}

// ---- key generation ----

namespace {

void bnMinusOne(ZIRC_BN& r, const ZIRC_BN& a) { bnSubWord(r, a, 1); }

// A prime p such that p - 1 has no factor in common with the exponent, and that is none of the `count` in `others`.
int rsaGeneratePrime(ZIRC_BN& prime, int bits, const ZIRC_BN& exponent, const ZIRC_BN* const* others, int count)
{
    for (;;) {
        if (bnGeneratePrime(prime, bits) < 0) return -1;
        Temporary before, common;
        bnMinusOne(before, prime);
        bnGcd(common, before, exponent);
        bool usable = isOne(common);
        for (int i = 0; i < count; ++i) usable = usable && !bnIsEqual(prime, *others[i]);
        if (usable) return 0;
    }
}

void rsaOrderPrimes(ZIRC_RsaKey& key)
{
    if (bnCompareMagnitude(key.q, key.p) <= 0) return;
    Temporary larger;
    bnCopy(larger, key.q);
    bnCopy(key.q, key.p);
    bnCopy(key.p, larger);
}

} // namespace

int rsaGenerateKeyPair(ZIRC_RsaKey& key, int bits, unsigned int exponent)
{
    bnSetWord(key.e, exponent);
    key.nPrimes = 2;
    const ZIRC_BN* const first[] = {&key.p};
    if (rsaGeneratePrime(key.p, bits / 2, key.e, nullptr, 0) < 0) return -1;
    if (rsaGeneratePrime(key.q, bits - bits / 2, key.e, first, 1) < 0) return -1;
    rsaOrderPrimes(key);
    Temporary p1, q1, order;
    bnMinusOne(p1, key.p);
    bnMinusOne(q1, key.q);
    bnMul(key.n, key.p, key.q);
    bnMul(order, p1, q1);
    bnModInverse(key.d, key.e, order);
    bnMod(key.dP, key.d, p1);
    bnMod(key.dQ, key.d, q1);
    bnModInverse(key.qInv, key.q, key.p);
    return 0;
}

int rsaGenerateMultiPrimeKeyPair(ZIRC_RsaKey& key, int bits, unsigned int exponent, int primeCount)
{
    const int count = primeCount == 3 || primeCount == 4 ? primeCount : 2;
    const int firstBits = (bits + count - 1) / count, otherBits = bits / count;
    bnSetWord(key.e, exponent);
    key.nPrimes = count;
    ZIRC_BN* const primes[] = {&key.p, &key.q, &key.r[0], &key.r[1]};
    if (rsaGeneratePrime(key.p, firstBits, key.e, nullptr, 0) < 0) return -1;
    if (rsaGeneratePrime(key.q, bits - firstBits - (count - 2) * otherBits, key.e, primes, 1) < 0) return -1;
    do {
        for (int i = 2; i < count; ++i) {
            if (rsaGeneratePrime(*primes[i], otherBits, key.e, primes, i) < 0) return -1;
        }
        rsaOrderPrimes(key);
        bnMul(key.n, key.p, key.q);
        for (int i = 2; i < count; ++i) {
            Temporary product;
            bnMul(product, key.n, *primes[i]);
            bnCopy(key.n, product);
        }
        // Two primes alone are not drawn again. Their two highest bits are set, so that their product is long enough.
    } while (count > 2 && bnBits(key.n) != bits);

    Temporary order, before, lcm, product;
    bnMinusOne(order, key.p);
    for (int i = 1; i < count; ++i) {
        bnMinusOne(before, *primes[i]);
        bnLcm(lcm, order, before);
        bnCopy(order, lcm);
    }
    bnModInverse(key.d, key.e, order);
    ZIRC_BN* const exponents[] = {&key.dP, &key.dQ, &key.dR[0], &key.dR[1]};
    for (int i = 0; i < count; ++i) {
        bnMinusOne(before, *primes[i]);
        bnModInverse(*exponents[i], key.e, before);
    }
    bnModInverse(key.qInv, key.q, key.p);
    bnMul(order, key.p, key.q);
    for (int i = 0; i < count - 2; ++i) {
        bnModInverse(key.t[i], order, key.r[i]);
        bnMul(product, order, key.r[i]);
        bnCopy(order, product);
    }
    return 0;
}

} // namespace vrno
