// The recipients of an enveloped message that the library writes (RFC 5652, 6.2).
#pragma once

#include "ASN1/ASN1Integer.h"
#include "ASN1/ASN1OctetString.h"
#include "ASN1Pkix/records/RAlgorithmIdentifier.h"
#include "ASN1Pkix/records/RChoice.h"
#include "ASN1Pkix/records/RNames.h"

namespace vrno {

// Setters return 0 or the code of the failed step. A setter that takes a record encodes it (1 on failure) and decodes the result
// into the member (2 on failure); a CHOICE keeps the result without decoding it.

class RIssuerAndSerialNumber : public RObject {
public:
    static constexpr const char* className = "RIssuerAndSerialNumber";

    int fromASN1Object(ByteString& data);
    ByteString& toASN1Object();
    int setIssuer(RRDNSequence& data);
    // A magnitude, big-endian; a zero octet is put in front if the top bit is set.
    int setSerialNumber(ByteString& octets);

    template <class V> void walk(V& v);

    unsigned char m_ucBitMask = 0; // 1: issuer present; if not, a NULL takes its place
    RRDNSequence m_issuer;
    ASN1Integer m_serialNumber;
};

// CHOICE { issuerAndSerialNumber IssuerAndSerialNumber, subjectKeyIdentifier [0] SubjectKeyIdentifier }
class RRecipientIdentifier : public RChoice {
public:
    static constexpr const char* className = "RRecipientIdentifier";

    int fromASN1Object(ByteString& data);
    ByteString& toASN1Object();
    int setIssuerAndSerialNumber(RIssuerAndSerialNumber& data);
    // The octets of the identifier without tag and length.
    int setSubjectKeyIdentifier(ByteString& keyId);

    enum Choice : unsigned char { nothing, issuerAndSerialNumber, subjectKeyIdentifier };
};

class RKeyTransRecipientInfo : public RObject {
public:
    static constexpr const char* className = "RKeyTransRecipientInfo";

    int fromASN1Object(ByteString& data);
    ByteString& toASN1Object();
    // A version from 0 to 4; 1 for any other, with the version unchanged.
    int setVersion(int version);
    int setRid(RRecipientIdentifier& data);
    int setKeyEncryptionAlgorithm(RAlgorithmIdentifier& data);
    int setEncryptedKey(ByteString& octets);

    template <class V> void walk(V& v);

    ASN1Integer m_version;
    RRecipientIdentifier m_rid;
    RAlgorithmIdentifier m_keyEncryptionAlgorithm;
    ASN1OctetString m_encryptedKey;
};

// CHOICE { ktri KeyTransRecipientInfo, kari [1] KeyAgreeRecipientInfo, kekri [2] KEKRecipientInfo, ... }
class RRecipientInfo : public RChoice {
public:
    static constexpr const char* className = "RRecipientInfo";

    RRecipientInfo() = default;
    explicit RRecipientInfo(ByteString& data) { m_nLastError = fromASN1Object(data); }

    int fromASN1Object(ByteString& data);
    ByteString& toASN1Object();
    int setKeyTransRecipientInfo(RKeyTransRecipientInfo& data);

    enum Choice : unsigned char { nothing, keyTransRecipientInfo, keyAgreeRecipientInfo, kEKRecipientInfo };
};

// SET OF RecipientInfo, in the order of the additions.
class RRecipientInfos : public RSetOf<RRecipientInfos> {
public:
    static constexpr const char* className = "RRecipientInfos";

    // Appends. 1: `data` does not encode; 2: allocation failure.
    int addRecipientInfo(RRecipientInfo& data);
};

// Sets the version of a CMS structure: 0; 1 for a version outside 0 to 4, 2 on allocation failure.
template <class Record> int setCMSVersion(Record& record, int version, Here at = Here::now())
{
    if (version < 0 || version > 4) return fail(record, 1, "version", "Data version is incorrect.", at);
    return record.m_version.setIntValue(version) > 0 ? fail(record, 2, "m_version", record.m_version, at) : 0;
}

} // namespace vrno
