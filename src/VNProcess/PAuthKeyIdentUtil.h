// The authority key identifier (RFC 5280, 4.2.1.1) as text.
#pragma once

#include "ASN1Pkix/records/RNames.h"
#include "VNProcess/Rendering.h"

namespace vrno {

class PAuthKeyIdentUtil : public PObject {
public:
    static constexpr const char* className = "PAuthKeyIdentUtil";

    // Up to three blocks with CRLF between them: the key identifier, the issuer's names, its serial number. Names in the
    // forms x400Address and ediPartyName are left out. 0, or: 1 the value does not decode or the number is negative, 2 a
    // name cannot be had, 3 it does not decode, 4 its value cannot be read.
    int parseAuthorityKeyIdentifer(ByteString& value, ByteString& text);

private:
    int addNames(RGeneralNames& pGeneralNames, TextBuilder& out);
};

} // namespace vrno
