// Private keys under a password: EncryptedPrivateKeyInfo (PKCS #8, RFC 5208).
#pragma once

#include "ASN1Pkix/keys/Pkcs8Schemes.h"
#include "ASN1Pkix/records/RAlgorithmIdentifier.h"
#include "base/Objects.h"

namespace vrno {

// An object serves one operation: the password, then either the key to encrypt or the data to decrypt. Unless setEncAlgorithm
// says otherwise it writes PBES2 with PBKDF2 over HMAC-SHA-1 and SEED-CBC. The salt is derived from the password and the key:
// equal input gives equal output.
class PPKCS8 : public PObject {
public:
    static constexpr const char* className = "PPKCS8";

    // A decryption that failed, or a plaintext that is no PrivateKeyInfo: a wrong password is indistinguishable from these.
    static constexpr int wrongPassword = 4103;

    // Copies the bytes of the text without a conversion. 1 on allocation failure.
    int setPassword(const char* password);
    // One of Pkcs8SchemeCode. With any other code below schemePbes2For16 getPKCS8Data fails.
    void setEncAlgorithm(int scheme);
    // A PrivateKeyInfo, whose key is not looked at; 1 if it does not decode.
    int setPrivateKeyInfo(ByteString& data);

    // The EncryptedPrivateKeyInfo: 0, or 1 to 13.
    int getPKCS8Data(ByteString& out);
    // The PrivateKeyInfo as its record encodes it: 0, wrongPassword, or another code if the data are malformed or their scheme
    // is refused.
    int getPrivateKeyInfo(ByteString& data, ByteString& out);
    // The plaintext, whatever it is; codes as above.
    int decryptData(ByteString& data, ByteString& out);

private:
    int makePbes2(RAlgorithmIdentifier& algorithm);
    int makeKeyDerivationFunc(RAlgorithmIdentifier& out);
    int makeEncryptionScheme(RAlgorithmIdentifier& out);
    int makeClassic(RAlgorithmIdentifier& algorithm);

    int parsePbes2(ByteString& parameters);
    int parseKeyDerivationFunc(RAlgorithmIdentifier& in);
    int parseEncryptionScheme(RAlgorithmIdentifier& in);
    int parseClassic(ByteString& oid, ByteString& parameters);
    int GetAlgorithm(const ByteString& oid, bool isInsidePbes2);

    int makeSalt();
    int PBE_Initialize();
    int PBKDF1();
    int PBKDF2();
    int PBKDF2_F(int blocks, ByteString& out);
    int pkcs12Kdf();
    int Encrypt(ByteString& in, ByteString& out);
    int Decrypt(ByteString& in, ByteString& out);

    enum Flags : unsigned int { passwordSet = 1, privateKeySet = 2 };
    unsigned int m_nFlags = 0;
    const Pkcs8Scheme* m_pScheme = &pkcs8Scheme(schemePbes2);
    ByteString m_bsPassword;
    ByteString m_bsPrivateKeyInfo;
    ByteString m_bsSalt;
    int m_nIterationCount = 1024;
    int m_nIterationOctets = 2; // of the INTEGER; more than 4 give the count 0
    ByteString m_bsKey;         // wiped after each use
    ByteString m_bsIv;
};

} // namespace vrno
