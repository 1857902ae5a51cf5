// VRNO_CERT_*: the extensions of the loaded certificate as text.
#include "ASN1Pkix/records/RExtensions.h"
#include "VNProcess/PAuthKeyIdentUtil.h"
#include "VNProcess/PAuthorityInfoAccess.h"
#include "VNProcess/PCRLDistPointsUtil.h"
#include "VNProcess/PExtKeyUsageUtil.h"
#include "VNProcess/PPolicyUtil.h"
#include "VNProcess/PSubAltNameUtil.h"
#include "api/Call.h"

using namespace vrno;

// ---- the frame ----

// Turns an extension's value into its text: 0, noMemoryCode where the text could not be held, or another code above 0
// with the story of what could not be read.
using Renderer = int (*)(ByteString& value, ByteString& text, ByteString& trail);

// The text of the extension; on failure the call has its code.
static Call& renderExtension(Call& call, const TextOut& out, const char* oid, const char* absent, Renderer render, ByteString& text)
{
    if (!call.loaded().output(out.buffer, out.name)) return call;
    PCertUtil2& cert = call.cert();
    ByteString& value = cert.getExtensionValue(oid);
    ByteString trail;
    if (cert.getLastError() == PCertUtil2::absentExtension) {
        call.fail(VRNO_ERR_EXTENSION_ABSENT, absent);
    } else if (cert.getLastError() > 0) {
        call.wrongCertificate(cert);
    } else if (const int code = render(value, text, trail)) {
        code == noMemoryCode ? call.noMemory(out.name) : call.wrongCertificate(trail);
    }
    return call;
}

static int extensionText(Call call, const TextOut& out, const char* oid, const char* absent, Renderer render)
{
    ByteString text;
    renderExtension(call, out, oid, absent, render, text);
    return call.deliver(text, out);
}

// The code of an object's failure, its story handed on.
template <class Object> static int tell(Object& object, int code, ByteString& trail)
{
    trail.swap(object.getErrorTrail());
    return code;
}

// The text that an operation of a utility class makes.
template <class Util, int (Util::*parse)(ByteString& value, ByteString& text)>
static int parsed(ByteString& value, ByteString& text, ByteString& trail)
{
    Util util;
    return tell(util, (util.*parse)(value, text), trail);
}

static int built(const TextBuilder& builder, ByteString& text)
{
    return builder.into(text) > 0 ? noMemoryCode : 0;
}

// ---- key usage, basic constraints, subject key identifier ----

// Each usage with ", " behind it.
static int keyUsageList(ByteString& value, ByteString& list, ByteString& trail)
{
    static constexpr BitName usages[] = {
        {0x8000, "digitalSignature, "}, {0x4000, "nonRepudiation, "}, {0x2000, "keyEncipherment, "},
        {0x1000, "dataEncipherment, "}, {0x0800, "keyAgreement, "},   {0x0400, "keyCertSign, "},
        {0x0200, "crlSign, "},          {0x0100, "encipherOnly, "},   {0x0080, "decipherOnly, "},
    };
    ASN1BitString keyUsage;
    if (const int code = keyUsage.fromASN1Object(value)) return tell(keyUsage, code, trail);
    int unusedBits = 0;
    const ByteString& bits = keyUsage.getBitString(&unusedBits);
    if (keyUsage.getLastError() > 0) return tell(keyUsage, keyUsage.getLastError(), trail);
    unsigned char high = 0, low = 0; // stay so where there is no such octet
    bits.getAt(0, &high);
    if (bits.getLength() == 2) bits.getAt(1, &low);
    TextBuilder out;
    addBits(high, low, usages, out);
    return built(out, list);
}

// The buffer must have room for the list with the ", " at its end, which is then removed.
int VRNO_CERT_GetKeyUsage(VRNO_API_CTX* pCtx, int nBufLen, char* pszKeyUsage)
{
    Call call(pCtx);
    const TextOut out = OUT(pszKeyUsage, nBufLen);
    ByteString list;
    renderExtension(call, out, "2 5 29 15", u8"키 용도 필드가 없습니다."_ksc, keyUsageList, list).fits(list, out);
    list.shorten(list.getLength() - 2);
    return call.deliver(list, out);
}

static int basicConstraintsText(ByteString& value, ByteString& text, ByteString& trail)
{
    RBasicConstraints constraints;
    if (const int code = constraints.fromASN1Object(value)) return tell(constraints, code, trail);
    constexpr int none = -1; // a certificate's own -1 is shown like none
    const int pathLength = (constraints.getBitMask() & 0x02) ? constraints.getPathLenConstraint() : none;
    TextBuilder out;
    out << "CA : " << (constraints.isCA() ? "TRUE" : "FALSE");
    if (pathLength != none) out << ", PathLenConstraint : " << pathLength;
    return built(out, text);
}

int VRNO_CERT_GetBasicConstraints(VRNO_API_CTX* pCtx, int nBufLen, char* pszBasicConstraints)
{
    return extensionText(Call(pCtx), OUT(pszBasicConstraints, nBufLen), "2 5 29 19", u8"기본 제한 필드가 없습니다."_ksc,
                         basicConstraintsText);
}

static int keyIdentifierText(ByteString& value, ByteString& text, ByteString& trail)
{
    ASN1OctetString keyIdentifier;
    if (const int code = keyIdentifier.fromASN1Object(value)) return tell(keyIdentifier, code, trail);
    return built(TextBuilder().hex(keyIdentifier.getValue()), text);
}

int VRNO_CERT_GetSubKeyID(VRNO_API_CTX* pCtx, int nBufLen, char* pszSKI)
{
    return extensionText(Call(pCtx), OUT(pszSKI, nBufLen), "2 5 29 14", u8"주체키 식별자 필드가 없습니다."_ksc, keyIdentifierText);
}

// ---- policies ----

// Both functions name the same argument in the message of a null pointer.
static Call policyCall(Call call, const char* buffer)
{
    return call.loaded().output(buffer, "pszCertPolicyID");
}

static int policyText(ByteString& value, ByteString& text, ByteString& trail)
{
    PPolicyUtil policies;
    if (const int code = policies.parseCertificatePolicies(value)) return tell(policies, code, trail);
    text.swap(policies.getMessage());
    return 0;
}

static int policyIdentifiers(ByteString& value, ByteString& text, ByteString& trail)
{
    PPolicyUtil policies;
    if (const int code = policies.parseCertificatePolicies(value)) return tell(policies, code, trail);
    TextBuilder out;
    for (int i = 0; i < policies.getPolicyCount(); ++i) {
        const ByteString& oid = policies.getPolicyOid(i, ' ');
        if (policies.getLastError() > 0) return tell(policies, policies.getLastError(), trail);
        out << (i > 0 ? ", " : "") << oid;
    }
    return built(out, text);
}

int VRNO_CERT_GetCertPolicy(VRNO_API_CTX* pCtx, int nBufLen, char* pszCertPolicy)
{
    return extensionText(policyCall(Call(pCtx), pszCertPolicy), OUT(pszCertPolicy, nBufLen), "2 5 29 32",
                         u8"인증서 정책 필드가 없습니다."_ksc, policyText);
}

int VRNO_CERT_GetCertPolicy_PolicyID(VRNO_API_CTX* pCtx, int nBufLen, char* pszPolicyID)
{
    return extensionText(policyCall(Call(pCtx), pszPolicyID), OUT(pszPolicyID, nBufLen), "2 5 29 32",
                         u8"인증서 정책 필드가 없습니다."_ksc, policyIdentifiers);
}

// ---- extended key usage, alternative names, authority key identifier ----

int VRNO_CERT_GetExtKeyUsage(VRNO_API_CTX* pCtx, int nBufLen, char* pszExtKeyUsage)
{
    return extensionText(Call(pCtx), OUT(pszExtKeyUsage, nBufLen), "2 5 29 37", u8"확장 키 용도 필드가 없습니다."_ksc,
                         parsed<PExtKeyUsageUtil, &PExtKeyUsageUtil::parseExtKeyUsage>);
}

int VRNO_CERT_GetSubjectAltName(VRNO_API_CTX* pCtx, int nBufLen, char* pszSubAltName)
{
    return extensionText(Call(pCtx), OUT(pszSubAltName, nBufLen), "2 5 29 17", u8"주체 대체 이름 필드가 없습니다."_ksc,
                         parsed<PSubAltNameUtil, &PSubAltNameUtil::parseSubjectAlternativeName>);
}

int VRNO_CERT_GetAuthKeyID(VRNO_API_CTX* pCtx, int nBufLen, char* pszAKI)
{
    return extensionText(Call(pCtx), OUT(pszAKI, nBufLen), "2 5 29 35", u8"기관키 식별자 필드가 없습니다."_ksc,
                         parsed<PAuthKeyIdentUtil, &PAuthKeyIdentUtil::parseAuthorityKeyIdentifer>);
}

// ---- CRL distribution points, authority information access ----

static int crlUrls(ByteString& value, ByteString& text, ByteString& trail)
{
    PCRLDistPointsUtil points;
    ByteString whole;
    if (const int code = points.parseCRLDistributionPoint(value, whole)) return tell(points, code, trail);
    TextBuilder out;
    for (int i = 0; i < points.getUrlCount(); ++i) out << (i > 0 ? "|" : "") << points.getUrl(i);
    return built(out, text);
}

int VRNO_CERT_GetCRLDP(VRNO_API_CTX* pCtx, int nBufLen, char* pszCRLDP)
{
    return extensionText(Call(pCtx), OUT(pszCRLDP, nBufLen), "2 5 29 31", u8"CRL 배포 지점 필드가 없습니다."_ksc,
                         parsed<PCRLDistPointsUtil, &PCRLDistPointsUtil::parseCRLDistributionPoint>);
}

int VRNO_CERT_GetCRLDP_URL(VRNO_API_CTX* pCtx, int nBufLen, char* pszCRLDPUrl)
{
    return extensionText(Call(pCtx), OUT(pszCRLDPUrl, nBufLen), "2 5 29 31", u8"CRL 배포 지점 필드가 없습니다."_ksc, crlUrls);
}

int VRNO_CERT_GetAIA(VRNO_API_CTX* pCtx, int nBufLen, char* pszAIA)
{
    return extensionText(Call(pCtx), OUT(pszAIA, nBufLen), "1 3 6 1 5 5 7 1 1", u8"기관 정보 액세스(AIA) 필드가 없습니다."_ksc,
                         parsed<PAuthorityInfoAccess, &PAuthorityInfoAccess::parseAuthorityInfoAccess>);
}
