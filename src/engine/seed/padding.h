// Filling of the last block, and its removal.
#pragma once

#include "engine/frame/context.h"

namespace vrno {

// Fills what waits in stagingBuffer up to whole blocks of nInputBlockLen; data of whole blocks gets one more, but for
// ZIRC_PAD_NONE. 1 for an id that is no padding, or when no random bytes are to be had.
int padBuffer(ZIRC_Context& context, int nPaddintType);

// Takes the padding off and overwrites it with zeros. Negative for bad padding: -1 for its value, -2 for its bytes. Ids
// without a check change nothing.
int unpadBuffer(unsigned char* data, int* length, int blockLength, int nPaddintType);

} // namespace vrno
