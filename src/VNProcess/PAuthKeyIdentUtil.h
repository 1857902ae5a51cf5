// The authority key identifier (RFC 5280, 4.2.1.1) as text.
#pragma once

#include "ASN1Pkix/records/RNames.h"
#include "VNProcess/Rendering.h"

namespace vrno {

class PAuthKeyIdentUtil : public PObject {
public:
    static constexpr const char* className = "PAuthKeyIdentUtil";

    // Up to three blocks with CRLF between them: key identifier, names of the issuer, its serial number. x400Address and
    // ediPartyName are left out. 0, or 1: the value does not decode or the number is negative; 2: a name cannot be read; 3: it
    // does not decode; 4: its value cannot be read.
    int parseAuthorityKeyIdentifer(ByteString& value, ByteString& text);

private:
    int addNames(RGeneralNames& pGeneralNames, TextBuilder& out);
};

} // namespace vrno
