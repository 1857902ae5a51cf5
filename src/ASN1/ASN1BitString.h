// BIT STRING: the octet of unused bits, then the bits (X.690, 8.6). A constructed form is kept as it stands.
#pragma once

#include "ASN1/ASN1Object.h"

namespace vrno {

class ASN1BitString : public ASN1Typed<ASN1BitString> {
public:
    static constexpr const char* className = "ASN1BitString";
    static constexpr ASN1Type type{className, ASN1_TAG_BITSTRING, "TagType(%d) is not ASN1_TAG_BITSTRING"};

    ASN1BitString() = default;
    explicit ASN1BitString(ByteString& data) { m_nLastError = ASN1BitString::fromASN1Object(data); }

    // All octets with no unused bits; with `trim` trailing zero bits are dropped, as a list of named bits wants it
    // (X.690, 11.2.2), and 1 comes back for octets that are all zero.
    int setBitString(ByteString& bits, bool trim);
    // The octets behind the first, which goes to `unusedBits` unchecked.
    ByteString& getBitString(int* unusedBits);
};

} // namespace vrno
