// UCS-2 to code page 949.
#pragma once

#include "base/ByteString.h"

namespace vrno {

// UCS-2 here is little-endian, two octets a character, and holds whole pairs. ASCII and the Hangul syllables convert;
// every other character becomes "?", which is the only sign of the loss.
class UUnicode {
public:
    // 0, or 3 when there is no memory. The arguments may be one object.
    static int Unicode2KSC(ByteString& ucs2, ByteString& ksc);

    // Swaps the octets of each pair in place; 1 for an odd length, with nothing changed.
    static int SwapByteOrder(unsigned char* data, int length);
};

} // namespace vrno
