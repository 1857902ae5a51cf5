// Private keys, plain and encrypted (PKCS #8: RFC 5208, RFC 5958).
#pragma once

#include "ASN1/ASN1Integer.h"
#include "ASN1/ASN1OctetString.h"
#include "ASN1Pkix/records/Lists.h"
#include "ASN1Pkix/records/RAlgorithmIdentifier.h"

namespace vrno {

// A list of Attribute; in a PrivateKeyInfo [0] replaces its tag.
class RPKCS12Attributes : public RSequenceOf<RPKCS12Attributes> {
public:
    static constexpr const char* className = "RPKCS12Attributes";

    // Appends an encoded attribute: 0, or 1 on allocation failure.
    int add(ByteString& encoded) { return m_SEQ.addComponent(encoded, -1); }
};

class RPrivateKeyInfo : public RObject {
public:
    static constexpr const char* className = "RPrivateKeyInfo";

    // A fourth component with a tag other than [0] is ignored.
    int fromASN1Object(ByteString& data);
    ByteString& toASN1Object();
    // 1: `attributes` does not encode; 2: the member does not decode the result.
    int setAttributes(RPKCS12Attributes& attributes);
    // The octets; for RSA an encoded RSAPrivateKey.
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
    // 1: `data` does not encode; 2: the member does not decode the result.
    int setEncryptionAlgorithm(RAlgorithmIdentifier& data);
    // 0, or 1 on allocation failure.
    int setEncryptedData(ByteString& octets);
    RAlgorithmIdentifier& getEncryptionAlgorithm() { return m_encryptionAlgorithm; }
    ByteString& getEncryptedData();

    template <class V> void walk(V& v);

    RAlgorithmIdentifier m_encryptionAlgorithm;
    ASN1OctetString m_encryptedData;
};

} // namespace vrno
