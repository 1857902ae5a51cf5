#include "ASN1Pkix/records/RPolicies.h"

#include "ASN1/ASN1Integer.h"
#include "ASN1/ASN1Strings.h"

namespace vrno {

// ---- policies and their qualifiers ----

// PolicyInformation ::= SEQUENCE {
//     policyIdentifier OBJECT IDENTIFIER, policyQualifiers SEQUENCE OF PolicyQualifierInfo OPTIONAL }
void RPolicyInformation::walk(Decoder& v)
{
    v.between(1, v.unlimited, "asnSeq", "At least 1 component is requried.");
    v.required(oidTag.saying("First component is not ASN1_TAG_OID."), NAMED(m_policyIdentifier), {3});
    v.optional(sequenceTag, 0x01, NAMED(m_policyQualifiers), {6});
}

int RPolicyInformation::fromASN1Object(ByteString& data) { return decode(*this, data); }

ByteString& RPolicyInformation::getPolicyIdentifier() { return oidText(*this, NAMED(m_policyIdentifier)); }

ByteString& RPolicyInformation::getPolicyQualifierInfo(int index) { return element(*this, NAMED(m_policyQualifiers), index); }

// PolicyQualifierInfo ::= SEQUENCE { policyQualifierId OBJECT IDENTIFIER, qualifier ANY DEFINED BY policyQualifierId }
void RPolicyQualifierInfo::walk(Decoder& v)
{
    v.exactly(2);
    m_policyQualifierId.m_bsValue.clear(); // and stays empty if the component is not an identifier
    if (v.nextIs(oidTag)) v.required(anyTag, NAMED(m_policyQualifierId), {3});
    v.required(anyTag, NAMED(m_qualifier), {5});
}

int RPolicyQualifierInfo::fromASN1Object(ByteString& data) { return decode(*this, data); }

ByteString& RPolicyQualifierInfo::getPolicyQualifierId() { return oidText(*this, NAMED(m_policyQualifierId)); }

// ---- display text ----

static RDisplayText::Choice choiceOf(unsigned char tag)
{
    switch (tag) {
    case ASN1_TAG_IA5STRING:
        return RDisplayText::ia5String;
    case ASN1_TAG_VISIBLESTRING:
        return RDisplayText::visibleString;
    case ASN1_TAG_BMPSTRING:
        return RDisplayText::bmpString;
    case ASN1_TAG_UTF8STRING:
        return RDisplayText::utf8String;
    default:
        return RDisplayText::nothing;
    }
}

int RDisplayText::fromASN1Object(ByteString& data)
{
    m_ucBitMask = nothing;
    ASN1Object asnObj;
    if (asnObj.fromASN1Object(data) > 0) return fail(*this, 1, "asnObj", asnObj);
    m_ucBitMask = choiceOf(asnObj.getPrimitiveTag());
    if (m_ucBitMask == nothing) return fail(*this, 2, "Tag", "Unknown tag is chosen.");
    m_bsDisplayText = data;
    return m_bsDisplayText.isOutOfMemory() ? failMemory(*this, 1, "m_bsDisplayText") : 0;
}

ByteString& RDisplayText::getIA5String() { return contentsAs<ASN1IA5String>(*this, m_bsDisplayText, "asnIA5String"); }

ByteString& RDisplayText::getVisibleString() { return contentsAs<ASN1VisibleString>(*this, m_bsDisplayText, "asnVisibleString"); }

ByteString& RDisplayText::getBMPString() { return contentsAs<ASN1BMPString>(*this, m_bsDisplayText, "asnBMPString"); }

ByteString& RDisplayText::getUTF8String() { return contentsAs<ASN1UTF8String>(*this, m_bsDisplayText, "asnUTF8String"); }

// ---- user notice ----

// NoticeReference ::= SEQUENCE { organization DisplayText, noticeNumbers SEQUENCE OF INTEGER }
void RNoticeReference::walk(Decoder& v)
{
    v.exactly(2);
    v.required(anyTag, NAMED(m_organization), {3});
    v.required(sequenceTag, NAMED(m_noticeNumbers), {5});
}

int RNoticeReference::fromASN1Object(ByteString& data) { return decode(*this, data); }

int RNoticeReference::getNoticeNumber(int index, int* number)
{
    ByteString& encoded = m_noticeNumbers.getComponent(index);
    if (m_noticeNumbers.getLastError() > 0) return fail(*this, 1, "m_noticeNumbers", m_noticeNumbers);
    ASN1Integer asnNoticeNumbers;
    if (asnNoticeNumbers.fromASN1Object(encoded) > 0) return fail(*this, 2, "asnNoticeNumbers", asnNoticeNumbers);
    *number = asnNoticeNumbers.getIntValue();
    return 0;
}

// UserNotice ::= SEQUENCE { noticeRef NoticeReference OPTIONAL, explicitText DisplayText OPTIONAL }
void RUserNotice::walk(Decoder& v)
{
    v.optional(sequenceTag, 0x01, NAMED(m_noticeRef), {2});
    v.optional(anyTag, 0x02, NAMED(m_explicitText), {4});
}

int RUserNotice::fromASN1Object(ByteString& data) { return decode(*this, data); }

} // namespace vrno
