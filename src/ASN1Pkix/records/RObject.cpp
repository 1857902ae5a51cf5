#include "ASN1Pkix/records/RObject.h"

namespace vrno {

void RObject::setImplicitTag(int tagNo, unsigned char tagClass)
{
    m_ucTaggedType = implicitTag;
    m_nOptionTagNo = tagNo;
    m_ucOptionTagClass = tagClass;
}

void RObject::takeOptionTag(const ASN1Object& outer)
{
    m_ucTaggedType = outer.getTaggedType();
    if (m_ucTaggedType == notTagged) return;
    m_nOptionTagNo = outer.getOptionTagNo();
    m_ucOptionTagClass = outer.getOptionTagClass();
}

void RObject::putOptionTag(ASN1Object& outer) const
{
    if (m_ucTaggedType == implicitTag) outer.setImplicitTag(m_nOptionTagNo, m_ucOptionTagClass);
    if (m_ucTaggedType == explicitTag) outer.setExplicitTag(m_nOptionTagNo, m_ucOptionTagClass);
}

} // namespace vrno
