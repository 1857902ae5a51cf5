// OCTET STRING (X.690, 8.7).
#pragma once

#include "ASN1/ASN1Object.h"

namespace vrno {

class ASN1OctetString : public ASN1Typed<ASN1OctetString> {
public:
    static constexpr const char* className = "ASN1OctetString";
    static constexpr ASN1Type type{className, ASN1_TAG_OCTETSTRING, "TagType(%d)is not ASN1_TAG_OCTETSTRING"};

    ASN1OctetString() = default;
    explicit ASN1OctetString(ByteString& data) { m_nLastError = ASN1OctetString::fromASN1Object(data); }
    // A constructed form is undone: its segments, primitive ones of definite length, become the value, and the object
    // encodes as primitive from there on. Code 3 for any other segment.
    int fromASN1Object(ByteString& data) override;

private:
    int extractValue();
};

} // namespace vrno
