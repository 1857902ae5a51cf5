#include "ASN1/ASN1BitString.h"

#include "base/ByteBuilder.h"

#include <bit>

namespace vrno {

int ASN1BitString::setBitString(ByteString& bits, bool trim)
{
    if (bits.isOutOfMemory()) return setValue(bits);
    Octets octets = bits.octets();
    int unused = 0;
    if (trim && !octets.empty()) {
        while (!octets.empty() && octets.back() == 0) octets = octets.first(octets.size() - 1);
        if (octets.empty()) return fail(*this, 1, "nLen", "The input data value is null.");
        unused = std::countr_zero(octets.back());
    }
    ByteBuilder value;
    value.add(static_cast<unsigned char>(unused));
    value.append(octets);
    return valueSet(value.into(m_bsValue));
}

ByteString& ASN1BitString::getBitString(int* unusedBits)
{
    m_nLastError = 0;
    m_bsOutput.clear();
    *unusedBits = 0;
    const Octets value = m_bsValue.octets();
    if (value.empty()) return failOutput(*this, 1, "m_bsValue", "ASN1BitString Format Error(Length = 0)");
    *unusedBits = value[0];
    return giveOutput(value.data() + 1, value.size() - 1);
}

} // namespace vrno
