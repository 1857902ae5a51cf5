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
    const KeyFamily family = keyFamily(oid);
    if (family == KeyFamily::rsa) return flattenRsa<RRSAPrivateKey>(*this, privateSide, keyCode, privateKey, flatKey);
    if (family == KeyFamily::kcdsa) return flattenKcdsa(keyCode, privateKey, parameters, flatKey, hashAlg, publicKey);
    return refuseFamily(*this, privateSide, family, oid);
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
    flatKey.swap(dsaPrivateKey.toASN1Object());
    return dsaPrivateKey.getLastError() > 0 ? failed(17, "dsaPrivateKey", dsaPrivateKey) : 0;
}

// ---- signing ----

int PPrivateKey::genSignature(ByteString& privateKeyInfo, int hashAlg, ByteString& data, ByteString& signature,
                              ByteString* publicKeySource, unsigned char sourceIsCertificate, int pss, bool isVerifiedNext)
{
    RPrivateKeyInfo key;
    if (key.fromASN1Object(privateKeyInfo) > 0) return fail(*this, badPrivateKeyInfo, "privateKeyInfo", key);
    RAlgorithmIdentifier& algorithm = key.getPrivateKeyAlgorithm();
    ByteString& oid = algorithm.getAlgorithm();
    if (algorithm.getLastError() > 0) return fail(*this, 3, "pAlgorithmId", algorithm);
    ByteString publicKey, flatKey;
    const KeyFamily family = keyFamily(oid);
    if (family == KeyFamily::kcdsa || family == KeyFamily::dsa) {
        if (const int code = fetchPublicKey(publicKeySource, sourceIsCertificate == 1, publicKey)) return code;
    }
    int keyCode = 0;
    if (GetPrivateKeyAlgorithm(&keyCode, oid, key.getPrivateKey(), algorithm.getParameters(), flatKey, hashAlg, &publicKey) > 0) {
        return fail(*this, 10, "this", *this);
    }
    const bool isPss = pss == 1;
    const int signAlg = signatureCode(keyCode, hashAlg, isPss);
    if (signAlg == 0) return refuseSignature(*this, privateSide, keyCode, hashAlg, isPss);
    VNSign sign;
    if (sign.SignData(signAlg, flatKey, data, signature, isVerifiedNext) > 0) return fail(*this, 30, "sign.SignData()", sign);
    return 0;
}

int PPrivateKey::fetchPublicKey(ByteString* source, bool isCertificate, ByteString& publicKey)
{
    const FailuresOf failed{*this, "genSignature"};
    const auto copyKey = [&](RSubjectPublicKeyInfo& info, int code, const char* name) {
        publicKey.swap(info.getSubjectPublicKey());
        return info.getLastError() > 0 ? failed(code, name, info) : 0;
    };
    if (!source) return failed(5, "publicKeySource", "You must set certificate or PublicKeyInfo.");
    if (isCertificate) {
        RCertificate cert;
        if (cert.fromASN1Object(*source) > 0) return failed(6, "cert", cert);
        return copyKey(cert.getTBSCertificate().getSubjectPublicKeyInfo(), 7, "pPubKeyInfo");
    }
    RSubjectPublicKeyInfo pubKeyInfo;
    if (pubKeyInfo.fromASN1Object(*source) > 0) return failed(8, "pubKeyInfo", pubKeyInfo);
    return copyKey(pubKeyInfo, 9, "pubKeyInfo");
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
    ByteString& attribute = randomNumAttr.toASN1Object();
    if (randomNumAttr.getLastError() > 0) return fail(*this, 7, "randomNumAttr", randomNumAttr);
    if (attributes.add(attribute) > 0) return fail(*this, 8, "attributes", attributes.m_SEQ);
    if (priKeyInfo.setAttributes(attributes) > 0) return fail(*this, 8, "priKeyInfo", priKeyInfo);
    ByteString& encoded = priKeyInfo.toASN1Object();
    if (priKeyInfo.getLastError() > 0) return fail(*this, 9, "priKeyInfo", priKeyInfo);
    privateKeyInfo.swap(encoded);
    return 0;
}

// Copies all attributes but those of the random number's type, in their encoding.
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
