// BIT STRING (X.690, 8.6): the octet of unused bits, then the bits. The value of a constructed form is its encoded segments.
#pragma once

#include "ASN1/ASN1Object.h"

namespace vrno {

class ASN1BitString : public ASN1Typed<ASN1BitString> {
public:
    static constexpr const char* className = "ASN1BitString";
    static constexpr ASN1Type type{className, ASN1_TAG_BITSTRING, "TagType(%d) is not ASN1_TAG_BITSTRING"};

    ASN1BitString() = default;
    explicit ASN1BitString(ByteString& data) { m_nLastError = ASN1BitString::fromASN1Object(data); }

    // Without `trim`: all octets, with 0 unused bits. With `trim`: without trailing zero bits, as DER requires for a list of named
    // bits (X.690, 11.2.2). 0; 1 if `trim` would remove every octet; 2 on allocation failure.
    int setBitString(ByteString& bits, bool trim);
    // The octets after the first one, which is stored in `unusedBits` unchecked. `m_nLastError` 1 for an empty value.
    ByteString& getBitString(int* unusedBits);
};

} // namespace vrno
