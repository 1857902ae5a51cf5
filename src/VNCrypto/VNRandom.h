// Random bytes.
#pragma once

#include "base/Objects.h"

namespace vrno {

class VNRandom : public VNObject {
public:
    static constexpr const char* className = "VNRandom";

    // `out` is cleared first and then gets `nLength` bytes, none for a length below 1. 1: algorithm not supported, 3: no
    // memory, 4: the engine failed.
    int GenerateRandom(int nAlgID, int nLength, ByteString& out);
};

} // namespace vrno
