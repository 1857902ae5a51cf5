// Message authentication codes.
#pragma once

#include "base/Objects.h"

namespace vrno {

class VNMac : public VNObject {
public:
    static constexpr const char* className = "VNMac";

    // HMAC-SHA-1 of the data, 20 bytes. 1: algorithm not supported, 3: the engine failed.
    int GenerateMAC(int nAlgID, ByteString& key, ByteString& data, ByteString& out);
    // The XOR of a chain of MACs: of a first link, and of `furtherLinks` more, each of which is the MAC of the one before it.
    // Up to six first links, one behind the other, give as many chains, which take less time together. 1: algorithm not
    // supported, 3: the engine failed.
    int ChainMAC(int nAlgID, ByteString& key, ByteString& firstLinks, int furtherLinks, ByteString& out);
};

} // namespace vrno
