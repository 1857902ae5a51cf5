// VRNO_MEDIA_DISK_*: reading files.
#include "api/prikey.h"
#include "platform/platform.h"

using namespace vrno;

namespace {

// The code and text of a failed read. The text shows the path, or a text with the path in it.
struct FileKind {
    int code;
    const char* text;
    bool showsPlace;
};
constexpr FileKind dataFile{VRNO_ERR_FILE_READ, u8"\"%s\" 위치의 파일을 읽는데 실패하였습니다."_ksc, false};
constexpr FileKind certificateFile{VRNO_ERR_CERT_READ, u8"인증서를 읽는데 실패하였습니다. (%s)"_ksc, true};
constexpr FileKind privateKeyFile{VRNO_ERR_PRIKEY_READ, u8"개인키를 읽는데 실패하였습니다. (%s)"_ksc, true};

int failRead(Call& call, const FileKind& kind, const char* path)
{
    if (!kind.showsPlace) return call.fail(kind.code, formatted(kind.text, path));
    const ByteString place = formatted(u8"위치 : %s"_ksc, path); // empty if the path is too long
    if (place.isOutOfMemory()) return call.noMemory();
    return call.fail(kind.code, formatted(kind.text, place.getText()));
}

int readFile(Call& call, const FileKind& kind, const char* path, ByteString& out)
{
    platform::FileBlock block;
    const platform::FileError error = platform::readFile(path, block);
    if (error == platform::FileError::memory) return call.noMemory();
    if (error != platform::FileError::none) return failRead(call, kind, path);
    if (block.length > 0) out.setData(block.bytes, block.length);
    return out.isOutOfMemory() ? call.noMemory() : 0;
}

} // namespace

int VRNO_MEDIA_DISK_ReadFile(VRNO_API_CTX* pCtx, const char* pszFilePath, VRNO_BINSTR* pData)
{
    Call call(pCtx);
    ByteString file;
    call.input(pszFilePath, u8"읽어들일 파일의 파일경로(pszFilePath)를 지정해 주세요."_ksc).output(NAMED(pData));
    if (!call || readFile(call, dataFile, pszFilePath, file) > 0) return call.code();
    call.check(file.getLength() > 0, VRNO_ERR_FILE_EMPTY, u8"비어있는 파일입니다."_ksc);
    return call.deliver(file, RecordOut{NAMED(pData)});
}

int VRNO_MEDIA_DISK_ReadCert(VRNO_API_CTX* pCtx, const char* pszFilePath, VRNO_BINSTR* pCert)
{
    Call call(pCtx);
    ByteString file;
    call.input(pszFilePath, u8"파일경로(pszFilePath)를 지정해 주세요."_ksc).output(NAMED(pCert));
    if (!call || readFile(call, certificateFile, pszFilePath, file) > 0) return call.code();
    return call.deliver(file, RecordOut{NAMED(pCert)});
}

int VRNO_MEDIA_DISK_ReadPriKey(VRNO_API_CTX* pCtx, const char* pszFilePath, const char* pszPassword, VRNO_BINSTR* pPriKey)
{
    Call call(pCtx);
    ByteString file, key;
    call.input(pszFilePath, u8"파일경로(pszFilePath)를 지정해 주세요."_ksc).output(NAMED(pPriKey));
    if (!call || readFile(call, privateKeyFile, pszFilePath, file) > 0) return call.code();
    const bool hasPassword = pszPassword && *pszPassword;
    if (!hasPassword) return call.deliver(file, RecordOut{NAMED(pPriKey)});
    if (openPrivateKey(call, pszPassword, file, key) > 0) return call.code();
    return call.deliver(key, RecordOut{NAMED(pPriKey)});
}
