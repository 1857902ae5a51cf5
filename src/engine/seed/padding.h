// Filling of the last block, and its removal. The kinds are those of ZIRC_Padding.
#pragma once

#include "engine/seed/padding_id.h"

namespace vrno {

// Fills the data up to whole blocks. Data of whole blocks get one block more, except with ZIRC_PAD_NONE. There must be room
// for a block behind the data. 0, or -1 for an unknown kind, -2 when the system gives no random bytes.
int padBuffer(unsigned char* data, int* length, int blockLength, int nPaddintType);

// Removes the padding and overwrites it with zeros. Negative for bad padding: -1 for its value, -2 for its bytes. Kinds that
// are not removed change nothing.
int unpadBuffer(unsigned char* data, int* length, int blockLength, int nPaddintType);

// The number of octets that unpadBuffer removes, or its negative result, for data of at least one octet. Its time depends on the
// lengths and the kind alone.
int paddingLength(const unsigned char* data, int length, int blockLength, int nPaddintType);

} // namespace vrno
