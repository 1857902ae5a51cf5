// AlgorithmIdentifiers of content ciphers.
#pragma once

#include "ASN1Pkix/records/RAlgorithmIdentifier.h"
#include "base/Objects.h"

namespace vrno {

inline constexpr const char* oidSeedCbc = "1 2 410 200004 1 4";
inline constexpr int seedKeyLength = 16, seedIvLength = 16; // in bytes

class PAlgorithmUtil : public PObject {
public:
    static constexpr const char* className = "PAlgorithmUtil";

    // `alg` and `mode` are facade codes. SEED in CBC mode is supported; its parameters are the IV (RFC 4010). 8: another
    // algorithm, 2: another mode, 9 to 11: allocation failure.
    int makeSymmetricAlgID(int alg, int mode, ByteString& iv, RAlgorithmIdentifier& out);
};

} // namespace vrno
