// The test whether a private key and a certificate are a pair.
#pragma once

#include "base/Objects.h"

namespace vrno {

class PCryptUtil : public PObject {
public:
    static constexpr const char* className = "PCryptUtil";

    // Signs a text with the key and verifies the signature with the certificate, both in DER: 0 if they are a pair, 1 if the key
    // cannot sign, 2 if the signature is not valid or the certificate cannot be used.
    int verifySignatureWithCert(ByteString& certificate, ByteString& privateKeyInfo);
};

} // namespace vrno
