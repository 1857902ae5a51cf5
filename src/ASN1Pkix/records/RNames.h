// Distinguished names and GeneralName (RFC 5280, 4.1.2.4 and 4.2.1.6), and the two structures of the Korean PKI that
// travel in an otherName.
#pragma once

#include "ASN1/ASN1ObjectIdentifier.h"
#include "ASN1/ASN1OctetString.h"
#include "ASN1/ASN1Strings.h"
#include "ASN1Pkix/records/Lists.h"
#include "ASN1Pkix/records/RAlgorithmIdentifier.h"

namespace vrno {

// SEQUENCE OF RelativeDistinguishedName.
class RRDNSequence : public RSequenceOf<RRDNSequence> {
public:
    static constexpr const char* className = "RRDNSequence";

    RRDNSequence() = default;
    explicit RRDNSequence(ByteString& data) { m_nLastError = fromASN1Object(data); }
    bool isEmpty() const { return getCount() < 1; }
};

// SET OF AttributeTypeAndValue.
class RRelativeDistinguishedName : public RSetOf<RRelativeDistinguishedName> {
public:
    static constexpr const char* className = "RRelativeDistinguishedName";
};

// SEQUENCE OF GeneralName.
class RGeneralNames : public RSequenceOf<RGeneralNames> {
public:
    static constexpr const char* className = "RGeneralNames";
};

class RAttributeTypeAndValue : public RObject {
public:
    static constexpr const char* className = "RAttributeTypeAndValue";

    int fromASN1Object(ByteString& data);
    ByteString& getType();
    ByteString& getValue() { return m_value; }

    void walk(Decoder& v);

    ASN1ObjectIdentifier m_type;
    ByteString m_value; // the encoded value with tag and length
};

// A CHOICE that is kept undecoded; the getter of the chosen form takes it apart.
class RGeneralName : public RObject {
public:
    static constexpr const char* className = "RGeneralName";

    // A record with an option tag of its own takes the name out of that wrapper. 3 for a name without one of the nine
    // context tags.
    int fromASN1Object(ByteString& data);
    ByteString& toASN1Object();

    int getBitMask() const { return m_ucBitMask; }
    ByteString& getEncoded() { return m_bsGeneralName; }
    ByteString& getRFC822Name();
    ByteString& getDNSName();
    ByteString& getUniformResourceIdentifier();
    // The raw octets.
    ByteString& getIPAddress();
    // The text form with blanks.
    ByteString& getRegisteredID();
    // The name as UDNSettings renders it; its failure sets the error and leaves no frame.
    ByteString& getDNformDirectoryName();

    enum Choice { // the number of the tag plus 1
        nothing,
        otherName,
        rfc822Name,
        dNSName,
        x400Address,
        directoryName,
        ediPartyName,
        uniformResourceIdentifier,
        iPAddress,
        registeredID,
    };
    int m_ucBitMask = nothing;
    ByteString m_bsGeneralName; // the encoded element
};

class RAnotherName : public RObject {
public:
    static constexpr const char* className = "RAnotherName";

    int fromASN1Object(ByteString& data);
    ByteString& getTypeId();
    ByteString& getValue() { return m_value; }

    void walk(Decoder& v);

    ASN1ObjectIdentifier m_typeId;
    ByteString m_value; // the second component, its [0] wrapper included
};

// VID ::= SEQUENCE { hashAlg AlgorithmIdentifier, virtualID [0] OCTET STRING }
class RVID : public RObject {
public:
    static constexpr const char* className = "RVID";

    int fromASN1Object(ByteString& data);
    RAlgorithmIdentifier& getHashAlg() { return m_hashAlg; }
    ByteString& getVirtualID();

    void walk(Decoder& v);

    RAlgorithmIdentifier m_hashAlg;
    ASN1OctetString m_virtualID;
};

// IdentifyData ::= SEQUENCE { realName UTF8String, userInfo SEQUENCE OF AttributeTypeAndValue OPTIONAL }
class RIdentifyData : public RObject {
public:
    static constexpr const char* className = "RIdentifyData";

    int fromASN1Object(ByteString& data);
    unsigned char getBitMask() const { return m_ucBitMask; }
    // In little-endian UCS-2.
    ByteString& getRealName();
    ByteString& getUserInfo(int index);

    void walk(Decoder& v);

    unsigned char m_ucBitMask = 0; // 1: userInfo present
    ASN1UTF8String m_realName;
    ASN1Sequence m_userInfo;
};

} // namespace vrno
