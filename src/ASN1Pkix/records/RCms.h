// The records of an enveloped message (RFC 5652, 3 and 6.1).
#pragma once

#include "ASN1Pkix/records/RAttribute.h"
#include "ASN1Pkix/records/RRecipientInfo.h"

namespace vrno {

// Setters return 0 or the code of the failed step. A setter that takes a record encodes it (1 on failure) and decodes the result
// into the member (2 on failure).

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

// OriginatorInfo (6.1).
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

// EncryptedContentInfo (6.1).
class REncryptedContentInfo : public RObject {
public:
    static constexpr const char* className = "REncryptedContentInfo";

    // The segments of constructed content are joined.
    int fromASN1Object(ByteString& data);
    ByteString& toASN1Object();
    // Takes an identifier as ASN1ObjectIdentifier::setOID does; 1 on failure.
    int setContentType(ByteString& oid);
    int setContentEncryptionAlgorithm(RAlgorithmIdentifier& data);
    // Takes over the block of the ciphertext, which may be large. It is encoded as one primitive element.
    int setEncryptedContent(ByteString&& octets);

    template <class V> void walk(V& v);

    unsigned char m_ucBitMask = 0; // 1: content present
    ASN1ObjectIdentifier m_contentType;
    RAlgorithmIdentifier m_contentEncryptionAlgorithm;
    ASN1OctetString m_encryptedContent;
    ASN1Sequence m_encryptedContent2; // the segments of constructed content

private:
    void takeContent(Decoder& v);
    void joinSegments(Decoder& v, ByteString& component);
};

// EnvelopedData (6.1). It is only encoded.
class REnvelopedData : public RObject {
public:
    static constexpr const char* className = "REnvelopedData";

    ByteString& toASN1Object();
    // A version from 0 to 4; 1 for any other, with the version unchanged.
    int setVersion(int version);
    int setOriginatorInfo(ROriginatorInfo& data);
    int setRecipientInfos(RRecipientInfos& data);
    // Takes over the block of the content, which may be large. `data` has no content afterwards.
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

// ContentInfo (3). It is only encoded.
class RContentInfo : public RObject {
public:
    static constexpr const char* className = "RContentInfo";

    ByteString& toASN1Object();
    // Takes an identifier as ASN1ObjectIdentifier::setOID does; 1 on failure.
    int setContentType(const char* oid);
    // Takes over the block of the complete encoded element, which may be large.
    void setContent(ByteString&& encoded);

    void walk(Encoder& v);

    unsigned char m_ucBitMask = 0; // 1: content present
    ASN1ObjectIdentifier m_contentType;
    ByteString m_content;

private:
    void putContent(Encoder& v);
};

} // namespace vrno
