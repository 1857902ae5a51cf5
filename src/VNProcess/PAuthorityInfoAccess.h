// The authority information access (RFC 5280, 4.2.2.1) as text.
#pragma once

#include "base/Objects.h"

namespace vrno {

class PAuthorityInfoAccess : public PObject {
public:
    static constexpr const char* className = "PAuthorityInfoAccess";

    // A numbered block an access description, CRLF between them; every kind of location is shown behind "URL=". 0, or:
    // 1 the value is no list, 2 a description does not decode, 3 its method cannot be read, 4 its location does not
    // render.
    int parseAuthorityInfoAccess(ByteString& value, ByteString& text);
};

} // namespace vrno
