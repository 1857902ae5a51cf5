// The test whether a private key and a certificate are a pair.
#pragma once

#include "base/Objects.h"

namespace vrno {

class PCryptUtil : public PObject {
public:
    static constexpr const char* className = "PCryptUtil";

    // Signs a text with the key and verifies the signature under the certificate, both in DER: 0 when they belong together,
    // 1 when the key could not sign, 2 when the signature does not hold.
    int verifySignatureWithCert(ByteString& certificate, ByteString& privateKeyInfo);
};

} // namespace vrno
