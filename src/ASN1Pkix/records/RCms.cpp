#include "ASN1Pkix/records/RCms.h"

#include "base/ByteBuilder.h"

#include <utility>

namespace vrno {

// ---- OriginatorInfo ----

// OriginatorInfo ::= SEQUENCE { certs [0] IMPLICIT CertificateSet OPTIONAL, crls [1] IMPLICIT RevocationInfoChoices OPTIONAL }
template <class V> void ROriginatorInfo::walk(V& v)
{
    v.optional(implicitTagOf(0, ASN1_TAG_SET), 0x01, NAMED(m_certs), {2, 1});
    v.optional(implicitTagOf(1, ASN1_TAG_SET), 0x02, NAMED(m_crls), {4, 2});
    v.end(3);
}

int ROriginatorInfo::fromASN1Object(ByteString& data) { return decode(*this, data); }

ByteString& ROriginatorInfo::toASN1Object() { return encode(*this); }

// ---- EncryptedContentInfo ----

// EncryptedContentInfo ::= SEQUENCE { contentType OBJECT IDENTIFIER, contentEncryptionAlgorithm AlgorithmIdentifier,
//     encryptedContent [0] IMPLICIT OCTET STRING OPTIONAL }
template <class V> void REncryptedContentInfo::walk(V& v)
{
    v.atLeast(2, "At least 2 component is required.");
    v.required(oidTag, NAMED(m_contentType), {3, 1});
    v.required(sequenceTag, NAMED(m_contentEncryptionAlgorithm), {6, 2});
    if constexpr (V::decoding) {
        if (v.spare() && v.nextIs(optionTag(0))) takeContent(v);
    } else {
        v.optional(optionTag(0), 0x01, NAMED(m_encryptedContent), {0, 3});
    }
    v.end(4);
}

void REncryptedContentInfo::takeContent(Decoder& v)
{
    ByteString* const component = v.fetch(9);
    if (!component) return;
    if (component->getBytes()[0] & constructedBit) return joinSegments(v, *component);
    if (m_encryptedContent.fromASN1Object(*component) > 0) return v.refuse(12, "m_encryptedContent", m_encryptedContent);
    m_ucBitMask |= 0x01;
}

void REncryptedContentInfo::joinSegments(Decoder& v, ByteString& component)
{
    component.setAt(0, ASN1_TAG_SEQUENCE | constructedBit);
    if (m_encryptedContent2.fromASN1Object(component) > 0) return v.refuse(10, "m_encryptedContent2", m_encryptedContent2);
    ByteBuilder joined;
    for (int i = 0; i < m_encryptedContent2.getComponentCount(); ++i) {
        ASN1OctetString octString;
        ByteString& segment = m_encryptedContent2.getComponent(i);
        if (octString.fromASN1Object(segment) > 0) return v.refuse(11, "octString", octString);
        joined.append(octString.getValue().octets());
    }
    ByteString content;
    if (joined.into(content) > 0) return v.refuseMemory(12, "m_encryptedContent");
    setEncryptedContent(std::move(content));
}

int REncryptedContentInfo::fromASN1Object(ByteString& data) { return decode(*this, data); }

ByteString& REncryptedContentInfo::toASN1Object() { return encode(*this); }

int REncryptedContentInfo::setContentType(ByteString& oid)
{
    return m_contentType.setOID(oid) > 0 ? fail(*this, 1, "m_contentType", m_contentType) : 0;
}

int REncryptedContentInfo::setContentEncryptionAlgorithm(RAlgorithmIdentifier& data)
{
    return copyThrough(*this, data, NAMED(m_contentEncryptionAlgorithm));
}

int REncryptedContentInfo::setEncryptedContent(ByteString&& octets)
{
    if (octets.isOutOfMemory()) return failMemory(*this, 1, "m_encryptedContent");
    m_encryptedContent.getValue().swap(octets);
    m_encryptedContent.setImplicitTag(0, contextClass);
    m_ucBitMask |= 0x01;
    return 0;
}

// ---- EnvelopedData ----

// EnvelopedData ::= SEQUENCE { version CMSVersion, originatorInfo [0] IMPLICIT OriginatorInfo OPTIONAL,
//     recipientInfos RecipientInfos, encryptedContentInfo EncryptedContentInfo,
//     unprotectedAttrs [1] IMPLICIT SET OF Attribute OPTIONAL }
void REnvelopedData::walk(Encoder& v)
{
    v.required(anyTag, NAMED(m_version), {0, 1});
    v.optional(optionTag(0), 0x01, NAMED(m_originatorInfo), {0, 2});
    v.required(anyTag, NAMED(m_recipientInfos), {0, 3});
    v.required(anyTag, NAMED(m_encryptedContentInfo), {0, 4});
    v.optional(optionTag(1), 0x02, NAMED(m_unprotectedAttrs), {0, 5});
    v.end(6);
}

ByteString& REnvelopedData::toASN1Object() { return encode(*this); }

int REnvelopedData::setVersion(int version) { return setCMSVersion(*this, version); }

int REnvelopedData::setOriginatorInfo(ROriginatorInfo& data)
{
    if (const int code = copyThrough(*this, data, NAMED(m_originatorInfo))) return code;
    m_originatorInfo.setImplicitTag(0, contextClass);
    m_ucBitMask |= 0x01;
    return 0;
}

int REnvelopedData::setRecipientInfos(RRecipientInfos& data) { return copyThrough(*this, data, NAMED(m_recipientInfos)); }

// Copies all but the content, which is too large for an encoded copy beside it.
static int copyWithoutContent(REnvelopedData& enveloped, REncryptedContentInfo& data, Here at)
{
    const unsigned char mask = data.m_ucBitMask;
    data.m_ucBitMask = 0;
    const int code = copyThrough(enveloped, data, enveloped.m_encryptedContentInfo, "m_encryptedContentInfo", at);
    data.m_ucBitMask = mask;
    return code;
}

int REnvelopedData::setEncryptedContentInfo(REncryptedContentInfo&& data)
{
    if (const int code = copyWithoutContent(*this, data, Here::now())) return code;
    if ((data.m_ucBitMask & 0x01) == 0) return 0;
    ByteString content;
    content.swap(data.m_encryptedContent.getValue());
    data.m_ucBitMask &= static_cast<unsigned char>(~0x01);
    return m_encryptedContentInfo.setEncryptedContent(std::move(content));
}

int REnvelopedData::setUnprotectedAttrs(RAttributes& data)
{
    if (const int code = copyThrough(*this, data, NAMED(m_unprotectedAttrs))) return code;
    m_unprotectedAttrs.setImplicitTag(1, contextClass);
    m_ucBitMask |= 0x02;
    return 0;
}

// ---- ContentInfo ----

// ContentInfo ::= SEQUENCE { contentType OBJECT IDENTIFIER, content [0] EXPLICIT ANY DEFINED BY contentType OPTIONAL }
void RContentInfo::walk(Encoder& v)
{
    v.required(anyTag, NAMED(m_contentType), {0, 1});
    if (m_ucBitMask & 0x01) putContent(v);
    v.end(3);
}

// The content is moved into the wrapper [0] for the encoding and moved back after it.
void RContentInfo::putContent(Encoder& v)
{
    if (m_content.isOutOfMemory()) return v.refuseMemory(2, "asnSeqContent");
    ASN1Sequence asnSeqContent;
    asnSeqContent.setImplicitTag(0, contextClass);
    asnSeqContent.getValue().swap(m_content);
    v.required(anyTag, NAMED(asnSeqContent), {0, 2});
    asnSeqContent.getValue().swap(m_content);
}

ByteString& RContentInfo::toASN1Object() { return encode(*this); }

int RContentInfo::setContentType(const char* oid)
{
    return m_contentType.setOID(oid) > 0 ? fail(*this, 1, "m_contentType", m_contentType) : 0;
}

void RContentInfo::setContent(ByteString&& encoded)
{
    m_content.swap(encoded);
    m_ucBitMask |= 0x01;
}

} // namespace vrno
