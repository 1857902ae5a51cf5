// The records of an X.509 certificate (RFC 5280, 4.1).
#pragma once

#include "ASN1/ASN1BitString.h"
#include "ASN1/ASN1Boolean.h"
#include "ASN1/ASN1Integer.h"
#include "ASN1Pkix/records/Lists.h"
#include "ASN1Pkix/records/RAlgorithmIdentifier.h"
#include "ASN1Pkix/records/RNames.h"
#include "ASN1Pkix/records/RTime.h"

#include <memory>

namespace vrno {

// Validity (4.1.2.5).
class RValidity : public RObject {
public:
    static constexpr const char* className = "RValidity";

    int fromASN1Object(ByteString& data);
    ByteString& toASN1Object();
    // Seconds since 1970-01-01 00:00:00 UTC.
    int getNotBefore() const { return m_notBefore.getTime(); }
    int getNotAfter() const { return m_notAfter.getTime(); }

    template <class V> void walk(V& v);

    RTime m_notBefore;
    RTime m_notAfter;
};

// SubjectPublicKeyInfo (4.1.2.7).
class RSubjectPublicKeyInfo : public RObject {
public:
    static constexpr const char* className = "RSubjectPublicKeyInfo";

    int fromASN1Object(ByteString& data);
    ByteString& toASN1Object();
    RAlgorithmIdentifier& getAlgorithm() { return m_algorithm; }
    // The octets of the BIT STRING; for RSA an encoded RSAPublicKey. `m_nLastError` 1 if it has no octets.
    ByteString& getSubjectPublicKey();

    template <class V> void walk(V& v);

    RAlgorithmIdentifier m_algorithm;
    ASN1BitString m_subjectPublicKey;
};

// Extension (4.1.2.9). It is only decoded.
class RExtension : public RObject {
public:
    static constexpr const char* className = "RExtension";

    int fromASN1Object(ByteString& data);
    // The text form with blanks.
    ByteString& getExtensionID();
    // The contents of the OCTET STRING: the encoded value of the extension.
    ByteString& getValue();

    void walk(Decoder& v);

    ASN1ObjectIdentifier m_extnID;
    ASN1Boolean m_critical; // false if absent
    ASN1OctetString m_extnValue;
};

// SEQUENCE OF Extension. In a certificate the explicit tag [3] is its option tag.
class RExtensions : public RSequenceOf<RExtensions> {
public:
    static constexpr const char* className = "RExtensions";

    int fromASN1Object(ByteString& data);
    // Decodes the first extension with this identifier ("2 5 29 15") into `ext`. 0, or 1: there is none; 2, with the trail in
    // `ext`: one before it, or that one, does not decode. A search decodes nothing that an earlier one has found to be another.
    int find(const char* oid, RExtension& ext);

private:
    std::unique_ptr<ByteString[]> m_identifiers; // one for each extension, filled up to m_knownCount
    int m_knownCount = 0;
};

// TBSCertificate (4.1.2).
class RTBSCertificate : public RObject {
public:
    static constexpr const char* className = "RTBSCertificate";

    int fromASN1Object(ByteString& data);
    ByteString& toASN1Object();
    // 0 means version 1, also if the field is absent.
    int getVersion() const { return m_version.getIntValue(); }
    // The octets as ASN1Integer::getBytes gives them.
    ByteString& getSerialNumber(bool keepSign);
    RAlgorithmIdentifier& getSignature() { return m_signature; }
    RRDNSequence& getIssuer() { return m_issuer; }
    RValidity& getValidity() { return m_validity; }
    RRDNSequence& getSubject() { return m_subject; }
    RSubjectPublicKeyInfo& getSubjectPublicKeyInfo() { return m_subjectPublicKeyInfo; }
    RExtensions& getExtensions() { return m_extensions; }

    template <class V> void walk(V& v);

    unsigned char m_ucBitMask = 0; // 1 version, 2 issuerUniqueID, 4 subjectUniqueID, 8 extensions
    ASN1Integer m_version;
    ASN1Integer m_serialNumber;
    RAlgorithmIdentifier m_signature;
    RRDNSequence m_issuer;
    RValidity m_validity;
    RRDNSequence m_subject;
    RSubjectPublicKeyInfo m_subjectPublicKeyInfo;
    ASN1BitString m_issuerUniqueID;
    ASN1BitString m_subjectUniqueID;
    RExtensions m_extensions;

private:
    void setDefaultVersion();
};

// Certificate (4.1.1). It is only decoded.
class RCertificate : public RObject {
public:
    static constexpr const char* className = "RCertificate";

    int fromASN1Object(ByteString& data);
    RTBSCertificate& getTBSCertificate() { return m_tbsCertificate; }
    // The octets of the BIT STRING. `m_nLastError` 1 if it has no octets.
    ByteString& getSignature();

    void walk(Decoder& v);

    RTBSCertificate m_tbsCertificate;
    RAlgorithmIdentifier m_signatureAlgorithm;
    ASN1BitString m_signature;
};

} // namespace vrno
