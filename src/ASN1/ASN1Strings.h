// The character strings (X.680, 41). The value is the contents, unchanged. Decoding does not test it. In the classes with a
// character set, setting returns 1 for an octet outside the set, with the value unchanged.
#pragma once

#include "ASN1/ASN1Object.h"

namespace vrno {

// Octets 32 to 126.
class ASN1IA5String : public ASN1Typed<ASN1IA5String, ASN1CheckedValue> {
public:
    static constexpr const char* className = "ASN1IA5String";
    static constexpr ASN1Type type{className, ASN1_TAG_IA5STRING, "TagType(%d)is not ASN1_TAG_IA5STRING"};

    ASN1IA5String() = default;
    explicit ASN1IA5String(ByteString& data) { m_nLastError = ASN1IA5String::fromASN1Object(data); }
    using ASN1CheckedValue::setValue;
    int setValue(const void* data, int length) override;
};

// Letters, digits, blank and '()+,-./:=?
class ASN1PrintableString : public ASN1Typed<ASN1PrintableString, ASN1CheckedValue> {
public:
    static constexpr const char* className = "ASN1PrintableString";
    static constexpr ASN1Type type{className, ASN1_TAG_PRINTABLESTRING, "TagType(%d)is not ASN1_TAG_PRINTABLESTRING"};

    using ASN1CheckedValue::setValue;
    int setValue(const void* data, int length) override;
};

// Letters, digits, blank and !"%&'()*+,-./:;<=>?@\^_|~ only; X.680 allows more.
class ASN1VisibleString : public ASN1Typed<ASN1VisibleString, ASN1CheckedValue> {
public:
    static constexpr const char* className = "ASN1VisibleString";
    static constexpr ASN1Type type{className, ASN1_TAG_VISIBLESTRING, "Tag(%0x2d) is not ASN1_TAG_VISIBLESTRING"};

    using ASN1CheckedValue::setValue;
    int setValue(const void* data, int length) override;
};

// Any octets.
class ASN1T61String : public ASN1Typed<ASN1T61String, ASN1CheckedValue> {
public:
    static constexpr const char* className = "ASN1T61String";
    static constexpr ASN1Type type{className, ASN1_TAG_T61STRING, "TagType(%d) is not ASN1_TAG_T61STRING"};
};

// Any octets: UCS-2, big-endian.
class ASN1BMPString : public ASN1Typed<ASN1BMPString> {
public:
    static constexpr const char* className = "ASN1BMPString";
    static constexpr ASN1Type type{className, ASN1_TAG_BMPSTRING, "TagType(%d) is not ASN1_TAG_BMPSTRING"};
};

// Any octets.
class ASN1UTF8String : public ASN1Typed<ASN1UTF8String> {
public:
    static constexpr const char* className = "ASN1UTF8String";
    static constexpr ASN1Type type{className, ASN1_TAG_UTF8STRING, "Tag(%0x2d) is not ASN1_TAG_UTF8STRING"};

    // The contents in UCS-2, little-endian, converted as by UUTF8String. `m_nLastError` 1 on allocation failure.
    ByteString& getUnicode();
};

} // namespace vrno
