// VRNO_MEDIA_Load, _Unload and _CARD_*: items that a storage library reads from a smart card.
#include "ASN1Pkix/PPrivateKey.h"
#include "api/prikey.h"
#include "base/wipe.h"
#include "platform/platform.h"

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

constexpr const char* readerName = "PKI_STORAGE_Read";
using Reader = int(int itemCode, const char* pin, unsigned char* buffer, int* length, char* message);

constexpr int itemCapacity = 2048, randomValueCapacity = 128;
constexpr int privateKeyItem = 0x20, randomValueItem = 0x30;

// The two kinds of item, with the code that each role of a data type has for them.
struct Kind {
    int signing, encryption, other, otherEncryption; // roles 1, 2, 16, 32
    const char* wrongType;
    int readCode;
    const char* readFailure;
};

constexpr Kind certificateKind{0x10,
                               0x40,
                               0x01,
                               0x04,
                               u8"지원되지 않는 인증서 데이터 타입입니다."_ksc,
                               VRNO_ERR_CERT_READ,
                               u8"인증서를 읽는데 실패하였습니다."_ksc};
constexpr Kind privateKeyKind{0x20,
                              0x50,
                              0x02,
                              0x05,
                              u8"지원되지 않는 개인키 데이터 타입입니다."_ksc,
                              VRNO_ERR_PRIKEY_READ,
                              u8"개인키를 읽는데 실패하였습니다."_ksc};

// The item's code: the device, where it is one of eleven, and the role's; 0 for an unknown role.
int itemCode(const Kind& kind, int nDataType)
{
    const int role = nDataType % 256, number = nDataType / 256;
    const bool isDevice = number % 0x10 == 0 && number >= 0x10 && number <= 0xB0;
    const int device = isDevice ? number * 256 : 0;
    switch (role) {
    case 1:
        return device | kind.signing;
    case 2:
        return device | kind.encryption;
    case 16:
        return device | kind.other;
    case 32:
        return device | kind.otherEncryption;
    default:
        return 0;
    }
}

Reader* findReader(Call& call)
{
    int error = 0;
    void* const symbol = platform::findSymbol(call.context().hMediaLib, readerName, error);
    if (!symbol) {
        call.fail(VRNO_ERR_LIB_FUNCTION,
                  formatted(u8"함수 %s()의 포인터 획득 실패 (fnc=GetProcAddress,errcode=%d)"_ksc, readerName, error));
    }
    return reinterpret_cast<Reader*>(symbol);
}

// What the storage library's result means; `readCode` and `readFailure` stand for a failure without a meaning of its own.
int judge(Call& call, int result, const char* detail, int readCode, const char* readFailure)
{
    constexpr int noCard = 256, wrongPin = 257, wrongPinWithTries = 99; // the quotient by 256
    constexpr unsigned int noCardInReader = 0x80100069;
    if (result == noCard || static_cast<unsigned int>(result) == noCardInReader) {
        return call.dynamic(VRNO_ERR_CARD_ABSENT, u8"스마트카드가 꽂혀있는지 확인하세요."_ksc, readerName, result, detail);
    }
    if (result == wrongPin || result / 256 == wrongPinWithTries) {
        return call.dynamic(VRNO_ERR_CARD_PIN, u8"PIN 번호를 확인하세요."_ksc, readerName, result, detail);
    }
    return call.dynamic(readCode, readFailure, readerName, result, detail);
}

// Reads one item. A length that is not one of the buffer's is a failure like any other.
int readItem(Call& call, Reader* read, int code, const char* pin, int capacity, int readCode, const char* readFailure,
             ByteString& out)
{
    SecretArea<itemCapacity> buffer;
    char message[512] = "";
    int length = capacity;
    const int result = read(code, pin, buffer.bytes, &length, message);
    message[sizeof message - 1] = '\0';
    if (result != 0 || length < 0 || length > capacity) return judge(call, result, message, readCode, readFailure);
    return out.setData(buffer.bytes, length) == 0 ? 0 : call.noMemory("item");
}

// What a card holds where nothing was stored: no bytes, or zeros.
bool isEmptyEntry(const ByteString& item)
{
    return item.getLength() == 0 || item.getBytes()[0] == 0;
}

} // namespace

int VRNO_MEDIA_CARD_ReadCert(VRNO_API_CTX* pCtx, int nDataType, const char* pszPIN, VRNO_BINSTR* pCert)
{
    Call call(pCtx);
    const Kind& kind = certificateKind;
    if (!call.input(pszPIN, u8"핀 번호(pszPIN)를 지정해 주세요."_ksc).output(NAMED(pCert)).libraryLoaded()) return call.code();
    Reader* const read = findReader(call);
    const int code = itemCode(kind, nDataType);
    if (!call.check(code > 0, VRNO_ERR_DATA_TYPE, kind.wrongType)) return call.code();
    ByteString cert;
    if (readItem(call, read, code, pszPIN, itemCapacity, kind.readCode, kind.readFailure, cert) > 0) return call.code();
    if (isEmptyEntry(cert)) return call.fail(VRNO_ERR_FILE_EMPTY, u8"해당 인증서 내용이 비어있습니다."_ksc);
    return call.deliver(cert, RecordOut{NAMED(pCert)});
}

int VRNO_MEDIA_CARD_ReadPriKey(VRNO_API_CTX* pCtx, int nDataType, const char* pszPIN, const char* pszPassword, VRNO_BINSTR* pPriKey)
{
    Call call(pCtx);
    const Kind& kind = privateKeyKind;
    if (!call.input(pszPIN, u8"핀 번호(pszPIN)를 지정해 주세요."_ksc).output(NAMED(pPriKey)).libraryLoaded()) return call.code();
    Reader* const read = findReader(call);
    const int code = itemCode(kind, nDataType);
    if (!call.check(code > 0, VRNO_ERR_DATA_TYPE, kind.wrongType)) return call.code();
    SecretString item;
    if (readItem(call, read, code, pszPIN, itemCapacity, kind.readCode, kind.readFailure, item) > 0) return call.code();

    const bool opens = pszPassword && *pszPassword;
    SecretString randomValue, key;
    if (opens && code == privateKeyItem &&
        readItem(call, read, randomValueItem, pszPIN, randomValueCapacity, VRNO_ERR_RANDOM_VALUE_READ,
                 u8"본인확인을 위한 랜덤값 읽기 실패하였습니다."_ksc, randomValue) > 0) {
        return call.code();
    }
    if (isEmptyEntry(item)) return call.fail(VRNO_ERR_FILE_EMPTY, u8"해당 개인키 내용이 비어있습니다."_ksc);
    if (!opens) return call.deliver(item, RecordOut{NAMED(pPriKey)});
    if (openPrivateKey(call, pszPassword, item, key) > 0) return call.code();
    PPrivateKey privateKey;
    if (!isEmptyEntry(randomValue) && privateKey.setRandomNumber(key, randomValue) > 0) {
        return call.trail(VRNO_ERR_PRIKEY_FORMAT, u8"잘못된 개인키 형식입니다."_ksc, privateKey.getErrorTrail());
    }
    return call.deliver(key, RecordOut{NAMED(pPriKey)});
}
