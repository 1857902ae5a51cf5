// KCDSA (TTAK.KO-12.0001), with SHA-1 or HAS-160: signatures, key blobs, generation of parameters and keys.
#pragma once

#include "engine/bignum/bignum.h"

namespace vrno {

inline constexpr int kcdsaMaxBits = 2048;     // of p
inline constexpr int kcdsaMaxOrderBits = 256; // of q
inline constexpr int kcdsaDigestLength = 20, kcdsaZLength = 64;

struct ZIRC_KcdsaKey {
    ZIRC_BN x; // private value
    ZIRC_BN y; // g to the x^-1 modulo p
    ZIRC_BN p;
    ZIRC_BN q; // prime order
    ZIRC_BN g;
};

// ---- keys ----

// Reads a blob: SEQUENCE { p, q, g, y }, or SEQUENCE { p, q, g, x, y }. 0, or -1 for a blob that runs past its end or has
// bytes left in its SEQUENCE, and for numbers with which no signature can be made or can hold, or that take longer than the
// largest key: an even p, a p or q of 0 or 1, a g that is 0 or 1 modulo p, an x that is 0 modulo q.
int kcdsaReadPublicKey(ZIRC_KcdsaKey& key, const unsigned char* blob, int length);
int kcdsaReadPrivateKey(ZIRC_KcdsaKey& key, const unsigned char* blob, int length);
// The bytes written, or -1 when they do not fit into `room`.
int kcdsaWritePublicKey(const ZIRC_KcdsaKey& key, unsigned char* blob, int room);
int kcdsaWritePrivateKey(const ZIRC_KcdsaKey& key, unsigned char* blob, int room);

// ---- signatures: hashId as ZIRC_HashId, where any but SHA-1 means HAS-160; the digest is that of z and the message ----

// y modulo 2^512 in 64 bytes.
void kcdsaZ(const ZIRC_KcdsaKey& key, unsigned char* z);
// 0, or -1 when the system gives no random bytes and when 20 draws give no signature, as under parameters that have none.
int kcdsaSign(const ZIRC_KcdsaKey& key, unsigned int hashId, ZIRC_BN& r, ZIRC_BN& s, const unsigned char* digest, int digestLength);
// 1 when the signature holds, 2 when it holds for a W without leading zero bytes, else -1.
int kcdsaVerify(const ZIRC_KcdsaKey& key, unsigned int hashId, const unsigned char* digest, int digestLength, const ZIRC_BN& r,
                const ZIRC_BN& s);
// SEQUENCE { r BIT STRING, s INTEGER }, with r in `digestLength` bytes. The bytes written, or -1.
int kcdsaEncodeSignature(const ZIRC_BN& r, const ZIRC_BN& s, int digestLength, unsigned char* output, int room);
int kcdsaDecodeSignature(const unsigned char* signature, int length, ZIRC_BN& r, ZIRC_BN& s);

// ---- generation: 0, or -1 when the system gives no random bytes ----

// p = 2Jq + 1 and g of order q; `seed` of (qBits + 7) / 8 bytes and `count` are what they come from.
int kcdsaGenerateParameters(unsigned char* seed, ZIRC_BN& p, ZIRC_BN& q, ZIRC_BN& J, int& count, ZIRC_BN& g, int pBits, int qBits);
int kcdsaGenerateKeyPair(ZIRC_KcdsaKey& key, int pBits, int qBits);
// (bits + 7) / 8 bytes, filled from the end with digests of the seed, of at most 36 bytes, and a counter byte.
void has160Expand(unsigned char* output, int bits, const unsigned char* seed, int seedLength);

} // namespace vrno
