// Numbers in limbs of another size than the record's words, and the inverse that Montgomery's multiplication needs.
#pragma once

#include "engine/bignum/rows.h"
#include "engine/masks.h"

#include <algorithm>

namespace vrno {

// The 64 bits of the magnitude from a position on.
inline std::uint64_t bitsAt(const ZIRC_BN& a, std::size_t position)
{
    const auto word = [&a](std::size_t i) { return i < static_cast<std::size_t>(a.top) ? std::uint64_t{a.d[i]} : 0; };
    const std::size_t i = position / 32, shift = position % 32;
    const std::uint64_t low = word(i) | word(i + 1) << 32;
    return shift > 0 ? low >> shift | word(i + 2) << (64 - shift) : low;
}

// The magnitude in n limbs of `bits` bits each.
template <int bits, class Limb> void toLimbs(Limb* limbs, std::size_t n, const ZIRC_BN& a)
{
    for (std::size_t i = 0; i < n; ++i) limbs[i] = static_cast<Limb>(bitsAt(a, i * bits) & (~std::uint64_t{0} >> (64 - bits)));
}

// The reverse, into `words` words. The limbs may be secret: its time depends on the lengths alone.
template <int bits, class Limb> void fromLimbs(ZIRC_BN& r, std::size_t words, const Limb* limbs, std::size_t n)
{
    std::uint32_t top = 0;
    for (std::size_t i = 0; i < words; ++i) {
        const std::size_t first = 32 * i / bits, shift = 32 * i % bits;
        std::uint64_t word = static_cast<std::uint64_t>(limbs[first]) >> shift;
        if (shift + 32 > bits && first + 1 < n) word |= static_cast<std::uint64_t>(limbs[first + 1]) << (bits - shift);
        r.d[i] = static_cast<std::uint32_t>(word);
        top = choose(isZero(r.d[i]), top, static_cast<std::uint32_t>(i + 1));
    }
    r.neg = 0;
    r.top = static_cast<std::int32_t>(top);
}

// -1 / N modulo 2^bits, of the lowest limb of an odd N. N is its own inverse modulo 8, so it has three correct bits; each step
// doubles their number.
template <class Limb> Limb negativeInverse(Limb N)
{
    Limb inverse = N;
    for (int right = 3; right < std::numeric_limits<Limb>::digits; right *= 2) inverse *= 2 - N * inverse;
    return Limb{0} - inverse;
}

} // namespace vrno
