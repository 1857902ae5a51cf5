#include "ASN1Pkix/records/RForeignRecipients.h"

#include "ASN1Pkix/records/RRecipientInfo.h"

namespace vrno {

// ---- the originator of a key agreement ----

// OriginatorPublicKey ::= SEQUENCE { algorithm AlgorithmIdentifier, publicKey BIT STRING }
void ROriginatorPublicKey::walk(Decoder& v)
{
    v.exactly(2);
    v.required(sequenceTag, NAMED(m_algorithm), {3});
    v.required(bitStringTag, NAMED(m_publicKey), {6});
}

int ROriginatorPublicKey::fromASN1Object(ByteString& data) { return decode(*this, data); }

int ROriginatorIdentifierOrKey::fromASN1Object(ByteString& data)
{
    m_ucBitMask = nothing;
    ASN1Object asnObj;
    if (asnObj.fromASN1Object(data) > 0) return fail(*this, 1, "asnObj", asnObj);
    if (asnObj.getTaggedType() == notTagged) {
        return keepAs<RIssuerAndSerialNumber>(*this, issuerAndSerialNumber, data, "issuerAndSerialNumber", 2);
    }
    switch (asnObj.getOptionTagNo()) {
    case 0:
        return keepAs<ASN1OctetString>(*this, subjectKeyIdentifier, data, "asnSubKeyId", 3);
    case 1:
        return keepAsTagged<ROriginatorPublicKey>(*this, originatorKey, data, "originatorKey", 4);
    default:
        return fail(*this, 5, "asnObj", "Any component is not chosen. (or Unknown component is contained.)");
    }
}

// ---- KeyAgreeRecipientInfo ----

// KeyAgreeRecipientInfo ::= SEQUENCE { version CMSVersion, originator [0] EXPLICIT OriginatorIdentifierOrKey,
//     ukm [1] EXPLICIT OCTET STRING OPTIONAL, keyEncryptionAlgorithm AlgorithmIdentifier,
//     recipientEncryptedKeys SEQUENCE OF RecipientEncryptedKey }
void RKeyAgreeRecipientInfo::walk(Decoder& v)
{
    v.atLeast(4, "At least 4 components are required.");
    v.required(integerTag, NAMED(m_version), {3});
    v.rule(v.nextIs(optionTag(0)), 5, "asnSeq", "originator component is not [0] Explicit.");
    if (ByteString* const wrapped = v.fetch(6)) takeOriginator(v, *wrapped);
    v.optional(optionTag(1), 0x01, NAMED(m_ukm), {8});
    v.required(sequenceTag, NAMED(m_keyEncryptionAlgorithm), {10});
    v.required(sequenceTag, NAMED(m_recipientEncryptedKeys), {13});
}

// The codec would remove the tag of the originator together with the wrapper, so the wrapper is read as an OCTET STRING.
void RKeyAgreeRecipientInfo::takeOriginator(Decoder& v, ByteString& wrapped)
{
    ASN1OctetString element;
    wrapped.setAt(0, ASN1_TAG_OCTETSTRING);
    if (element.fromASN1Object(wrapped) > 0) return v.refuse(7, "m_originator", element);
    if (m_originator.fromASN1Object(element.getValue()) > 0) return v.refuse(7, "m_originator", m_originator);
}

int RKeyAgreeRecipientInfo::fromASN1Object(ByteString& data) { return decode(*this, data); }

// ---- KEKRecipientInfo ----

// OtherKeyAttribute ::= SEQUENCE { keyAttrId OBJECT IDENTIFIER, keyAttr ANY DEFINED BY keyAttrId OPTIONAL }
void ROtherKeyAttribute::walk(Decoder& v)
{
    v.atLeast(1, "At least 1 component is required.");
    v.required(oidTag, NAMED(m_keyAttrId), {3});
    v.optional(anyTag, 0x01, NAMED(m_keyAttr), {6});
}

int ROtherKeyAttribute::fromASN1Object(ByteString& data) { return decode(*this, data); }

// KEKIdentifier ::= SEQUENCE { keyIdentifier OCTET STRING, date GeneralizedTime OPTIONAL, other OtherKeyAttribute OPTIONAL }
void RKEKIdentifier::walk(Decoder& v)
{
    v.atLeast(1, "At least 1 component is required.");
    v.required(octetStringTag, NAMED(m_keyIdentifier), {3});
    v.optional(generalizedTimeTag, 0x01, NAMED(m_date), {6});
    v.optional(sequenceTag, 0x02, NAMED(m_other), {8});
}

int RKEKIdentifier::fromASN1Object(ByteString& data) { return decode(*this, data); }

// KEKRecipientInfo ::= SEQUENCE { version CMSVersion, kekid KEKIdentifier, keyEncryptionAlgorithm AlgorithmIdentifier,
//     encryptedKey OCTET STRING }
void RKEKRecipientInfo::walk(Decoder& v)
{
    v.exactly(4);
    v.required(integerTag, NAMED(m_version), {3});
    v.required(sequenceTag, NAMED(m_kekid), {6});
    v.required(sequenceTag, NAMED(m_keyEncryptionAlgorithm), {9});
    v.required(octetStringTag, NAMED(m_encryptedKey), {12});
}

int RKEKRecipientInfo::fromASN1Object(ByteString& data) { return decode(*this, data); }

} // namespace vrno
