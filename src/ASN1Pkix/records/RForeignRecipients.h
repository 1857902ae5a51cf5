// Recipients that the library does not write (RFC 5652, 6.2.2 and 6.2.3). Decoding shows whether one is well formed; the message
// keeps it unchanged. They are only decoded.
#pragma once

#include "ASN1/ASN1BitString.h"
#include "ASN1/ASN1Integer.h"
#include "ASN1/ASN1OctetString.h"
#include "ASN1/ASN1Times.h"
#include "ASN1Pkix/records/Lists.h"
#include "ASN1Pkix/records/RAlgorithmIdentifier.h"
#include "ASN1Pkix/records/RChoice.h"

namespace vrno {

class ROriginatorPublicKey : public RObject {
public:
    static constexpr const char* className = "ROriginatorPublicKey";

    int fromASN1Object(ByteString& data);

    void walk(Decoder& v);

    RAlgorithmIdentifier m_algorithm;
    ASN1BitString m_publicKey;
};

// CHOICE { issuerAndSerialNumber IssuerAndSerialNumber, subjectKeyIdentifier [0] SubjectKeyIdentifier,
//     originatorKey [1] OriginatorPublicKey }
class ROriginatorIdentifierOrKey : public RChoice {
public:
    static constexpr const char* className = "ROriginatorIdentifierOrKey";

    int fromASN1Object(ByteString& data);

    enum Choice : unsigned char { nothing, issuerAndSerialNumber, subjectKeyIdentifier, originatorKey = 4 };
};

// SEQUENCE OF RecipientEncryptedKey.
class RRecipientEncryptedKeys : public RObject {
public:
    static constexpr const char* className = "RRecipientEncryptedKeys";

    int fromASN1Object(ByteString& data) { return decodeList(*this, NAMED(m_SEQ), data); }

    ASN1Sequence m_SEQ;
};

class RKeyAgreeRecipientInfo : public RObject {
public:
    static constexpr const char* className = "RKeyAgreeRecipientInfo";

    int fromASN1Object(ByteString& data);

    void walk(Decoder& v);

    unsigned char m_ucBitMask = 0; // 1: ukm present
    ASN1Integer m_version;
    ROriginatorIdentifierOrKey m_originator;
    ASN1OctetString m_ukm;
    RAlgorithmIdentifier m_keyEncryptionAlgorithm;
    RRecipientEncryptedKeys m_recipientEncryptedKeys;

private:
    void takeOriginator(Decoder& v, ByteString& wrapped);
};

class ROtherKeyAttribute : public RObject {
public:
    static constexpr const char* className = "ROtherKeyAttribute";

    int fromASN1Object(ByteString& data);

    void walk(Decoder& v);

    unsigned char m_ucBitMask = 0; // 1: keyAttr present
    ASN1ObjectIdentifier m_keyAttrId;
    ByteString m_keyAttr; // the complete element
};

class RKEKIdentifier : public RObject {
public:
    static constexpr const char* className = "RKEKIdentifier";

    int fromASN1Object(ByteString& data);

    void walk(Decoder& v);

    unsigned char m_ucBitMask = 0; // 1 date, 2 other
    ASN1OctetString m_keyIdentifier;
    ASN1GeneralizedTime m_date; // its text is not tested
    ROtherKeyAttribute m_other;
};

class RKEKRecipientInfo : public RObject {
public:
    static constexpr const char* className = "RKEKRecipientInfo";

    int fromASN1Object(ByteString& data);

    void walk(Decoder& v);

    ASN1Integer m_version;
    RKEKIdentifier m_kekid;
    RAlgorithmIdentifier m_keyEncryptionAlgorithm;
    ASN1OctetString m_encryptedKey;
};

} // namespace vrno
