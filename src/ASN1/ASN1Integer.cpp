#include "ASN1/ASN1Integer.h"

#include "base/ByteBuilder.h"

#include <cstdint>

namespace vrno {

int ASN1Integer::setIntValue(int value)
{
    unsigned char octets[5];
    int first = 5;
    const int sign = value < 0 ? -1 : 0;
    do {
        octets[--first] = static_cast<unsigned char>(value & 0xFF);
        value >>= 8;
    } while (value != sign);
    return setBytes(octets + first, 5 - first, sign);
}

int ASN1Integer::getIntValue() const
{
    const Octets octets = m_bsValue.octets();
    if (octets.empty() || octets.size() > 4) return 0;
    std::uint32_t value = (octets[0] & 0x80) ? ~0U : 0U;
    for (const unsigned char octet : octets) value = value << 8 | octet;
    return static_cast<int>(value);
}

int ASN1Integer::setBytes(const unsigned char* data, int length, int sign)
{
    if (data == nullptr || length < 1) {
        m_bsValue.clear();
        return 0;
    }
    const bool negative = (data[0] & 0x80) != 0;
    ByteBuilder octets;
    if (sign == 0 && negative) octets.add(0x00);
    if (sign == -1 && !negative) octets.add(0xFF);
    octets.append(data, static_cast<std::size_t>(length));
    return valueSet(octets.into(m_bsValue));
}

int ASN1Integer::setBytes(ByteString& data, int sign)
{
    if (data.isOutOfMemory()) return setValue(data);
    return setBytes(data.getBytes(), data.getLength(), sign);
}

int ASN1Integer::getBytes(ByteString& out, bool keepSign) const
{
    out.clear();
    Octets octets = m_bsValue.octets();
    if (octets.empty()) return 0;
    const bool negative = (octets[0] & 0x80) != 0;
    if (!keepSign && octets.size() > 1 && (octets[0] == 0x00 || octets[0] == 0xFF)) octets = octets.subspan(1);
    out.setData(octets.data(), static_cast<int>(octets.size()));
    return negative ? -1 : 0;
}

} // namespace vrno
