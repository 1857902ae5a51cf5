// The operations of RSA and their paddings.
#include "engine/rsa/rsa.h"

#include "base/wipe.h"
#include "engine/bignum/rows.h"
#include "engine/digest/hash_id.h"
#include "engine/digest/md5.h"
#include "engine/digest/sha1.h"
#include "engine/masks.h"
#include "engine/random/random.h"

#include <algorithm>
#include <cstring>

namespace vrno {

namespace {

int modulusBytes(const ZIRC_RsaKey& key) { return (bnBits(key.n) + 7) / 8; }

using SecretBytes = SecretArea<rsaMaxBytes + 64>;

bool rsaPublicOperation(const ZIRC_RsaKey& key, ZIRC_BN& result, const ZIRC_BN& x)
{
    bnModExpReduced(result, x, key.e, key.n);
    return true;
}

// Adds one more prime to a result of the Chinese remainder theorem: result += product * ((m - result) * coefficient mod prime).
void crtAddPrime(ZIRC_BN& result, const ZIRC_BN& m, const ZIRC_BN& coefficient, const ZIRC_BN& prime, const ZIRC_BN& product)
{
    Temporary h, step, sum;
    bnModSub(h, m, result, prime);
    bnModMul(step, h, coefficient, prime);
    bnMul(h, step, product);
    bnAdd(sum, result, h);
    bnCopy(result, sum);
}

// By the primes.
void rsaCrtOperation(const ZIRC_RsaKey& key, ZIRC_BN& result, const ZIRC_BN& x)
{
    Temporary m, product, next;
    bnModExpSecretPair(x, result, key.dQ, key.q, m, key.dP, key.p);
    crtAddPrime(result, m, key.qInv, key.p, key.q);
    bnMul(product, key.p, key.q);
    for (int i = 0; i < key.nPrimes - 2; ++i) {
        bnModExpSecret(m, x, key.dR[i], key.r[i]);
        crtAddPrime(result, m, key.t[i], key.r[i], product);
        bnMul(next, product, key.r[i]);
        bnCopy(product, next);
    }
    bnMod(next, result, key.n); // in range also when the primes are not those of the modulus
    bnCopy(result, next);
}

bool rsaUnverifiedOperation(const ZIRC_RsaKey& key, ZIRC_BN& result, const ZIRC_BN& x)
{
    if (rsaUsesPrimes(key)) {
        rsaCrtOperation(key, result, x);
    } else {
        bnModExpSecret(result, x, key.d, key.n);
    }
    return true;
}

// A result that is right modulo one prime only gives the other away (Boneh, DeMillo and Lipton 1997), so none leaves before the
// public exponent has led back to x. A key without such an exponent has nothing to verify with.
bool rsaPrivateOperation(const ZIRC_RsaKey& key, ZIRC_BN& result, const ZIRC_BN& x)
{
    rsaUnverifiedOperation(key, result, x);
    if (!rsaUsesPrimes(key) || !rsaIsUsableExponent(key.e)) return true;
    Temporary back;
    rsaPublicOperation(key, back, result);
    return bnIsEqual(back, x);
}

// Whether the result may leave.
using Operation = bool (*)(const ZIRC_RsaKey&, ZIRC_BN&, const ZIRC_BN&);

// The operation on bytes as a number; the result in `width` bytes, or -1 when it is longer or may not leave or the number is not
// below the modulus (RFC 8017, 5.1 and 5.2).
int rsaOperate(const ZIRC_RsaKey& key, Operation operation, unsigned char* output, int width, const unsigned char* input,
               int length)
{
    Temporary x, result;
    bnFromBytes(x, input, length);
    if (bnCompare(x, key.n) >= 0) return -1;
    if (!operation(key, result, x) || (bnBits(result) + 7) / 8 > width) return -1;
    bnToBytesFixed(output, result, width);
    return width;
}

// What a block of k octets holds from `at` on; -1 for an `at` of 0.
int copyContents(unsigned char* output, const unsigned char* em, int k, int at)
{
    if (at == 0) return -1;
    std::memcpy(output, em + at, static_cast<std::size_t>(k - at));
    return k - at;
}

// ---- PKCS#1 v1.5 ----

// The operation on 0x00, the block's type, a string that `fill` makes, 0x00, the input.
template <class Fill>
int pkcs1Encrypt(const ZIRC_RsaKey& key, Operation operation, unsigned char type, Fill fill, unsigned char* output,
                 const unsigned char* input, int length)
{
    const int k = modulusBytes(key), padding = k - length - 3;
    if (length < 0 || length > k - 11) return -1;
    SecretBytes em;
    em.bytes[1] = type;
    if (fill(em.bytes + 2, padding) < 0) return -1;
    if (length > 0) std::memcpy(em.bytes + 3 + padding, input, static_cast<std::size_t>(length));
    return rsaOperate(key, operation, output, k, em.bytes, k);
}

// What follows the padding; -1 for a block that is not of the type.
int pkcs1Decrypt(const ZIRC_RsaKey& key, Operation operation, unsigned char type, unsigned char* output, const unsigned char* input,
                 int length)
{
    const int k = modulusBytes(key);
    SecretBytes em;
    if (length != k || rsaOperate(key, operation, em.bytes, k, input, length) < 0) return -1;
    return copyContents(output, em.bytes, k, rsaPkcs1Contents(em.bytes, k, type));
}

int fillNonZero(unsigned char* to, int length)
{
    if (randBytes(to, length) < 0) return -1;
    for (int i = 0; i < length; ++i) {
        while (to[i] == 0) {
            if (randBytes(to + i, 1) < 0) return -1;
        }
    }
    return 0;
}

int fillOnes(unsigned char* to, int length)
{
    std::memset(to, 0xFF, static_cast<std::size_t>(length));
    return 0;
}

// ---- digests by id ----

int rsaDigestLength(unsigned int hashId) { return hashId == hashSha1 ? 20 : 16; }

void rsaDigest(unsigned int hashId, unsigned char* output, const unsigned char* data, int length)
{
    const auto count = static_cast<std::size_t>(length);
    if (hashId == hashSha1) {
        SHA1_Digest(output, data, count);
    } else {
        MD5_Digest(output, data, count);
    }
}

void mgf1Mask(unsigned int hashId, unsigned char* data, int length, const unsigned char* seed, int seedLength)
{
    SecretBytes mask;
    rsaMgf1(hashId, mask.bytes, length, seed, seedLength);
    for (int i = 0; i < length; ++i) data[i] ^= mask.bytes[i];
}

// The hash of eight zero bytes, the digest and the salt.
void pssHash(unsigned int hashId, unsigned char* output, const unsigned char* digest, int length, const unsigned char* salt,
             int saltLength)
{
    unsigned char block[8 + 20 + rsaMaxBytes] = {};
    std::memcpy(block + 8, digest, static_cast<std::size_t>(length));
    if (saltLength > 0) std::memcpy(block + 8 + length, salt, static_cast<std::size_t>(saltLength));
    rsaDigest(hashId, output, block, 8 + length + saltLength);
}

} // namespace

int rsaPublicEncrypt(const ZIRC_RsaKey& key, unsigned char* output, const unsigned char* input, int length)
{
    return pkcs1Encrypt(key, rsaPublicOperation, 2, fillNonZero, output, input, length);
}

int rsaPrivateEncrypt(const ZIRC_RsaKey& key, unsigned char* output, const unsigned char* input, int length)
{
    return pkcs1Encrypt(key, rsaPrivateOperation, 1, fillOnes, output, input, length);
}

int rsaPrivateEncryptUnverified(const ZIRC_RsaKey& key, unsigned char* output, const unsigned char* input, int length)
{
    return pkcs1Encrypt(key, rsaUnverifiedOperation, 1, fillOnes, output, input, length);
}

int rsaPublicDecrypt(const ZIRC_RsaKey& key, unsigned char* output, const unsigned char* input, int length)
{
    return pkcs1Decrypt(key, rsaPublicOperation, 1, output, input, length);
}

int rsaPrivateDecrypt(const ZIRC_RsaKey& key, unsigned char* output, const unsigned char* input, int length)
{
    return pkcs1Decrypt(key, rsaPrivateOperation, 2, output, input, length);
}

int rsaPkcs1Contents(const unsigned char* em, int k, unsigned char type)
{
    const Mask hasOnes = isEqual(type, 1);
    const Run padding =
        runOf(em + 2, k - 2, 1, [&](std::uint32_t octet) { return choose(hasOnes, isEqual(octet, 0xFF), ~isZero(octet)); });
    const Mask isGood = isZero(em[0]) & isEqual(em[1], type) & isZero(padding.next) & ~isLess(padding.length, 8);
    return static_cast<int>(isGood & (padding.length + 3));
}

int rsaDigestInfo(unsigned char* output, unsigned int hashId, const unsigned char* digest, int digestLength)
{
    static constexpr unsigned char sha1Prefix[] = {0x30, 0x21, 0x30, 0x09, 0x06, 0x05, 0x2B, 0x0E,
                                                   0x03, 0x02, 0x1A, 0x05, 0x00, 0x04, 0x14};
    static constexpr unsigned char md5Prefix[] = {0x30, 0x20, 0x30, 0x0C, 0x06, 0x08, 0x2A, 0x86, 0x48,
                                                  0x86, 0xF7, 0x0D, 0x02, 0x05, 0x05, 0x00, 0x04, 0x10};
    const bool isSha1 = hashId == hashSha1;
    const std::size_t prefix = isSha1 ? sizeof sha1Prefix : sizeof md5Prefix;
    std::memmove(output + prefix, digest, static_cast<std::size_t>(digestLength));
    std::memcpy(output, isSha1 ? sha1Prefix : md5Prefix, prefix);
    return static_cast<int>(prefix) + digestLength;
}

int rsaVerifyPkcs1(const ZIRC_RsaKey& key, const unsigned char* digestInfo, int digestInfoLength, const unsigned char* signature,
                   int signatureLength)
{
    constexpr int maxContent = 100;
    unsigned char content[rsaMaxBytes];
    const int length = rsaPublicDecrypt(key, content, signature, signatureLength);
    if (length < 0 || length > maxContent) return -1;
    const auto startsWith = [&](const unsigned char* expected, int count) {
        return length >= count && std::memcmp(content, expected, static_cast<std::size_t>(count)) == 0;
    };
    const int prefix = 6 + digestInfo[3];
    if (startsWith(digestInfo, digestInfoLength)) return 1;
    return startsWith(digestInfo + prefix, digestInfoLength - prefix) ? 1 : -1;
}

// ---- OAEP ----

void rsaMgf1(unsigned int hashId, unsigned char* output, int length, const unsigned char* seed, int seedLength)
{
    const int size = rsaDigestLength(hashId);
    unsigned char block[rsaMaxBytes + 4], digest[20];
    std::memcpy(block, seed, static_cast<std::size_t>(seedLength));
    for (int done = 0, counter = 0; done < length; done += size, ++counter) {
        for (int i = 0; i < 4; ++i) block[seedLength + i] = static_cast<unsigned char>(counter >> (24 - 8 * i) & 0xFF);
        rsaDigest(hashId, digest, block, seedLength + 4);
        std::memcpy(output + done, digest, static_cast<std::size_t>(std::min(size, length - done)));
    }
    wipe(block, sizeof block);
    wipe(digest, sizeof digest);
}

int rsaOaepEncrypt(const ZIRC_RsaKey& key, unsigned int hashId, unsigned char* output, const unsigned char* input, int length,
                   const unsigned char* label, int labelLength)
{
    const int k = modulusBytes(key), emLength = k - 1, h = rsaDigestLength(hashId), dbLength = emLength - h;
    if (length < 0 || length > emLength - 2 * h - 1) return -1;
    SecretBytes em;
    unsigned char *const seed = em.bytes, *const db = em.bytes + h;
    rsaDigest(hashId, db, label, labelLength);
    db[dbLength - length - 1] = 0x01;
    if (length > 0) std::memcpy(db + dbLength - length, input, static_cast<std::size_t>(length));
    if (randBytes(seed, h) < 0) return -1;
    mgf1Mask(hashId, db, dbLength, seed, h);
    mgf1Mask(hashId, seed, h, db, dbLength);
    return rsaOperate(key, rsaPublicOperation, output, k, em.bytes, emLength);
}

int rsaOaepDecrypt(const ZIRC_RsaKey& key, unsigned int hashId, unsigned char* output, const unsigned char* input, int length,
                   const unsigned char* label, int labelLength)
{
    const int k = modulusBytes(key), h = rsaDigestLength(hashId);
    if (length < 2 * h + 1 || length > k || k < 2 * h + 2) return -1;
    SecretBytes em;
    unsigned char labelDigest[20];
    rsaDigest(hashId, labelDigest, label, labelLength);
    if (rsaOperate(key, rsaPrivateOperation, em.bytes, k, input, length) < 0) return -1;
    return copyContents(output, em.bytes, k, rsaOaepContents(em.bytes, k, hashId, labelDigest));
}

int rsaOaepContents(unsigned char* em, int k, unsigned int hashId, const unsigned char* labelDigest)
{
    const int h = rsaDigestLength(hashId), dbLength = k - 1 - h;
    unsigned char *const seed = em + 1, *const db = seed + h;
    mgf1Mask(hashId, seed, h, db, dbLength);
    mgf1Mask(hashId, db, dbLength, seed, h);
    std::uint32_t differences = em[0];
    for (int i = 0; i < h; ++i) differences |= static_cast<std::uint32_t>(db[i] ^ labelDigest[i]);
    const Run zeros = runOf(db + h, dbLength - h, 1, isZero);
    const Mask isGood = isZero(differences) & isEqual(zeros.next, 0x01);
    return static_cast<int>(isGood & (2 + 2 * static_cast<std::uint32_t>(h) + zeros.length));
}

// ---- PSS ----

int rsaPssSign(const ZIRC_RsaKey& key, unsigned int hashId, unsigned char* output, const unsigned char* digest, int length,
               int saltLength)
{
    const int emBits = bnBits(key.n) - 1, emLength = (emBits + 7) / 8, dbLength = emLength - length - 1;
    if (saltLength < 0 || emLength < saltLength + length + 2) return -1;
    SecretBytes em;
    unsigned char salt[rsaMaxBytes] = {};
    if (saltLength > 0 && randBytes(salt, saltLength) < 0) return -1;
    unsigned char* const hash = em.bytes + dbLength;
    pssHash(hashId, hash, digest, length, salt, saltLength);
    em.bytes[dbLength - saltLength - 1] = 0x01;
    std::memcpy(em.bytes + dbLength - saltLength, salt, static_cast<std::size_t>(saltLength));
    mgf1Mask(hashId, em.bytes, dbLength, hash, length);
    em.bytes[0] &= static_cast<unsigned char>(0xFF >> (8 * emLength - emBits));
    em.bytes[emLength - 1] = 0xBC;
    return rsaOperate(key, rsaPrivateOperation, output, (bnBits(key.n) + 7) / 8, em.bytes, emLength);
}

int rsaPssVerify(const ZIRC_RsaKey& key, unsigned int hashId, const unsigned char* digest, int length,
                 const unsigned char* signature, int signatureLength, int saltLength)
{
    const int emBits = bnBits(key.n) - 1, emLength = (emBits + 7) / 8, dbLength = emLength - length - 1;
    if (saltLength < 0 || emLength < saltLength + length + 2 || signatureLength != modulusBytes(key)) return -1;
    unsigned char em[rsaMaxBytes + 8];
    if (rsaOperate(key, rsaPublicOperation, em, emLength, signature, signatureLength) < 0) return -1;
    const auto unusedBits = static_cast<unsigned char>(~(0xFF >> (8 * emLength - emBits)));
    if (em[emLength - 1] != 0xBC || (em[0] & unusedBits) != 0) return -1;
    const unsigned char* const hash = em + dbLength;
    mgf1Mask(hashId, em, dbLength, hash, length);
    em[0] = static_cast<unsigned char>(em[0] & ~unusedBits);
    const int zeros = dbLength - saltLength - 1;
    for (int i = 0; i < zeros; ++i) {
        if (em[i] != 0) return -1;
    }
    if (em[zeros] != 0x01) return -1;
    unsigned char expected[20];
    pssHash(hashId, expected, digest, length, em + zeros + 1, saltLength);
    return std::memcmp(expected, hash, static_cast<std::size_t>(length)) == 0 ? 1 : -1;
}

} // namespace vrno
