// The extended key usage (RFC 5280, 4.2.1.12) as text.
#pragma once

#include "base/Objects.h"

namespace vrno {

class PExtKeyUsageUtil : public PObject {
public:
    static constexpr const char* className = "PExtKeyUsageUtil";

    // The name of each purpose, or its identifier with blanks, with CRLF between them. 0, or 1: the value is not a list; 2: a
    // purpose cannot be read.
    int parseExtKeyUsage(ByteString& value, ByteString& text);
};

} // namespace vrno
