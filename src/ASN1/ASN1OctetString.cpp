#include "ASN1/ASN1OctetString.h"

#include "base/ByteBuilder.h"

namespace vrno {

int ASN1OctetString::fromASN1Object(ByteString& data)
{
    if (const int code = decodeTyped(data, type)) return code;
    if (!m_ucConstructed) return 0;
    if (extractValue() > 0) return fail(*this, 3, "extractValue", *this);
    m_ucConstructed = 0;
    return 0;
}

int ASN1OctetString::extractValue()
{
    const FailuresOf failed{*this, "fromASN1Object"};
    ByteBuilder value;
    for (Octets rest = m_bsValue.octets(); !rest.empty();) {
        if (rest[0] != ASN1_TAG_OCTETSTRING) return failed(1, "Value", formatted(type.mismatch, rest[0]));
        rest = rest.subspan(1);
        const Length size = readLength(rest);
        if (size.form == LengthForm::indefinite || !size.fit(rest.size())) {
            return failed(1, "Value", "ASN1 Format(Length) Error");
        }
        value.append(rest.subspan(size.octets, size.value));
        rest = rest.subspan(size.octets + size.value);
    }
    return value.into(m_bsValue) > 0 ? failed.memory(1, "Value") : 0;
}

} // namespace vrno
