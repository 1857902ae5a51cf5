// What the files of this folder share: lengths, temporaries, division of rows.
#pragma once

#include "base/wipe.h"
#include "engine/bignum/bignum.h"
#include "engine/bignum/words.h"

namespace vrno {

// A number that is wiped on destruction.
struct Temporary : ZIRC_BN {
    Temporary() = default;
    explicit Temporary(const ZIRC_BN& a) { bnCopy(*this, a); }
    Temporary(const Temporary&) = delete;
    Temporary& operator=(const Temporary&) = delete;
    ~Temporary() { wipe(d, sizeof d); }
};

// The number of words without leading zero words.
inline std::size_t significant(const std::uint32_t* d, std::size_t n)
{
    while (n > 0 && d[n - 1] == 0) --n;
    return n;
}
inline std::size_t significant(const ZIRC_BN& a) { return a.top > 0 ? significant(a.d, static_cast<std::size_t>(a.top)) : 0; }

inline void setLength(ZIRC_BN& r, std::size_t n) { r.top = static_cast<std::int32_t>(significant(r.d, n)); }

inline bool isOdd(const ZIRC_BN& a) { return bnTestBit(a, 0); }

// Room for any product, and for the squares of Montgomery's R.
inline constexpr std::size_t maxDividend = 2 * bnWords + 16;

// a = q x d + rem: an words, at most maxDividend, by dn words, of which the top one is not zero. q may be null; it gets
// an - dn + 1 words if an is at least dn, else none. rem gets dn words. Results do not overlap operands.
void divideRows(std::uint32_t* q, std::uint32_t* rem, const std::uint32_t* a, std::size_t an, const std::uint32_t* d,
                std::size_t dn);

// 2^exponent modulo m, for a positive m and an exponent below 32 x maxDividend.
void powerOfTwo(ZIRC_BN& r, std::size_t exponent, const ZIRC_BN& m);

} // namespace vrno
