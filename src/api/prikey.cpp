// VRNO_PRIKEY_*: private keys under a password, and the test of a key pair.
#include "api/prikey.h"

#include "ASN1Pkix/keys/PCryptUtil.h"
#include "ASN1Pkix/keys/PPKCS8.h"

using namespace vrno;

int vrno::openPrivateKey(Call& call, const char* password, ByteString& blob, ByteString& out)
{
    PPKCS8 pkcs8;
    if (pkcs8.setPassword(password) > 0) return call.noMemory();
    const int code = pkcs8.getPrivateKeyInfo(blob, out);
    if (code == 0) return 0;
    if (pkcs8.outOfMemory()) return call.noMemory();
    if (code == PPKCS8::wrongPassword) return call.fail(VRNO_ERR_PRIKEY_PASSWORD, u8"개인키 비밀번호를 확인하세요."_ksc);
    return call.fail(VRNO_ERR_ENCRYPTED_PRIKEY_FORMAT, u8"잘못된 암호화된 개인키 형식입니다."_ksc, pkcs8);
}

// The scheme that a symmetric algorithm's code selects, 0 for none; all three write the same.
static int schemeOf(int nAlg)
{
    switch (nAlg) {
    case 16:
        return 14;
    case 32:
        return 15;
    case VRNO_SYM_SEED:
        return 24;
    default:
        return 0;
    }
}

int VRNO_PRIKEY_Encrypt(VRNO_API_CTX* pCtx, int nAlg, const char* pszPassword, const VRNO_BINSTR* pPriKey, VRNO_BINSTR* pEncPriKey)
{
    Call call(pCtx);
    ByteString key;
    ByteString blob;
    call.input(pszPassword, u8"개인키 비밀번호 정보가 없습니다."_ksc);
    call.input(pPriKey, u8"암호화할 개인키(pPriKey)를 지정해 주세요."_ksc);
    call.check(pEncPriKey, VRNO_ERR_ARGUMENT, u8"pEncPriKey의 포인터가 NULL 입니다."_ksc);
    call.supported(schemeOf(nAlg) > 0);
    if (!call || !call.copy(pPriKey, "pPriKey", key)) return call.code();
    PPKCS8 pkcs8;
    pkcs8.setEncAlgorithm(schemeOf(nAlg));
    if (pkcs8.setPassword(pszPassword) > 0) return call.noMemory();
    if (pkcs8.setPrivateKeyInfo(key) > 0) {
        if (pkcs8.outOfMemory()) return call.noMemory();
        return call.fail(VRNO_ERR_PRIKEY_FORMAT, u8"잘못된 개인키 형식입니다."_ksc);
    }
    if (pkcs8.getPKCS8Data(blob) > 0) {
        return call.fail(VRNO_ERR_PRIKEY_ENCRYPT, u8"개인키를 암호화하는데 실패하였습니다."_ksc, pkcs8);
    }
    return call.deliver(blob, RecordOut{NAMED(pEncPriKey)});
}

int VRNO_PRIKEY_Decrypt(VRNO_API_CTX* pCtx, const char* pszPassword, const VRNO_BINSTR* pEncPriKey, VRNO_BINSTR* pPriKey)
{
    Call call(pCtx);
    ByteString blob;
    ByteString key;
    call.input(pszPassword, u8"개인키 비밀번호 정보가 없습니다."_ksc);
    call.input(pEncPriKey, u8"복호화할 개인키(pEncPriKey)를 지정해 주세요."_ksc);
    call.check(pPriKey, VRNO_ERR_ARGUMENT, u8"pPriKey의 포인터가 NULL 입니다."_ksc);
    if (!call || !call.copy(pEncPriKey, "pEncPriKey", blob)) return call.code();
    if (const int code = openPrivateKey(call, pszPassword, blob, key)) return code;
    return call.deliver(key, RecordOut{NAMED(pPriKey)});
}

int VRNO_PRIKEY_CheckKeyPair(VRNO_API_CTX* pCtx, const VRNO_BINSTR* pCert, const VRNO_BINSTR* pPriKey)
{
    Call call(pCtx);
    ByteString cert;
    ByteString key;
    call.input(pCert, u8"인증서(pCert)를 지정해 주세요."_ksc).input(pPriKey, u8"개인키(pPriKey)를 지정해 주세요."_ksc);
    if (!call || !call.copy(pCert, "pCert", cert).copy(pPriKey, "pPriKey", key)) return call.code();
    PCryptUtil util;
    if (util.verifySignatureWithCert(cert, key) == 0) return 0;
    return call.fail(VRNO_ERR_KEY_PAIR, u8"키쌍이 맞지 않습니다."_ksc, util);
}
