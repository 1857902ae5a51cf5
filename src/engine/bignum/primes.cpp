// The test for primes, and random primes.
#include "engine/bignum/primes.h"

#include "engine/bignum/rows.h"

namespace vrno {

namespace {

constexpr int millerRabinRounds(int bits)
{
    if (bits >= 1000) return 4;
    if (bits >= 640) return 6;
    if (bits >= 512) return 8;
    if (bits >= 256) return 17;
    return bits >= 101 ? 27 : 40;
}

enum class Verdict { composite, prime, unknown };

// Miller-Rabin (HAC 4.24, FIPS 186-4 C.3.1). Unknown when the system gives no random bytes.
Verdict testPrime(const ZIRC_BN& n, int rounds)
{
    const int bits = bnBits(n);
    if (n.neg || bits < 2) return Verdict::composite;
    if (!isOdd(n)) return bits == 2 ? Verdict::prime : Verdict::composite; // of two bits only 2 is even
    Temporary n1, m, base, x;
    bnSubWord(n1, n, 1);
    int s = 0;
    while (!bnTestBit(n1, s)) ++s;
    bnShiftRight(m, n1, s);
    const auto isOneOrMinusOne = [&] { return bnBits(x) == 1 || bnIsEqual(x, n1); };
    for (int round = 0; round < (rounds > 0 ? rounds : millerRabinRounds(bits)); ++round) {
        if (bnRandom(base, bits - 1, false, false) < 0) return Verdict::unknown;
        bnModExp(x, base, m, n);
        if (isOneOrMinusOne()) continue;
        for (int j = 1; j < s && !isOneOrMinusOne(); ++j) bnModSqr(x, x, n);
        if (!bnIsEqual(x, n1)) return Verdict::composite;
    }
    return Verdict::prime;
}

// A random number that is 2 or more modulo every odd prime of the table: neither it nor its predecessor has such a factor.
int drawCandidate(ZIRC_BN& r, int bits)
{
    if (bnRandom(r, bits, true, true) < 0) return -1;
    std::uint32_t mods[primeCount], delta = 0;
    for (std::size_t i = 1; i < primeCount; ++i) mods[i] = bnModWord(r, primeTable[i]);
    for (std::size_t i = 1; i < primeCount; ++i) {
        if ((mods[i] + delta) % primeTable[i] > 1) continue;
        delta += 2;
        i = 0;
    }
    bnAddWord(r, r, delta);
    wipe(mods, sizeof mods);
    return 0;
}

} // namespace

bool bnIsPrime(const ZIRC_BN& n, int rounds) { return testPrime(n, rounds) == Verdict::prime; }

int bnGeneratePrime(ZIRC_BN& r, int bits)
{
    if (bits < 2) return -1;
    for (;;) {
        if (drawCandidate(r, bits) < 0) return -1;
        const Verdict verdict = testPrime(r, 0);
        if (verdict != Verdict::composite) return verdict == Verdict::prime ? 0 : -1;
    }
}

} // namespace vrno
