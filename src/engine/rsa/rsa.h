// RSA (RFC 3447): the operations under PKCS#1 v1.5, OAEP and PSS, key blobs, key generation.
//
// Routines with an output return its length, or a negative number for failure. k is the modulus in bytes.
#pragma once

#include "engine/bignum/bignum.h"

namespace vrno {

inline constexpr int rsaMaxBits = 2048, rsaMaxBytes = rsaMaxBits / 8;

struct ZIRC_RsaKey {
    ZIRC_BN n; // modulus
    ZIRC_BN e; // public exponent
    ZIRC_BN d; // private exponent
    ZIRC_BN p; // the first two primes, p the larger
    ZIRC_BN q;
    ZIRC_BN dP; // d modulo p - 1
    ZIRC_BN dQ;
    ZIRC_BN qInv;  // q to the -1 modulo p; zero for a key that is used without its primes
    int nPrimes;   // 2, 3 or 4
    ZIRC_BN r[2];  // the third and fourth prime
    ZIRC_BN dR[2]; // their exponents
    ZIRC_BN t[2];  // their coefficients
};

// Whether the private operation takes the primes. It does not use d then.
bool rsaUsesPrimes(const ZIRC_RsaKey& key);
// Under an exponent of 1 the ciphertext is the plain text; under an even one it has no inverse.
bool rsaIsUsableExponent(const ZIRC_BN& e);

// ---- keys ----

// Reads a blob: SEQUENCE { n, e }, or SEQUENCE { version, n, e, d, p, q, dP, dQ, qInv, otherPrimeInfos OPTIONAL }. 0, or -1
// for a blob that runs past its end or has bytes left in its SEQUENCE, and for numbers that no operation can use or that
// take longer than the largest key: an even modulus or prime, one of 0 or 1, more bits than rsaMaxBits, primes with more
// bits together than the modulus.
int rsaReadPublicKey(ZIRC_RsaKey& key, const unsigned char* blob, int length);
int rsaReadPrivateKey(ZIRC_RsaKey& key, const unsigned char* blob, int length);
// The bytes written, or -1 when they do not fit into `room`.
int rsaWritePublicKey(const ZIRC_RsaKey& key, unsigned char* blob, int room);
int rsaWritePrivateKey(const ZIRC_RsaKey& key, unsigned char* blob, int room);

// 0, or -1 when the system gives no random bytes.
int rsaGenerateKeyPair(ZIRC_RsaKey& key, int bits, unsigned int exponent);
int rsaGenerateMultiPrimeKeyPair(ZIRC_RsaKey& key, int bits, unsigned int exponent, int primeCount);

// ---- PKCS#1 v1.5: outputs have room for k bytes ----
//
// An operation with the primes of a private key fails if the public exponent does not lead back from its result.

int rsaPublicEncrypt(const ZIRC_RsaKey& key, unsigned char* output, const unsigned char* input, int length);
int rsaPrivateEncrypt(const ZIRC_RsaKey& key, unsigned char* output, const unsigned char* input, int length);
// The same for a caller that verifies the result before anybody else gets it.
int rsaPrivateEncryptUnverified(const ZIRC_RsaKey& key, unsigned char* output, const unsigned char* input, int length);
int rsaPublicDecrypt(const ZIRC_RsaKey& key, unsigned char* output, const unsigned char* input, int length);
int rsaPrivateDecrypt(const ZIRC_RsaKey& key, unsigned char* output, const unsigned char* input, int length);

// 1 when the signature contains the DigestInfo, whatever follows it, or the digest alone; else -1.
int rsaVerifyPkcs1(const ZIRC_RsaKey& key, const unsigned char* digestInfo, int digestInfoLength, const unsigned char* signature,
                   int signatureLength);
// The DigestInfo of a digest: prefix and digest, at most 35 bytes. The digest may lie at the front of the output.
int rsaDigestInfo(unsigned char* output, unsigned int hashId, const unsigned char* digest, int digestLength);

// Where the contents of a decrypted block of k octets begin; 0 for a block that is not of the type. The time of this and the next
// depends on k alone. What its caller does with a verdict of 0 and a length may take a time of its own.
int rsaPkcs1Contents(const unsigned char* em, int k, unsigned char type);
// The same for OAEP, for a k above two digests and one. It takes the masks off the block.
int rsaOaepContents(unsigned char* em, int k, unsigned int hashId, const unsigned char* labelDigest);

// ---- OAEP and PSS; hashId as ZIRC_HashId ----

void rsaMgf1(unsigned int hashId, unsigned char* output, int length, const unsigned char* seed, int seedLength);
int rsaOaepEncrypt(const ZIRC_RsaKey& key, unsigned int hashId, unsigned char* output, const unsigned char* input, int length,
                   const unsigned char* label, int labelLength);
int rsaOaepDecrypt(const ZIRC_RsaKey& key, unsigned int hashId, unsigned char* output, const unsigned char* input, int length,
                   const unsigned char* label, int labelLength);
int rsaPssSign(const ZIRC_RsaKey& key, unsigned int hashId, unsigned char* output, const unsigned char* digest, int digestLength,
               int saltLength);
// 1, or -1.
int rsaPssVerify(const ZIRC_RsaKey& key, unsigned int hashId, const unsigned char* digest, int digestLength,
                 const unsigned char* signature, int signatureLength, int saltLength);

} // namespace vrno
