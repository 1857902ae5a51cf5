// Signatures.
#pragma once

#include "base/Objects.h"

namespace vrno {

// The engine digests the data itself. Keys are blobs in DER.
class VNSign : public VNObject {
public:
    static constexpr const char* className = "VNSign";

    // 1: algorithm not supported, 14: the engine failed. With `isVerifiedNext` the caller verifies the signature before anybody
    // else gets it, and the engine need not.
    int SignData(int nAlgID, ByteString& privateKey, ByteString& data, ByteString& out, bool isVerifiedNext = false);
    // 0 means that the signature holds. 1: algorithm not supported, 13: it does not hold, or the key cannot be used.
    int VerifyData(int nAlgID, ByteString& publicKey, ByteString& data, ByteString& signature);
};

} // namespace vrno
