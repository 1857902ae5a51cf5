#include "ASN1Pkix/records/UDNSettings.h"

#include "base/ByteBuilder.h"
#include "text/UUnicode.h"

#include <cstring>

namespace vrno {

namespace {

struct ShortName {
    const char* oid;
    const char* name;
};

constexpr ShortName shortNames[] = {
    {"2 5 4 6", "c"},
    {"2 5 4 10", "o"},
    {"2 5 4 11", "ou"},
    {"2 5 4 3", "cn"},
    {"2 5 4 7", "l"},
    {"1 2 840 113549 1 9 1", "e"},
    {"2 5 4 8", "s"},
    {"2 5 4 9", "street"},
    {"2 5 4 4", "sn"},
    {"2 5 4 5", "serialNumber"},
    {"2 5 4 12", "title"},
    {"2 5 4 15", "businessCategory"},
    {"2 5 4 42", "givenName"},
    {"2 5 4 43", "initials"},
    {"2 5 4 44", "generationQualifier"},
    {"2 5 4 46", "dnQualifier"},
    {"0 9 2342 19200300 100 1 25", "dc"},
};

const char* shortName(const ByteString& oid)
{
    for (const ShortName& known : shortNames) {
        if (oid == known.oid) return known.name;
    }
    return nullptr;
}

// The text so far, and whether an allocation failed.
struct NameText {
    ByteBuilder out;
    bool outOfMemory = false;

    // Both return `code` and note whether an allocation caused the failure.
    int failed(int code, const Trailed& inner)
    {
        outOfMemory |= inner.outOfMemory();
        return code;
    }
    int failedMemory(int code)
    {
        outOfMemory = true;
        return code;
    }
};

// For a string class whose contents are the text. `code` is for decoding, `code` + 1 for reading the contents.
template <class String> int contentsText(ByteString& encoded, ByteString& text, int code, NameText& name)
{
    String string;
    if (string.fromASN1Object(encoded) > 0) return name.failed(code, string);
    text = string.getValue();
    return text.isOutOfMemory() ? name.failedMemory(code + 1) : 0;
}

int utf8Text(ByteString& encoded, ByteString& text, NameText& name)
{
    ASN1UTF8String string;
    if (string.fromASN1Object(encoded) > 0) return name.failed(12, string);
    ByteString& ucs2 = string.getUnicode();
    if (string.getLastError() > 0) return name.failed(13, string);
    return UUnicode::Unicode2KSC(ucs2, text) > 0 ? name.failedMemory(14) : 0;
}

int bmpText(ByteString& encoded, ByteString& text, NameText& name)
{
    ASN1BMPString string;
    if (string.fromASN1Object(encoded) > 0) return name.failed(15, string);
    ByteString ucs2 = string.getValue();
    if (ucs2.isOutOfMemory()) return name.failedMemory(16);
    if (UUnicode::SwapByteOrder(ucs2.mutableBytes(), ucs2.getLength()) > 0) return 17;
    return UUnicode::Unicode2KSC(ucs2, text) > 0 ? name.failedMemory(18) : 0;
}

int valueText(ByteString& encoded, ByteString& text, NameText& name)
{
    ASN1Object any;
    if (any.fromASN1Object(encoded) > 0) return name.failed(5, any);
    if (any.getTaggedType() != notTagged) return 21;
    switch (any.getPrimitiveTag()) {
    case ASN1_TAG_T61STRING:
        return contentsText<ASN1T61String>(encoded, text, 6, name);
    case ASN1_TAG_PRINTABLESTRING:
        return contentsText<ASN1PrintableString>(encoded, text, 8, name);
    case ASN1_TAG_UNIVERSALSTRING:
        return 10;
    case ASN1_TAG_UTF8STRING:
        return utf8Text(encoded, text, name);
    case ASN1_TAG_BMPSTRING:
        return bmpText(encoded, text, name);
    case ASN1_TAG_IA5STRING:
        return contentsText<ASN1IA5String>(encoded, text, 19, name);
    default:
        return 21;
    }
}

// Adds "type=value", after the separator if there is text already. The value ends at a zero octet, because that would end the
// whole text for a reader of C strings.
int addAttribute(ByteString& encoded, char separator, NameText& name)
{
    RAttributeTypeAndValue attribute;
    if (attribute.fromASN1Object(encoded) > 0) return name.failed(2, attribute);
    const ByteString& oid = attribute.getType();
    if (attribute.getLastError() > 0) return name.failed(3, attribute);
    const char* const type = shortName(oid);
    if (!type) return 4;
    ByteString value;
    if (const int code = valueText(attribute.getValue(), value, name)) return code;
    if (!name.out.empty()) name.out.add(static_cast<unsigned char>(separator));
    name.out.append(type, std::strlen(type));
    name.out.add('=');
    name.out.append(value.getText(), std::strlen(value.getText()));
    return 0;
}

int addRelativeName(ByteString& encoded, NameText& name)
{
    RRelativeDistinguishedName rdn;
    if (rdn.fromASN1Object(encoded) > 0) return name.failed(1, rdn);
    for (int i = 0; i < rdn.getCount(); ++i) {
        if (const int code = addAttribute(rdn.get(i), i == 0 ? ',' : '+', name)) return code;
    }
    return 0;
}

} // namespace

int UDNSettings::RDN2Str(RRDNSequence& name, ByteString& text)
{
    constexpr int outOfMemory = 14;
    NameText rendered;
    int code = 0;
    for (int i = name.getCount() - 1; i >= 0 && code == 0; --i) code = addRelativeName(name.get(i), rendered);
    if (!rendered.outOfMemory && rendered.out.into(text) == 0) return code;
    text.setOutOfMemory();
    return outOfMemory;
}

} // namespace vrno
