// Encryption to, and verification under, a SubjectPublicKeyInfo (RFC 5280, 4.1.2.7) or the key of a certificate.
#pragma once

#include "base/Objects.h"

namespace vrno {

// The keys of PPrivateKey. A digest is its facade code; 0 stands for SHA-1.
class PPublicKey : public PObject {
public:
    static constexpr const char* className = "PPublicKey";

    // RSA with PKCS #1 v1.5 padding; OAEP is refused.
    int encrypt(ByteString& subjectPublicKeyInfo, ByteString& data, ByteString& out, int oaep);

    // 0: the signature holds; 21: it does not, or could not be tried; other codes for the key and the digest.
    int verifySignature(ByteString& subjectPublicKeyInfo, ByteString& data, ByteString& signature, int hashAlg, int pss);
    // The same under a certificate in DER: 1 when it holds no key to be read, 2 for all else.
    int verifySignatureWithCert(ByteString& certificate, ByteString& data, ByteString& signature, int hashAlg, int pss);

    // As PPrivateKey's, with the contents of the BIT STRING as the key.
    int GetPublicKeyAlgorithm(int* keyCode, ByteString& oid, ByteString& subjectPublicKey, ByteString& parameters,
                              ByteString& flatKey, int hashAlg);

    // The SubjectPublicKeyInfo of a certificate in DER.
    int getPublicKeyInfoFromCert(ByteString& certificate, ByteString& out);

private:
    int detect(ByteString& subjectPublicKeyInfo, int hashAlg, int* keyCode, ByteString& flatKey, Here at);
    int flattenKcdsa(int* keyCode, ByteString& subjectPublicKey, ByteString& parameters, ByteString& flatKey, int hashAlg);
};

} // namespace vrno
