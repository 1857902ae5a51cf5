// Whole numbers of up to 4800 bits in records of fixed size, for RSA and KCDSA.
//
// 1. A number is a sign and a magnitude, whose words stand least significant first. It is normalised unless its routine says
//    otherwise: the top word is not zero. Zero has two forms, `top` 0 and `top` 1 with d[0] 0; all routines take both, and
//    none reads the sign of zero.
// 2. A result may be the same record as an operand unless its routine says otherwise. Operands have a `top` of 0 to 150.
// 3. Nothing is written outside a record. A result of more than 150 words loses the words above them; callers that can
//    exceed the limit check first. Modular routines work for moduli of all lengths: their products have their own room.
// 4. Nothing is allocated. A routine fails only when the system gives no random bytes: 0 for success, -1 for that.
// 5. Temporaries are wiped. The time of a routine may depend on its operands unless the routine says otherwise.
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
bool bnIsEqual(const ZIRC_BN& a, const ZIRC_BN& b);          // magnitudes
int bnCompareMagnitude(const ZIRC_BN& a, const ZIRC_BN& b);  // above 0, below 0 or 0; for unequal lengths their difference
int bnCompare(const ZIRC_BN& a, const ZIRC_BN& b);           // 1, 0 or -1, with the signs
bool bnIsGreaterOrEqual(const ZIRC_BN& a, const ZIRC_BN& b); // magnitudes

// ---- bits and bytes ----

int bnBits(const ZIRC_BN& a);                        // length of the magnitude in bits; 0 for zero and for a top word of zero
bool bnTestBit(const ZIRC_BN& a, int n);             // bit n; false for a negative n and beyond `top`
bool bnMaskBits(ZIRC_BN& a, int n);                  // keeps the low n bits; false, and a unchanged, if there is no word n / 32
int bnToBytes(unsigned char* out, const ZIRC_BN& a); // as few bytes as it takes, high byte first; their count, 0 for zero
void bnToBytesFixed(unsigned char* out, const ZIRC_BN& a, int n); // n bytes, zeros in front; nothing if a needs more. Its time
                                                                  // depends on n and the count of words, not on their bits
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
// records. Whether there is a quotient: false for a zero divisor, which leaves both unwritten.
bool bnDiv(ZIRC_BN* q, ZIRC_BN* rem, const ZIRC_BN& a, const ZIRC_BN& d);
std::uint32_t bnModWord(const ZIRC_BN& a, std::uint32_t w); // of the magnitude, for w below 2^16; 0 for a w of 0

// ---- modular arithmetic ----
//
// Results are from 0 to m - 1 for operands of any sign and length. The sign of m is ignored; a zero m gives zero.

void bnMod(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& m);
void bnModSub(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& b, const ZIRC_BN& m);
void bnModMul(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& b, const ZIRC_BN& m);
void bnModSqr(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& m);

// a to the power p, whose sign is ignored; 1 for a zero p, but 0 if m is 1.
void bnModExp(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& p, const ZIRC_BN& m);
void bnModExpReduced(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& p, const ZIRC_BN& m); // the same

// The same for a p that is a private key. For an odd m of up to 2048 bits the branches and addresses of the exponentiation
// depend on nothing but the lengths of p and m. The two divisions before it, of a and of a power of two by m, may take a time
// that depends on a and m. For any other m the time may depend on everything.
void bnModExpSecret(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& p, const ZIRC_BN& m);

// r1 = a to the p1 modulo m1 and r2 = a to the p2 modulo m2 likewise, which may take less time than one after the other. r1
// and r2 are different records and none of the operands.
void bnModExpSecretPair(const ZIRC_BN& a, ZIRC_BN& r1, const ZIRC_BN& p1, const ZIRC_BN& m1, ZIRC_BN& r2, const ZIRC_BN& p2,
                        const ZIRC_BN& m2);

// ---- number theory ----

void bnGcd(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& b); // of the magnitudes; of a number and zero, that number
void bnLcm(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& b); // of the magnitudes; with zero, zero

// 1 and r = 1 / a modulo n, from 0 to n - 1; -1 and r zero if there is none, as for a zero n; -1 and r unchanged if a or n
// is negative.
int bnModInverse(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& n);

// Miller-Rabin with random bases: true for a prime and, with negligible probability, for a composite; false for a composite,
// for a number below 2, and when the system gives no random bytes. For 0 rounds their number follows from the length.
bool bnIsPrime(const ZIRC_BN& n, int rounds);

// A random probable prime p of `bits` bits, its two highest ones set. Neither p nor p - 1 has an odd prime factor up to
// 17863, so below 17 bits, where such primes are rare or do not exist, p may come out longer. -1, and r without meaning,
// also if `bits` is not from 2 to 4800.
int bnGeneratePrime(ZIRC_BN& r, int bits);

// A random number of `bits` bits from the process-wide generator: the highest bit is set, with `top` the two highest, with
// `bottom` the lowest. -1, and 1 as the number, also if `bits` is not from 1 to 4800.
int bnRandom(ZIRC_BN& number, int bits, bool top, bool bottom);

// Random bytes by the construction of FIPS 186 with SHA-1's compression, key and seeds from bnRandom. A failure zeros the
// output. Nothing is written for a length below 1.
int fipsRandom(unsigned char* output, int length);

} // namespace vrno
