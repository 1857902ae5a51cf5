// UCS-2 to code page 949.
#pragma once

#include "base/ByteString.h"

namespace vrno {

// UCS-2 here is little-endian, two octets a character, without a single octet at the end. ASCII characters and the Hangul
// syllables are converted. Every other character becomes "?", without a failure.
class UUnicode {
public:
    // 0, or 3 on allocation failure. Both arguments may be the same object.
    static int Unicode2KSC(ByteString& ucs2, ByteString& ksc);

    // Swaps the octets of each pair in place. 0, or 1 for an odd length, with nothing changed.
    static int SwapByteOrder(unsigned char* data, int length);
};

} // namespace vrno
