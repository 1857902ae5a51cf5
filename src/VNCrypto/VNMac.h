// Message authentication codes.
#pragma once

#include "base/Objects.h"

namespace vrno {

class VNMac : public VNObject {
public:
    static constexpr const char* className = "VNMac";

    // HMAC-SHA-1 of the data, 20 bytes. 1: algorithm not supported, 3: the engine failed.
    int GenerateMAC(int nAlgID, ByteString& key, ByteString& data, ByteString& out);
    // Goes on from a MAC: `nTimes` times takes the MAC of the last one and adds it (XOR) to `sum`, which starts as `first`
    // and has 20 bytes. The key's blocks are hashed once. 1: algorithm not supported, 3: no memory, or `first` is no MAC.
    int ChainMAC(int nAlgID, ByteString& key, ByteString& first, int nTimes, ByteString& sum);
};

} // namespace vrno
