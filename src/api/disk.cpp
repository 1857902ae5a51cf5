// VRNO_MEDIA_DISK_*: reading files.
#include "api/prikey.h"
#include "platform/platform.h"

using namespace vrno;

// True with the file's bytes in `out`. On allocation failure the call has failed; any other failure is the caller's to store.
static bool readFile(Call& call, const char* path, ByteString& out)
{
    platform::FileBlock block;
    const platform::FileError error = platform::readFile(path, block);
    if (error == platform::FileError::none && block.length > 0) out.setData(block.bytes, block.length);
    if (error == platform::FileError::memory || out.isOutOfMemory()) call.noMemory();
    return call && error == platform::FileError::none;
}

// Fails with a message that has the path of the file, unless the path is too long for it.
static int failedAt(Call& call, int code, const char* message, const char* path)
{
    if (!call) return call.code();
    const ByteString place = formatted(u8"위치 : %s"_ksc, path);
    return place.isOutOfMemory() ? call.noMemory() : call.fail(code, formatted(message, place.getText()));
}

int VRNO_MEDIA_DISK_ReadFile(VRNO_API_CTX* pCtx, const char* pszFilePath, VRNO_BINSTR* pData)
{
    Call call(pCtx);
    ByteString file;
    call.input(pszFilePath, u8"읽어들일 파일의 파일경로(pszFilePath)를 지정해 주세요."_ksc).output(NAMED(pData));
    if (!call) return call.code();
    if (!readFile(call, pszFilePath, file)) {
        if (!call) return call.code();
        return call.fail(VRNO_ERR_FILE_READ, formatted(u8"\"%s\" 위치의 파일을 읽는데 실패하였습니다."_ksc, pszFilePath));
    }
    if (file.getLength() == 0) return call.fail(VRNO_ERR_FILE_EMPTY, u8"비어있는 파일입니다."_ksc);
    return call.deliver(file, RecordOut{NAMED(pData)});
}

int VRNO_MEDIA_DISK_ReadCert(VRNO_API_CTX* pCtx, const char* pszFilePath, VRNO_BINSTR* pCert)
{
    Call call(pCtx);
    ByteString file;
    if (!call.input(pszFilePath, u8"파일경로(pszFilePath)를 지정해 주세요."_ksc).output(NAMED(pCert))) return call.code();
    if (!readFile(call, pszFilePath, file)) {
        return failedAt(call, VRNO_ERR_CERT_READ, u8"인증서를 읽는데 실패하였습니다. (%s)"_ksc, pszFilePath);
    }
    return call.deliver(file, RecordOut{NAMED(pCert)});
}

int VRNO_MEDIA_DISK_ReadPriKey(VRNO_API_CTX* pCtx, const char* pszFilePath, const char* pszPassword, VRNO_BINSTR* pPriKey)
{
    Call call(pCtx);
    ByteString file, key;
    if (!call.input(pszFilePath, u8"파일경로(pszFilePath)를 지정해 주세요."_ksc).output(NAMED(pPriKey))) return call.code();
    if (!readFile(call, pszFilePath, file)) {
        return failedAt(call, VRNO_ERR_PRIKEY_READ, u8"개인키를 읽는데 실패하였습니다. (%s)"_ksc, pszFilePath);
    }
    const bool opens = pszPassword && *pszPassword;
    if (opens && openPrivateKey(call, pszPassword, file, key) > 0) return call.code();
    return call.deliver(opens ? key : file, RecordOut{NAMED(pPriKey)});
}
