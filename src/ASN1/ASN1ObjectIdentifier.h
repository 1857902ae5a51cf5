// OBJECT IDENTIFIER (X.690, 8.19).
#pragma once

#include "ASN1/ASN1Object.h"

namespace vrno {

// Decoding does not look at the packed arcs; getOID() does. The text form of an identifier in the whole library is its
// arcs in decimal with one blank between: "2 5 29 15".
class ASN1ObjectIdentifier : public ASN1Typed<ASN1ObjectIdentifier> {
public:
    static constexpr const char* className = "ASN1ObjectIdentifier";
    static constexpr ASN1Type type{className, ASN1_TAG_OID, "TagType(%d) is not ASN1_TAG_OID"};

    ASN1ObjectIdentifier() = default;
    explicit ASN1ObjectIdentifier(ByteString& data) { m_nLastError = ASN1ObjectIdentifier::fromASN1Object(data); }

    // Takes every run of decimal digits for an arc, whatever stands between. 1 for 20 arcs or more, 2 for fewer than
    // two; a failure leaves the value as it was. The first two arcs share one octet, computed in 8 bits.
    int setOID(const char* text);
    int setOID(ByteString& text);
    int setOID(const void* text, int length);

    // Up to 19 sub-identifiers of up to 4 octets; else, and for an empty value, `m_nLastError` and an empty text. The
    // first one splits by 40 with no exception for arc 2.
    ByteString& getOID(char separator);
};

} // namespace vrno
