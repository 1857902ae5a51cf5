// OBJECT IDENTIFIER (X.690, 8.19).
#pragma once

#include "ASN1/ASN1Object.h"

namespace vrno {

// Decoding does not check the packed arcs; getOID() does. In the whole library the text form of an identifier is its arcs in
// decimal with one blank between them: "2 5 29 15".
class ASN1ObjectIdentifier : public ASN1Typed<ASN1ObjectIdentifier> {
public:
    static constexpr const char* className = "ASN1ObjectIdentifier";
    static constexpr ASN1Type type{className, ASN1_TAG_OID, "TagType(%d) is not ASN1_TAG_OID"};

    ASN1ObjectIdentifier() = default;
    explicit ASN1ObjectIdentifier(ByteString& data) { m_nLastError = ASN1ObjectIdentifier::fromASN1Object(data); }

    // Takes each run of decimal digits as an arc; all other characters separate arcs. 1 for 20 arcs or more, 2 for fewer than two,
    // both with the value unchanged; 2 on allocation failure. The first two arcs make one octet, computed in 8 bits.
    int setOID(const char* text);
    int setOID(ByteString& text);
    int setOID(const void* text, int length);

    // Reads up to 19 sub-identifiers of up to 4 octets. `m_nLastError` is 1 for any others and 2 for an empty value. The first one
    // is divided by 40, without the exception for the first arc 2.
    ByteString& getOID(char separator);
};

} // namespace vrno
