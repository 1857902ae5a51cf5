#include "ASN1Pkix/records/RNames.h"

#include "ASN1Pkix/records/UDNSettings.h"

namespace vrno {

// ---- AttributeTypeAndValue ----

// AttributeTypeAndValue ::= SEQUENCE { type OBJECT IDENTIFIER, value ANY DEFINED BY type }
void RAttributeTypeAndValue::walk(Decoder& v)
{
    v.exactly(2);
    v.required(oidTag.saying("First component is not ASN1_TAG_OID."), NAMED(m_type), {3});
    v.required(anyTag, NAMED(m_value), {6});
}

int RAttributeTypeAndValue::fromASN1Object(ByteString& data) { return decode(*this, data); }

ByteString& RAttributeTypeAndValue::getType() { return oidText(*this, NAMED(m_type)); }

// ---- GeneralName ----

int RGeneralName::fromASN1Object(ByteString& data)
{
    m_ucBitMask = nothing;
    m_bsGeneralName.clear();
    if (const int code = unwrap(*this, data, m_bsGeneralName)) return code;
    ASN1Object asnObj;
    if (asnObj.fromASN1Object(m_bsGeneralName) > 0) return fail(*this, 2, "asnObj", asnObj);
    const int tagNo = asnObj.getOptionTagNo();
    if (tagNo < 0 || tagNo > 8) return fail(*this, 3, "m_ucBitMask", "Any component is not chosen.");
    m_ucBitMask = tagNo + 1;
    return 0;
}

ByteString& RGeneralName::toASN1Object()
{
    m_nLastError = 0;
    m_bsOutput.clear();
    if (m_ucBitMask == nothing) return failOutput(*this, 1, "m_ucBitMask", "Any component does not chosen.");
    ASN1Object asnObj;
    asnObj.setPrimitiveTag(ASN1_TAG_SEQUENCE);
    asnObj.setImplicitTag(m_nOptionTagNo, m_ucOptionTagClass);
    if (asnObj.setValue(m_bsGeneralName) > 0) return failOutput(*this, 2, "asnObj", asnObj);
    m_bsOutput = m_ucTaggedType == notTagged ? m_bsGeneralName : asnObj.toASN1Object();
    if (asnObj.getLastError() > 0) return failOutput(*this, 2, "asnObj", asnObj);
    return m_bsOutput.isOutOfMemory() ? failOutputMemory(*this, 2, "asnObj") : m_bsOutput;
}

ByteString& RGeneralName::getRFC822Name() { return contentsAs<ASN1IA5String>(*this, m_bsGeneralName, "asnRFC822Name"); }

ByteString& RGeneralName::getDNSName() { return contentsAs<ASN1IA5String>(*this, m_bsGeneralName, "asnDNSName"); }

ByteString& RGeneralName::getUniformResourceIdentifier()
{
    return contentsAs<ASN1IA5String>(*this, m_bsGeneralName, "asnUniformResId");
}

ByteString& RGeneralName::getIPAddress() { return contentsAs<ASN1OctetString>(*this, m_bsGeneralName, "asnIPAddr"); }

ByteString& RGeneralName::getRegisteredID()
{
    ASN1ObjectIdentifier asnRegisteredID;
    if (asnRegisteredID.fromASN1Object(m_bsGeneralName) > 0) return failOutput(*this, 1, "asnRegisteredID", asnRegisteredID);
    return oidText(*this, NAMED(asnRegisteredID));
}

ByteString& RGeneralName::getDNformDirectoryName()
{
    m_nLastError = 0;
    m_bsOutput.clear();
    RRDNSequence rdnSequence(m_bsGeneralName);
    if (rdnSequence.getLastError() > 0) return failOutput(*this, 1, "rdnSequence", rdnSequence);
    m_nLastError = UDNSettings::RDN2Str(rdnSequence, m_bsOutput) > 0 ? 1 : 0;
    if (m_bsOutput.isOutOfMemory()) return failOutputMemory(*this, 1, "rdnSequence");
    return m_bsOutput;
}

// ---- otherName ----

// AnotherName ::= SEQUENCE { type-id OBJECT IDENTIFIER, value [0] EXPLICIT ANY DEFINED BY type-id }
void RAnotherName::walk(Decoder& v)
{
    v.required(anyTag, NAMED(m_typeId), {2});
    v.required(anyTag, NAMED(m_value), {4});
}

int RAnotherName::fromASN1Object(ByteString& data) { return decode(*this, data); }

ByteString& RAnotherName::getTypeId() { return oidText(*this, NAMED(m_typeId)); }

void RVID::walk(Decoder& v)
{
    v.exactly(2);
    v.required(sequenceTag, NAMED(m_hashAlg), {3});
    v.required(optionTag(0), NAMED(m_virtualID), {6});
}

int RVID::fromASN1Object(ByteString& data) { return decode(*this, data); }

ByteString& RVID::getVirtualID() { return relay(*this, m_virtualID.getValue(), m_virtualID, "m_virtualID"); }

void RIdentifyData::walk(Decoder& v)
{
    v.atLeast(1, "At least 1 component is required.");
    v.required(utf8StringTag, NAMED(m_realName), {3});
    v.optional(sequenceTag, 0x01, NAMED(m_userInfo), {6});
}

int RIdentifyData::fromASN1Object(ByteString& data) { return decode(*this, data); }

ByteString& RIdentifyData::getRealName() { return relay(*this, m_realName.getUnicode(), m_realName, "m_realName"); }

ByteString& RIdentifyData::getUserInfo(int index) { return element(*this, NAMED(m_userInfo), index); }

} // namespace vrno
