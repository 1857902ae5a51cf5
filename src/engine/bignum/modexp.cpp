// Exponentiation: the choice of a kernel, and the plain form for even moduli.
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

// The operands of one power: p and m without leading zeros and signs, a reduced.
struct Operands {
    Temporary base, exponent, modulus;

    Operands(const ZIRC_BN& a, const ZIRC_BN& p, const ZIRC_BN& m) : exponent(p), modulus(m)
    {
        setLength(exponent, significant(p));
        setLength(modulus, significant(m));
        modulus.neg = 0;
        bnMod(base, a, modulus);
    }
    bool isOneOrZero() const { return exponent.top == 0 || bnBits(modulus) == 1; } // the result
    bool isOrdinary() const { return !isOneOrZero() && isOdd(modulus); }
};

// A compiler keeps what does not fit into registers on the stack, where no object is that could wipe it. This covers the frames
// of an exponentiation that has returned.
[[gnu::noinline]] void wipeFramesBelow() { const SecretArea<20480> frames; }

void modExp(ZIRC_BN& r, const Operands& operands, bool secret)
{
    Temporary result;
    bnSetWord(result, bnBits(operands.modulus) == 1 ? 0 : 1);
    if (operands.isOneOrZero()) {
        bnCopy(r, result);
    } else if (operands.isOrdinary()) {
        pick(modExpKernels)(r, operands.base, operands.exponent, operands.modulus, secret);
    } else {
        PlainRing ring{operands.modulus};
        power(ring, result, operands.base, operands.exponent);
        bnCopy(r, result);
    }
    if (secret) wipeFramesBelow();
}

} // namespace

void bnModExp(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& p, const ZIRC_BN& m) { modExp(r, {a, p, m}, false); }

void bnModExpReduced(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& p, const ZIRC_BN& m) { modExp(r, {a, p, m}, false); }

void bnModExpSecret(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& p, const ZIRC_BN& m) { modExp(r, {a, p, m}, true); }

bool modExpPairNone(const SecretPower&, const SecretPower&) { return false; }

void bnModExpSecretPair(const ZIRC_BN& a, ZIRC_BN& r1, const ZIRC_BN& p1, const ZIRC_BN& m1, ZIRC_BN& r2, const ZIRC_BN& p2,
                        const ZIRC_BN& m2)
{
    const Operands first(a, p1, m1), second(a, p2, m2);
    const bool paired = first.isOrdinary() && second.isOrdinary() &&
                        pick(modExpPairKernels)({r1, first.base, first.exponent, first.modulus},
                                                {r2, second.base, second.exponent, second.modulus});
    if (paired) {
        wipeFramesBelow();
        return;
    }
    modExp(r1, first, true);
    modExp(r2, second, true);
}

} // namespace vrno
