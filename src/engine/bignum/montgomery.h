// Exponentiation modulo an odd number by Montgomery's multiplication (HAC 14.36, 14.94), in several bodies.
#pragma once

#include "base/cpu.h"
#include "engine/bignum/bignum.h"

namespace vrno {

// The longest modulus of a kernel: that of the longest keys. It bounds the stack that the tables of powers take.
inline constexpr int montgomeryMaxBits = 2048;

// r = a to the power p modulo m, for an odd m above 1 of up to montgomeryMaxBits, an a from 0 to m - 1 and a p above 0. r is none
// of the operands. With `secret`, branches and addresses depend on the length of p but not on its bits.
using ModExpFunction = void(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& p, const ZIRC_BN& m, bool secret);

ModExpFunction modExpPortable; // over WordsPortable
ModExpFunction modExpNative;   // over WordsNative
ModExpFunction modExpWide;     // over words of 64 bits, where the compiler has 128

ModExpFunction modExpIfma512; // over limbs of 52 bits, on x86-64

// One of two powers that are computed together, under the conditions of ModExpFunction; p is secret.
struct SecretPower {
    ZIRC_BN& r;
    const ZIRC_BN &a, &p, &m;
};

// Whether the powers were computed: false for moduli that this kernel does not pair.
using ModExpPairFunction = bool(const SecretPower& first, const SecretPower& second);

ModExpPairFunction modExpPairIfma512;
ModExpPairFunction modExpPairNone;

inline constexpr Kernel<ModExpPairFunction> modExpPairKernels[] = {
#if defined(__x86_64__) && defined(__SIZEOF_INT128__)
    {"ifma512", CpuFeature::ifma512, modExpPairIfma512},
#endif
    {"none", CpuFeature::none, modExpPairNone},
};

inline constexpr Kernel<ModExpFunction> modExpKernels[] = {
#if defined(__x86_64__) && defined(__SIZEOF_INT128__)
    {"ifma512", CpuFeature::ifma512, modExpIfma512},
#endif
#ifdef __SIZEOF_INT128__
    {"wide", CpuFeature::none, modExpWide},
#endif
    {"native", CpuFeature::none, modExpNative},
    {"portable", CpuFeature::none, modExpPortable},
};

} // namespace vrno
