// The authority information access (RFC 5280, 4.2.2.1) as text.
#pragma once

#include "base/Objects.h"

namespace vrno {

class PAuthorityInfoAccess : public PObject {
public:
    static constexpr const char* className = "PAuthorityInfoAccess";

    // One numbered block for each access description, with CRLF between them. Any location is shown after "URL=". 0, or 1: the
    // value is not a list; 2: a description does not decode; 3: its method cannot be read; 4: its location cannot be rendered.
    int parseAuthorityInfoAccess(ByteString& value, ByteString& text);
};

} // namespace vrno
