// The values of the extensions that the library shows (RFC 5280, 4.2), except the policies. They are only decoded.
#pragma once

#include "ASN1/ASN1BitString.h"
#include "ASN1/ASN1Boolean.h"
#include "ASN1/ASN1Integer.h"
#include "ASN1Pkix/records/Lists.h"
#include "ASN1Pkix/records/RNames.h"

namespace vrno {

// ---- basic constraints, 4.2.1.9 ----

class RBasicConstraints : public RObject {
public:
    static constexpr const char* className = "RBasicConstraints";

    int fromASN1Object(ByteString& data);
    unsigned char getBitMask() const { return m_ucBitMask; }
    bool isCA() const { return m_cA.getBoolValue(); }
    int getPathLenConstraint() const { return m_pathLenConstraint.getIntValue(); }

    void walk(Decoder& v);

    unsigned char m_ucBitMask = 0; // 1 cA, 2 pathLenConstraint
    ASN1Boolean m_cA;              // false if absent
    ASN1Integer m_pathLenConstraint;
};

// ---- extended key usage, 4.2.1.12 ----

// SEQUENCE OF KeyPurposeId.
class RExtKeyUsageSyntax : public RSequenceOf<RExtKeyUsageSyntax> {
public:
    static constexpr const char* className = "RExtKeyUsageSyntax";

    // The purpose as text with blanks. On failure it is empty and `m_nLastError` is 1 for an index out of range, 2 for an element
    // that is not an OBJECT IDENTIFIER, 3 for one whose arcs cannot be read.
    ByteString& get(int index);
};

// ---- authority key identifier, 4.2.1.1 ----

class RAuthorityKeyIdentifier : public RObject {
public:
    static constexpr const char* className = "RAuthorityKeyIdentifier";

    int fromASN1Object(ByteString& data);
    unsigned char getBitMask() const { return m_ucBitMask; }
    ByteString& getKeyIdentifier();
    RGeneralNames& getAuthorityCertIssuer() { return m_authorityCertIssuer; }
    // The octets without a sign octet; `m_nLastError` 1 for a negative number.
    ByteString& getAuthorityCertSerialNumberByteString();

    void walk(Decoder& v);

    unsigned char m_ucBitMask = 0; // 1 keyIdentifier, 2 authorityCertIssuer, 4 authorityCertSerialNumber
    ASN1OctetString m_keyIdentifier;
    RGeneralNames m_authorityCertIssuer;
    ASN1Integer m_authorityCertSerialNumber;
};

// ---- CRL distribution points, 4.2.1.13 ----

// A CHOICE. Only the chosen member is filled.
class RDistributionPointName : public RObject {
public:
    static constexpr const char* className = "RDistributionPointName";

    // If the record has an option tag, `data` is a wrapper and the name is its first component.
    int fromASN1Object(ByteString& data);
    unsigned char getBitMask() const { return m_ucBitMask; }
    RGeneralNames& getFullName() { return m_fullName; }
    RRelativeDistinguishedName& getNameRelativeToCRLIssuer() { return m_nameRelativeToCRLIssuer; }

    unsigned char m_ucBitMask = 0; // 1 fullName, 2 nameRelativeToCRLIssuer
    RGeneralNames m_fullName;
    RRelativeDistinguishedName m_nameRelativeToCRLIssuer;
};

class RDistributionPoint : public RObject {
public:
    static constexpr const char* className = "RDistributionPoint";

    RDistributionPoint() = default;
    explicit RDistributionPoint(ByteString& data) { m_nLastError = fromASN1Object(data); }

    int fromASN1Object(ByteString& data);
    unsigned char getBitMask() const { return m_ucBitMask; }
    RDistributionPointName& getDistributionPoint() { return m_distributionPoint; }
    RGeneralNames& getCRLIssuer() { return m_cRLIssuer; }
    // The octets of the flags. 0, or 1 for a BIT STRING without octets.
    int getReasons(ByteString& bits, int* unusedBits);

    void walk(Decoder& v);

    unsigned char m_ucBitMask = 0; // 1 distributionPoint, 2 reasons, 4 cRLIssuer
    RDistributionPointName m_distributionPoint;
    ASN1BitString m_reasons;
    RGeneralNames m_cRLIssuer;
};

// SEQUENCE OF DistributionPoint.
class RCRLDistPointsSyntax : public RSequenceOf<RCRLDistPointsSyntax> {
public:
    static constexpr const char* className = "RCRLDistPointsSyntax";

    RCRLDistPointsSyntax() = default;
    explicit RCRLDistPointsSyntax(ByteString& data) { m_nLastError = fromASN1Object(data); }
};

// ---- authority information access, 4.2.2.1 ----

class RAccessDescription : public RObject {
public:
    static constexpr const char* className = "RAccessDescription";

    int fromASN1Object(ByteString& data);
    // The text form with blanks.
    ByteString& getsetAccessMethod();
    RGeneralName& getAccessLocation() { return m_accessLocation; }

    void walk(Decoder& v);

    ASN1ObjectIdentifier m_accessMethod;
    RGeneralName m_accessLocation;
};

// SEQUENCE OF AccessDescription.
class RAuthorityInfoAccessSyntax : public RSequenceOf<RAuthorityInfoAccessSyntax> {
public:
    static constexpr const char* className = "RAuthorityInfoAccessSyntax";

    RAuthorityInfoAccessSyntax() = default;
    explicit RAuthorityInfoAccessSyntax(ByteString& data) { m_nLastError = fromASN1Object(data); }
};

} // namespace vrno
