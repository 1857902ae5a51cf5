// Private keys under a password: EncryptedPrivateKeyInfo (PKCS #8, RFC 5208) with the schemes of PKCS #5 (RFC 8018) and
// PKCS #12 (RFC 7292) over SEED-CBC.
#pragma once

#include "ASN1Pkix/keys/PAlgorithmUtil.h"
#include "ASN1Pkix/records/RAlgorithmIdentifier.h"
#include "VNCrypto/VNCodes.h"
#include "base/Objects.h"

namespace vrno {

// An object serves one operation: a password, then a key that is enciphered or a blob that is opened. What is written by
// default is PBES2 with PBKDF2 over HMAC-SHA-1 and SEED-CBC, the salt being taken from password and key: equal input
// gives equal output.
class PPKCS8 : public PObject {
public:
    static constexpr const char* className = "PPKCS8";

    // A decipherment that failed, or a plain text that is no private key: a wrong password shows itself by nothing else.
    static constexpr int wrongPassword = 4103;

    // The octets up to the text's end, in no code page. 1 on allocation failure.
    int setPassword(const char* password);
    // 7: PBKDF1 with SEED and an IV of its own; 8: PBKDF1 with the fixed vector; above 13: PBES2 as described.
    void setEncAlgorithm(int scheme);
    // A PrivateKeyInfo, whose key is not looked at; 1 when it does not decode.
    int setPrivateKeyInfo(ByteString& data);

    // The EncryptedPrivateKeyInfo: 0, or 1 to 13.
    int getPKCS8Data(ByteString& out);
    // The PrivateKeyInfo as its record encodes it: 0, wrongPassword, or another code for a blob that is malformed or of a
    // scheme that is refused.
    int getPrivateKeyInfo(ByteString& data, ByteString& out);
    // The plain text, whatever it is; codes as above.
    int decryptData(ByteString& data, ByteString& out);

    // The scheme that an identifier stands for; 1 to 12 for those that are refused.
    int GetAlgorithm(ByteString& oid, int* scheme);
    // Takes the salt from password and `data`, unless that is empty, and derives key and IV. 3 for an iteration count
    // below 1 and for want of memory for the salt, 1 or 2 where a derivation failed.
    int PBE_Initialize(ByteString& data);
    int PBKDF1();
    int PBKDF2();
    // A block of 20 octets; none for an iteration count below 1.
    int PBKDF2_F(unsigned char blockIndex, ByteString& out);
    // Under the derived key, which is overwritten in any case.
    int Encrypt(ByteString& in, ByteString& out);
    int Decrypt(ByteString& in, ByteString& out);
    int makeKeyDerivationFunc(RAlgorithmIdentifier& out);
    int makeEncryptionScheme(RAlgorithmIdentifier& out);
    int parseKeyDerivationFunc(RAlgorithmIdentifier& in);
    int parseEncryptionScheme(RAlgorithmIdentifier& in);

    enum Flags : unsigned int { passwordSet = 1, privateKeySet = 2 };
    unsigned int m_nFlags = 0;
    int m_nEncAlg = 24;
    int m_nHashAlg = vnSha1;
    int m_nCipherAlg = vnSeed;
    int m_nDerivedLength = 32; // of key and IV together, or of the key for PBKDF1 and PKCS #12
    int m_nIvLength = 16;
    int m_nHashLength = 20;
    int m_nSchemeContext = 0; // 2 while the encryption scheme inside PBES2 is read
    ByteString m_bsPassword;
    ByteString m_bsPrivateKeyInfo;
    const char* m_pszSchemeOid = oidSeedCbc;
    ByteString m_bsSalt;
    int m_nIterationCount = 1024;
    ByteString m_bsKey;
    ByteString m_bsIv;
    int m_nFixedIv = 0;
    unsigned char m_bPkcs12Kdf = 0;

private:
    int makePbes2(RAlgorithmIdentifier& algorithm);
    int makeClassic(RAlgorithmIdentifier& algorithm);
    int readPbes2(ByteString& parameters);
    int readClassic(ByteString& oid, ByteString& parameters);
    int useFixedIv();
};

} // namespace vrno
