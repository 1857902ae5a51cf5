// Digests.
#pragma once

#include "base/Objects.h"

namespace vrno {

class VNHash : public VNObject {
public:
    static constexpr const char* className = "VNHash";

    // The digest of the input. Each iteration above one digests the digest again. 1: algorithm not supported, 4: the first
    // digest failed, 3: a further one.
    int DigestData(int nAlgID, ByteString& in, ByteString& out, int nIterations);
};

} // namespace vrno
