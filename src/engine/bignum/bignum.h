// Whole numbers of up to 4800 bits in records of fixed size, for RSA and KCDSA.
//
// 1. A number is a sign and a magnitude, whose words stand least significant first. What is not said otherwise is
//    normalised: the word at the top is not zero. Zero has two forms, `top` 0 and `top` 1 with d[0] 0; all routines take
//    both, and none asks for a zero's sign.
// 2. A result may be the same record as an operand unless its routine says otherwise. Operands have a `top` of 0 to 150.
// 3. Nothing is written outside a record. A result that is longer than 150 words loses the words above them: who can meet
//    such numbers checks before. The moduli below work for all lengths, since products have their own room there.
// 4. Nothing fails and nothing is allocated, except that there may be no random bytes: bool results say so.
// 5. Temporaries are wiped. The time that a routine takes may tell its operands, except where it is said not to.
#pragma once

#include <cstdint>

namespace vrno {

inline constexpr int bnWords = 150;
inline constexpr int bnBytes = 4 * bnWords;

struct ZIRC_BN {
    std::uint32_t neg = 0;    // 1 for a negative number
    std::uint32_t d[bnWords]; // words beyond `top` have no meaning
    std::int32_t top = 0;     // words in use
};

// ---- copies and comparisons ----

void bnCopy(ZIRC_BN& r, const ZIRC_BN& a); // the words in use, sign and length
void bnSetWord(ZIRC_BN& r, std::uint32_t w);
bool bnIsZero(const ZIRC_BN& a);
int bnIsEqual(const ZIRC_BN& a, const ZIRC_BN& b);          // 1 for equal magnitudes
int bnCompareMagnitude(const ZIRC_BN& a, const ZIRC_BN& b); // above, below or 0; unequal lengths give their difference
int bnCompare(const ZIRC_BN& a, const ZIRC_BN& b);          // 1, 0 or -1, with the signs
int bnIsGreaterOrEqual(const ZIRC_BN& a, const ZIRC_BN& b); // 1 if the magnitude of a is at least that of b

// ---- bits and bytes ----

int bnBits(const ZIRC_BN& a);                        // length of the magnitude in bits; 0 for zero and for a top word of zero
int bnTestBit(const ZIRC_BN& a, int n);              // bit n; 0 for a negative n and beyond `top`
int bnMaskBits(ZIRC_BN& a, int n);                   // keeps the low n bits; 0, and a as it is, if there is no word n / 32; else 1
int bnToBytes(unsigned char* out, const ZIRC_BN& a); // as few bytes as it takes, high byte first; their count, 0 for zero
void bnToBytesFixed(unsigned char* out, const ZIRC_BN& a, int n); // n bytes, zeros in front; nothing if a needs more
void bnFromBytes(ZIRC_BN& r, const unsigned char* data, int n);   // high byte first; of more than 600 bytes the last 600,
                                                                  // so callers refuse longer data; below 1 gives zero

// ---- sums and shifts ----

void bnAddMagnitudes(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& b); // a at least as long as b; r positive
void bnSubMagnitudes(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& b); // a at least b; r positive
void bnAdd(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& b);           // signed
void bnSub(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& b);           // signed
void bnAddWord(ZIRC_BN& r, const ZIRC_BN& a, std::uint32_t w);        // to the magnitude; sign of a
void bnSubWord(ZIRC_BN& r, const ZIRC_BN& a, std::uint32_t w);        // from the magnitude, which is at least w; sign of a
void bnXor(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& b);           // of the magnitudes; positive, one word at least
void bnShiftLeftOne(ZIRC_BN& r, const ZIRC_BN& a);                    // shifts keep the sign
void bnShiftRightOne(ZIRC_BN& r, const ZIRC_BN& a);
void bnShiftLeft(ZIRC_BN& r, const ZIRC_BN& a, int n); // n below 0 counts as 0
void bnShiftRight(ZIRC_BN& r, const ZIRC_BN& a, int n);

// ---- products and quotients ----

void bnMul(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& b);
void bnSqr(ZIRC_BN& r, const ZIRC_BN& a);

// a = q x d + rem, rounded towards zero: `rem` has the sign of a. Either result may be null, and the two are different
// records. 1, or 0 for a zero divisor, which leaves both unwritten.
int bnDiv(ZIRC_BN* q, ZIRC_BN* rem, const ZIRC_BN& a, const ZIRC_BN& d);
std::uint32_t bnModWord(const ZIRC_BN& a, std::uint32_t w); // of the magnitude, for w below 2^16; 0 for a w of 0

// ---- modular arithmetic ----
//
// Results are from 0 to m - 1 for operands of any sign and length. The sign of m does not count; a zero m gives zero.

void bnMod(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& m);
void bnModSub(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& b, const ZIRC_BN& m);
void bnModMul(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& b, const ZIRC_BN& m);
void bnModSqr(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& m);

// a to the power p, whose sign does not count; 1 for a zero p, but 0 if m is 1.
void bnModExp(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& p, const ZIRC_BN& m);
void bnModExpReduced(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& p, const ZIRC_BN& m); // reduces a first, as the above does

// The same for a p that is a private key. For an odd m the branches and addresses of the exponentiation tell nothing but
// the lengths of p and m. What the divisions in front of it take, that of a and the one that prepares m, may tell of a and m;
// for an even m the time may tell all.
void bnModExpSecret(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& p, const ZIRC_BN& m);

// r1 = a to the p1 modulo m1 and r2 = a to the p2 modulo m2 likewise, which may take less time than one behind the other. r1
// and r2 are different records and none of the operands.
void bnModExpSecretPair(const ZIRC_BN& a, ZIRC_BN& r1, const ZIRC_BN& p1, const ZIRC_BN& m1, ZIRC_BN& r2, const ZIRC_BN& p2,
                        const ZIRC_BN& m2);

// ---- number theory ----

void bnGcd(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& b); // of the magnitudes; of a number and zero, that number
void bnLcm(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& b); // of the magnitudes; with zero, zero

// 1 and r = 1 / a modulo n, from 0 to n - 1; -1 and r zero if there is none, as for a zero n; -1 and r as it was if a or n
// is negative.
int bnModInverse(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& n);

// Miller-Rabin with random bases: 1 for a prime and, with negligible probability, for a composite; 0 for a composite, for
// what is below 2, and where there are no random bytes. With 0 rounds their number follows from the length.
int bnIsPrime(const ZIRC_BN& n, int rounds);

// A random probable prime p of `bits` bits, its two highest ones set. Neither p nor p - 1 has an odd prime factor up to
// 17863, so below 17 bits, where such primes are rare or not there at all, p may come out longer. False, and r without
// meaning, if there are no random bytes or if `bits` is not from 2 to 4800.
bool bnGeneratePrime(ZIRC_BN& r, int bits);

// A random number of `bits` bits from the process-wide generator: the highest bit is set, with `top` the two highest, with
// `bottom` the lowest. False, and 1 as the number, if there are no random bytes or if `bits` is not from 1 to 4800.
bool bnRandom(ZIRC_BN& number, int bits, int top, int bottom);

// Random bytes by the construction of FIPS 186 with SHA-1's compression, key and seeds from bnRandom. False, and zeros as
// the output, if there are no random bytes. Nothing is written for a length below 1.
bool fipsRandom(unsigned char* output, int length);

} // namespace vrno
