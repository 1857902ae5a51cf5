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
    const KeyFamily family = keyFamily(oid);
    if (family == KeyFamily::rsa) return flattenRsa<RRSAPublicKey>(*this, publicSide, keyCode, subjectPublicKey, flatKey);
    if (family == KeyFamily::kcdsa) return flattenKcdsa(keyCode, subjectPublicKey, parameters, flatKey, hashAlg);
    return refuseFamily(*this, publicSide, family, oid);
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
    flatKey.swap(dsaPublicKey.toASN1Object());
    return dsaPublicKey.getLastError() > 0 ? failed(12, "dsaPublicKey", dsaPublicKey) : 0;
}

// The first step of encryption and of verification: codes 2 to 5.
int PPublicKey::readKey(const FailuresOf& failed, ByteString& subjectPublicKeyInfo, int hashAlg, int* keyCode, ByteString& flatKey)
{
    RSubjectPublicKeyInfo info;
    if (info.fromASN1Object(subjectPublicKeyInfo) > 0) return failed(2, "subjectPublicKeyInfo", info);
    RAlgorithmIdentifier& algorithm = info.getAlgorithm();
    ByteString& oid = algorithm.getAlgorithm();
    if (algorithm.getLastError() > 0) return failed(3, "pAlgorithmId", algorithm);
    ByteString& key = info.getSubjectPublicKey();
    if (info.getLastError() > 0) return failed(4, "subjectPublicKeyInfo", info);
    const int code = GetPublicKeyAlgorithm(keyCode, oid, key, algorithm.getParameters(), flatKey, hashAlg);
    return code > 0 ? failed(5, "this", *this) : 0;
}

// ---- encryption ----

int PPublicKey::encrypt(ByteString& subjectPublicKeyInfo, ByteString& data, ByteString& out, int oaep)
{
    const FailuresOf failed{*this, "encrypt"};
    if (data.getLength() == 0) return failed(1, "bsData", "data length error");
    int keyCode = 0;
    ByteString flatKey, noIv;
    if (const int code = readKey(failed, subjectPublicKeyInfo, 0, &keyCode, flatKey)) return code;
    if (oaep == 1) return failed(5, "this", "The RSA OAEP is not supported.");
    VNEncrypt encrypt;
    const int code = encrypt.EncryptData(keyCode, vnPublicKey, flatKey, noIv, data.octets(), out, vnPadLength);
    return code > 0 ? failed(5, "encrypt.EncryptData", encrypt) : 0;
}

// ---- verification ----

int PPublicKey::verifySignature(ByteString& subjectPublicKeyInfo, ByteString& data, ByteString& signature, int hashAlg, int pss)
{
    const FailuresOf failed{*this, "verifySignature"};
    if (signature.getLength() == 0) return failed(1, "bsSignature", "signature length error.");
    if (hashAlg == 0) hashAlg = vnSha1;
    int keyCode = 0;
    ByteString flatKey;
    if (const int code = readKey(failed, subjectPublicKeyInfo, hashAlg, &keyCode, flatKey)) return code;
    const bool isPss = pss == 1;
    const int signAlg = signatureCode(keyCode, hashAlg, isPss);
    if (signAlg == 0) return refuseSignature(*this, publicSide, keyCode, hashAlg, isPss);
    VNSign sign;
    return sign.VerifyData(signAlg, flatKey, data, signature) > 0 ? failed(21, "sign.VerifyData", sign) : 0;
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
    const unsigned char kind = certificate.getBytes()[0]; // 0 if there is none
    if (kind == wireless) return fail(*this, 5, "WCertUtil", "The WCertUtil class dose not suppot.");
    if (kind != sequence) return fail(*this, 6, "unCertKind", "Unknown certificate type.");
    RCertificate cert;
    if (cert.fromASN1Object(certificate) > 0) return fail(*this, 1, "cert", cert);
    RSubjectPublicKeyInfo& info = cert.getTBSCertificate().getSubjectPublicKeyInfo();
    out.swap(info.toASN1Object());
    return info.getLastError() > 0 ? fail(*this, 2, "pSubjectPublicKeyInfo", info) : 0;
}

} // namespace vrno
