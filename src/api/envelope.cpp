// VRNO_CMS_EncryptData: data for the holder of a certificate.
#include "api/envelope.h"

#include "ASN1/ASN1BitString.h"
#include "ASN1Pkix/envelope/PEnvelopedData.h"
#include "api/crypt.h"
#include "api/symmetric.h"

using namespace vrno;

int vrno::checkRecipientKeyUsage(Call& call, Purpose nPurpose, ByteString& cert)
{
    constexpr unsigned char digitalSignature = 0x80, keyEncipherment = 0x20, keyAgreement = 0x08;
    PCertUtil2 util;
    ByteString& value = util.getExtensionValue(cert, "2 5 29 15");
    if (util.isExtensionAbsent()) return 0;
    if (util.getLastError() > 0) return call.wrongCertificate(util.getErrorTrail());

    ASN1BitString asnBits(value);
    int unusedBits = 0;
    const bool decoded = asnBits.getLastError() == 0;
    const unsigned char usage = decoded ? asnBits.getBitString(&unusedBits).getBytes()[0] : 0; // no bits count as 0
    if (asnBits.getLastError() > 0) {
        Call getter(&call.context(), "VRNO_CERT_GetKeyUsage"); // the name that this failure has in its text
        return getter.fail(VRNO_ERR_CERT_FORMAT, u8"잘못된 인증서 형식입니다."_ksc, asnBits);
    }
    const bool encrypts = usage & (keyEncipherment | keyAgreement), signs = usage & digitalSignature;
    if (nPurpose == Purpose::encryption) {
        call.check(encrypts, VRNO_ERR_NOT_ENCRYPTION_CERT, u8"암호화용 인증서가 아닙니다."_ksc);
    } else {
        call.check(signs, VRNO_ERR_NOT_SIGNING_CERT, u8"서명용 인증서가 아닙니다."_ksc);
    }
    return call.code();
}

int vrno::makeEnvelopedMessage(Call& call, unsigned int nOption, int nAlg, ByteString& cert, Octets data, ByteString& out)
{
    const SymmetricAlgorithm* const algorithm = findSymmetricAlgorithm(nAlg);
    if (!call.supported(algorithm != nullptr)) return call.code();
    if (const int refused = checkRecipientKeyUsage(call, Purpose::encryption, cert)) return refused;

    PEnvelopedData enveloped;
    if (nOption & VRNO_CMS_CONTENT_INFO) enveloped.setOption(PEnvelopedData::inContentInfo);
    enveloped.setEncAlgorithm(algorithm->cipher, vnCbc);
    enveloped.choiceRecipientIdentifier(PEnvelopedData::issuerAndSerialNumber);
    enveloped.setContentType("1 2 840 113549 1 7 1");
    enveloped.borrowContent(data);
    if (enveloped.getLastError() > 0 || enveloped.addRecipientByCert(cert) > 0) {
        return call.fail(VRNO_ERR_CERT_FORMAT, u8"잘못된 수신자의 인증서입니다."_ksc, enveloped);
    }
    if (enveloped.makeEnvelopedData(out) > 0) {
        return call.fail(VRNO_ERR_ENVELOPE, u8"암호 메시지(EnvelopedData)를 구성하는데 실패하였습니다."_ksc, enveloped);
    }
    ByteString key, iv;
    if (enveloped.getSymmetricKey(key, iv) > 0) return call.noMemory("pApiCtx->pSessionKey");
    return installSessionKey(call, algorithm->cipher, vnCbc, key.octets(), iv.octets());
}

int VRNO_CMS_EncryptData(VRNO_API_CTX* pCtx, unsigned int nOption, const VRNO_BINSTR* pCert, const VRNO_BINSTR* pData, int nAlg,
                         VRNO_BINSTR* pEnvelopedData)
{
    Call call(pCtx);
    ByteString cert, message;
    Octets data;
    call.input(pCert, u8"수신자의 인증서(pCert)를 지정해 주세요."_ksc).output(NAMED(pEnvelopedData));
    if (!call || !call.copy(NAMED(pCert), cert).view(NAMED(pData), data)) return call.code();
    if (const int code = makeEnvelopedMessage(call, nOption, nAlg, cert, data, message)) return code;
    return call.handOver(message, pEnvelopedData);
}
