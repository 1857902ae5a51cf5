// Digests.
#pragma once

#include "base/Objects.h"

namespace vrno {

class VNHash : public VNObject {
public:
    static constexpr const char* className = "VNHash";

    // The digest of the input; above one iteration, the digest of that digest, and so on. 1: algorithm not supported,
    // 4: the first digest failed, 3: a further one.
    int DigestData(int nAlgID, ByteString& in, ByteString& out, int nIterations);
};

} // namespace vrno
