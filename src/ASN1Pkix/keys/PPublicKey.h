// Encryption and verification with a SubjectPublicKeyInfo (RFC 5280, 4.1.2.7) or the key of a certificate.
#pragma once

#include "base/Objects.h"

namespace vrno {

// The keys of PPrivateKey. A digest is its facade code; 0 stands for SHA-1.
class PPublicKey : public PObject {
public:
    static constexpr const char* className = "PPublicKey";

    // RSA with PKCS #1 v1.5 padding. 1 in `oaep` asks for OAEP, which is refused.
    int encrypt(ByteString& subjectPublicKeyInfo, ByteString& data, ByteString& out, int oaep);

    // 0: the signature is valid; 21: it is not, or the facade refuses the algorithm; other codes for the key and the digest.
    // 1 in `pss` asks for RSA-PSS.
    int verifySignature(ByteString& subjectPublicKeyInfo, ByteString& data, ByteString& signature, int hashAlg, int pss);
    // The same with a certificate in DER: 1 if its key cannot be read, 2 for all other failures.
    int verifySignatureWithCert(ByteString& certificate, ByteString& data, ByteString& signature, int hashAlg, int pss);

    // As PPrivateKey::GetPrivateKeyAlgorithm; the key is the content of the BIT STRING.
    int GetPublicKeyAlgorithm(int* keyCode, ByteString& oid, ByteString& subjectPublicKey, ByteString& parameters,
                              ByteString& flatKey, int hashAlg);

    // The SubjectPublicKeyInfo of a certificate in DER.
    int getPublicKeyInfoFromCert(ByteString& certificate, ByteString& out);

private:
    int readKey(const FailuresOf& failed, ByteString& subjectPublicKeyInfo, int hashAlg, int* keyCode, ByteString& flatKey);
    int flattenKcdsa(int* keyCode, ByteString& subjectPublicKey, ByteString& parameters, ByteString& flatKey, int hashAlg);
};

} // namespace vrno
