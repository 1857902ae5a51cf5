// Products, quotients and remainders.
#include "engine/bignum/division.h"

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

void divideRows(std::uint32_t* q, std::uint32_t* rem, const std::uint32_t* a, std::size_t an, const std::uint32_t* d,
                std::size_t dn)
{
    divideRows<WidestWords>(q, rem, a, an, d, dn);
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
