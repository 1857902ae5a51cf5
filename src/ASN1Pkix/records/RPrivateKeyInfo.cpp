#include "ASN1Pkix/records/RPrivateKeyInfo.h"

namespace vrno {

// ---- PrivateKeyInfo ----

// PrivateKeyInfo ::= SEQUENCE {
//     version INTEGER, privateKeyAlgorithm AlgorithmIdentifier, privateKey OCTET STRING,
//     attributes [0] IMPLICIT Attributes OPTIONAL }
template <class V> void RPrivateKeyInfo::walk(V& v)
{
    v.atLeast(3, "At least 3 components are required.");
    v.required(integerTag, NAMED(m_version), {3, 1});
    v.required(sequenceTag, NAMED(m_privateKeyAlgorithm), {6, 2});
    v.required(octetStringTag, NAMED(m_privateKey), {9, 3});
    v.optional(implicitTagOf(0, ASN1_TAG_SEQUENCE), 0x01, NAMED(m_attributes), {12, 4});
    v.end(5);
}

int RPrivateKeyInfo::fromASN1Object(ByteString& data) { return decode(*this, data); }

ByteString& RPrivateKeyInfo::toASN1Object() { return encode(*this); }

int RPrivateKeyInfo::setAttributes(RPKCS12Attributes& attributes)
{
    if (const int code = copyThrough(*this, attributes, NAMED(m_attributes))) return code;
    m_ucBitMask |= 0x01;
    return 0;
}

ByteString& RPrivateKeyInfo::getPrivateKey()
{
    m_nLastError = 0;
    return m_privateKey.getValue();
}

RAlgorithmIdentifier& RPrivateKeyInfo::getPrivateKeyAlgorithm()
{
    m_nLastError = 0;
    return m_privateKeyAlgorithm;
}

RPKCS12Attributes& RPrivateKeyInfo::getAttributes()
{
    m_nLastError = 0;
    return m_attributes;
}

// ---- EncryptedPrivateKeyInfo ----

// EncryptedPrivateKeyInfo ::= SEQUENCE { encryptionAlgorithm AlgorithmIdentifier, encryptedData OCTET STRING }
template <class V> void REncryptedPrivateKeyInfo::walk(V& v)
{
    v.exactly(2);
    v.required(sequenceTag, NAMED(m_encryptionAlgorithm), {3, 1});
    v.required(octetStringTag, NAMED(m_encryptedData), {6, 2});
    v.end(3);
}

int REncryptedPrivateKeyInfo::fromASN1Object(ByteString& data) { return decode(*this, data); }

ByteString& REncryptedPrivateKeyInfo::toASN1Object() { return encode(*this); }

int REncryptedPrivateKeyInfo::setEncryptionAlgorithm(RAlgorithmIdentifier& data)
{
    return copyThrough(*this, data, NAMED(m_encryptionAlgorithm));
}

int REncryptedPrivateKeyInfo::setEncryptedData(ByteString& octets)
{
    return m_encryptedData.setValue(octets) > 0 ? fail(*this, 1, "m_encryptedData", m_encryptedData) : 0;
}

ByteString& REncryptedPrivateKeyInfo::getEncryptedData()
{
    m_nLastError = 0;
    return m_encryptedData.getValue();
}

} // namespace vrno
