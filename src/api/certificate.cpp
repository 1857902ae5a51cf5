// VRNO_CERT_*: loading a certificate, and its basic fields as text.
#include "VNProcess/Rendering.h"
#include "api/Call.h"
#include "base/DateTime.h"

#include <cstring>
#include <new>

using namespace vrno;

int VRNO_CERT_Load(VRNO_API_CTX* pCtx, const VRNO_BINSTR* pCert)
{
    Call call(pCtx);
    if (!call.input(pCert, u8"인증서(pCert)를 지정해 주세요."_ksc)) return call.code();
    delete pCtx->pLoadedCert;
    pCtx->pLoadedCert = nullptr;
    ByteString der;
    if (!call.copy(NAMED(pCert), der)) return call.code();
    std::unique_ptr<PCertUtil2> cert(new (std::nothrow) PCertUtil2);
    if (!cert) return call.noMemory("pCtx->pLoadedCert");
    if (cert->setCertificate(der) > 0) return call.wrongCertificate(cert->getErrorTrail());
    pCtx->pLoadedCert = cert.release();
    return 0;
}

int VRNO_CERT_Unload(VRNO_API_CTX* pCtx)
{
    Call call(pCtx);
    if (!call) return call.code();
    delete pCtx->pLoadedCert;
    pCtx->pLoadedCert = nullptr;
    return 0;
}

int VRNO_CERT_GetVersion(VRNO_API_CTX* pCtx, int* pVersion)
{
    Call call(pCtx);
    if (!call.loaded().output(NAMED(pVersion))) return call.code();
    *pVersion = static_cast<int>(static_cast<unsigned int>(call.cert().getVersion()) + 1); // the field may hold any number
    return 0;
}

// ---- one field as one text ----

// All steps of such a getter: `field` gives the value, `render` makes the text, which is copied into the caller's buffer.
static int fieldText(Call call, const TextOut& out, ByteString& (PCertUtil2::*field)(), ByteString (*render)(ByteString& value))
{
    if (!call.loaded().output(out.buffer, out.name)) return call.code();
    ByteString& value = (call.cert().*field)();
    if (call.cert().getLastError() > 0) return call.wrongCertificate(call.cert().getErrorTrail());
    const ByteString text = render(value);
    return call.deliver(text, out);
}

static ByteString asItIs(ByteString& text) { return text; }

static ByteString hex(ByteString& octets) { return octets.toHex(); }

static ByteString signatureAlgorithmName(ByteString& oid)
{
    static constexpr OidName known[] = {
        {"1 2 840 113549 1 1 5", "sha1 With RSAEncryption"},
        {"1 2 840 10045 4 1", "ECDSA with SHA1"},
        {"1 2 410 200004 1 23", "KCDSA1 With SHA1"},
    };
    const char* const name = nameOf(oid, known);
    return name ? formatted("%s", name) : formatted("%s : Unknown AlgorithmIdentifier", oid.getText());
}

int VRNO_CERT_GetSerialNum(VRNO_API_CTX* pCtx, int nBufLen, char* pszSerialNum)
{
    return fieldText(Call(pCtx), OUT(pszSerialNum, nBufLen), &PCertUtil2::getSerialNo, hex);
}

int VRNO_CERT_GetSignatureAlgorithm(VRNO_API_CTX* pCtx, int nBufLen, char* pszSignAlg)
{
    return fieldText(Call(pCtx), OUT(pszSignAlg, nBufLen), &PCertUtil2::getSignatureAlgorithm, signatureAlgorithmName);
}

int VRNO_CERT_GetIssuerName(VRNO_API_CTX* pCtx, int nBufLen, char* pszIssuerName)
{
    return fieldText(Call(pCtx), OUT(pszIssuerName, nBufLen), &PCertUtil2::getIssuerDN, asItIs);
}

int VRNO_CERT_GetSubjectName(VRNO_API_CTX* pCtx, int nBufLen, char* pszSubjectName)
{
    return fieldText(Call(pCtx), OUT(pszSubjectName, nBufLen), &PCertUtil2::getSubjectDN, asItIs);
}

int VRNO_CERT_GetSignature(VRNO_API_CTX* pCtx, int nBufLen, char* pszSignature)
{
    return fieldText(Call(pCtx), OUT(pszSignature, nBufLen), &PCertUtil2::getSignature, hex);
}

// ---- the other fields ----

int VRNO_CERT_GetValidity(VRNO_API_CTX* pCtx, char* pszNotBefore, char* pszNotAfter)
{
    Call call(pCtx);
    if (!call.loaded().output(NAMED(pszNotBefore)).output(NAMED(pszNotAfter))) return call.code();
    int notBefore = 0, notAfter = 0;
    if (call.cert().getValidityNotBefore_value(&notBefore) > 0) return call.wrongCertificate(call.cert().getErrorTrail());
    if (call.cert().getValidityNotAfter_value(&notAfter) > 0) return call.wrongCertificate(call.cert().getErrorTrail());
    DateTime from, to;
    from.setTime(notBefore, true);
    to.setTime(notAfter, true);
    const ByteString& fromText = from.formatTime("%Y-%m-%d %H:%M:%S");
    const ByteString& toText = to.formatTime("%Y-%m-%d %H:%M:%S");
    if (fromText.isNull() || toText.isNull()) return call.noMemory("pszNotBefore, pszNotAfter");
    std::memcpy(pszNotBefore, fromText.getText(), static_cast<std::size_t>(fromText.getLength()) + 1);
    std::memcpy(pszNotAfter, toText.getText(), static_cast<std::size_t>(toText.getLength()) + 1);
    return 0;
}

int VRNO_CERT_GetSubjectName_DERFormat(VRNO_API_CTX* pCtx, VRNO_BINSTR* pSubjectName)
{
    Call call(pCtx);
    if (!call.loaded().output(NAMED(pSubjectName))) return call.code();
    const ByteString& name = call.cert().getSubject();
    if (call.cert().getLastError() > 0) return call.wrongCertificate(call.cert().getErrorTrail());
    return call.deliver(name, RecordOut{NAMED(pSubjectName)});
}

int VRNO_CERT_GetPubKey(VRNO_API_CTX* pCtx, int nBufLen, char* pszPubKeyAlg, char* pszPubKey)
{
    constexpr int algorithmSize = 50;
    Call call(pCtx);
    if (!call.loaded().output(NAMED(pszPubKey)).output(NAMED(pszPubKeyAlg))) return call.code();
    PCertUtil2& cert = call.cert();
    const ByteString algorithm = cert.getPublicKeyAlgorithm();
    if (cert.getLastError() > 0) return call.wrongCertificate(cert.getErrorTrail());
    ByteString& key = cert.getSubjectPublicKey();
    if (cert.getLastError() > 0) return call.wrongCertificate(cert.getErrorTrail());
    const ByteString text = key.toHex();
    if (algorithm.isOutOfMemory()) return call.noMemory("pszPubKey");
    if (!call.fits(text, OUT(pszPubKey, nBufLen))) return call.code();
    std::strncpy(pszPubKeyAlg, algorithm.getText(), algorithmSize);
    pszPubKeyAlg[algorithmSize - 1] = '\0';
    return call.deliver(text, OUT(pszPubKey, nBufLen));
}
