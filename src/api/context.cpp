// VRNO_API_*: making and releasing a context, and the text of its last failure.
#include "api/Call.h"
#include "platform/platform.h"

#include <cstdlib>
#include <cstring>

using namespace vrno;

static_assert(sizeof(int) == 4);

int VRNO_API_Init(VRNO_API_CTX** ppCtx, const char* pszPath)
{
    if (*ppCtx) return VRNO_ERR_CTX_NOT_NULL;
    if (!pszPath || !*pszPath) return VRNO_ERR_PATH_EMPTY;
    auto* const context = static_cast<VRNO_API_CTX*>(std::calloc(1, sizeof(VRNO_API_CTX)));
    *ppCtx = context;
    if (!context) return VRNO_ERR_MEMORY;

    std::size_t length = std::strlen(pszPath);
    context->pszPath = static_cast<char*>(std::malloc(length + 1));
    if (!context->pszPath) return VRNO_ERR_MEMORY; // VRNO_API_Finish releases the record
    if (pszPath[length - 1] == '\\' || pszPath[length - 1] == '/') --length;
    std::memcpy(context->pszPath, pszPath, length);
    context->pszPath[length] = '\0';

    context->ucFlags = 1;
    context->nReserved1 = 1;
    context->nReserved2 = 1;
    context->nReserved3 = 7;
    context->ucReserved = 1;
    return 0;
}

int VRNO_API_Finish(VRNO_API_CTX** ppCtx)
{
    VRNO_API_CTX* const context = *ppCtx;
    if (!context) return 0;
    std::free(context->pszPath);
    std::free(context->pReservedBuf1);
    std::free(context->pszErrMsg);
    delete context->pReservedObj1;
    delete context->pReservedObj2;
    delete context->pReservedObj3;
    delete context->pSessionKey;
    delete context->pSessionIv;
    delete context->pChangedKey;
    delete context->pChangedIv;
    delete context->pLoadedCert;
    if (context->hMediaLib) {
        int ignored = 0;
        platform::unloadLibrary(context->hMediaLib, ignored);
    }
    std::free(context->pReservedBuf2);
    delete context->pReservedObj4;
    delete context->pReservedObj5;
    context->nErrCode = 0;
    std::free(context);
    *ppCtx = nullptr;
    return 0;
}

int VRNO_API_GetErrInfo(VRNO_API_CTX* pCtx, int nBufLen, char* pszErrInfo)
{
    if (!pCtx) return VRNO_ERR_CTX_NULL;
    if (!pszErrInfo) return VRNO_ERR_ARGUMENT;
    if (!pCtx->pszErrMsg) return VRNO_ERR_NO_TEXT;
    if (nBufLen < 1) return VRNO_ERR_BUFFER_TOO_SMALL;
    const std::size_t needed = std::strlen(pCtx->pszErrMsg) + 1, size = static_cast<std::size_t>(nBufLen);
    const std::size_t copied = needed <= size ? needed - 1 : size - 1;
    std::memcpy(pszErrInfo, pCtx->pszErrMsg, copied);
    pszErrInfo[copied] = '\0';
    return needed <= size ? 0 : VRNO_ERR_BUFFER_TOO_SMALL;
}
