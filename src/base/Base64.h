// Base64 (RFC 4648, section 4): the standard alphabet, with padding, without line breaks.
#pragma once

#include "base/ByteString.h"

namespace vrno {

// Both return 0 or 1. `out` is unchanged after 1, but empty with the status 2 after an allocation failure. `in` may lie in the
// block of `out`.

// 1 if the text would be longer than a ByteString can be. An empty input gives an empty output.
int base64Encode(Octets in, ByteString& out);

// Strict: 1 for a length that is not a multiple of 4, for a character outside the alphabet (white space too) and for an equals
// sign that is not padding at the end. Unused bits of the last character are not tested.
int base64Decode(Octets in, ByteString& out);

} // namespace vrno
