// Random bytes.
#pragma once

#include "base/Objects.h"

namespace vrno {

class VNRandom : public VNObject {
public:
    static constexpr const char* className = "VNRandom";

    // `nLength` bytes in `out`, which is cleared first; none, and 0, for a length below 1. 1: algorithm not supported,
    // 3: no memory, 4: the engine failed.
    int GenerateRandom(int nAlgID, int nLength, ByteString& out);
};

} // namespace vrno
