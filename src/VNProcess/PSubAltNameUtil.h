// The subject's alternative names (RFC 5280, 4.2.1.6) as text.
#pragma once

#include "base/Objects.h"

namespace vrno {

class PSubAltNameUtil : public PObject {
public:
    static constexpr const char* className = "PSubAltNameUtil";

    // Label and value of each name, CRLF between them. 0, or: 1 the value is no GeneralNames, 2 a name cannot be had,
    // 3 it does not render, 4 the contents of an otherName do not.
    int parseSubjectAlternativeName(ByteString& value, ByteString& text);

    // How binary values print, as PGeneralNameUtil takes it.
    int m_nHexGroup = 0;
    int m_nHexLine = 0;
};

} // namespace vrno
