// Filling of the last block, and its removal. The kinds are those of ZIRC_Padding.
#pragma once

#include "engine/seed/padding_id.h"

namespace vrno {

// Appends to the data what fills them up to whole blocks; data of whole blocks get one block more, but for ZIRC_PAD_NONE.
// Behind the data there is room for a block. 0, or -1 for an unknown kind, -2 when the system gives no random bytes.
int padBuffer(unsigned char* data, int* length, int blockLength, int nPaddintType);

// Takes the padding off and overwrites it with zeros. Negative for bad padding: -1 for its value, -2 for its bytes. Kinds
// without a check change nothing.
int unpadBuffer(unsigned char* data, int* length, int blockLength, int nPaddintType);

} // namespace vrno
