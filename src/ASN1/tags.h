// Universal tag numbers (X.680, 8.4) that the library uses, and how a value is tagged.
#pragma once

namespace vrno {

enum UniversalTag : unsigned char {
    ASN1_TAG_BOOLEAN = 1,
    ASN1_TAG_INTEGER = 2,
    ASN1_TAG_BITSTRING = 3,
    ASN1_TAG_OCTETSTRING = 4,
    ASN1_TAG_NULLTAG = 5,
    ASN1_TAG_OID = 6,
    ASN1_TAG_UTF8STRING = 12,
    ASN1_TAG_SEQUENCE = 16,
    ASN1_TAG_SET = 17,
    ASN1_TAG_PRINTABLESTRING = 19,
    ASN1_TAG_T61STRING = 20,
    ASN1_TAG_IA5STRING = 22,
    ASN1_TAG_UTCTIME = 23,
    ASN1_TAG_GENERALIZEDTIME = 24,
    ASN1_TAG_VISIBLESTRING = 26,
    ASN1_TAG_UNIVERSALSTRING = 28,
    ASN1_TAG_BMPSTRING = 30,
    ASN1_TAG_ANY = 255, // of a plain ASN1Object
};

// The values of `m_ucTaggedType`.
enum TaggedType : unsigned char {
    notTagged = 0,
    implicitTag = 1,
    explicitTag = 2,
    highTagFollows = 3, // only while a tag is being read
};

inline constexpr unsigned char constructedBit = 0x20;
inline constexpr unsigned char classBits = 0xC0;
inline constexpr unsigned char contextClass = 0x80;

} // namespace vrno
