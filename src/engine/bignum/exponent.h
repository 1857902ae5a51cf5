// Exponentiation over any multiplication. A ring is a type with
//
//   Element        values; copied by assignment
//   mul(r, a, b)   product; r may be an operand, and a and b the same
//   sqr(r)         square in place
//
// and, for secret exponents,
//
//   select(r, table, count, index)   r = table[index], by reads that do not depend on the index
//
// For a ring of pairs, `select` takes an index for each half.
#pragma once

#include "engine/bignum/rows.h"

#include <algorithm>

namespace vrno {

// The bits of the exponent that one multiplication covers at most.
constexpr int windowBits(int bits)
{
    if (bits >= 256) return 5;
    if (bits >= 128) return 4;
    return bits >= 18 ? 3 : 1;
}

// A table that is wiped on destruction.
template <class Element, int size> struct PowerTable {
    Element v[size];
    PowerTable() {}
    PowerTable(const PowerTable&) = delete;
    PowerTable& operator=(const PowerTable&) = delete;
    ~PowerTable() { wipe(v, sizeof v); }
};

// r = a to the power p, for a p above 0, by a sliding window over odd powers (HAC 14.85).
template <class Ring> void power(Ring& ring, typename Ring::Element& r, const typename Ring::Element& a, const ZIRC_BN& p)
{
    using Element = typename Ring::Element;
    const int bits = bnBits(p), window = windowBits(bits);
    PowerTable<Element, 16> odd; // a, a^3, a^5, ...
    odd.v[0] = a;
    if (window > 1) {
        PowerTable<Element, 1> square;
        ring.mul(square.v[0], a, a);
        for (int i = 1; i < 1 << (window - 1); ++i) ring.mul(odd.v[i], odd.v[i - 1], square.v[0]);
    }
    bool start = true;
    for (int w = bits - 1; w >= 0;) {
        if (!bnTestBit(p, w)) {
            if (!start) ring.sqr(r);
            --w;
            continue;
        }
        unsigned value = 1;
        int e = 0;
        for (int i = 1; i < window && i <= w; ++i) {
            if (bnTestBit(p, w - i)) {
                value = value << (i - e) | 1;
                e = i;
            }
        }
        for (int i = 0; i <= e && !start; ++i) ring.sqr(r);
        if (start) {
            r = odd.v[value >> 1];
        } else {
            ring.mul(r, r, odd.v[value >> 1]);
        }
        start = false;
        w -= e + 1;
    }
}

// The bits of an exponent from a position on, as a number. The time of bnTestBit depends on the position alone.
inline unsigned windowAt(const ZIRC_BN& p, int position, int bits)
{
    unsigned window = 0;
    for (int i = bits; i-- > 0;) window = window << 1 | static_cast<unsigned>(bnTestBit(p, position + i));
    return window;
}

// The same with fixed windows, so that the order of squares and products depends on the length of p alone. r starts as the ring's
// one. In a ring of pairs each half has its own p, and the longest counts.
template <class Ring, class... Exponent>
void powerSecret(Ring& ring, typename Ring::Element& r, const typename Ring::Element& a, const Exponent&... p)
{
    using Element = typename Ring::Element;
    const int bits = std::max({bnBits(p)...}), window = windowBits(bits), count = 1 << window;
    PowerTable<Element, 33> powers; // one, a, a^2, ..., and the one that is selected
    Element& selected = powers.v[32];
    powers.v[0] = r;
    powers.v[1] = a;
    for (int i = 2; i < count; ++i) ring.mul(powers.v[i], powers.v[i - 1], a);
    for (int w = (bits - 1) / window * window; w >= 0; w -= window) {
        for (int i = 0; i < window && w + window < bits; ++i) ring.sqr(r);
        ring.select(selected, powers.v, count, windowAt(p, w, window)...);
        ring.mul(r, r, selected);
    }
}

} // namespace vrno
