// The records of an X.509 certificate (RFC 5280, 4.1).
#pragma once

#include "ASN1/ASN1BitString.h"
#include "ASN1/ASN1Boolean.h"
#include "ASN1/ASN1Integer.h"
#include "ASN1Pkix/records/Lists.h"
#include "ASN1Pkix/records/RAlgorithmIdentifier.h"
#include "ASN1Pkix/records/RNames.h"
#include "ASN1Pkix/records/RTime.h"

namespace vrno {

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

class RSubjectPublicKeyInfo : public RObject {
public:
    static constexpr const char* className = "RSubjectPublicKeyInfo";

    int fromASN1Object(ByteString& data);
    ByteString& toASN1Object();
    RAlgorithmIdentifier& getAlgorithm() { return m_algorithm; }
    // The octets behind the octet of unused bits; for RSA the DER of an RSAPublicKey.
    ByteString& getSubjectPublicKey();

    template <class V> void walk(V& v);

    RAlgorithmIdentifier m_algorithm;
    ASN1BitString m_subjectPublicKey;
};

class RExtension : public RObject {
public:
    static constexpr const char* className = "RExtension";

    int fromASN1Object(ByteString& data);
    // The text form with blanks.
    ByteString& getExtensionID();
    // The DER of the extension's value, without the OCTET STRING around it.
    ByteString& getValue();

    void walk(Decoder& v);

    ASN1ObjectIdentifier m_extnID;
    ASN1Boolean m_critical; // false by default
    ASN1OctetString m_extnValue;
};

// SEQUENCE OF Extension; in a certificate with the [3] around it as its option tag.
class RExtensions : public RSequenceOf<RExtensions> {
public:
    static constexpr const char* className = "RExtensions";
};

class RTBSCertificate : public RObject {
public:
    static constexpr const char* className = "RTBSCertificate";

    int fromASN1Object(ByteString& data);
    ByteString& toASN1Object();
    // 0 stands for version 1, also where the field is absent.
    int getVersion() const { return m_version.getIntValue(); }
    // As ASN1Integer::getBytes gives it.
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

class RCertificate : public RObject {
public:
    static constexpr const char* className = "RCertificate";

    int fromASN1Object(ByteString& data);
    RTBSCertificate& getTBSCertificate() { return m_tbsCertificate; }
    // The octets behind the octet of unused bits.
    ByteString& getSignature();

    void walk(Decoder& v);

    RTBSCertificate m_tbsCertificate;
    RAlgorithmIdentifier m_signatureAlgorithm;
    ASN1BitString m_signature;
};

} // namespace vrno
