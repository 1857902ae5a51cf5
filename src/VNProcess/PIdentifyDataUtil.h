// The identify data in a person's certificate: the real name, and optionally the virtual identifier (VID).
#pragma once

#include "base/Objects.h"

namespace vrno {

class PIdentifyDataUtil : public PObject {
public:
    static constexpr const char* className = "PIdentifyDataUtil";

    // The name in code page 949, and the encoded VID, which is empty if there is no user information. Only its first attribute is
    // read. 0, or 1: the value is not an IdentifyData; 2: name to UCS-2; 3: name to code page 949; 4: no attribute; 5: it does not
    // decode; 6: its type cannot be read; 7: its type is not VID.
    int parseIdentifyData(ByteString& value, ByteString& realName, ByteString& vid);
};

} // namespace vrno
