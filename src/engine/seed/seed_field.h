// The S-boxes of SEED as instructions of x86 compute them.
//
// Each S-box is an affine map behind a power, x^247 or x^251, in GF(2^8) with SEED's polynomial (RFC 4269, section 2.2). These
// powers are the 8th and the 4th power of 1/x, and squaring is linear. All fields of 256 elements are the same but for a linear
// map. So each S-box is a linear map into the field of AES, the inverse there, and an affine map back. The maps are computed here
// from the tables and proven against them.
#pragma once

#include "engine/seed/seed_tables.h"

#include <bit>

namespace vrno::seed {

using Octet = std::uint8_t;

constexpr Octet fieldProduct(unsigned int a, unsigned int b, unsigned int polynomial)
{
    unsigned int product = 0;
    for (; b != 0; b >>= 1, a = a << 1 ^ (a & 0x80 ? polynomial : 0)) product ^= b & 1 ? a : 0;
    return static_cast<Octet>(product);
}
constexpr unsigned int aesPolynomial = 0x11B, seedPolynomial = 0x163;

using OctetTable = std::array<Octet, 256>;

// In the field of AES; 0 for 0.
inline constexpr OctetTable inverses = [] {
    OctetTable table{};
    for (unsigned int power = 1, inversePower = 1, i = 0; i < 255; ++i) { // 0xF6 is the inverse of 3, whose powers are all elements
        table[power] = static_cast<Octet>(inversePower);
        power = fieldProduct(power, 3, aesPolynomial);
        inversePower = fieldProduct(inversePower, 0xF6, aesPolynomial);
    }
    return table;
}();

// The S-box of AES: what AESENCLAST does to each octet. Its affine map adds four rotations of the octet.
inline constexpr OctetTable aesBox = [] {
    OctetTable table{};
    for (std::size_t x = 0; x < 256; ++x) {
        Octet sum = inverses[x];
        for (int i = 1; i <= 4; ++i) sum ^= std::rotl(inverses[x], i);
        table[x] = sum ^ 0x63;
    }
    return table;
}();

// An affine map as the images of the eight bits, and of 0.
struct AffineMap {
    Octet images[8], constant;

    constexpr Octet operator()(Octet x) const
    {
        Octet sum = constant;
        for (int i = 0; i < 8; ++i) {
            if (x >> i & 1) sum ^= images[i];
        }
        return sum;
    }
    // The matrix of GF2P8AFFINEQB, without the constant: the highest octet is the row of bit 0.
    constexpr std::uint64_t matrix() const
    {
        std::uint64_t rows = 0;
        for (int row = 0; row < 8; ++row) {
            for (int i = 0; i < 8; ++i) rows |= std::uint64_t{images[i] >> row & 1U} << (8 * (7 - row) + i);
        }
        return rows;
    }
};

// From SEED's field into that of AES: the powers of SEED's x go to those of a root of its polynomial.
inline constexpr AffineMap intoAes = [] {
    for (unsigned int root = 2;; ++root) {
        AffineMap map{};
        Octet power = 1;
        for (Octet& image : map.images) {
            image = power;
            power = fieldProduct(power, root, aesPolynomial);
        }
        if (power == map(seedPolynomial & 0xFF)) return map; // x^8 is the rest of the polynomial
    }
}();

// The affine map that gives `box` behind `inner`, which is a table, behind intoAes. It is known from nine values.
constexpr AffineMap mapBehind(const std::uint8_t (&box)[256], const OctetTable& inner)
{
    OctetTable values{};
    for (unsigned int x = 0; x < 256; ++x) values[inner[intoAes(static_cast<Octet>(x))]] = box[x];
    AffineMap map{{}, values[0]};
    for (int i = 0; i < 8; ++i) map.images[i] = values[std::size_t{1} << i] ^ values[0];
    return map;
}

constexpr bool gives(const std::uint8_t (&box)[256], const AffineMap& outer, const OctetTable& inner)
{
    for (unsigned int x = 0; x < 256; ++x) {
        if (outer(inner[intoAes(static_cast<Octet>(x))]) != box[x]) return false;
    }
    return true;
}

inline constexpr AffineMap S1BehindInverse = mapBehind(S1, inverses), S2BehindInverse = mapBehind(S2, inverses);
static_assert(gives(S1, S1BehindInverse, inverses) && gives(S2, S2BehindInverse, inverses));
inline constexpr int S1Constant = S1BehindInverse.constant, S2Constant = S2BehindInverse.constant; // operands of instructions
static_assert(intoAes.constant == 0);

inline constexpr AffineMap S1BehindAes = mapBehind(S1, aesBox), S2BehindAes = mapBehind(S2, aesBox);
static_assert(gives(S1, S1BehindAes, aesBox) && gives(S2, S2BehindAes, aesBox));

} // namespace vrno::seed
