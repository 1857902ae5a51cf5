// Private keys, plain and enciphered (PKCS #8: RFC 5208, RFC 5958).
#pragma once

#include "ASN1/ASN1Integer.h"
#include "ASN1/ASN1OctetString.h"
#include "ASN1Pkix/records/Lists.h"
#include "ASN1Pkix/records/RAlgorithmIdentifier.h"

namespace vrno {

// SEQUENCE OF Attribute; in a PrivateKeyInfo with [0] in place of its tag.
class RPKCS12Attributes : public RSequenceOf<RPKCS12Attributes> {
public:
    static constexpr const char* className = "RPKCS12Attributes";

    // Appends an encoded attribute: 0, or 1 when there is no memory.
    int add(ByteString& encoded) { return m_SEQ.addComponent(encoded, -1); }
};

class RPrivateKeyInfo : public RObject {
public:
    static constexpr const char* className = "RPrivateKeyInfo";

    // A fourth component that is no [0] is skipped.
    int fromASN1Object(ByteString& data);
    ByteString& toASN1Object();
    // 1: they do not encode, 2: what they encode to does not decode.
    int setAttributes(RPKCS12Attributes& attributes);
    // The octets: for RSA the DER of an RSAPrivateKey.
    ByteString& getPrivateKey();
    RAlgorithmIdentifier& getPrivateKeyAlgorithm();
    RPKCS12Attributes& getAttributes();

    template <class V> void walk(V& v);

    unsigned char m_ucBitMask = 0; // 1: attributes present
    ASN1Integer m_version;
    RAlgorithmIdentifier m_privateKeyAlgorithm;
    ASN1OctetString m_privateKey;
    RPKCS12Attributes m_attributes;
};

class REncryptedPrivateKeyInfo : public RObject {
public:
    static constexpr const char* className = "REncryptedPrivateKeyInfo";

    int fromASN1Object(ByteString& data);
    ByteString& toASN1Object();
    // 1: it does not encode, 2: what it encodes to does not decode.
    int setEncryptionAlgorithm(RAlgorithmIdentifier& data);
    // 1: no memory.
    int setEncryptedData(ByteString& octets);
    RAlgorithmIdentifier& getEncryptionAlgorithm() { return m_encryptionAlgorithm; }
    ByteString& getEncryptedData();

    template <class V> void walk(V& v);

    RAlgorithmIdentifier m_encryptionAlgorithm;
    ASN1OctetString m_encryptedData;
};

} // namespace vrno
