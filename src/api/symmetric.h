// The symmetric algorithms that the exported functions know.
#pragma once

#include "ASN1Pkix/keys/Pkcs8Schemes.h"
#include "VNCrypto/VNCodes.h"
#include "vrno.h"

namespace vrno {

// For messages only SEED works: PEnvelopedData makes no keys for the others. A private key is protected with SEED in all cases.
struct SymmetricAlgorithm {
    int code; // of the interface
    int cipher;
    Pkcs8SchemeCode keyScheme;
};
inline constexpr SymmetricAlgorithm symmetricAlgorithms[] = {
    {16, vnCipher3000, schemePbes2For16},
    {32, vnCipher3011, schemePbes2For32},
    {VRNO_SYM_SEED, vnSeed, schemePbes2},
};

// Null for an unknown code.
inline const SymmetricAlgorithm* findSymmetricAlgorithm(int code)
{
    for (const SymmetricAlgorithm& known : symmetricAlgorithms) {
        if (known.code == code) return &known;
    }
    return nullptr;
}

} // namespace vrno
