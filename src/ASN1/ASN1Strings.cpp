#include "ASN1/ASN1Strings.h"

#include "text/UUTF8String.h"

#include <cstring>

namespace vrno {

static bool isOneOf(unsigned char octet, const char* set) { return octet != 0 && std::strchr(set, octet) != nullptr; }

static bool isAlphanumericOrBlank(unsigned char octet)
{
    return (octet >= 'A' && octet <= 'Z') || (octet >= 'a' && octet <= 'z') || (octet >= '0' && octet <= '9') || octet == ' ';
}

static bool isIA5(unsigned char octet) { return octet >= 32 && octet <= 126; }

static bool isPrintable(unsigned char octet) { return isAlphanumericOrBlank(octet) || isOneOf(octet, "'()+,-./:=?"); }

static bool isVisible(unsigned char octet) { return isAlphanumericOrBlank(octet) || isOneOf(octet, "!\"%&'()*+,-./:;<=>?@\\^_|~"); }

// Copies `data` if all its octets are in the set; if not, `message` is formatted with the first octet outside it.
template <class String>
static int setChecked(String& string, const void* data, int length, bool (*inSet)(unsigned char), const char* message,
                      Here at = Here::now())
{
    const auto* octets = static_cast<const unsigned char*>(data);
    for (int i = 0; octets != nullptr && i < length; ++i) {
        if (!inSet(octets[i])) return fail(string, 1, "data", formatted(message, octets[i]), at);
    }
    return string.ASN1Object::setValue(data, length);
}

int ASN1IA5String::setValue(const void* data, int length)
{
    return setChecked(*this, data, length, isIA5, "Value(%x)is not ASN1IA5String");
}

int ASN1PrintableString::setValue(const void* data, int length)
{
    return setChecked(*this, data, length, isPrintable, "Value(%x)is not ASN1PrintableString");
}

int ASN1VisibleString::setValue(const void* data, int length)
{
    return setChecked(*this, data, length, isVisible, "Char (%0x2d)does not in ASN1_TAG_VISIBLESTRING");
}

ByteString& ASN1UTF8String::getUnicode()
{
    m_nLastError = 0;
    if (UUTF8String::UTF8ToUnicode(m_bsValue, m_bsOutput) > 0) return failOutputMemory(*this, 1, "m_bsValue");
    return m_bsOutput;
}

} // namespace vrno
