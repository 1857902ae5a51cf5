#include "ASN1Pkix/envelope/PEnvelopedData.h"

#include "ASN1/ASN1Null.h"
#include "ASN1Pkix/keys/PAlgorithmUtil.h"
#include "ASN1Pkix/keys/PPublicKey.h"
#include "VNCrypto/VNEncrypt.h"
#include "VNCrypto/VNHash.h"
#include "VNCrypto/VNRandom.h"

#include <climits>
#include <new>
#include <utility>

namespace vrno {

static constexpr int keyLength = 16, ivLength = 16;
static constexpr const char *oidEnvelopedData = "1 2 840 113549 1 7 3", *oidRsa = "1 2 840 113549 1 1 1",
                            *oidRsaOaep = "1 2 840 113549 1 1 7", *oidDsa = "1 2 840 10040 4 1", *oidKcdsa = "1 2 410 200004 1 1";

PEnvelopedData::PEnvelopedData()
    : m_pRecipientInfos(new (std::nothrow) RRecipientInfos), m_pOriginatorInfo(new (std::nothrow) ROriginatorInfo)
{
    const bool isMade = m_pRecipientInfos && m_pOriginatorInfo && !m_bsContentType.isOutOfMemory();
    if (!isMade) m_nLastError = failMemory(*this, 1, "m_pRecipientInfos");
}

// ---- what is asked for ----

int PEnvelopedData::choiceRecipientIdentifier(int choice)
{
    if (choice != issuerAndSerialNumber && choice != subjectKeyIdentifier) {
        return fail(*this, 1, "m_nRecIdentifier", "input error(input ISSUERANDSERIALNUMBER or SUBJECT_KEY_IDENTIFIER)");
    }
    m_nRecIdentifier = choice;
    return 0;
}

void PEnvelopedData::setEncAlgorithm(int alg, int mode)
{
    m_nEncAlg = alg;
    m_nEncMode = mode == 0 ? static_cast<int>(vnCbc) : mode;
}

void PEnvelopedData::setContentType(const char* oid)
{
    m_bsContentType = oid;
}

void PEnvelopedData::setContent(ByteString& data)
{
    m_bsContent = data;
    m_content = m_bsContent.octets();
}

void PEnvelopedData::borrowContent(Octets data)
{
    m_bsContent.clear();
    m_content = data.empty() ? m_bsContent.octets() : data; // which are never at null
}

void PEnvelopedData::setOption(unsigned char bits)
{
    m_ucOptions |= bits;
}

// ---- the key ----

int PEnvelopedData::makeSymetricKey(ByteString& key, ByteString& iv, int alg)
{
    if (alg != vnSeed && alg != vnCipher3090 && alg != vnCipher3091 && alg != vnCipher3200) {
        return fail(*this, 1, "nEncAlg", "Unknown symmetric algoritm.");
    }
    VNRandom random;
    if (random.GenerateRandom(vnRandom, keyLength, key) == 0 && random.GenerateRandom(vnRandom, ivLength, iv) == 0) {
        return 0;
    }
    key.clear(); // a key without an IV is none
    iv.clear();
    return fail(*this, 1, "random", random);
}

int PEnvelopedData::getSymmetricKey(ByteString& key, ByteString& iv)
{
    key = m_bsKey;
    iv = m_bsIv;
    return key.isOutOfMemory() || iv.isOutOfMemory() ? failMemory(*this, 1, "m_bsKey") : 0;
}

// ---- recipients ----

int PEnvelopedData::addRecipientByCert(ByteString& certificate)
{
    return addRecipient(certificate, nullptr) > 0 ? fail(*this, 1, "this", *this) : 0;
}

int PEnvelopedData::addRecipient(ByteString& certificate, ByteString* keyEncryptionKey)
{
    const FailuresOf failed{*this, "addRecipientByCert"};
    const bool hasKey = m_bsKey.getLength() > 0;
    if (!hasKey && makeSymetricKey(m_bsKey, m_bsIv, m_nEncAlg) > 0) return failed(1, "this", *this);
    const unsigned char stateBefore = m_ucState;
    const int code = appendRecipient(certificate, keyEncryptionKey);
    if (code > 0) m_ucState = stateBefore; // a recipient that is not there has no say in the message's version
    return code;
}

int PEnvelopedData::appendRecipient(ByteString& certificate, const ByteString* keyEncryptionKey)
{
    const FailuresOf failed{*this, "addRecipientByCert"};
    ByteString element;
    if (const int code = makeElement(certificate, keyEncryptionKey, element)) return code;
    RRecipientInfo recipientInfo(element);
    if (recipientInfo.getLastError() > 0) return failed(14, "recipientInfo", recipientInfo);
    const int code = m_pRecipientInfos->addRecipientInfo(recipientInfo);
    return code > 0 ? failed(15, "m_pRecipientInfos", *m_pRecipientInfos) : 0;
}

int PEnvelopedData::makeElement(ByteString& certificate, const ByteString* keyEncryptionKey, ByteString& out)
{
    const FailuresOf failed{*this, "addRecipientByCert"};
    const auto refuse = [&](int code, int refusal, const char* message, Here at = Here::now()) {
        fail(*this, refusal, "Algorithm", message, at.in("encrypt"));
        return failed(code, "this", *this, at);
    };
    if (m_nRecipientType == sharedKey) {
        if (keyEncryptionKey) return refuse(3, 14, "The KEKRI recipientInfoType is not supported.");
        return fail(*this, 2, "pKeyEncryptionKey", "KeyEncrytionKey does not set.", Here::now().in("addRecipient"));
    }
    RCertificate cert;
    if (cert.fromASN1Object(certificate) > 0) return failed(4, "cert", cert);
    if (m_nRecipientType == keyTransport) return transportElement(cert.getTBSCertificate(), out);
    if (m_nRecipientType == keyAgreement) return refuse(12, 51, "The KARI recipientInfoType is not supported.");
    return failed(13, "m_nRecipientType", "The recipientType is not chosen.");
}

int PEnvelopedData::transportElement(RTBSCertificate& tbs, ByteString& out)
{
    const FailuresOf failed{*this, "addRecipientByCert"};
    RAlgorithmIdentifier& algorithm = tbs.getSubjectPublicKeyInfo().getAlgorithm();
    ByteString& oid = algorithm.getAlgorithm();
    if (algorithm.getLastError() > 0) return failed(6, "pAlgorithmId", algorithm);
    if (oid == oidDsa || oid == oidKcdsa) return failed(5, "cert", "Can't encrypt key by dsa or kcdsa algorithm.");
    return recipientInfoIsKTRI(tbs, out, oid) > 0 ? failed(10, "this", *this) : 0;
}

// KeyTransRecipientInfo ::= SEQUENCE { version CMSVersion, rid RecipientIdentifier,
//     keyEncryptionAlgorithm AlgorithmIdentifier, encryptedKey OCTET STRING }
int PEnvelopedData::recipientInfoIsKTRI(RTBSCertificate& tbs, ByteString& out, ByteString& keyAlgorithmOid)
{
    RSubjectPublicKeyInfo& info = tbs.getSubjectPublicKeyInfo();
    ByteString& publicKey = info.getSubjectPublicKey();
    if (info.getLastError() > 0) return fail(*this, 2, "subjectPublicKeyInfo", info);
    RKeyTransRecipientInfo ktri;
    if (const int code = nameRecipient(ktri, tbs, publicKey)) return code;
    if (const int code = setKeyAlgorithm(ktri, keyAlgorithmOid)) return code;
    if (const int code = setEncryptedKey(ktri, info)) return code;
    RRecipientInfo recipientInfo;
    if (recipientInfo.setKeyTransRecipientInfo(ktri) > 0) return fail(*this, 19, "recipientInfo", recipientInfo);
    out = recipientInfo.toASN1Object();
    if (recipientInfo.getLastError() > 0) return fail(*this, 20, "recipientInfo", recipientInfo);
    return out.isOutOfMemory() ? failMemory(*this, 20, "recipientInfo") : 0;
}

int PEnvelopedData::nameRecipient(RKeyTransRecipientInfo& ktri, RTBSCertificate& tbs, ByteString& publicKey)
{
    const FailuresOf failed{*this, "recipientInfoIsKTRI"};
    const bool byKey = m_nRecIdentifier == subjectKeyIdentifier;
    RRecipientIdentifier recipientId;
    if (ktri.setVersion(byKey ? 2 : 0) > 0) return failed(9, "ktri", ktri);
    if (const int code = byKey ? nameByKey(recipientId, publicKey) : nameByIssuer(recipientId, tbs)) return code;
    return ktri.setRid(recipientId) > 0 ? failed(9, "ktri", ktri) : 0;
}

// The identifier is the first that RFC 5280 suggests (4.2.1.2), whatever the certificate's own extension says.
int PEnvelopedData::nameByKey(RRecipientIdentifier& recipientId, ByteString& publicKey)
{
    const FailuresOf failed{*this, "recipientInfoIsKTRI"};
    m_ucState |= keyIdentifierUsed;
    VNHash hash;
    ByteString keyId;
    if (hash.DigestData(vnSha1, publicKey, keyId, 1) > 0) return failed(3, "hash", hash);
    return recipientId.setSubjectKeyIdentifier(keyId) > 0 ? failed(4, "recipientId", recipientId) : 0;
}

int PEnvelopedData::nameByIssuer(RRecipientIdentifier& recipientId, RTBSCertificate& tbs)
{
    const FailuresOf failed{*this, "recipientInfoIsKTRI"};
    RIssuerAndSerialNumber issuerAndSerialNum;
    ByteString& serialNumber = tbs.getSerialNumber(false);
    if (tbs.getLastError() > 0) return failed(6, "tbsCert", tbs);
    const bool set = issuerAndSerialNum.setIssuer(tbs.getIssuer()) == 0 && issuerAndSerialNum.setSerialNumber(serialNumber) == 0;
    if (!set) return failed(7, "issuerAndSerialNum", issuerAndSerialNum);
    const int code = recipientId.setIssuerAndSerialNumber(issuerAndSerialNum);
    return code > 0 ? failed(8, "recipientId", recipientId) : 0;
}

int PEnvelopedData::setKeyAlgorithm(RKeyTransRecipientInfo& ktri, ByteString& oid)
{
    const FailuresOf failed{*this, "recipientInfoIsKTRI"};
    const bool isRsa = oid == oidRsa, isOaep = isRsa && (m_ucOptions & rsaOaep);
    RAlgorithmIdentifier keyEncAlgId;
    if (isOaep && keyEncAlgId.setAlgorithm(oidRsaOaep, true) > 0) return failed(10, "keyEncAlgId", keyEncAlgId);
    if (!isOaep && keyEncAlgId.setAlgorithm(oid, true) > 0) return failed(11, "keyEncAlgId", keyEncAlgId);
    if (isOaep) return failed(12, "keyEncAlgId", "The RSA OAEP is not supported.");
    ASN1Null asnNull;
    if (isRsa) keyEncAlgId.setParameters(asnNull.toASN1Object());
    if (asnNull.getLastError() > 0) return failed(12, "keyEncAlgId", asnNull);
    return ktri.setKeyEncryptionAlgorithm(keyEncAlgId) > 0 ? failed(13, "ktri", ktri) : 0;
}

int PEnvelopedData::setEncryptedKey(RKeyTransRecipientInfo& ktri, RSubjectPublicKeyInfo& info)
{
    const FailuresOf failed{*this, "recipientInfoIsKTRI"};
    if (m_bsKey.getLength() == 0) return failed(14, "m_bsKey", "Symmetric key is not set!");
    ByteString& encoded = info.toASN1Object();
    if (info.getLastError() > 0) return failed(15, "subjectPublicKeyInfo", info);
    PPublicKey publicKey;
    ByteString encryptedKey;
    if (publicKey.encrypt(encoded, m_bsKey, encryptedKey, 0) > 0) return failed(17, "bsPublickeyInfo", publicKey);
    return ktri.setEncryptedKey(encryptedKey) > 0 ? failed(18, "ktri", ktri) : 0;
}

// ---- the message ----

int PEnvelopedData::makeEnvelopedData(ByteString& out)
{
    ByteString message;
    if (const int code = encodeEnvelopedData(message)) return code; // whose records are gone before the message grows
    if (m_ucOptions & inContentInfo) {
        if (const int code = wrap(message)) return code;
    }
    out.swap(message);
    return 0;
}

int PEnvelopedData::encodeEnvelopedData(ByteString& out)
{
    const FailuresOf failed{*this, "makeEnvelopedData"};
    REnvelopedData env;
    if (env.setVersion(m_ucState != 0 ? 2 : 0) > 0) return failed(1, "m_nCMSVersion", env);
    if (m_ucState & originatorInfoSet) {
        if (env.setOriginatorInfo(*m_pOriginatorInfo) > 0) return failed(2, "m_pOriginatorInfo", env);
    }
    if (env.setRecipientInfos(*m_pRecipientInfos) > 0) return failed(3, "m_pRecipientInfos", env);
    if (const int code = setContentInfo(env)) return code;
    if (m_ucState & unprotectedAttrsSet) {
        if (!m_pUnprotectedAttrs) return failed.memory(17, "envelopedData");
        if (env.setUnprotectedAttrs(*m_pUnprotectedAttrs) > 0) return failed(17, "envelopedData", env);
    }
    ByteString& encoded = env.toASN1Object();
    if (env.getLastError() > 0) return failed(18, "envelopedData", env);
    out.swap(encoded);
    return 0;
}

int PEnvelopedData::setContentInfo(REnvelopedData& env)
{
    const FailuresOf failed{*this, "makeEnvelopedData"};
    REncryptedContentInfo eci;
    if (eci.setContentType(m_bsContentType) > 0) return failed(4, "m_bsContentType", eci);
    PAlgorithmUtil util;
    RAlgorithmIdentifier algorithm;
    if (util.makeSymmetricAlgID(m_nEncAlg, m_nEncMode, m_bsIv, algorithm) > 0) return failed(5, "findSymetricAlgOid", util);
    if (eci.setContentEncryptionAlgorithm(algorithm) > 0) return failed(13, "encryptedContentInfo", eci);
    if ((m_ucOptions & withoutContent) == 0) {
        if (const int code = encryptContent(eci)) return code;
    }
    return env.setEncryptedContentInfo(std::move(eci)) > 0 ? failed(16, "envelopedData", env) : 0;
}

int PEnvelopedData::encryptContent(REncryptedContentInfo& eci)
{
    const FailuresOf failed{*this, "makeEnvelopedData"};
    if (m_bsContent.getError() > 0) return failed.memory(14, "encrypt");
    if (!messageFits()) return failed(18, "envelopedData", "The message is too long.");
    VNEncrypt encrypt;
    ByteString encrypted;
    if (encrypt.EncryptData(m_nEncAlg, m_nEncMode, m_bsKey, m_bsIv, m_content, encrypted, vnPadLength) > 0) {
        return encrypt.outOfMemory() ? failed.memory(14, "encrypt") : failed(14, "encrypt", "Encryption Error");
    }
    return eci.setEncryptedContent(std::move(encrypted)) > 0 ? failed(15, "encryptedContentInfo", eci) : 0;
}

// Whether a ByteString holds what the message comes to. Besides the content, its type (whose text is the longer form) and
// the recipients there are the padding, the cipher's identifier, and a dozen short headers.
bool PEnvelopedData::messageFits() const
{
    constexpr std::size_t most = INT_MAX - 1, small = 512;
    const auto length = [](const ByteString& of) { return static_cast<std::size_t>(of.getLength()); };
    const std::size_t others = small + length(m_bsContentType) + length(m_pRecipientInfos->m_SET.m_bsValue);
    return others <= most && m_content.size() <= most - others;
}

// ContentInfo ::= SEQUENCE { contentType OBJECT IDENTIFIER, content [0] EXPLICIT ANY DEFINED BY contentType }
int PEnvelopedData::wrap(ByteString& encoded)
{
    const FailuresOf failed{*this, "makeEnvelopedData"};
    RContentInfo contentInfo;
    if (contentInfo.setContentType(oidEnvelopedData) > 0) return failed(19, "contentInfo", contentInfo);
    contentInfo.setContent(std::move(encoded));
    encoded.swap(contentInfo.toASN1Object());
    return contentInfo.getLastError() > 0 ? failed(20, "contentInfo", contentInfo) : 0;
}

} // namespace vrno
