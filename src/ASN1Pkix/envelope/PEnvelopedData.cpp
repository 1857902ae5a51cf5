#include "ASN1Pkix/envelope/PEnvelopedData.h"

#include "ASN1Pkix/keys/PAlgorithmUtil.h"
#include "VNCrypto/VNEncrypt.h"
#include "VNCrypto/VNRandom.h"

#include <climits>
#include <new>
#include <utility>

namespace vrno {

static constexpr const char* oidEnvelopedData = "1 2 840 113549 1 7 3";

PEnvelopedData::PEnvelopedData()
    : m_pRecipientInfos(new (std::nothrow) RRecipientInfos), m_pOriginatorInfo(new (std::nothrow) ROriginatorInfo)
{
    const bool isMade = m_pRecipientInfos && m_pOriginatorInfo && !m_bsContentType.isOutOfMemory();
    if (!isMade) m_nLastError = failMemory(*this, 1, "m_pRecipientInfos");
}

// ---- settings ----

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
    m_nEncMode = mode;
    if (mode == 0) m_nEncMode = vnCbc;
}

void PEnvelopedData::setContentType(const char* oid) { m_bsContentType = oid; }

void PEnvelopedData::setContent(ByteString& data)
{
    m_bsContent = data;
    m_content = m_bsContent.octets();
}

void PEnvelopedData::borrowContent(Octets data)
{
    m_bsContent.clear();
    m_content = data.empty() ? m_bsContent.octets() : data; // a pointer that is never null
}

void PEnvelopedData::setOption(unsigned char bits) { m_ucOptions |= bits; }

// ---- the key ----

int PEnvelopedData::makeSymetricKey(ByteString& key, ByteString& iv, int alg)
{
    const bool isKnown = alg == vnSeed || alg == vnCipher3090 || alg == vnCipher3091 || alg == vnCipher3200;
    if (!isKnown) return fail(*this, 1, "nEncAlg", "Unknown symmetric algoritm.");
    VNRandom random;
    const bool isKeyMade = random.GenerateRandom(vnRandom, seedKeyLength, key) == 0;
    if (isKeyMade && random.GenerateRandom(vnRandom, seedIvLength, iv) == 0) return 0;
    key.clear(); // a key without an IV is of no use
    iv.clear();
    return fail(*this, 1, "random", random);
}

int PEnvelopedData::getSymmetricKey(ByteString& key, ByteString& iv)
{
    key = m_bsKey;
    iv = m_bsIv;
    return key.isOutOfMemory() || iv.isOutOfMemory() ? failMemory(*this, 1, "m_bsKey") : 0;
}

// ---- the message ----

int PEnvelopedData::makeEnvelopedData(ByteString& out)
{
    ByteString message;
    if (const int code = encodeEnvelopedData(message)) return code; // it releases its records before the message grows
    if (m_ucOptions & inContentInfo) return wrap(std::move(message), out);
    out.swap(message);
    return 0;
}

int PEnvelopedData::encodeEnvelopedData(ByteString& out)
{
    const FailuresOf failed{*this, "makeEnvelopedData"};
    REnvelopedData env;
    if (env.setVersion(m_ucState != 0 ? laterVersion : firstVersion) > 0) return failed(1, "m_nCMSVersion", env);
    if (m_ucState & originatorInfoSet) {
        if (env.setOriginatorInfo(*m_pOriginatorInfo) > 0) return failed(2, "m_pOriginatorInfo", env);
    }
    if (env.setRecipientInfos(*m_pRecipientInfos) > 0) return failed(3, "m_pRecipientInfos", env);
    if (const int code = setContentInfo(env)) return code;
    if (m_ucState & unprotectedAttrsSet) {
        if (!m_pUnprotectedAttrs) return failed.memory(17, "envelopedData");
        if (env.setUnprotectedAttrs(*m_pUnprotectedAttrs) > 0) return failed(17, "envelopedData", env);
    }
    out.swap(env.toASN1Object());
    return env.getLastError() > 0 ? failed(18, "envelopedData", env) : 0;
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
        if (encrypt.outOfMemory()) return failed.memory(14, "encrypt");
        return failed(14, "encrypt", "Encryption Error");
    }
    return eci.setEncryptedContent(std::move(encrypted)) > 0 ? failed(15, "encryptedContentInfo", eci) : 0;
}

// Whether a ByteString can hold the message. Besides the content, its type (counted as text, which is longer) and the recipients
// it has the padding, the cipher's identifier and a dozen short headers.
bool PEnvelopedData::messageFits() const
{
    constexpr std::size_t maxLength = INT_MAX - 1, smallParts = 512;
    const auto length = [](const ByteString& of) { return static_cast<std::size_t>(of.getLength()); };
    const std::size_t others = smallParts + length(m_bsContentType) + length(m_pRecipientInfos->m_SET.m_bsValue);
    return others <= maxLength && m_content.size() <= maxLength - others;
}

// ContentInfo ::= SEQUENCE { contentType OBJECT IDENTIFIER, content [0] EXPLICIT ANY DEFINED BY contentType }
int PEnvelopedData::wrap(ByteString&& content, ByteString& out)
{
    const FailuresOf failed{*this, "makeEnvelopedData"};
    RContentInfo contentInfo;
    if (contentInfo.setContentType(oidEnvelopedData) > 0) return failed(19, "contentInfo", contentInfo);
    contentInfo.setContent(std::move(content));
    ByteString& encoded = contentInfo.toASN1Object();
    if (contentInfo.getLastError() > 0) return failed(20, "contentInfo", contentInfo);
    out.swap(encoded);
    return 0;
}

} // namespace vrno
