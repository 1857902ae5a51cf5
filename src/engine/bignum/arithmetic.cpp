// Products, quotients and remainders.
#include "engine/bignum/rows.h"

#include <algorithm>
#include <bit>

namespace vrno {

namespace {

constexpr std::size_t capacity = bnWords;

// Room for a product of any two numbers.
struct Product {
    std::uint32_t d[2 * bnWords];
    std::size_t length = 0;

    Product(const ZIRC_BN& a, const ZIRC_BN& b)
    {
        const std::size_t an = significant(a), bn = significant(b);
        length = an + bn;
        if (&a == &b) {
            std::uint32_t squares[2 * bnWords];
            sqrRows<Words>(d, a.d, an, squares);
            wipe(squares, 4 * length);
        } else {
            mulRows<Words>(d, a.d, an, b.d, bn);
        }
    }
    Product(const Product&) = delete;
    Product& operator=(const Product&) = delete;
    ~Product() { wipe(d, 4 * length); }
};

void setFromRow(ZIRC_BN& r, const std::uint32_t* d, std::size_t n, std::uint32_t neg)
{
    const std::size_t kept = std::min(n, capacity);
    std::copy_n(d, kept, r.d);
    r.neg = neg;
    setLength(r, kept);
}

// The value of n words and a sign, modulo m.
void reduceRow(ZIRC_BN& r, const std::uint32_t* d, std::size_t n, std::uint32_t neg, const ZIRC_BN& m)
{
    const std::size_t mn = significant(m);
    Temporary rem;
    if (mn > 0) divideRows(nullptr, rem.d, d, n, m.d, mn);
    setLength(rem, mn);
    if (neg && rem.top > 0) bnSubMagnitudes(rem, m, rem);
    bnCopy(r, rem);
}

} // namespace

// Long division (Knuth, TAOCP 4.3.1, algorithm D) with d shifted so that its top bit is set. A digit estimated from the top
// word of d is too large by 2 at most.
void divideRows(std::uint32_t* q, std::uint32_t* rem, const std::uint32_t* a, std::size_t an, const std::uint32_t* d,
                std::size_t dn)
{
    if (an < dn) {
        std::copy_n(a, an, rem);
        std::fill(rem + an, rem + dn, 0U);
        return;
    }
    std::uint32_t dividend[maxDividend + 1], divisor[bnWords], product[bnWords + 1];
    const int shift = std::countl_zero(d[dn - 1]);
    const auto shifted = [shift](std::uint32_t word, std::uint32_t below) {
        return shift > 0 ? word << shift | below >> (32 - shift) : word;
    };
    for (std::size_t i = 0; i < dn; ++i) divisor[i] = shifted(d[i], i > 0 ? d[i - 1] : 0);
    for (std::size_t i = 0; i <= an; ++i) dividend[i] = shifted(i < an ? a[i] : 0, i > 0 ? a[i - 1] : 0);
    const std::uint32_t top = divisor[dn - 1];
    for (std::size_t j = an - dn + 1; j-- > 0;) {
        std::uint32_t* const window = dividend + j; // dn + 1 words; its upper dn words are below the divisor
        std::uint32_t digit = window[dn] == top ? ~0U : Words::bnDivWords(window[dn], window[dn - 1], top);
        product[dn] = Words::mulRow(product, divisor, dn, digit);
        while (compareRows(product, window, dn + 1) > 0) {
            --digit;
            product[dn] -= subRow(product, product, divisor, dn);
        }
        subRow(window, window, product, dn + 1);
        if (q) q[j] = digit;
    }
    for (std::size_t i = 0; i < dn; ++i) {
        rem[i] = shift > 0 ? dividend[i] >> shift | dividend[i + 1] << (32 - shift) : dividend[i];
    }
    wipe(dividend, 4 * (an + 1));
    wipe(divisor, 4 * dn);
    wipe(product, 4 * (dn + 1));
}

void powerOfTwo(ZIRC_BN& r, std::size_t exponent, const ZIRC_BN& m)
{
    std::uint32_t power[maxDividend] = {};
    power[exponent / 32] = 1U << (exponent % 32);
    reduceRow(r, power, exponent / 32 + 1, 0, m);
}

void bnMul(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& b)
{
    const Product product(a, b);
    setFromRow(r, product.d, product.length, a.neg ^ b.neg);
}

void bnSqr(ZIRC_BN& r, const ZIRC_BN& a) { bnMul(r, a, a); }

bool bnDiv(ZIRC_BN* q, ZIRC_BN* rem, const ZIRC_BN& a, const ZIRC_BN& d)
{
    const std::size_t an = significant(a), dn = significant(d);
    if (dn == 0) return false;
    Temporary quotient, remainder;
    divideRows(quotient.d, remainder.d, a.d, an, d.d, dn);
    const std::uint32_t aNeg = a.neg, dNeg = d.neg;
    if (q) setFromRow(*q, quotient.d, an < dn ? 0 : an - dn + 1, aNeg ^ dNeg);
    if (rem) setFromRow(*rem, remainder.d, dn, aNeg);
    return true;
}

std::uint32_t bnModWord(const ZIRC_BN& a, std::uint32_t w)
{
    if (w == 0) return 0;
    std::uint32_t r = 0;
    for (std::size_t i = significant(a); i-- > 0;) {
        r = (r << 16 | a.d[i] >> 16) % w;
        r = (r << 16 | (a.d[i] & 0xFFFF)) % w;
    }
    return r;
}

void bnMod(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& m) { reduceRow(r, a.d, significant(a), a.neg, m); }

void bnModSub(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& b, const ZIRC_BN& m)
{
    Temporary x, y;
    bnMod(x, a, m);
    bnMod(y, b, m);
    bnSub(x, x, y);
    bnMod(r, x, m);
}

void bnModMul(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& b, const ZIRC_BN& m)
{
    const Product product(a, b);
    reduceRow(r, product.d, product.length, a.neg ^ b.neg, m);
}

void bnModSqr(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& m) { bnModMul(r, a, a, m); }

} // namespace vrno
