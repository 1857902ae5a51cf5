// The recipients of PEnvelopedData.
#include "ASN1/ASN1Null.h"
#include "ASN1Pkix/envelope/PEnvelopedData.h"
#include "ASN1Pkix/keys/PPublicKey.h"
#include "VNCrypto/VNHash.h"

namespace vrno {

static constexpr const char *oidRsa = "1 2 840 113549 1 1 1", *oidRsaOaep = "1 2 840 113549 1 1 7", *oidDsa = "1 2 840 10040 4 1",
                            *oidKcdsa = "1 2 410 200004 1 1";

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
    if (code > 0) m_ucState = stateBefore; // only the recipients that are in the message decide its version
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
    const FailuresOf failed{*this, "addRecipientByCert"}, failedKey{*this, "addRecipient"}, refused{*this, "encrypt"};
    if (m_nRecipientType == sharedKey) {
        if (!keyEncryptionKey) return failedKey(2, "pKeyEncryptionKey", "KeyEncrytionKey does not set.");
        refused(14, "Algorithm", "The KEKRI recipientInfoType is not supported.");
        return failed(3, "this", *this);
    }
    RCertificate cert;
    if (cert.fromASN1Object(certificate) > 0) return failed(4, "cert", cert);
    if (m_nRecipientType == keyTransport) return makeTransportElement(cert.getTBSCertificate(), out);
    if (m_nRecipientType != keyAgreement) return failed(13, "m_nRecipientType", "The recipientType is not chosen.");
    refused(51, "Algorithm", "The KARI recipientInfoType is not supported.");
    return failed(12, "this", *this);
}

int PEnvelopedData::makeTransportElement(RTBSCertificate& tbs, ByteString& out)
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
    out.swap(recipientInfo.toASN1Object());
    return recipientInfo.getLastError() > 0 ? fail(*this, 20, "recipientInfo", recipientInfo) : 0;
}

int PEnvelopedData::nameRecipient(RKeyTransRecipientInfo& ktri, RTBSCertificate& tbs, ByteString& publicKey)
{
    const FailuresOf failed{*this, "recipientInfoIsKTRI"};
    const bool byKey = m_nRecIdentifier == subjectKeyIdentifier;
    RRecipientIdentifier recipientId;
    if (ktri.setVersion(byKey ? laterVersion : firstVersion) > 0) return failed(9, "ktri", ktri);
    if (const int code = byKey ? nameByKey(recipientId, publicKey) : nameByIssuer(recipientId, tbs)) return code;
    return ktri.setRid(recipientId) > 0 ? failed(9, "ktri", ktri) : 0;
}

// The identifier is by method (1) of RFC 5280, 4.2.1.2. The extension in the certificate is not read.
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
    const bool isSet = issuerAndSerialNum.setIssuer(tbs.getIssuer()) == 0 && issuerAndSerialNum.setSerialNumber(serialNumber) == 0;
    if (!isSet) return failed(7, "issuerAndSerialNum", issuerAndSerialNum);
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
    constexpr int withoutOaep = 0;
    PPublicKey publicKey;
    ByteString encryptedKey;
    if (publicKey.encrypt(encoded, m_bsKey, encryptedKey, withoutOaep) > 0) return failed(17, "bsPublickeyInfo", publicKey);
    return ktri.setEncryptedKey(encryptedKey) > 0 ? failed(18, "ktri", ktri) : 0;
}

} // namespace vrno
