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
    const std::uint64_t size = std::uint64_t{nLen} + 1;
    const bool isEmpty = !pData || !nLen;
    unsigned char* block = nullptr;
    if (!isEmpty && size <= SIZE_MAX) block = static_cast<unsigned char*>(std::malloc(static_cast<std::size_t>(size)));
    if (block) std::memcpy(block, pData, nLen); // before the old block is released: pData may lie in it
    VRNO_BINSTR_Delete(pBinStr);
    if (isEmpty) return 0;
    if (!block) return VRNO_ERR_MEMORY;
    block[nLen] = 0;
    *pBinStr = {block, nLen};
    return 0;
}
