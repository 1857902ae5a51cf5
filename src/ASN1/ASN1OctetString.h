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
    // The segments of a constructed form are joined to the value, and the object then encodes as primitive. 3 if a segment is not
    // a primitive OCTET STRING of definite length.
    int fromASN1Object(ByteString& data) override;

private:
    int extractValue();
};

} // namespace vrno
