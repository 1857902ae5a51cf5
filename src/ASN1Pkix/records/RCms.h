// The enveloped message of CMS (RFC 5652, 3 and 6.1).
#pragma once

#include "ASN1Pkix/records/RAttribute.h"
#include "ASN1Pkix/records/RRecipientInfo.h"

namespace vrno {

// The setters give 0 or the code of the failing step. One that takes a record takes what that encodes to: 1 when it does
// not encode, 2 when the member does not decode it.

// SET OF CertificateChoices.
class RCertificateSet : public RSetOf<RCertificateSet> {
public:
    static constexpr const char* className = "RCertificateSet";
};

// SET OF RevocationInfoChoice.
class RCertificateRevocationLists : public RSetOf<RCertificateRevocationLists> {
public:
    static constexpr const char* className = "RCertificateRevocationLists";
};

class ROriginatorInfo : public RObject {
public:
    static constexpr const char* className = "ROriginatorInfo";

    int fromASN1Object(ByteString& data);
    ByteString& toASN1Object();

    template <class V> void walk(V& v);

    unsigned char m_ucBitMask = 0; // 1 certs, 2 crls
    RCertificateSet m_certs;
    RCertificateRevocationLists m_crls;
};

class REncryptedContentInfo : public RObject {
public:
    static constexpr const char* className = "REncryptedContentInfo";

    // Content in segments is joined.
    int fromASN1Object(ByteString& data);
    ByteString& toASN1Object();
    // Takes an identifier as ASN1ObjectIdentifier::setOID does; 1 when it is none.
    int setContentType(ByteString& oid);
    int setContentEncryptionAlgorithm(RAlgorithmIdentifier& data);
    // Takes the ciphertext's block over, since it may be large. It is written as one primitive element.
    int setEncryptedContent(ByteString&& octets);

    template <class V> void walk(V& v);

    unsigned char m_ucBitMask = 0; // 1: content present
    ASN1ObjectIdentifier m_contentType;
    RAlgorithmIdentifier m_contentEncryptionAlgorithm;
    ASN1OctetString m_encryptedContent;
    ASN1Sequence m_encryptedContent2; // the segments that the content came in

private:
    void takeContent(Decoder& v);
    void joinSegments(Decoder& v, ByteString& component);
};

// Encoded only.
class REnvelopedData : public RObject {
public:
    static constexpr const char* className = "REnvelopedData";

    ByteString& toASN1Object();
    // 0 to 4; 1, with the version as it was, for any other.
    int setVersion(int version);
    int setOriginatorInfo(ROriginatorInfo& data);
    int setRecipientInfos(RRecipientInfos& data);
    // Takes the content's block over, since it may be large: `data` has no content afterwards.
    int setEncryptedContentInfo(REncryptedContentInfo&& data);
    int setUnprotectedAttrs(RAttributes& data);

    void walk(Encoder& v);

    unsigned char m_ucBitMask = 0; // 1 originatorInfo, 2 unprotectedAttrs
    ASN1Integer m_version;
    ROriginatorInfo m_originatorInfo;
    RRecipientInfos m_recipientInfos;
    REncryptedContentInfo m_encryptedContentInfo;
    RAttributes m_unprotectedAttrs;
};

// Encoded only.
class RContentInfo : public RObject {
public:
    static constexpr const char* className = "RContentInfo";

    ByteString& toASN1Object();
    // Takes an identifier as ASN1ObjectIdentifier::setOID does; 1 when it is none.
    int setContentType(const char* oid);
    // Takes over the block of the complete encoded element, since it may be large.
    void setContent(ByteString&& encoded);

    void walk(Encoder& v);

    unsigned char m_ucBitMask = 0; // 1: content present
    ASN1ObjectIdentifier m_contentType;
    ByteString m_content;

private:
    void putContent(Encoder& v);
};

} // namespace vrno
