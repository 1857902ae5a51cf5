// Signatures with a PrivateKeyInfo (RFC 5208), and the random number attribute of the Korean PKI in one.
#pragma once

#include "base/Objects.h"

namespace vrno {

class RAttribute;
class RPKCS12Attributes;
class RPrivateKeyInfo;

// RSA keys of 1024 and 2048 bits and KCDSA keys of 1024 bits, with SHA-1. A digest is its facade code.
class PPrivateKey : public PObject {
public:
    static constexpr const char* className = "PPrivateKey";

    static constexpr int badPrivateKeyInfo = 4108;

    // For KCDSA the public key is needed, too: it is taken from `publicKeySource`, a certificate in DER or, with
    // `sourceIsCertificate` 0, a SubjectPublicKeyInfo. RSA keys may come without one.
    int genSignature(ByteString& privateKeyInfo, int hashAlg, ByteString& data, ByteString& signature, ByteString* publicKeySource,
                     unsigned char sourceIsCertificate, int pss);

    // What kind of key this is, in the facade's code, and the key in the form that the engine takes. `oid` and
    // `parameters` are those of its algorithm, `privateKey` the contents of the OCTET STRING, `publicKey` those of the BIT
    // STRING, which KCDSA needs.
    int GetPrivateKeyAlgorithm(int* keyCode, ByteString& oid, ByteString& privateKey, ByteString& parameters, ByteString& flatKey,
                               int hashAlg, ByteString* publicKey);

    // Replaces the random number attribute of the key, or adds one behind its other attributes. On failure the key stays.
    int setRandomNumber(ByteString& privateKeyInfo, ByteString& randomNumber);

private:
    int fetchPublicKey(ByteString* source, bool isCertificate, ByteString& publicKey);
    int flattenKcdsa(int* keyCode, ByteString& privateKey, ByteString& parameters, ByteString& flatKey, int hashAlg,
                     ByteString* publicKey);
    int keepOtherAttributes(RPrivateKeyInfo& privateKeyInfo, RPKCS12Attributes& kept);
    int makeRandomNumber(ByteString& randomNumber, RAttribute& attribute);
};

} // namespace vrno
