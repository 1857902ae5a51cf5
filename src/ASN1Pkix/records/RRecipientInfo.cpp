#include "ASN1Pkix/records/RRecipientInfo.h"

#include "ASN1/ASN1Null.h"
#include "ASN1Pkix/records/RForeignRecipients.h"

namespace vrno {

// ---- IssuerAndSerialNumber ----

// IssuerAndSerialNumber ::= SEQUENCE { issuer Name, serialNumber INTEGER }
template <class V> void RIssuerAndSerialNumber::walk(V& v)
{
    ASN1Null asnNull;
    v.optional(sequenceTag, 0x01, NAMED(m_issuer), {2, 1});
    if ((m_ucBitMask & 0x01) == 0) {
        v.required(nullTag.saying("issuer component is not ASN1_TAG_SEQUENCE or ASN1_TAG_NULLTAG."), NAMED(asnNull), {2, 1});
    }
    v.required(integerTag, NAMED(m_serialNumber), {5, 2});
    v.end(3);
}

int RIssuerAndSerialNumber::fromASN1Object(ByteString& data) { return decode(*this, data); }

ByteString& RIssuerAndSerialNumber::toASN1Object() { return encode(*this); }

int RIssuerAndSerialNumber::setIssuer(RRDNSequence& data)
{
    if (const int code = copyThrough(*this, data, NAMED(m_issuer))) return code;
    m_ucBitMask |= 0x01;
    return 0;
}

int RIssuerAndSerialNumber::setSerialNumber(ByteString& octets)
{
    return m_serialNumber.setBytes(octets, 0) > 0 ? fail(*this, 1, "m_serialNumber", m_serialNumber) : 0;
}

// ---- RecipientIdentifier ----

int RRecipientIdentifier::fromASN1Object(ByteString& data)
{
    m_ucBitMask = nothing;
    ASN1Object asnObj;
    if (asnObj.fromASN1Object(data) > 0) return fail(*this, 1, "asnObj", asnObj);
    switch (asnObj.getTaggedType()) {
    case notTagged:
        return keepAs<RIssuerAndSerialNumber>(*this, issuerAndSerialNumber, data, "issuerAndSerialNumber", 2);
    case implicitTag:
        return keep(*this, subjectKeyIdentifier, data);
    default:
        return fail(*this, 3, "asnObj", "Unknown component is chosen.");
    }
}

ByteString& RRecipientIdentifier::toASN1Object() { return encodeChoice(*this); }

int RRecipientIdentifier::setIssuerAndSerialNumber(RIssuerAndSerialNumber& data)
{
    ByteString& encoded = data.toASN1Object();
    return data.getLastError() > 0 ? fail(*this, 1, "data", data) : keep(*this, issuerAndSerialNumber, encoded);
}

int RRecipientIdentifier::setSubjectKeyIdentifier(ByteString& keyId)
{
    ASN1OctetString asnOct;
    if (asnOct.setValue(keyId) > 0) return fail(*this, 1, "asnOct", asnOct);
    asnOct.setImplicitTag(0, contextClass);
    ByteString& encoded = asnOct.toASN1Object();
    return asnOct.getLastError() > 0 ? fail(*this, 2, "asnOct", asnOct) : keep(*this, subjectKeyIdentifier, encoded);
}

// ---- KeyTransRecipientInfo ----

// KeyTransRecipientInfo ::= SEQUENCE { version CMSVersion, rid RecipientIdentifier,
//     keyEncryptionAlgorithm AlgorithmIdentifier, encryptedKey OCTET STRING }
template <class V> void RKeyTransRecipientInfo::walk(V& v)
{
    v.exactly(4);
    v.required(integerTag, NAMED(m_version), {3, 1});
    v.required(anyTag, NAMED(m_rid), {6, 2});
    v.required(sequenceTag, NAMED(m_keyEncryptionAlgorithm), {8, 3});
    v.required(octetStringTag.named("asSeq"), NAMED(m_encryptedKey), {11, 4});
    v.end(5);
}

int RKeyTransRecipientInfo::fromASN1Object(ByteString& data) { return decode(*this, data); }

ByteString& RKeyTransRecipientInfo::toASN1Object() { return encode(*this); }

int RKeyTransRecipientInfo::setVersion(int version) { return setCMSVersion(*this, version); }

int RKeyTransRecipientInfo::setRid(RRecipientIdentifier& data) { return copyThrough(*this, data, NAMED(m_rid)); }

int RKeyTransRecipientInfo::setKeyEncryptionAlgorithm(RAlgorithmIdentifier& data)
{
    return copyThrough(*this, data, NAMED(m_keyEncryptionAlgorithm));
}

int RKeyTransRecipientInfo::setEncryptedKey(ByteString& octets)
{
    return m_encryptedKey.setValue(octets) > 0 ? fail(*this, 1, "m_encryptedKey", m_encryptedKey) : 0;
}

// ---- RecipientInfo ----

int RRecipientInfo::fromASN1Object(ByteString& data)
{
    m_ucBitMask = nothing;
    ASN1Object asnObj;
    if (asnObj.fromASN1Object(data) > 0) return fail(*this, 1, "asnObj", asnObj);
    if (asnObj.getTaggedType() == notTagged) {
        return keepAs<RKeyTransRecipientInfo>(*this, keyTransRecipientInfo, data, "keyTransRecipientInfo", 2);
    }
    switch (asnObj.getOptionTagNo()) {
    case 1:
        return keepAsTagged<RKeyAgreeRecipientInfo>(*this, keyAgreeRecipientInfo, data, "keyAgreeRecipientInfo", 3);
    case 2:
        return keepAsTagged<RKEKRecipientInfo>(*this, kEKRecipientInfo, data, "kEKRecipientInfo", 4);
    default:
        return fail(*this, 5, "asnObj", "Unknown component is chosen.");
    }
}

ByteString& RRecipientInfo::toASN1Object() { return encodeChoice(*this); }

int RRecipientInfo::setKeyTransRecipientInfo(RKeyTransRecipientInfo& data)
{
    ByteString& encoded = data.toASN1Object();
    return data.getLastError() > 0 ? fail(*this, 1, "data", data) : keep(*this, keyTransRecipientInfo, encoded);
}

int RRecipientInfos::addRecipientInfo(RRecipientInfo& data)
{
    ByteString& encoded = data.toASN1Object();
    if (data.getLastError() > 0) return fail(*this, 1, "data", data);
    return m_SET.addComponent(encoded, -1) > 0 ? fail(*this, 2, "m_SET", m_SET) : 0;
}

} // namespace vrno
