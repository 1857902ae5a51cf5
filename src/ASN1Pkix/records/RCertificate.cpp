#include "ASN1Pkix/records/RCertificate.h"

#include <new>

namespace vrno {

// ---- Validity ----

// Validity ::= SEQUENCE { notBefore Time, notAfter Time }
template <class V> void RValidity::walk(V& v)
{
    v.exactly(2);
    v.required(anyTag, NAMED(m_notBefore), {3, 1});
    v.required(anyTag, NAMED(m_notAfter), {5, 2});
    v.end(3);
}

int RValidity::fromASN1Object(ByteString& data) { return decode(*this, data); }

ByteString& RValidity::toASN1Object() { return encode(*this); }

// ---- SubjectPublicKeyInfo ----

// SubjectPublicKeyInfo ::= SEQUENCE { algorithm AlgorithmIdentifier, subjectPublicKey BIT STRING }
template <class V> void RSubjectPublicKeyInfo::walk(V& v)
{
    v.exactly(2);
    v.required(sequenceTag, NAMED(m_algorithm), {3, 1});
    v.required(bitStringTag, NAMED(m_subjectPublicKey), {6, 2});
    v.end(3);
}

int RSubjectPublicKeyInfo::fromASN1Object(ByteString& data) { return decode(*this, data); }

ByteString& RSubjectPublicKeyInfo::toASN1Object() { return encode(*this); }

ByteString& RSubjectPublicKeyInfo::getSubjectPublicKey() { return bitOctets(*this, NAMED(m_subjectPublicKey)); }

// ---- Extension ----

// Extension ::= SEQUENCE { extnID OBJECT IDENTIFIER, critical BOOLEAN DEFAULT FALSE, extnValue OCTET STRING }
void RExtension::walk(Decoder& v)
{
    v.between(2, 3, "asnSeq.getComponentCount()", "The number of components is not 2 or 3.");
    v.required(oidTag.named("m_extnID"), NAMED(m_extnID), {3});
    if (v.spare()) v.required(booleanTag, NAMED(m_critical), {6});
    v.required(octetStringTag, NAMED(m_extnValue), {9});
}

int RExtension::fromASN1Object(ByteString& data)
{
    m_critical.setValue(nullptr, 0); // an empty value is false
    return decode(*this, data);
}

ByteString& RExtension::getExtensionID() { return oidText(*this, NAMED(m_extnID)); }

ByteString& RExtension::getValue()
{
    m_nLastError = 0;
    return m_extnValue.getValue();
}

// ---- Extensions ----

int RExtensions::fromASN1Object(ByteString& data)
{
    m_identifiers.reset();
    m_knownCount = 0;
    return RSequenceOf::fromASN1Object(data);
}

int RExtensions::find(const char* oid, RExtension& ext)
{
    const int count = getCount();
    if (!m_identifiers) m_identifiers.reset(new (std::nothrow) ByteString[static_cast<std::size_t>(count)]);
    if (!m_identifiers) return failMemory(ext, 2, "m_identifiers");
    for (int i = 0; i < count; ++i) {
        ByteString& known = m_identifiers[static_cast<std::size_t>(i)];
        if (i < m_knownCount && known != oid) continue;
        if (ext.fromASN1Object(get(i)) > 0) return 2;
        if (i == m_knownCount) {
            known = ext.getExtensionID(); // empty if malformed, so it is a different one
            if (known.isOutOfMemory()) return failMemory(ext, 2, "m_extnID");
            ++m_knownCount;
        }
        if (known == oid) return 0;
    }
    return 1;
}

// ---- TBSCertificate ----

// The bit of m_version stays clear, so the default is not encoded. If the allocation fails, the empty value is 0 as well.
void RTBSCertificate::setDefaultVersion()
{
    m_version.setIntValue(0);
    m_version.setExplicitTag(0, contextClass);
}

// TBSCertificate ::= SEQUENCE {
//     version [0] EXPLICIT INTEGER DEFAULT v1, serialNumber INTEGER, signature AlgorithmIdentifier, issuer Name,
//     validity Validity, subject Name, subjectPublicKeyInfo SubjectPublicKeyInfo,
//     issuerUniqueID [1] IMPLICIT BIT STRING OPTIONAL, subjectUniqueID [2] IMPLICIT BIT STRING OPTIONAL,
//     extensions [3] EXPLICIT Extensions OPTIONAL }
template <class V> void RTBSCertificate::walk(V& v)
{
    v.atLeast(6, "At least 6 components are required.");
    v.optional(optionTag(0), 0x01, NAMED(m_version), {3, 1});
    if constexpr (V::decoding) {
        if ((m_ucBitMask & 0x01) == 0) setDefaultVersion();
    }
    v.required(integerTag, NAMED(m_serialNumber), {5, 2});
    v.required(sequenceTag, NAMED(m_signature), {8, 3});
    v.required(sequenceTag, NAMED(m_issuer), {11, 4});
    v.required(sequenceTag, NAMED(m_validity), {14, 5});
    v.required(sequenceTag, NAMED(m_subject), {17, 6});
    v.required(sequenceTag, NAMED(m_subjectPublicKeyInfo), {20, 7});
    v.optional(optionTag(1), 0x02, NAMED(m_issuerUniqueID), {23, 8});
    v.optional(optionTag(2), 0x04, NAMED(m_subjectUniqueID), {25, 9});
    v.optional(optionTag(3), 0x08, NAMED(m_extensions), {27, 10});
    v.end(11);
}

int RTBSCertificate::fromASN1Object(ByteString& data) { return decode(*this, data); }

ByteString& RTBSCertificate::toASN1Object() { return encode(*this); }

ByteString& RTBSCertificate::getSerialNumber(bool keepSign)
{
    m_nLastError = 0;
    m_serialNumber.getBytes(m_bsOutput, keepSign);
    return m_bsOutput.isOutOfMemory() ? failOutputMemory(*this, 1, "m_serialNumber") : m_bsOutput;
}

// ---- Certificate ----

// Certificate ::= SEQUENCE { tbsCertificate TBSCertificate, signatureAlgorithm AlgorithmIdentifier, signature BIT STRING }
void RCertificate::walk(Decoder& v)
{
    v.exactly(3);
    v.required(sequenceTag, NAMED(m_tbsCertificate), {3});
    v.required(sequenceTag, NAMED(m_signatureAlgorithm), {6});
    v.required(bitStringTag, NAMED(m_signature), {9});
}

int RCertificate::fromASN1Object(ByteString& data) { return decode(*this, data); }

ByteString& RCertificate::getSignature() { return bitOctets(*this, NAMED(m_signature)); }

} // namespace vrno
