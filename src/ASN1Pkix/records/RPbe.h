// Parameters of password-based encryption (PKCS #5: RFC 8018, appendix A).
#pragma once

#include "ASN1/ASN1Integer.h"
#include "ASN1/ASN1OctetString.h"
#include "ASN1Pkix/records/RAlgorithmIdentifier.h"

namespace vrno {

// PBEParameter (A.3) of PBES1, which PBES2 replaces. Setters: 0, or 1 on allocation failure.
class RPBEParameter : public RObject {
public:
    static constexpr const char* className = "RPBEParameter";

    int fromASN1Object(ByteString& data);
    ByteString& toASN1Object();
    int setSalt(ByteString& salt);
    int setIterationCount(int count);
    ByteString& getSalt() { return m_salt.getValue(); }
    // 0 for a count of more than four octets.
    int getIterationCount() const { return m_iterationCount.getIntValue(); }

    template <class V> void walk(V& v);

    ASN1OctetString m_salt;
    ASN1Integer m_iterationCount;
};

// PBES2-params (A.4): the key derivation and the encryption scheme.
class RPBES2_params : public RObject {
public:
    static constexpr const char* className = "RPBES2_params";

    int fromASN1Object(ByteString& data);
    ByteString& toASN1Object();
    // 1: `data` does not encode; 2: the member does not decode the result.
    int setKeyDerivationFunc(RAlgorithmIdentifier& data);
    int setEncryptionScheme(RAlgorithmIdentifier& data);
    RAlgorithmIdentifier& getKeyDerivationFunc() { return m_keyDerivationFunc; }
    RAlgorithmIdentifier& getEncryptionScheme() { return m_encryptionScheme; }

    template <class V> void walk(V& v);

    RAlgorithmIdentifier m_keyDerivationFunc;
    RAlgorithmIdentifier m_encryptionScheme;
};

// PBKDF2-params (A.2).
class RPBKDF2_params : public RObject {
public:
    static constexpr const char* className = "RPBKDF2_params";

    enum Bits : unsigned char { specified = 0x01, otherSource = 0x02, keyLength = 0x04, prf = 0x08 };

    // Without a prf component, `m_prf` is the default, HMAC with SHA-1. Its bit stays clear, so it is not encoded.
    int fromASN1Object(ByteString& data);
    ByteString& toASN1Object();
    // A salt given as octets replaces one from another source. Setters: 0, or 1 on allocation failure.
    int setSpecified(ByteString& salt);
    int setIterationCount(int count);
    int setKeyLength(int length);
    ByteString& getSpecified() { return m_specified.getValue(); }
    int getIterationCount() const { return m_iterationCount.getIntValue(); } // 0 for a count of more than four octets
    int getKeyLength() const { return m_keyLength.getIntValue(); }
    RAlgorithmIdentifier& getPrf() { return m_prf; }
    unsigned char getBitMask() const { return m_ucBitMask; }

    template <class V> void walk(V& v);

    unsigned char m_ucBitMask = 0; // of Bits
    ASN1OctetString m_specified;
    RAlgorithmIdentifier m_otherSource;
    ASN1Integer m_iterationCount;
    ASN1Integer m_keyLength;
    RAlgorithmIdentifier m_prf;

private:
    int setDefaultPrf();
};

} // namespace vrno
