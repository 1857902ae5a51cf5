// The value of the certificatePolicies extension (RFC 5280, 4.2.1.4). It is only decoded.
#pragma once

#include "ASN1/ASN1ObjectIdentifier.h"
#include "ASN1Pkix/records/Lists.h"

namespace vrno {

// SEQUENCE OF PolicyInformation.
class RCertificatePolicies : public RSequenceOf<RCertificatePolicies> {
public:
    static constexpr const char* className = "RCertificatePolicies";

    ByteString& getPolicyInformation(int index) { return element(*this, NAMED(m_SEQ), index); }
};

class RPolicyInformation : public RObject {
public:
    static constexpr const char* className = "RPolicyInformation";

    int fromASN1Object(ByteString& data);
    unsigned char getBitMask() const { return m_ucBitMask; }
    // The text form with blanks.
    ByteString& getPolicyIdentifier();
    int getPolicyQualifierCount() const { return m_policyQualifiers.getComponentCount(); }
    ByteString& getPolicyQualifierInfo(int index);

    void walk(Decoder& v);

    unsigned char m_ucBitMask = 0; // 1: qualifiers present
    ASN1ObjectIdentifier m_policyIdentifier;
    ASN1Sequence m_policyQualifiers;
};

class RPolicyQualifierInfo : public RObject {
public:
    static constexpr const char* className = "RPolicyQualifierInfo";

    // If the first component is not an identifier, it becomes the qualifier, and only getPolicyQualifierId() fails.
    int fromASN1Object(ByteString& data);
    // The text form with blanks.
    ByteString& getPolicyQualifierId();
    ByteString& getQualifier() { return m_qualifier; }

    void walk(Decoder& v);

    ASN1ObjectIdentifier m_policyQualifierId;
    ByteString m_qualifier; // encoded
};

// A CHOICE. T61String is not one of its alternatives.
class RDisplayText : public RObject {
public:
    static constexpr const char* className = "RDisplayText";

    int fromASN1Object(ByteString& data);
    unsigned char getBitMask() const { return m_ucBitMask; }
    // The contents, unchanged: UCS-2 is big-endian here.
    ByteString& getIA5String();
    ByteString& getVisibleString();
    ByteString& getBMPString();
    ByteString& getUTF8String();

    enum Choice : unsigned char { nothing = 0, ia5String = 1, visibleString = 2, bmpString = 4, utf8String = 8 };
    unsigned char m_ucBitMask = nothing;
    ByteString m_bsDisplayText; // encoded
};

class RNoticeReference : public RObject {
public:
    static constexpr const char* className = "RNoticeReference";

    int fromASN1Object(ByteString& data);
    RDisplayText& getOrganization() { return m_organization; }
    int getNoticeNumberCount() const { return m_noticeNumbers.getComponentCount(); }
    // 0; 1 for an index out of range, 2 for a component that is not an INTEGER.
    int getNoticeNumber(int index, int* number);

    void walk(Decoder& v);

    RDisplayText m_organization;
    ASN1Sequence m_noticeNumbers;
};

class RUserNotice : public RObject {
public:
    static constexpr const char* className = "RUserNotice";

    int fromASN1Object(ByteString& data);
    unsigned char getBitMask() const { return m_ucBitMask; }
    RNoticeReference& getNoticeRef() { return m_noticeRef; }
    RDisplayText& getExplicitText() { return m_explicitText; }

    void walk(Decoder& v);

    unsigned char m_ucBitMask = 0; // 1 noticeRef, 2 explicitText
    RNoticeReference m_noticeRef;
    RDisplayText m_explicitText;
};

} // namespace vrno
