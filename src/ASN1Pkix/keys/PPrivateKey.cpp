#include "ASN1Pkix/keys/PPrivateKey.h"

#include "ASN1/ASN1BitString.h"
#include "ASN1Pkix/keys/KeyDetection.h"
#include "ASN1Pkix/records/RAttribute.h"
#include "ASN1Pkix/records/RCertificate.h"
#include "ASN1Pkix/records/RKeys.h"
#include "ASN1Pkix/records/RPrivateKeyInfo.h"
#include "VNCrypto/VNCodes.h"
#include "VNCrypto/VNSign.h"

namespace vrno {

static constexpr const char* oidRandomNumber = "1 2 410 200004 10 1 1 3";

// ---- detection ----

int PPrivateKey::GetPrivateKeyAlgorithm(int* keyCode, ByteString& oid, ByteString& privateKey, ByteString& parameters,
                                        ByteString& flatKey, int hashAlg, ByteString* publicKey)
{
    int refused = 0;
    switch (keyFamily(*this, privateSide, oid, &refused)) {
    case KeyFamily::rsa:
        return flattenRsa<RRSAPrivateKey>(*this, privateSide, keyCode, privateKey, flatKey);
    case KeyFamily::kcdsa:
        return flattenKcdsa(keyCode, privateKey, parameters, flatKey, hashAlg, publicKey);
    default:
        return refused;
    }
}

int PPrivateKey::flattenKcdsa(int* keyCode, ByteString& privateKey, ByteString& parameters, ByteString& flatKey, int hashAlg,
                              ByteString* publicKey)
{
    const FailuresOf failed{*this, "GetPrivateKeyAlgorithm"};
    ByteString domain, none;
    if (const int code = kcdsaDomain(*this, privateSide, parameters, hashAlg, domain)) return code;
    *keyCode = vnSha1WithKcdsa1024;
    RDSAPrivateKey dsaPrivateKey;
    if (dsaPrivateKey.setKey(privateKey, publicKey ? *publicKey : none) > 0) return failed(14, "dsaPrivateKey", dsaPrivateKey);
    if (dsaPrivateKey.setParam(domain) > 0) return failed(16, "dsaPrivateKey", dsaPrivateKey);
    flatKey = dsaPrivateKey.toASN1Object();
    if (dsaPrivateKey.getLastError() > 0) return failed(17, "dsaPrivateKey", dsaPrivateKey);
    return flatKey.isOutOfMemory() ? failed.memory(17, "dsaPrivateKey") : 0;
}

// ---- signing ----

int PPrivateKey::genSignature(ByteString& privateKeyInfo, int hashAlg, ByteString& data, ByteString& signature,
                              ByteString* publicKeySource, unsigned char sourceIsCertificate, int pss)
{
    RPrivateKeyInfo key;
    if (key.fromASN1Object(privateKeyInfo) > 0) return fail(*this, badPrivateKeyInfo, "privateKeyInfo", key);
    RAlgorithmIdentifier& algorithm = key.getPrivateKeyAlgorithm();
    ByteString& oid = algorithm.getAlgorithm();
    if (algorithm.getLastError() > 0) return fail(*this, 3, "pAlgorithmId", algorithm);
    ByteString publicKey;
    ByteString flatKey;
    if (needsPublicKey(oid)) {
        if (const int code = fetchPublicKey(publicKeySource, sourceIsCertificate == 1, publicKey)) return code;
    }
    int keyCode = 0;
    if (GetPrivateKeyAlgorithm(&keyCode, oid, key.getPrivateKey(), algorithm.getParameters(), flatKey, hashAlg, &publicKey) > 0) {
        return fail(*this, 10, "this", *this);
    }
    int signatureCode = keyCode;
    if (keyCode != vnSha1WithKcdsa1024) {
        if (const int code = rsaSignatureCode(*this, privateSide, keyCode, hashAlg, pss, &signatureCode)) return code;
    }
    VNSign sign;
    return sign.SignData(signatureCode, flatKey, data, signature) > 0 ? fail(*this, 30, "sign.SignData()", sign) : 0;
}

int PPrivateKey::fetchPublicKey(ByteString* source, bool isCertificate, ByteString& publicKey)
{
    const FailuresOf failed{*this, "genSignature"};
    if (!source) return failed(5, "publicKeySource", "You must set certificate or PublicKeyInfo.");
    RCertificate cert;
    RSubjectPublicKeyInfo pubKeyInfo;
    if (isCertificate && cert.fromASN1Object(*source) > 0) return failed(6, "cert", cert);
    if (!isCertificate && pubKeyInfo.fromASN1Object(*source) > 0) return failed(8, "pubKeyInfo", pubKeyInfo);
    RSubjectPublicKeyInfo& info = isCertificate ? cert.getTBSCertificate().getSubjectPublicKeyInfo() : pubKeyInfo;
    publicKey = info.getSubjectPublicKey();
    if (publicKey.isOutOfMemory()) return failed.memory(isCertificate ? 7 : 9, isCertificate ? "pPubKeyInfo" : "pubKeyInfo");
    if (info.getLastError() == 0) return 0;
    return isCertificate ? failed(7, "pPubKeyInfo", info) : failed(9, "pubKeyInfo", info);
}

// ---- the random number ----

int PPrivateKey::setRandomNumber(ByteString& privateKeyInfo, ByteString& randomNumber)
{
    RPrivateKeyInfo priKeyInfo;
    if (priKeyInfo.fromASN1Object(privateKeyInfo) > 0) return fail(*this, 1, "priKeyInfo", priKeyInfo);
    RPKCS12Attributes attributes;
    RAttribute randomNumAttr;
    if (const int code = keepOtherAttributes(priKeyInfo, attributes)) return code;
    if (const int code = makeRandomNumber(randomNumber, randomNumAttr)) return code;
    const int added = attributes.add(randomNumAttr.toASN1Object());
    if (randomNumAttr.getLastError() > 0) return fail(*this, 7, "randomNumAttr", randomNumAttr);
    if (added > 0) return failMemory(*this, 8, "priKeyInfo");
    if (priKeyInfo.setAttributes(attributes) > 0) return fail(*this, 8, "priKeyInfo", priKeyInfo);
    ByteString& encoded = priKeyInfo.toASN1Object();
    if (priKeyInfo.getLastError() > 0) return fail(*this, 9, "priKeyInfo", priKeyInfo);
    privateKeyInfo.swap(encoded);
    return 0;
}

// All attributes but those of the random number's type, as they stand.
int PPrivateKey::keepOtherAttributes(RPrivateKeyInfo& privateKeyInfo, RPKCS12Attributes& kept)
{
    const FailuresOf failed{*this, "setRandomNumber"};
    RPKCS12Attributes& old = privateKeyInfo.getAttributes();
    for (int i = 0; i < old.getCount(); ++i) {
        ByteString& encoded = old.get(i);
        RAttribute attribute;
        if (old.getLastError() > 0) return failed(2, "attribute", old);
        if (attribute.fromASN1Object(encoded) > 0) return failed(2, "attribute", attribute);
        const bool isRandomNumber = attribute.getAttrType() == oidRandomNumber;
        if (attribute.getLastError() > 0) return failed(3, "attribute", attribute);
        if (!isRandomNumber && kept.add(encoded) > 0) return failed(8, "attributes", kept.m_SEQ);
    }
    return 0;
}

// Attribute { randomNumber, SET { BIT STRING } }
int PPrivateKey::makeRandomNumber(ByteString& randomNumber, RAttribute& attribute)
{
    const FailuresOf failed{*this, "setRandomNumber"};
    if (attribute.setAttrType(oidRandomNumber) > 0) return failed(4, "randomNumAttr", attribute);
    ASN1BitString randomNum;
    if (randomNum.setBitString(randomNumber, false) > 0) return failed(5, "randomNum", randomNum);
    ByteString& encoded = randomNum.toASN1Object();
    if (randomNum.getLastError() > 0) return failed(6, "randomNum", randomNum);
    return attribute.addAttrValue(encoded) > 0 ? failed(7, "randomNumAttr", attribute) : 0;
}

} // namespace vrno
