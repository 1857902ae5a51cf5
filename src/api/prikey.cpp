// VRNO_PRIKEY_*: private keys under a password, the test of a key pair.
#include "api/prikey.h"

#include "ASN1Pkix/keys/PCryptUtil.h"
#include "ASN1Pkix/keys/PPKCS8.h"
#include "api/symmetric.h"

using namespace vrno;

int vrno::openPrivateKey(Call& call, const char* password, ByteString& encrypted, ByteString& out)
{
    PPKCS8 pkcs8;
    int code = pkcs8.setPassword(password);
    if (code == 0) code = pkcs8.getPrivateKeyInfo(encrypted, out);
    if (code == 0) return 0;
    if (code == PPKCS8::wrongPassword) {
        return call.fail(VRNO_ERR_PRIKEY_PASSWORD, u8"개인키 비밀번호를 확인하세요."_ksc, pkcs8.outOfMemory());
    }
    return call.fail(VRNO_ERR_ENCRYPTED_PRIKEY_FORMAT, u8"잘못된 암호화된 개인키 형식입니다."_ksc, pkcs8);
}

int VRNO_PRIKEY_Encrypt(VRNO_API_CTX* pCtx, int nAlg, const char* pszPassword, const VRNO_BINSTR* pPriKey, VRNO_BINSTR* pEncPriKey)
{
    Call call(pCtx);
    ByteString key, encrypted;
    const SymmetricAlgorithm* const algorithm = findSymmetricAlgorithm(nAlg);
    call.input(pszPassword, u8"개인키 비밀번호 정보가 없습니다."_ksc);
    call.input(pPriKey, u8"암호화할 개인키(pPriKey)를 지정해 주세요."_ksc);
    call.check(pEncPriKey, VRNO_ERR_ARGUMENT, u8"pEncPriKey의 포인터가 NULL 입니다."_ksc);
    call.supported(algorithm != nullptr);
    if (!call || !call.copy(NAMED(pPriKey), key)) return call.code();
    PPKCS8 pkcs8;
    pkcs8.setEncAlgorithm(algorithm->keyScheme);
    if (pkcs8.setPassword(pszPassword) > 0 || pkcs8.setPrivateKeyInfo(key) > 0) {
        return call.fail(VRNO_ERR_PRIKEY_FORMAT, u8"잘못된 개인키 형식입니다."_ksc, pkcs8.outOfMemory());
    }
    if (pkcs8.getPKCS8Data(encrypted) > 0) {
        return call.fail(VRNO_ERR_PRIKEY_ENCRYPT, u8"개인키를 암호화하는데 실패하였습니다."_ksc, pkcs8);
    }
    return call.deliver(encrypted, RecordOut{NAMED(pEncPriKey)});
}

int VRNO_PRIKEY_Decrypt(VRNO_API_CTX* pCtx, const char* pszPassword, const VRNO_BINSTR* pEncPriKey, VRNO_BINSTR* pPriKey)
{
    Call call(pCtx);
    ByteString encrypted, key;
    call.input(pszPassword, u8"개인키 비밀번호 정보가 없습니다."_ksc);
    call.input(pEncPriKey, u8"복호화할 개인키(pEncPriKey)를 지정해 주세요."_ksc);
    call.check(pPriKey, VRNO_ERR_ARGUMENT, u8"pPriKey의 포인터가 NULL 입니다."_ksc);
    if (!call || !call.copy(NAMED(pEncPriKey), encrypted)) return call.code();
    if (const int code = openPrivateKey(call, pszPassword, encrypted, key)) return code;
    return call.deliver(key, RecordOut{NAMED(pPriKey)});
}

int VRNO_PRIKEY_CheckKeyPair(VRNO_API_CTX* pCtx, const VRNO_BINSTR* pCert, const VRNO_BINSTR* pPriKey)
{
    Call call(pCtx);
    ByteString cert, key;
    call.input(pCert, u8"인증서(pCert)를 지정해 주세요."_ksc).input(pPriKey, u8"개인키(pPriKey)를 지정해 주세요."_ksc);
    if (!call || !call.copy(NAMED(pCert), cert).copy(NAMED(pPriKey), key)) return call.code();
    PCryptUtil util;
    if (util.verifySignatureWithCert(cert, key) == 0) return 0;
    return call.fail(VRNO_ERR_KEY_PAIR, u8"키쌍이 맞지 않습니다."_ksc, util);
}
