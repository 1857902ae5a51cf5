// VRNO_CRYPT_*: the session key of a context, and SEED-CBC with it.
#include "api/crypt.h"

#include "VNCrypto/VNCodes.h"
#include "VNCrypto/VNEncrypt.h"
#include "VNCrypto/VNRandom.h"

#include <new>

using namespace vrno;

namespace {

constexpr int keyLength = 16, ivLength = 16;
constexpr unsigned char chainedFlag = 2, otherPaddingFlag = 4; // of ucFlags

// Stores a copy of the value in a field of the context; 1002 on allocation failure.
int setField(Call& call, ByteString*& field, Octets value, const char* name)
{
    field = new (std::nothrow) ByteString;
    const bool isSet = field && field->setData(value.data(), static_cast<int>(value.size())) == 0;
    return isSet ? 0 : call.noMemory(name);
}

void deleteField(ByteString*& field)
{
    delete field;
    field = nullptr;
}

} // namespace

int vrno::installSessionKey(Call& call, int nFacadeAlg, int nFacadeMode, Octets key, Octets iv)
{
    VRNO_API_CTX& context = call.context();
    deleteField(context.pSessionKey);
    deleteField(context.pSessionIv);
    deleteField(context.pChangedKey);
    deleteField(context.pChangedIv);
    int code = setField(call, context.pSessionKey, key, "pApiCtx->pSessionKey");
    if (code == 0) code = setField(call, context.pSessionIv, iv, "pApiCtx->pSessionIv");
    if (code == 0) code = setField(call, context.pChangedIv, iv, "pApiCtx->pChangedIv");
    if (code != 0) {
        deleteField(context.pSessionKey); // so that no key is set
        return code;
    }
    context.nSymMode = nFacadeMode;
    context.nSymAlg = nFacadeAlg;
    return 0;
}

// ---- the key ----

int VRNO_CRYPT_GenKeyAndIV(VRNO_API_CTX* pCtx, int nAlgorithm)
{
    Call call(pCtx);
    if (!call.supported(nAlgorithm == VRNO_SYM_SEED)) return call.code();
    VNRandom random;
    ByteString drawn;
    if (random.GenerateRandom(vnRandom, keyLength + ivLength, drawn) > 0) {
        return call.fail(VRNO_ERR_RANDOM, u8"랜덤값을 생성하는데 실패하였습니다."_ksc, random);
    }
    return installSessionKey(call, vnSeed, vnCbc, drawn.octets().first(keyLength), drawn.octets().last(ivLength));
}

int VRNO_CRYPT_SetKeyAndIV(VRNO_API_CTX* pCtx, int nAlgorithm, const VRNO_BINSTR* pKey, const VRNO_BINSTR* pIV)
{
    Call call(pCtx);
    call.input(pKey, u8"대칭키 암복호화에 사용될 key(pKey)를 지정하세요."_ksc);
    call.input(pIV, u8"대칭키 암복호화에 사용될 IV(pIV)를 지정하세요."_ksc);
    if (!call.supported(nAlgorithm == VRNO_SYM_SEED)) return call.code();
    if (pKey->nLen != keyLength) return call.fail(VRNO_ERR_KEY_LENGTH, u8"SEED 알고리즘은 16바이트의 Key가 필요합니다."_ksc);
    if (pIV->nLen != ivLength) return call.fail(VRNO_ERR_IV_LENGTH, u8"SEED 알고리즘은 16바이트의 IV가 필요합니다."_ksc);
    return installSessionKey(call, vnSeed, vnCbc, {pKey->pData, keyLength}, {pIV->pData, ivLength});
}

int VRNO_CRYPT_GetKeyAndIV(VRNO_API_CTX* pCtx, int* pSymAlg, VRNO_BINSTR* pKey, VRNO_BINSTR* pIV)
{
    Call call(pCtx);
    if (!call.output(NAMED(pSymAlg)).output(NAMED(pKey)).output(NAMED(pIV)).keySet()) return call.code();
    if (!call.supported(pCtx->nSymAlg == vnSeed)) return call.code();
    VRNO_BINSTR key{}, iv{}; // the outputs change when both are there
    call.deliver(*pCtx->pSessionKey, RecordOut{&key, "key"});
    if (call.deliver(*pCtx->pSessionIv, RecordOut{&iv, "iv"}) > 0) {
        VRNO_BINSTR_Delete(&key);
        return call.code();
    }
    *pSymAlg = VRNO_SYM_SEED;
    VRNO_BINSTR_Delete(pKey);
    *pKey = key;
    VRNO_BINSTR_Delete(pIV);
    *pIV = iv;
    return 0;
}

// ---- the cipher ----

namespace {

using CipherCall = int (VNEncrypt::*)(int, int, ByteString&, ByteString&, Octets, ByteString&, int);

// The differences between encryption and decryption.
struct Direction {
    CipherCall whole, chained;
    int code;
    const char* message;
    const char* inputName;
};

constexpr Direction encryption{&VNEncrypt::EncryptData, &VNEncrypt::EncryptData_NoGenKey, VRNO_ERR_ENCRYPT,
                               u8"데이터를 암호화하는데 실패하였습니다."_ksc, "pPlainText"};
constexpr Direction decryption{&VNEncrypt::DecryptData, &VNEncrypt::DecryptData_NoGenKey, VRNO_ERR_DECRYPT,
                               u8"데이터를 복호화하는데 실패하였습니다."_ksc, "pCipherText"};

// Expands the session key for the chained path on first use.
int expandKey(Call& call, VNEncrypt& cipher)
{
    VRNO_API_CTX& context = call.context();
    if (context.pChangedKey) return 0;
    if (const int code = setField(call, context.pChangedKey, {}, "pApiCtx->pChangedKey")) return code;
    if (cipher.GenerateKey(context.nSymAlg, *context.pSessionKey, *context.pChangedKey) == 0) return 0;
    deleteField(context.pChangedKey);
    return call.fail(VRNO_ERR_KEY_EXPAND, u8"키를 생성하는데 실패하였습니다."_ksc, cipher);
}

// A missing input counts as empty. The input is not copied; it may be the data of the output record, which is released after
// the result is complete.
int runCipher(Call& call, const Direction& direction, const VRNO_BINSTR* in, VRNO_BINSTR* out)
{
    VRNO_API_CTX& context = call.context();
    Octets octets;
    if (!call.view(in, direction.inputName, octets)) return call.code();
    const int padding = (context.ucFlags & otherPaddingFlag) ? vnPadLengthMinusOne : vnPadLength;
    const bool isChained = context.ucFlags & chainedFlag;

    VNEncrypt cipher;
    ByteString result;
    if (isChained && expandKey(call, cipher) > 0) return call.code();
    ByteString& key = isChained ? *context.pChangedKey : *context.pSessionKey;
    ByteString& iv = isChained ? *context.pChangedIv : *context.pSessionIv;
    const CipherCall run = isChained ? direction.chained : direction.whole;
    if ((cipher.*run)(context.nSymAlg, context.nSymMode, key, iv, octets, result, padding) > 0) {
        return call.fail(direction.code, direction.message, cipher);
    }
    return call.handOver(result, out);
}

} // namespace

int VRNO_CRYPT_Encrypt(VRNO_API_CTX* pCtx, const VRNO_BINSTR* pPlainText, VRNO_BINSTR* pCipherText)
{
    Call call(pCtx);
    if (!call.output(NAMED(pCipherText)).keySet()) return call.code();
    return runCipher(call, encryption, pPlainText, pCipherText);
}

int VRNO_CRYPT_Decrypt(VRNO_API_CTX* pCtx, const VRNO_BINSTR* pCipherText, VRNO_BINSTR* pPlainText)
{
    Call call(pCtx);
    if (!call.output(NAMED(pPlainText)).keySet()) return call.code();
    return runCipher(call, decryption, pCipherText, pPlainText);
}
