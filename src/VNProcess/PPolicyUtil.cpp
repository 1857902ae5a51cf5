#include "VNProcess/PPolicyUtil.h"

#include "ASN1/ASN1Strings.h"
#include "text/Ksc.h"
#include "text/UUTF8String.h"
#include "text/UUnicode.h"

#include <algorithm>
#include <new>

namespace vrno {

PPolicyUtil::PPolicyUtil() : m_pPolicyOids(new (std::nothrow) ASN1Sequence) {}

int PPolicyUtil::parseCertificatePolicies(ByteString& value)
{
    RCertificatePolicies certificatePolicies;
    if (certificatePolicies.fromASN1Object(value) > 0) return fail(*this, 1, "certificatePolicies", certificatePolicies);
    m_bsMessage.clear();
    if (m_pPolicyOids) m_pPolicyOids->clearComponents();
    Message message;
    for (int i = 0; i < certificatePolicies.getCount(); ++i) {
        ByteString& encoded = certificatePolicies.getPolicyInformation(i);
        if (certificatePolicies.getLastError() > 0) return fail(*this, 2, "certificatePolicies", certificatePolicies);
        if (makePolicyInformationMessage(encoded, message) > 0) return fail(*this, 3, "this", *this);
    }
    return keepResults(message);
}

int PPolicyUtil::keepResults(const Message& message)
{
    const FailuresOf failed{*this, "parseCertificatePolicies"};
    ASN1Sequence list;
    const bool isJoined = m_pPolicyOids && message.identifiers.into(list.m_bsValue) == 0;
    if (!isJoined || m_pPolicyOids->fromASN1Object(list.toASN1Object()) > 0) return failed.memory(1, "m_pPolicyOids");
    return message.text.into(m_bsMessage) > 0 ? failed.memory(1, "text") : 0;
}

// ---- one policy ----

int PPolicyUtil::makePolicyInformationMessage(ByteString& encoded, Message& message)
{
    RPolicyInformation policyInfo;
    if (policyInfo.fromASN1Object(encoded) > 0) return fail(*this, 1, "policyInfo", policyInfo);
    ByteString& oid = policyInfo.getPolicyIdentifier();
    if (policyInfo.getLastError() > 0) return fail(*this, 2, "policyInfo", policyInfo);
    if (const int code = keepIdentifier(oid, message)) return code;
    message.text << "[" << ++message.policies << "] Certificate Policy : \r\n\tPolicyIdentifier=";
    if (oid == "2 5 29 32 0") {
        message.text << u8"모든 발급 정책"_ksc;
    } else {
        std::replace(oid.mutableBytes(), oid.mutableBytes() + oid.getLength(), ' ', '.');
        message.text << oid;
    }
    message.text << "\r\n";
    if ((policyInfo.getBitMask() & 0x01) == 0) return 0;
    for (int i = 0; i < policyInfo.getPolicyQualifierCount(); ++i) {
        ByteString& qualifier = policyInfo.getPolicyQualifierInfo(i); // empty on failure, which does not decode
        if (makePolicyQualifierInfoMessage(qualifier, i + 1, message) > 0) return fail(*this, 5, "this", *this);
    }
    return 0;
}

int PPolicyUtil::keepIdentifier(ByteString& oid, Message& message)
{
    const FailuresOf failed{*this, "makePolicyInformationMessage"};
    ASN1ObjectIdentifier asnObject;
    if (asnObject.setOID(oid) > 0) return failed(3, "asnObject", asnObject);
    const ByteString& encoded = asnObject.toASN1Object();
    if (asnObject.getLastError() > 0) return failed(4, "asnObject", asnObject);
    message.identifiers.append(encoded.octets());
    return message.identifiers.failed() ? failed.memory(4, "asnObject") : 0;
}

// ---- one qualifier ----

static constexpr const char* qualifierMethod = "makePolicyQualifierInfoMessage"; // also for the frames of its helpers

int PPolicyUtil::makePolicyQualifierInfoMessage(ByteString& encoded, int number, Message& message)
{
    constexpr const char *cps = "1 3 6 1 5 5 7 2 1", *userNotice = "1 3 6 1 5 5 7 2 2";
    static constexpr OidName qualifiers[] = {{cps, "CPS"}, {userNotice, "User Notice"}};
    RPolicyQualifierInfo policyQualifierInfo;
    if (policyQualifierInfo.fromASN1Object(encoded) > 0) return fail(*this, 1, "ploicyQualifierInfo", policyQualifierInfo);
    const ByteString& id = policyQualifierInfo.getPolicyQualifierId();
    if (policyQualifierInfo.getLastError() > 0) return fail(*this, 2, "ploicyQualifierInfo", policyQualifierInfo);
    message.text << "\t[" << message.policies << "," << number << "] Policy Qualifier Info:\r\n";
    message.text << "\t\tPolicy Qualifier Id=" << nameOrOid(id, qualifiers) << "\r\n";
    if (id == cps) return addCPS(policyQualifierInfo.getQualifier(), message.text);
    if (id == userNotice) return addUserNotice(policyQualifierInfo.getQualifier(), message.text);
    return 0;
}

int PPolicyUtil::addCPS(ByteString& qualifier, TextBuilder& out)
{
    ASN1IA5String asnCPS;
    if (asnCPS.fromASN1Object(qualifier) > 0) return fail(*this, 3, "asnCPS", asnCPS, Here::now().in(qualifierMethod));
    m_bsCPS = asnCPS.getValue();
    out << "\t\tQualifier:\r\n"
        << "\t\t\t" << m_bsCPS << "\r\n";
    return 0;
}

// The first failure code of each display text.
static constexpr int organizationCode = 5, explicitTextCode = 11;

int PPolicyUtil::addUserNotice(ByteString& qualifier, TextBuilder& out)
{
    RUserNotice userNotice;
    if (userNotice.fromASN1Object(qualifier) > 0) return fail(*this, 4, "userNotice", userNotice, Here::now().in(qualifierMethod));
    out << "\t\tQualifier:\r\n";
    if (userNotice.getBitMask() & 0x01) {
        if (const int code = addNoticeReference(userNotice.getNoticeRef(), out)) return code;
    }
    if (userNotice.getBitMask() & 0x02) {
        if (const int code = displayText(userNotice.getExplicitText(), explicitTextCode, m_bsNoticeText)) return code;
        out << "\t\t\tNotice Text=" << m_bsNoticeText << "\r\n";
    }
    return 0;
}

int PPolicyUtil::addNoticeReference(RNoticeReference& reference, TextBuilder& out)
{
    if (const int code = displayText(reference.getOrganization(), organizationCode, m_bsOrganization)) return code;
    out << "\t\t\tNotice Reference:\r\n"
        << "\t\t\t\tOrganization=" << m_bsOrganization << "\r\n"
        << "\t\t\t\tNotice Number=";
    for (int i = 0; i < reference.getNoticeNumberCount(); ++i) {
        int number = 0;
        if (reference.getNoticeNumber(i, &number) > 0)
            return fail(*this, 10, "pNoticeRef", reference, Here::now().in(qualifierMethod));
        out << (i > 0 ? ", " : "") << number;
    }
    out << "\r\n";
    return 0;
}

// ---- display text to code page 949 ----

int PPolicyUtil::displayText(RDisplayText& text, int firstCode, ByteString& ksc)
{
    const FailuresOf failed{*this, qualifierMethod};
    const auto take = [&](ByteString& contents, int code) {
        if (text.getLastError() > 0) return failed(code, "pDisplayText", text);
        ksc = contents;
        return ksc.isOutOfMemory() ? failed.memory(code, "pDisplayText") : 0;
    };
    switch (text.getBitMask()) {
    case RDisplayText::visibleString:
        return take(text.getVisibleString(), firstCode);
    case RDisplayText::bmpString:
        if (const int code = take(text.getBMPString(), firstCode + 1)) return code;
        if (UUnicode::SwapByteOrder(ksc.mutableBytes(), ksc.getLength()) > 0)
            return failed(firstCode + 1, "UUnicode::SwapByteOrder", "Unicode Decoding failed.");
        if (UUnicode::Unicode2KSC(ksc, ksc) > 0) return failed.memory(6, "UUnicode::Unicode2KSC", "Unicode Decoding failed.");
        return 0;
    case RDisplayText::utf8String:
        if (const int code = take(text.getUTF8String(), firstCode + 2)) return code;
        if (UUTF8String::UTF8ToKSC(ksc, ksc) > 0)
            return failed.memory(firstCode + 3, "UUTF8String::UTF8ToKSC()", "Make KSC by UTF8String is failed.");
        return 0;
    default:
        return take(text.getIA5String(), firstCode + 4);
    }
}

// ---- results ----

ByteString& PPolicyUtil::getMessage()
{
    m_nLastError = 0;
    return m_bsMessage;
}

int PPolicyUtil::getPolicyCount() const { return m_pPolicyOids ? m_pPolicyOids->getComponentCount() : 0; }

ByteString& PPolicyUtil::getPolicyOid(int index, char separator)
{
    m_nLastError = 0;
    m_bsOutput.clear();
    if (index < 0 || index >= getPolicyCount()) return failOutput(*this, 1, "index", "Index invalid");
    ASN1ObjectIdentifier asn1Oid;
    if (asn1Oid.fromASN1Object(m_pPolicyOids->getComponent(index)) > 0) return failOutput(*this, 2, "asn1Oid", asn1Oid);
    m_bsOutput = asn1Oid.getOID(separator);
    if (asn1Oid.getLastError() > 0) return failOutput(*this, 2, "asn1Oid", asn1Oid);
    if (m_bsOutput.isOutOfMemory()) return failOutputMemory(*this, 2, "asn1Oid");
    return m_bsOutput;
}

int policyText(ByteString& value, ByteString& text, Trail& trail)
{
    PPolicyUtil policies;
    if (const int code = policies.parseCertificatePolicies(value)) return handOver(policies, code, trail);
    text.swap(policies.getMessage());
    return 0;
}

int policyIdentifierText(ByteString& value, ByteString& text, Trail& trail)
{
    PPolicyUtil policies;
    if (const int code = policies.parseCertificatePolicies(value)) return handOver(policies, code, trail);
    TextBuilder out;
    for (int i = 0; i < policies.getPolicyCount(); ++i) {
        const ByteString& oid = policies.getPolicyOid(i, ' ');
        if (policies.getLastError() > 0) return handOver(policies, policies.getLastError(), trail);
        out << (i > 0 ? ", " : "") << oid;
    }
    return finish(out, text, trail);
}

} // namespace vrno
