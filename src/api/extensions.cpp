// VRNO_CERT_*: the extensions of the loaded certificate as text.
#include "VNProcess/PAuthKeyIdentUtil.h"
#include "VNProcess/PAuthorityInfoAccess.h"
#include "VNProcess/PCRLDistPointsUtil.h"
#include "VNProcess/PExtKeyUsageUtil.h"
#include "VNProcess/PPolicyUtil.h"
#include "VNProcess/PSubAltNameUtil.h"
#include "VNProcess/PlainExtensions.h"
#include "api/Call.h"

using namespace vrno;

// ---- the frame of every getter ----

// The text of the extension; on failure the call has its code.
static Call& renderExtension(Call& call, const TextOut& out, const char* oid, const char* absent, Renderer render, ByteString& text)
{
    if (!call.loaded().output(out.buffer, out.name)) return call;
    PCertUtil2& cert = call.cert();
    ByteString& value = cert.getExtensionValue(oid);
    Trail trail;
    if (cert.isExtensionAbsent()) {
        call.fail(VRNO_ERR_EXTENSION_ABSENT, absent);
    } else if (cert.getLastError() > 0) {
        call.wrongCertificate(cert.getErrorTrail());
    } else if (render(value, text, trail) > 0) {
        call.wrongCertificate(trail);
    }
    return call;
}

static int extensionText(Call call, const TextOut& out, const char* oid, const char* absent, Renderer render)
{
    ByteString text;
    renderExtension(call, out, oid, absent, render, text);
    return call.deliver(text, out);
}

// ---- key usage, basic constraints, subject key identifier ----

// The buffer must have room for the list with the ", " at its end, which is then removed.
int VRNO_CERT_GetKeyUsage(VRNO_API_CTX* pCtx, int nBufLen, char* pszKeyUsage)
{
    Call call(pCtx);
    const TextOut out = OUT(pszKeyUsage, nBufLen);
    ByteString list;
    renderExtension(call, out, "2 5 29 15", u8"키 용도 필드가 없습니다."_ksc, keyUsageText, list).fits(list, out);
    list.shorten(list.getLength() - 2);
    return call.deliver(list, out);
}

int VRNO_CERT_GetBasicConstraints(VRNO_API_CTX* pCtx, int nBufLen, char* pszBasicConstraints)
{
    return extensionText(Call(pCtx), OUT(pszBasicConstraints, nBufLen), "2 5 29 19", u8"기본 제한 필드가 없습니다."_ksc,
                         basicConstraintsText);
}

int VRNO_CERT_GetSubKeyID(VRNO_API_CTX* pCtx, int nBufLen, char* pszSKI)
{
    return extensionText(Call(pCtx), OUT(pszSKI, nBufLen), "2 5 29 14", u8"주체키 식별자 필드가 없습니다."_ksc, keyIdentifierText);
}

// ---- policies ----

// Both functions name the same argument in the message of a null pointer.
static Call policyCall(Call call, const char* buffer) { return call.loaded().output(buffer, "pszCertPolicyID"); }

int VRNO_CERT_GetCertPolicy(VRNO_API_CTX* pCtx, int nBufLen, char* pszCertPolicy)
{
    return extensionText(policyCall(Call(pCtx), pszCertPolicy), OUT(pszCertPolicy, nBufLen), "2 5 29 32",
                         u8"인증서 정책 필드가 없습니다."_ksc, policyText);
}

int VRNO_CERT_GetCertPolicy_PolicyID(VRNO_API_CTX* pCtx, int nBufLen, char* pszPolicyID)
{
    return extensionText(policyCall(Call(pCtx), pszPolicyID), OUT(pszPolicyID, nBufLen), "2 5 29 32",
                         u8"인증서 정책 필드가 없습니다."_ksc, policyIdentifierText);
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

int VRNO_CERT_GetCRLDP(VRNO_API_CTX* pCtx, int nBufLen, char* pszCRLDP)
{
    return extensionText(Call(pCtx), OUT(pszCRLDP, nBufLen), "2 5 29 31", u8"CRL 배포 지점 필드가 없습니다."_ksc,
                         parsed<PCRLDistPointsUtil, &PCRLDistPointsUtil::parseCRLDistributionPoint>);
}

int VRNO_CERT_GetCRLDP_URL(VRNO_API_CTX* pCtx, int nBufLen, char* pszCRLDPUrl)
{
    return extensionText(Call(pCtx), OUT(pszCRLDPUrl, nBufLen), "2 5 29 31", u8"CRL 배포 지점 필드가 없습니다."_ksc, crlUrlText);
}

int VRNO_CERT_GetAIA(VRNO_API_CTX* pCtx, int nBufLen, char* pszAIA)
{
    return extensionText(Call(pCtx), OUT(pszAIA, nBufLen), "1 3 6 1 5 5 7 1 1", u8"기관 정보 액세스(AIA) 필드가 없습니다."_ksc,
                         parsed<PAuthorityInfoAccess, &PAuthorityInfoAccess::parseAuthorityInfoAccess>);
}
