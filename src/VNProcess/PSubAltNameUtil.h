// The subject's alternative names (RFC 5280, 4.2.1.6) as text.
#pragma once

#include "base/Objects.h"

namespace vrno {

class PSubAltNameUtil : public PObject {
public:
    static constexpr const char* className = "PSubAltNameUtil";

    // Label and value of each name, with CRLF between names. 0, or 1: the value is not a GeneralNames; 2: a name cannot be read;
    // 3: it cannot be rendered; 4: the contents of an otherName cannot be rendered.
    int parseSubjectAlternativeName(ByteString& value, ByteString& text);

    // How binary values are shown, as in PGeneralNameUtil.
    int m_nHexGroup = 0;
    int m_nHexLine = 0;
};

} // namespace vrno
