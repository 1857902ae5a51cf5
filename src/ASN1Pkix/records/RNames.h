// Distinguished names and GeneralName (RFC 5280, 4.1.2.4 and 4.2.1.6); two structures of the Korean PKI inside an otherName.
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

// AttributeTypeAndValue (4.1.2.4).
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

// A CHOICE that is kept encoded. The getter of the chosen form decodes it, with `m_nLastError` 1 on failure.
class RGeneralName : public RObject {
public:
    static constexpr const char* className = "RGeneralName";

    // If the record has an option tag, `data` is a wrapper and the name is its first component. 1: that cannot be read; 2: the
    // name does not decode; 3: its tag number is not 0 to 8.
    int fromASN1Object(ByteString& data);
    ByteString& toASN1Object();

    int getBitMask() const { return m_ucBitMask; }
    ByteString& getEncoded() { return m_bsGeneralName; }
    ByteString& getRFC822Name();
    ByteString& getDNSName();
    ByteString& getUniformResourceIdentifier();
    // The octets of the address.
    ByteString& getIPAddress();
    // The text form with blanks.
    ByteString& getRegisteredID();
    // The name as UDNSettings renders it. If the rendering fails, `m_nLastError` is 1 but no frame is added.
    ByteString& getDNformDirectoryName();

    enum Choice { // the tag number plus 1
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
    ByteString m_value; // the second component with its wrapper [0]
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
