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

    // A KCDSA key needs its public key, too. It is taken from `publicKeySource`: with `sourceIsCertificate` 1 a certificate in
    // DER, otherwise a SubjectPublicKeyInfo. For an RSA key it may be null. 1 in `pss` asks for RSA-PSS. With `isVerifiedNext` the
    // caller verifies the signature before anybody else gets it, so that nobody does it twice.
    int genSignature(ByteString& privateKeyInfo, int hashAlg, ByteString& data, ByteString& signature, ByteString* publicKeySource,
                     unsigned char sourceIsCertificate, int pss, bool isVerifiedNext = false);

    // Gives the facade's code of the key, for KCDSA of its signatures, and the flat key, which is the form that the engine takes.
    // `oid` and `parameters` are those of the key's algorithm, `privateKey` is the content of the OCTET STRING, `publicKey`, for
    // KCDSA only, that of the BIT STRING.
    int GetPrivateKeyAlgorithm(int* keyCode, ByteString& oid, ByteString& privateKey, ByteString& parameters, ByteString& flatKey,
                               int hashAlg, ByteString* publicKey);

    // Replaces the random number attributes of the key by one behind its other attributes. A failure leaves the key as it was.
    int setRandomNumber(ByteString& privateKeyInfo, ByteString& randomNumber);

private:
    int fetchPublicKey(ByteString* source, bool isCertificate, ByteString& publicKey);
    int flattenKcdsa(int* keyCode, ByteString& privateKey, ByteString& parameters, ByteString& flatKey, int hashAlg,
                     ByteString* publicKey);
    int keepOtherAttributes(RPrivateKeyInfo& privateKeyInfo, RPKCS12Attributes& kept);
    int makeRandomNumber(ByteString& randomNumber, RAttribute& attribute);
};

} // namespace vrno
