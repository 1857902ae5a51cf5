#include "ASN1Pkix/records/RAttribute.h"

namespace vrno {

// Attribute ::= SEQUENCE { attrType OBJECT IDENTIFIER, attrValues SET OF AttributeValue }
template <class V> void RAttribute::walk(V& v)
{
    v.exactly(2);
    v.required(oidTag.saying("First component is not ASN1_TAG_OID."), NAMED(m_attrType), {3, 1});
    v.required(anyTag, NAMED(m_attrValues), {6, 2});
    v.end(3);
}

int RAttribute::fromASN1Object(ByteString& data) { return decode(*this, data); }

ByteString& RAttribute::toASN1Object() { return encode(*this); }

int RAttribute::setAttrType(const char* oid) { return m_attrType.setOID(oid) > 0 ? fail(*this, 1, "m_attrType", m_attrType) : 0; }

int RAttribute::addAttrValue(ByteString& encoded)
{
    return m_attrValues.addComponent(encoded, -1) > 0 ? fail(*this, 1, "m_attrValues", m_attrValues) : 0;
}

ByteString& RAttribute::getAttrType() { return oidText(*this, NAMED(m_attrType)); }

} // namespace vrno
