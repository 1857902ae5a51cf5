// Exponentiation over any multiplication. A ring is a type with
//
//   Element        values; copied by assignment
//   mul(r, a, b)   product; r may be an operand, and a and b the same
//   sqr(r)         square in place
//
// and, for secret exponents,
//
//   select(r, table, count, index)   r = table[index], with reads that do not tell the index
//
// A ring of pairs takes an index for each half there.
#pragma once

#include "engine/bignum/rows.h"

#include <algorithm>

namespace vrno {

// How far one multiplication reaches for an exponent of so many bits.
constexpr int windowBits(int bits)
{
    return bits >= 256 ? 5 : bits >= 128 ? 4 : bits >= 18 ? 3 : 1;
}

// A table that is wiped when it goes.
template <class Element, int size> struct PowerTable {
    Element v[size];
    PowerTable() {}
    PowerTable(const PowerTable&) = delete;
    PowerTable& operator=(const PowerTable&) = delete;
    ~PowerTable() { wipe(v, sizeof v); }
};

// r = a to the power p, where r starts as the ring's one, by a sliding window over odd powers (HAC 14.85).
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
        ring.mul(r, r, odd.v[value >> 1]);
        start = false;
        w -= e + 1;
    }
}

// The bits of an exponent from a position on, as a number; bnTestBit looks at the position alone.
inline unsigned windowAt(const ZIRC_BN& p, int position, int bits)
{
    unsigned window = 0;
    for (int i = bits; i-- > 0;) window = window << 1 | static_cast<unsigned>(bnTestBit(p, position + i));
    return window;
}

// The same by windows that stand fixed, so that the order of squares and products follows from the length of p alone: of the
// longest, in a ring of pairs, where each half has a p of its own.
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
