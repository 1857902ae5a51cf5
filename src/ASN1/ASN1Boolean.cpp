#include "ASN1/ASN1Boolean.h"

namespace vrno {

int ASN1Boolean::setBoolValue(int value)
{
    const unsigned char octet = value ? 0xFF : 0;
    return valueSet(m_bsValue.setData(&octet, 1));
}

bool ASN1Boolean::getBoolValue() const { return m_bsValue.getLength() > 0 && m_bsValue.getBytes()[0] == 0xFF; }

} // namespace vrno
