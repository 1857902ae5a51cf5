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

// The contents of a string class whose octets are the text. `code` is that of the decoding, the next that of reading.
template <class String> int contentsText(ByteString& encoded, ByteString& text, int code)
{
    String string;
    if (string.fromASN1Object(encoded) > 0) return code;
    text = string.getValue();
    return text.getError() > 0 ? code + 1 : 0;
}

int utf8Text(ByteString& encoded, ByteString& text)
{
    ASN1UTF8String string;
    if (string.fromASN1Object(encoded) > 0) return 12;
    ByteString& ucs2 = string.getUnicode();
    if (string.getLastError() > 0) return 13;
    return UUnicode::Unicode2KSC(ucs2, text) > 0 ? 14 : 0;
}

int bmpText(ByteString& encoded, ByteString& text)
{
    ASN1BMPString string;
    if (string.fromASN1Object(encoded) > 0) return 15;
    ByteString ucs2 = string.getValue();
    if (ucs2.getError() > 0) return 16;
    if (UUnicode::SwapByteOrder(ucs2.mutableBytes(), ucs2.getLength()) > 0) return 17;
    return UUnicode::Unicode2KSC(ucs2, text) > 0 ? 18 : 0;
}

int valueText(ByteString& encoded, ByteString& text)
{
    ASN1Object any;
    if (any.fromASN1Object(encoded) > 0) return 5;
    if (any.getTaggedType() != notTagged) return 21;
    switch (any.getPrimitiveTag()) {
    case ASN1_TAG_T61STRING:
        return contentsText<ASN1T61String>(encoded, text, 6);
    case ASN1_TAG_PRINTABLESTRING:
        return contentsText<ASN1PrintableString>(encoded, text, 8);
    case ASN1_TAG_UNIVERSALSTRING:
        return 10;
    case ASN1_TAG_UTF8STRING:
        return utf8Text(encoded, text);
    case ASN1_TAG_BMPSTRING:
        return bmpText(encoded, text);
    case ASN1_TAG_IA5STRING:
        return contentsText<ASN1IA5String>(encoded, text, 19);
    default:
        return 21;
    }
}

// Adds "name=value", behind the separator when there is text already. The value ends at a zero octet, which would end
// the whole text for whoever reads it.
int addAttribute(ByteString& encoded, char separator, ByteBuilder& out)
{
    RAttributeTypeAndValue attribute;
    if (attribute.fromASN1Object(encoded) > 0) return 2;
    const ByteString& type = attribute.getType();
    if (attribute.getLastError() > 0) return 3;
    const char* const name = shortName(type);
    if (!name) return 4;
    ByteString value;
    if (const int code = valueText(attribute.getValue(), value)) return code;
    if (!out.empty()) out.add(static_cast<unsigned char>(separator));
    out.append(name, std::strlen(name));
    out.add('=');
    out.append(value.getText(), std::strlen(value.getText()));
    return 0;
}

int addRelativeName(ByteString& encoded, ByteBuilder& out)
{
    RRelativeDistinguishedName rdn;
    if (rdn.fromASN1Object(encoded) > 0) return 1;
    for (int i = 0; i < rdn.getCount(); ++i) {
        if (const int code = addAttribute(rdn.get(i), i == 0 ? ',' : '+', out)) return code;
    }
    return 0;
}

} // namespace

int UDNSettings::RDN2Str(RRDNSequence& name, ByteString& text)
{
    constexpr int outOfMemory = 14;
    text.clear();
    ByteBuilder out;
    int code = 0;
    for (int i = name.getCount() - 1; i >= 0 && code == 0; --i) code = addRelativeName(name.get(i), out);
    if (out.into(text) > 0) return outOfMemory;
    return code;
}

} // namespace vrno
