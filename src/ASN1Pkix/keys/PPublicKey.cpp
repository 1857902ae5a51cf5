#include "ASN1Pkix/keys/PPublicKey.h"

#include "ASN1Pkix/keys/KeyDetection.h"
#include "ASN1Pkix/records/RCertificate.h"
#include "ASN1Pkix/records/RKeys.h"
#include "VNCrypto/VNCodes.h"
#include "VNCrypto/VNEncrypt.h"
#include "VNCrypto/VNSign.h"

namespace vrno {

// ---- detection ----

int PPublicKey::GetPublicKeyAlgorithm(int* keyCode, ByteString& oid, ByteString& subjectPublicKey, ByteString& parameters,
                                      ByteString& flatKey, int hashAlg)
{
    if (hashAlg == 0) hashAlg = vnSha1;
    int refused = 0;
    switch (keyFamily(*this, publicSide, oid, &refused)) {
    case KeyFamily::rsa:
        return flattenRsa<RRSAPublicKey>(*this, publicSide, keyCode, subjectPublicKey, flatKey);
    case KeyFamily::kcdsa:
        return flattenKcdsa(keyCode, subjectPublicKey, parameters, flatKey, hashAlg);
    default:
        return refused;
    }
}

int PPublicKey::flattenKcdsa(int* keyCode, ByteString& subjectPublicKey, ByteString& parameters, ByteString& flatKey, int hashAlg)
{
    const FailuresOf failed{*this, "GetPublicKeyAlgorithm"};
    ByteString domain;
    if (const int code = kcdsaDomain(*this, publicSide, parameters, hashAlg, domain)) return code;
    *keyCode = vnSha1WithKcdsa1024;
    RDSAPublicKey dsaPublicKey;
    if (dsaPublicKey.setParam(domain) > 0) return failed(10, "dsaPublicKey", dsaPublicKey);
    if (dsaPublicKey.setKey(subjectPublicKey) > 0) return failed(11, "dsaPublicKey", dsaPublicKey);
    flatKey = dsaPublicKey.toASN1Object();
    if (dsaPublicKey.getLastError() > 0) return failed(12, "dsaPublicKey", dsaPublicKey);
    return flatKey.isOutOfMemory() ? failed.memory(12, "dsaPublicKey") : 0;
}

// What encryption and verification begin with, and fail in alike: codes 2 to 5.
int PPublicKey::detect(ByteString& subjectPublicKeyInfo, int hashAlg, int* keyCode, ByteString& flatKey, Here at)
{
    RSubjectPublicKeyInfo info;
    if (info.fromASN1Object(subjectPublicKeyInfo) > 0) return fail(*this, 2, "subjectPublicKeyInfo", info, at);
    RAlgorithmIdentifier& algorithm = info.getAlgorithm();
    ByteString& oid = algorithm.getAlgorithm();
    if (algorithm.getLastError() > 0) return fail(*this, 3, "pAlgorithmId", algorithm, at);
    ByteString& key = info.getSubjectPublicKey();
    if (info.getLastError() > 0) return fail(*this, 4, "subjectPublicKeyInfo", info, at);
    const int code = GetPublicKeyAlgorithm(keyCode, oid, key, algorithm.getParameters(), flatKey, hashAlg);
    return code > 0 ? fail(*this, 5, "this", *this, at) : 0;
}

// ---- encryption ----

int PPublicKey::encrypt(ByteString& subjectPublicKeyInfo, ByteString& data, ByteString& out, int oaep)
{
    if (data.getLength() == 0) return fail(*this, 1, "bsData", "data length error");
    int keyCode = 0;
    ByteString flatKey, noIv;
    if (const int code = detect(subjectPublicKeyInfo, 0, &keyCode, flatKey, Here::now())) return code;
    if (oaep == 1) return fail(*this, 5, "this", "The RSA OAEP is not supported.");
    VNEncrypt encrypt;
    const int code = encrypt.EncryptData(keyCode, vnPublicKey, flatKey, noIv, data.octets(), out, vnPadLength);
    return code > 0 ? fail(*this, 5, "encrypt.EncryptData", encrypt) : 0;
}

// ---- verification ----

int PPublicKey::verifySignature(ByteString& subjectPublicKeyInfo, ByteString& data, ByteString& signature, int hashAlg, int pss)
{
    if (signature.getLength() == 0) return fail(*this, 1, "bsSignature", "signature length error.");
    if (hashAlg == 0) hashAlg = vnSha1;
    int keyCode = 0;
    ByteString flatKey;
    if (const int code = detect(subjectPublicKeyInfo, hashAlg, &keyCode, flatKey, Here::now())) return code;
    int signatureCode = keyCode;
    if (keyCode != vnSha1WithKcdsa1024) {
        if (const int code = rsaSignatureCode(*this, publicSide, keyCode, hashAlg, pss, &signatureCode)) return code;
    }
    VNSign sign;
    return sign.VerifyData(signatureCode, flatKey, data, signature) > 0 ? fail(*this, 21, "sign.VerifyData", sign) : 0;
}

int PPublicKey::verifySignatureWithCert(ByteString& certificate, ByteString& data, ByteString& signature, int hashAlg, int pss)
{
    ByteString subjectPublicKeyInfo;
    if (getPublicKeyInfoFromCert(certificate, subjectPublicKeyInfo) > 0) return fail(*this, 1, "this", *this);
    return verifySignature(subjectPublicKeyInfo, data, signature, hashAlg, pss) > 0 ? fail(*this, 2, "this", *this) : 0;
}

int PPublicKey::getPublicKeyInfoFromCert(ByteString& certificate, ByteString& out)
{
    constexpr unsigned char sequence = 0x30, wireless = 0x01;
    const unsigned char kind = certificate.getBytes()[0]; // 0 where there is none
    if (kind == wireless) return fail(*this, 5, "WCertUtil", "The WCertUtil class dose not suppot.");
    if (kind != sequence) return fail(*this, 6, "unCertKind", "Unknown certificate type.");
    RCertificate cert;
    if (cert.fromASN1Object(certificate) > 0) return fail(*this, 1, "cert", cert);
    RSubjectPublicKeyInfo& info = cert.getTBSCertificate().getSubjectPublicKeyInfo();
    out = info.toASN1Object();
    if (info.getLastError() > 0) return fail(*this, 2, "pSubjectPublicKeyInfo", info);
    return out.isOutOfMemory() ? failMemory(*this, 2, "pSubjectPublicKeyInfo") : 0;
}

} // namespace vrno
