#include "ASN1Pkix/records/RExtensions.h"

namespace vrno {

// ---- basic constraints ----

// BasicConstraints ::= SEQUENCE { cA BOOLEAN DEFAULT FALSE, pathLenConstraint INTEGER (0..MAX) OPTIONAL }
void RBasicConstraints::walk(Decoder& v)
{
    v.optional(booleanTag, 0x01, NAMED(m_cA), {3});
    if ((m_ucBitMask & 0x01) == 0) m_cA.setValue(nullptr, 0); // an empty value is false
    v.optional(integerTag, 0x02, NAMED(m_pathLenConstraint), {6});
}

int RBasicConstraints::fromASN1Object(ByteString& data) { return decode(*this, data); }

// ---- extended key usage ----

ByteString& RExtKeyUsageSyntax::get(int index)
{
    ByteString& encoded = element(*this, NAMED(m_SEQ), index);
    if (m_nLastError > 0) return encoded;
    ASN1ObjectIdentifier asnKeyPurposeId;
    if (asnKeyPurposeId.fromASN1Object(encoded) > 0) return failOutput(*this, 2, "asnKeyPurposeId", asnKeyPurposeId);
    m_bsOutput = asnKeyPurposeId.getOID(' ');
    if (asnKeyPurposeId.getLastError() > 0) return failOutput(*this, 3, "asnKeyPurposeId", asnKeyPurposeId);
    if (m_bsOutput.isOutOfMemory()) return failOutputMemory(*this, 3, "asnKeyPurposeId");
    return m_bsOutput;
}

// ---- authority key identifier ----

// AuthorityKeyIdentifier ::= SEQUENCE {
//     keyIdentifier [0] OCTET STRING OPTIONAL, authorityCertIssuer [1] GeneralNames OPTIONAL,
//     authorityCertSerialNumber [2] INTEGER OPTIONAL }
//
// The contents of [1] begin with the option tag of a GeneralName. So the codec keeps all of them as the value of the list.
void RAuthorityKeyIdentifier::walk(Decoder& v)
{
    v.optional(optionTag(0), 0x01, NAMED(m_keyIdentifier), {2});
    v.optional(optionTag(1), 0x02, NAMED(m_authorityCertIssuer), {4});
    v.optional(optionTag(2), 0x04, NAMED(m_authorityCertSerialNumber), {6});
    const int pair = m_ucBitMask & 0x06;
    v.rule(pair == 0 || pair == 0x06, 4, "authorityCertIssuer and authorityCertSerialNumber",
           "authorityCertIssuer and authorityCertSerialNumber shall both be present or both be absent");
}

int RAuthorityKeyIdentifier::fromASN1Object(ByteString& data) { return decode(*this, data); }

ByteString& RAuthorityKeyIdentifier::getKeyIdentifier() { return relay(*this, m_keyIdentifier.getValue(), NAMED(m_keyIdentifier)); }

ByteString& RAuthorityKeyIdentifier::getAuthorityCertSerialNumberByteString()
{
    return magnitude(*this, NAMED(m_authorityCertSerialNumber), "Serial Number is Negative");
}

// ---- CRL distribution points ----

// DistributionPointName ::= CHOICE { fullName [0] GeneralNames, nameRelativeToCRLIssuer [1] RelativeDistinguishedName }
int RDistributionPointName::fromASN1Object(ByteString& data)
{
    m_ucBitMask = 0;
    ByteString element;
    if (const int code = unwrap(*this, data, element)) return code;
    ASN1Object asnObj;
    if (asnObj.fromASN1Object(element) > 0) return fail(*this, 3, "asnObj", asnObj);
    switch (asnObj.getOptionTagNo()) {
    case 0:
        m_ucBitMask = 0x01;
        element.setAt(0, ASN1_TAG_SEQUENCE | constructedBit);
        return m_fullName.fromASN1Object(element) > 0 ? fail(*this, 3, "m_fullName", m_fullName) : 0;
    case 1:
        m_ucBitMask = 0x02;
        element.setAt(0, ASN1_TAG_SET | constructedBit);
        if (m_nameRelativeToCRLIssuer.fromASN1Object(element) == 0) return 0;
        return fail(*this, 4, "m_nameRelativeToCRLIssuer", m_nameRelativeToCRLIssuer);
    default:
        return fail(*this, 5, "m_ucBitMask", "Any component dose not chosen.");
    }
}

// DistributionPoint ::= SEQUENCE {
//     distributionPoint [0] DistributionPointName OPTIONAL, reasons [1] ReasonFlags OPTIONAL, cRLIssuer [2] GeneralNames OPTIONAL }
void RDistributionPoint::walk(Decoder& v)
{
    ASN1Sequence asnSeqDP;
    v.optional(optionTag(0), 0x01, NAMED(asnSeqDP), {2});
    if ((m_ucBitMask & 0x01) != 0) {
        const bool isName = v.good() && m_distributionPoint.fromASN1Object(asnSeqDP.getComponent(0)) == 0;
        if (v.good() && !isName) v.refuse(4, "m_distributionPoint", m_distributionPoint);
    }
    v.optional(optionTag(1), 0x02, NAMED(m_reasons), {5});
    v.optional(implicitTagOf(2, ASN1_TAG_SEQUENCE), 0x04, NAMED(m_cRLIssuer), {7});
}

int RDistributionPoint::fromASN1Object(ByteString& data) { return decode(*this, data); }

int RDistributionPoint::getReasons(ByteString& bits, int* unusedBits)
{
    bits = m_reasons.getBitString(unusedBits);
    if (m_reasons.getLastError() > 0) return fail(*this, 1, "m_reasons", m_reasons);
    return bits.isOutOfMemory() ? failMemory(*this, 1, "m_reasons") : 0;
}

// ---- authority information access ----

// AccessDescription ::= SEQUENCE { accessMethod OBJECT IDENTIFIER, accessLocation GeneralName }
void RAccessDescription::walk(Decoder& v)
{
    v.exactly(2);
    v.required(oidTag.saying("First component is not ASN1_TAG_OID."), NAMED(m_accessMethod), {3});
    v.required(anyTag, NAMED(m_accessLocation), {6});
}

int RAccessDescription::fromASN1Object(ByteString& data) { return decode(*this, data); }

ByteString& RAccessDescription::getsetAccessMethod() { return oidText(*this, NAMED(m_accessMethod)); }

} // namespace vrno
