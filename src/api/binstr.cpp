// VRNO_BINSTR_*: binary data at the boundary, on the plain heap.
#include "base/wipe.h"
#include "vrno.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

using vrno::wipe;

int VRNO_BINSTR_Create(VRNO_BINSTR* pBinStr)
{
    if (!pBinStr) return VRNO_ERR_ARGUMENT;
    *pBinStr = {};
    return 0;
}

int VRNO_BINSTR_Delete(VRNO_BINSTR* pBinStr)
{
    if (!pBinStr) return VRNO_ERR_ARGUMENT;
    if (!pBinStr->pData) return 0;
    wipe(pBinStr->pData, pBinStr->nLen);
    std::free(pBinStr->pData);
    *pBinStr = {};
    return 0;
}

int VRNO_BINSTR_SetData(const unsigned char* pData, unsigned int nLen, VRNO_BINSTR* pBinStr)
{
    if (!pBinStr) return VRNO_ERR_ARGUMENT;
    VRNO_BINSTR_Delete(pBinStr);
    if (!pData || !nLen) return 0;
    const std::uint64_t size = std::uint64_t{nLen} + 1;
    pBinStr->pData = size <= SIZE_MAX ? static_cast<unsigned char*>(std::malloc(static_cast<std::size_t>(size))) : nullptr;
    if (!pBinStr->pData) return VRNO_ERR_MEMORY;
    std::memcpy(pBinStr->pData, pData, nLen);
    pBinStr->pData[nLen] = 0;
    pBinStr->nLen = nLen;
    return 0;
}
