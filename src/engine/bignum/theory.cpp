// Common divisors and inverses.
#include "engine/bignum/rows.h"

#include <utility>

namespace vrno {

// Binary (HAC 14.54). With a at least b, each step halves one of them.
void bnGcd(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& b)
{
    Temporary first(a), second(b);
    first.neg = second.neg = 0;
    ZIRC_BN *x = &first, *y = &second;
    if (!bnIsGreaterOrEqual(*x, *y)) std::swap(x, y);
    int twos = 0;
    while (!bnIsZero(*y)) {
        const bool xOdd = isOdd(*x), yOdd = isOdd(*y);
        if (xOdd && yOdd) bnSubMagnitudes(*x, *x, *y);
        if (!xOdd || yOdd) bnShiftRightOne(*x, *x);
        if (!yOdd) bnShiftRightOne(*y, *y);
        if (!xOdd && !yOdd) ++twos;
        if (!bnIsGreaterOrEqual(*x, *y)) std::swap(x, y);
    }
    bnShiftLeft(r, *x, twos);
}

void bnLcm(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& b)
{
    Temporary divisor, quotient;
    bnGcd(divisor, a, b);
    if (!bnDiv(&quotient, nullptr, a, divisor)) bnSetWord(quotient, 0);
    bnMul(r, quotient, b);
    r.neg = 0;
}

// Euclid's algorithm (HAC 2.107). The coefficients of a alternate in sign, so it keeps their magnitudes, which do not exceed
// n, and the sign of the last one.
int bnModInverse(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& n)
{
    if ((a.neg && !bnIsZero(a)) || (n.neg && !bnIsZero(n))) return -1;
    Temporary remainders[3], coefficients[3], quotient, product;
    ZIRC_BN *before = &remainders[0], *now = &remainders[1], *next = &remainders[2];
    ZIRC_BN *u = &coefficients[0], *v = &coefficients[1], *w = &coefficients[2]; // of before, now and next
    bnCopy(*before, n);
    bnMod(*now, a, n);
    bnSetWord(*u, 0);
    bnSetWord(*v, 1);
    bool isNegative = true; // the sign of u
    while (!bnIsZero(*now)) {
        bnDiv(&quotient, next, *before, *now);
        bnMul(product, quotient, *v);
        bnAddMagnitudes(*w, product, *u);
        before = std::exchange(now, std::exchange(next, before));
        u = std::exchange(v, std::exchange(w, u));
        isNegative = !isNegative;
    }
    if (bnBits(*before) != 1) {
        bnSetWord(r, 0);
        return -1;
    }
    Temporary modulus(n);
    if (isNegative) bnSub(*u, modulus, *u);
    bnMod(r, *u, modulus);
    return 1;
}

} // namespace vrno
