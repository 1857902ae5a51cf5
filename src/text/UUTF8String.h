// UTF-8 to UCS-2 and to code page 949.
#pragma once

#include "base/ByteString.h"

namespace vrno {

class UUTF8String {
public:
    // To UCS-2 in the form that UUnicode takes. ASCII characters and the three-octet sequences of Hangul syllables are
    // converted; each octet of anything else, also of malformed or cut off sequences, becomes "?". 0, or 2 on allocation
    // failure.
    static int UTF8ToUnicode(ByteString& utf8, ByteString& ucs2);

    // 0, or the number of the step that failed: 1 to UCS-2, 2 to code page 949.
    static int UTF8ToKSC(ByteString& utf8, ByteString& ksc);
};

} // namespace vrno
