// VRNO_MEDIA_DISK_*: reading files.
#include "api/prikey.h"
#include "platform/platform.h"

using namespace vrno;

namespace {

// The texts of the failures. The path is in them unless it is too long.
ByteString dataText(const char* path)
{
    return formatted(u8"\"%s\" 위치의 파일을 읽는데 실패하였습니다."_ksc, path);
}

ByteString placedText(const char* text, const char* path)
{
    const ByteString place = formatted(u8"위치 : %s"_ksc, path);
    ByteString placed = formatted(text, place.getText());
    if (place.isOutOfMemory()) placed.setOutOfMemory();
    return placed;
}

ByteString certificateText(const char* path)
{
    return placedText(u8"인증서를 읽는데 실패하였습니다. (%s)"_ksc, path);
}

ByteString privateKeyText(const char* path)
{
    return placedText(u8"개인키를 읽는데 실패하였습니다. (%s)"_ksc, path);
}

// Reads a whole file; `code` with the text of the path if it cannot be read.
int readFile(Call& call, const char* path, int code, ByteString (*text)(const char* path), ByteString& out)
{
    platform::FileBlock block;
    const platform::FileError error = platform::readFile(path, block);
    if (error == platform::FileError::memory) return call.noMemory();
    if (error != platform::FileError::none) return call.fail(code, text(path));
    if (block.length > 0) out.setData(block.bytes, block.length);
    return out.isOutOfMemory() ? call.noMemory() : 0;
}

} // namespace

int VRNO_MEDIA_DISK_ReadFile(VRNO_API_CTX* pCtx, const char* pszFilePath, VRNO_BINSTR* pData)
{
    Call call(pCtx);
    ByteString file;
    call.input(pszFilePath, u8"읽어들일 파일의 파일경로(pszFilePath)를 지정해 주세요."_ksc).output(NAMED(pData));
    if (!call || readFile(call, pszFilePath, VRNO_ERR_FILE_READ, dataText, file) > 0) return call.code();
    call.check(file.getLength() > 0, VRNO_ERR_FILE_EMPTY, u8"비어있는 파일입니다."_ksc);
    return call.deliver(file, RecordOut{NAMED(pData)});
}

int VRNO_MEDIA_DISK_ReadCert(VRNO_API_CTX* pCtx, const char* pszFilePath, VRNO_BINSTR* pCert)
{
    Call call(pCtx);
    ByteString file;
    call.input(pszFilePath, u8"파일경로(pszFilePath)를 지정해 주세요."_ksc).output(NAMED(pCert));
    if (!call || readFile(call, pszFilePath, VRNO_ERR_CERT_READ, certificateText, file) > 0) return call.code();
    return call.deliver(file, RecordOut{NAMED(pCert)});
}

int VRNO_MEDIA_DISK_ReadPriKey(VRNO_API_CTX* pCtx, const char* pszFilePath, const char* pszPassword, VRNO_BINSTR* pPriKey)
{
    Call call(pCtx);
    ByteString file, key;
    call.input(pszFilePath, u8"파일경로(pszFilePath)를 지정해 주세요."_ksc).output(NAMED(pPriKey));
    if (!call || readFile(call, pszFilePath, VRNO_ERR_PRIKEY_READ, privateKeyText, file) > 0) return call.code();
    const bool hasPassword = pszPassword && *pszPassword;
    if (!hasPassword) return call.deliver(file, RecordOut{NAMED(pPriKey)});
    if (openPrivateKey(call, pszPassword, file, key) > 0) return call.code();
    return call.deliver(key, RecordOut{NAMED(pPriKey)});
}
