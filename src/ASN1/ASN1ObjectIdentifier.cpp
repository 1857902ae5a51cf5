#include "ASN1/ASN1ObjectIdentifier.h"

#include "base/ByteBuilder.h"

#include <charconv>
#include <climits>
#include <cstring>

namespace vrno {

static constexpr int maxArcs = 19;

int ASN1ObjectIdentifier::setOID(const char* text) { return setOID(text, text ? static_cast<int>(std::strlen(text)) : -1); }

int ASN1ObjectIdentifier::setOID(ByteString& text)
{
    if (text.isOutOfMemory()) return setValue(text);
    return setOID(text.getBytes(), text.getLength());
}

int ASN1ObjectIdentifier::setOID(const void* text, int length)
{
    const ByteString copy(text, length);
    if (copy.isOutOfMemory()) return failMemory(*this, 2, "nOID");
    const auto malformed = [this, &copy](int code, Here at) {
        return fail(*this, code, "nOID", formatted("Value(%s) is not ASN1 OID Format", copy.getText()), at);
    };
    unsigned int arcs[maxArcs];
    int count = 0;
    const char* const end = copy.getText() + copy.getLength();
    for (const char* at = copy.getText(); at != end;) {
        if (*at < '0' || *at > '9') {
            ++at;
            continue;
        }
        if (count == maxArcs) return malformed(1, Here::now());
        unsigned int arc = 0;
        const auto [next, error] = std::from_chars(at, end, arc);
        arcs[count++] = error == std::errc{} && arc <= INT_MAX ? arc : INT_MAX;
        at = next;
    }
    if (count < 2) return malformed(2, Here::now());

    ByteBuilder value;
    value.add(static_cast<unsigned char>(arcs[0] * 40 + arcs[1]));
    for (int i = 2; i < count; ++i) {
        unsigned char digits[5];
        value.append(digits, static_cast<std::size_t>(PutHighTag(arcs[i], digits, false)));
    }
    return valueSet(value.into(m_bsValue));
}

ByteString& ASN1ObjectIdentifier::getOID(char separator)
{
    m_nLastError = 0;
    m_bsOutput.clear();
    Octets rest = m_bsValue.octets();
    if (rest.empty()) return failOutput(*this, 2, "nOID", "ASN1 OID Format Error");

    char text[maxArcs * 12 + 12];
    char* at = text;
    const auto put = [&at, &text](int arc) { at = std::to_chars(at, text + sizeof text, arc).ptr; };
    for (int count = 0; !rest.empty(); ++count) {
        int arc = 0;
        const int octets = count < maxArcs ? GetHighTag(rest.data(), static_cast<int>(rest.size()), &arc, false) : 0;
        if (octets == 0) return failOutput(*this, 1, "nOID", "ASN1 OID Format Error");
        if (count == 0) {
            put(arc / 40);
            arc %= 40;
        }
        *at++ = separator;
        put(arc);
        rest = rest.subspan(static_cast<std::size_t>(octets));
    }
    return giveOutput(text, static_cast<std::size_t>(at - text));
}

} // namespace vrno
