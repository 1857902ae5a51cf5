// Exponentiation: the choice of the way, and the plain one for even moduli.
#include "engine/bignum/exponent.h"
#include "engine/bignum/montgomery.h"

namespace vrno {

namespace {

// Numbers modulo m, each product reduced by division.
struct PlainRing {
    using Element = ZIRC_BN;
    const ZIRC_BN& m;
    void mul(Element& r, const Element& a, const Element& b) const { bnModMul(r, a, b, m); }
    void sqr(Element& r) const { bnModSqr(r, r, m); }
};

void modExp(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& p, const ZIRC_BN& m, bool secret)
{
    Temporary base, exponent(p), modulus(m), result;
    setLength(exponent, significant(p));
    setLength(modulus, significant(m));
    modulus.neg = 0;
    const bool isOne = bnBits(modulus) == 1;
    bnSetWord(result, isOne ? 0 : 1);
    bnMod(base, a, modulus);
    if (exponent.top == 0 || isOne) {
        bnCopy(r, result);
    } else if (isOdd(modulus)) {
        pick(modExpKernels)(r, base, exponent, modulus, secret);
    } else {
        PlainRing ring{modulus};
        power(ring, result, base, exponent);
        bnCopy(r, result);
    }
}

} // namespace

void bnModExp(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& p, const ZIRC_BN& m)
{
    modExp(r, a, p, m, false);
}

void bnModExpReduced(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& p, const ZIRC_BN& m)
{
    modExp(r, a, p, m, false);
}

void bnModExpSecret(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& p, const ZIRC_BN& m)
{
    modExp(r, a, p, m, true);
}

} // namespace vrno
