// VRNO_MEDIA_Load, _Unload and _CARD_*: items that a storage library reads from a smart card.
#include "ASN1Pkix/keys/PPrivateKey.h"
#include "api/prikey.h"
#include "base/wipe.h"
#include "platform/platform.h"

#include <cstdio>

using namespace vrno;

// ---- the library ----

int VRNO_MEDIA_Load(VRNO_API_CTX* pCtx, const char* pszLibPath)
{
    Call call(pCtx);
    if (!call.input(pszLibPath, u8"라이브러리 경로(pszLibPath)를 지정해 주세요."_ksc)) return call.code();
    if (pCtx->hMediaLib) return call.fail(VRNO_ERR_LIB_LOADED, u8"이미 로드되어있습니다."_ksc);
    int error = 0;
    pCtx->hMediaLib = platform::loadLibrary(pszLibPath, error);
    if (pCtx->hMediaLib) return 0;
    return call.fail(VRNO_ERR_LIB_LOAD,
                     formatted(u8"\"%s\" DLL을 로드하는데 실패 (fnc=LoadLibrary,errcode=%d)"_ksc, pszLibPath, error));
}

int VRNO_MEDIA_Unload(VRNO_API_CTX* pCtx)
{
    Call call(pCtx);
    if (!call || !pCtx->hMediaLib) return call.code();
    int error = 0;
    if (!platform::unloadLibrary(pCtx->hMediaLib, error)) {
        return call.fail(VRNO_ERR_LIB_UNLOAD, formatted(u8"DLL을 해제하는데 실패 (fnc=FreeLibrary,errcode=%d)"_ksc, error));
    }
    pCtx->hMediaLib = nullptr;
    return 0;
}

// ---- items ----

namespace {

// The one function of a storage library that is called.
constexpr const char* readFunctionName = "PKI_STORAGE_Read";

// The low byte of a data type is the role of an item. It selects the item code of a certificate or of its key.
struct Role {
    int role, certificate, privateKey;
};
constexpr Role roles[] = {{1, 0x10, 0x20}, {2, 0x40, 0x50}, {16, 0x01, 0x02}, {32, 0x04, 0x05}};
// The random value belongs to this one key.
constexpr int keyWithRandomValue = 0x20, randomValueCode = 0x30;

// What an item holds, its largest size in bytes, and the code and messages of its failures.
struct ItemKind {
    int Role::*itemCode;
    int capacity;
    int failure;
    const char* message;
    const char* wrongType;
    const char* emptyEntry;
};
constexpr int maxCapacity = 2048;

constexpr ItemKind certificates{
    .itemCode = &Role::certificate,
    .capacity = maxCapacity,
    .failure = VRNO_ERR_CERT_READ,
    .message = u8"인증서를 읽는데 실패하였습니다."_ksc,
    .wrongType = u8"지원되지 않는 인증서 데이터 타입입니다."_ksc,
    .emptyEntry = u8"해당 인증서 내용이 비어있습니다."_ksc,
};
constexpr ItemKind privateKeys{
    .itemCode = &Role::privateKey,
    .capacity = maxCapacity,
    .failure = VRNO_ERR_PRIKEY_READ,
    .message = u8"개인키를 읽는데 실패하였습니다."_ksc,
    .wrongType = u8"지원되지 않는 개인키 데이터 타입입니다."_ksc,
    .emptyEntry = u8"해당 개인키 내용이 비어있습니다."_ksc,
};
constexpr ItemKind randomValues{
    .itemCode = nullptr,
    .capacity = 128,
    .failure = VRNO_ERR_RANDOM_VALUE_READ,
    .message = u8"본인확인을 위한 랜덤값 읽기 실패하였습니다."_ksc,
    .wrongType = nullptr,
    .emptyEntry = nullptr,
};

// The device, if it is one of the eleven, together with the code of the role; 0 for an unknown role.
int itemCode(const ItemKind& kind, int nDataType)
{
    const int role = nDataType % 256, deviceNumber = nDataType / 256;
    const bool isDevice = deviceNumber % 0x10 == 0 && deviceNumber >= 0x10 && deviceNumber <= 0xB0;
    const int device = isDevice ? deviceNumber * 256 : 0;
    for (const Role& known : roles) {
        if (known.role == role) return device | known.*kind.itemCode;
    }
    return 0;
}

// Where an item comes from. The function is looked up at each call; it is null if the call has failed.
struct ItemSource {
    VRNO_STORAGE_READ* read = nullptr;
    int itemCode = 0;
};

ItemSource findItemSource(Call& call, const ItemKind& kind, int nDataType)
{
    int error = 0;
    void* const symbol = platform::findSymbol(call.context().hMediaLib, readFunctionName, error);
    if (!symbol) {
        call.fail(VRNO_ERR_LIB_FUNCTION,
                  formatted(u8"함수 %s()의 포인터 획득 실패 (fnc=GetProcAddress,errcode=%d)"_ksc, readFunctionName, error));
        return {};
    }
    const int code = itemCode(kind, nDataType);
    if (!call.check(code > 0, VRNO_ERR_DATA_TYPE, kind.wrongType)) return {};
    return {reinterpret_cast<VRNO_STORAGE_READ*>(symbol), code};
}

// Stores the failure for a result of the storage library. A result without a meaning of its own is the failure of the kind.
int failRead(Call& call, const ItemKind& kind, int result, const char* detail)
{
    constexpr int noCard = 256, wrongPin = 257, wrongPinWithTries = 99; // the last is the result divided by 256
    constexpr unsigned int noCardInReader = 0x80100069;
    if (result == noCard || static_cast<unsigned int>(result) == noCardInReader) {
        return call.dynamic(VRNO_ERR_CARD_ABSENT, u8"스마트카드가 꽂혀있는지 확인하세요."_ksc, readFunctionName, result, detail);
    }
    if (result == wrongPin || result / 256 == wrongPinWithTries) {
        return call.dynamic(VRNO_ERR_CARD_PIN, u8"PIN 번호를 확인하세요."_ksc, readFunctionName, result, detail);
    }
    return call.dynamic(kind.failure, kind.message, readFunctionName, result, detail);
}

// Reads one item. A length outside the buffer is a failure, too, which the storage library's message does not explain.
int readItem(Call& call, const ItemKind& kind, const ItemSource& source, const char* pin, ByteString& out)
{
    SecretArea<maxCapacity> buffer;
    char message[512] = "";
    int length = kind.capacity;
    const int result = source.read(source.itemCode, pin, buffer.bytes, &length, message);
    message[sizeof message - 1] = '\0';
    if (result != 0) return failRead(call, kind, result, message);
    if (length < 0 || length > kind.capacity) {
        std::snprintf(message, sizeof message, "The length %d is not in the range 0 to %d.", length, kind.capacity);
        return failRead(call, kind, result, message);
    }
    return out.setData(buffer.bytes, length) == 0 ? 0 : call.noMemory("item");
}

// An item that was never stored has no bytes, or zeros.
bool isEmptyEntry(const ByteString& item) { return item.getLength() == 0 || item.getBytes()[0] == 0; }

} // namespace

int VRNO_MEDIA_CARD_ReadCert(VRNO_API_CTX* pCtx, int nDataType, const char* pszPIN, VRNO_BINSTR* pCert)
{
    Call call(pCtx);
    ByteString cert;
    if (!call.input(pszPIN, u8"핀 번호(pszPIN)를 지정해 주세요."_ksc).output(NAMED(pCert)).libraryLoaded()) return call.code();
    const ItemSource source = findItemSource(call, certificates, nDataType);
    if (!source.read || readItem(call, certificates, source, pszPIN, cert) > 0) return call.code();
    call.check(!isEmptyEntry(cert), VRNO_ERR_FILE_EMPTY, certificates.emptyEntry);
    return call.deliver(cert, RecordOut{NAMED(pCert)});
}

int VRNO_MEDIA_CARD_ReadPriKey(VRNO_API_CTX* pCtx, int nDataType, const char* pszPIN, const char* pszPassword, VRNO_BINSTR* pPriKey)
{
    Call call(pCtx);
    ByteString item, randomValue, key;
    if (!call.input(pszPIN, u8"핀 번호(pszPIN)를 지정해 주세요."_ksc).output(NAMED(pPriKey)).libraryLoaded()) return call.code();
    const ItemSource source = findItemSource(call, privateKeys, nDataType);
    if (!source.read || readItem(call, privateKeys, source, pszPIN, item) > 0) return call.code();
    const bool hasPassword = pszPassword && *pszPassword;
    if (hasPassword && source.itemCode == keyWithRandomValue) {
        if (readItem(call, randomValues, {source.read, randomValueCode}, pszPIN, randomValue) > 0) return call.code();
    }
    if (!call.check(!isEmptyEntry(item), VRNO_ERR_FILE_EMPTY, privateKeys.emptyEntry)) return call.code();
    if (!hasPassword) return call.deliver(item, RecordOut{NAMED(pPriKey)});

    if (openPrivateKey(call, pszPassword, item, key) > 0) return call.code();
    PPrivateKey privateKey;
    if (!isEmptyEntry(randomValue) && privateKey.setRandomNumber(key, randomValue) > 0) {
        return call.fail(VRNO_ERR_PRIKEY_FORMAT, u8"잘못된 개인키 형식입니다."_ksc, privateKey);
    }
    return call.deliver(key, RecordOut{NAMED(pPriKey)});
}
