// The identify data of a person's certificate: the real name, and the virtual identifier where there is one.
#pragma once

#include "base/Objects.h"

namespace vrno {

class PIdentifyDataUtil : public PObject {
public:
    static constexpr const char* className = "PIdentifyDataUtil";

    // The name in code page 949, and the encoded VID, empty where no user information is given. Only the first attribute
    // of that is looked at. 0, or: 1 the value is no IdentifyData, 2 the name to UCS-2, 3 to code page 949, 4 no attribute,
    // 5 it does not decode, 6 its type cannot be read, 7 its type is not that of a VID.
    int parseIdentifyData(ByteString& value, ByteString& realName, ByteString& vid);
};

} // namespace vrno
