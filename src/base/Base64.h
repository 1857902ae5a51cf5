// Base64 of RFC 4648, section 4: the standard alphabet, padded, in one line.
#pragma once

#include "base/ByteString.h"

namespace vrno {

// Both return 0, or 1 with `out` as it was; on allocation failure it is empty with the status 2.

// 1: the text would be longer than a ByteString holds. An empty input gives an empty output.
int base64Encode(ByteString& in, ByteString& out);

// Strict: 1 for a length that is no multiple of 4, for any character outside the alphabet (white space too) and for an
// equals sign but the last two. Bits of the last character that fill no byte are not looked at.
int base64Decode(ByteString& in, ByteString& out);

} // namespace vrno
