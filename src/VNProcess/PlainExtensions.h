// The extensions whose text needs no utility class, each as a Renderer.
#pragma once

#include "VNProcess/Rendering.h"

namespace vrno {

// Key usage (RFC 5280, 4.2.1.3): the name of each usage with ", " behind it, the last one too.
int keyUsageText(ByteString& value, ByteString& text, Trail& trail);

// Basic constraints (4.2.1.9): "CA : TRUE", followed by ", PathLenConstraint : 0" where there is one. A length of -1 is
// shown like none.
int basicConstraintsText(ByteString& value, ByteString& text, Trail& trail);

// Subject key identifier (4.2.1.2) in lower-case hexadecimal.
int keyIdentifierText(ByteString& value, ByteString& text, Trail& trail);

} // namespace vrno
