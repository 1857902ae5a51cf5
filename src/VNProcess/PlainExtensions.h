// The extensions that need no utility class to become text, each as a Renderer.
#pragma once

#include "VNProcess/Rendering.h"

namespace vrno {

// Key usage (RFC 5280, 4.2.1.3): the name of each usage, followed by ", ", the last one too.
int keyUsageText(ByteString& value, ByteString& text, Trail& trail);

// Basic constraints (4.2.1.9): "CA : TRUE", followed by ", PathLenConstraint : 0" if there is one; -1 is treated as none.
int basicConstraintsText(ByteString& value, ByteString& text, Trail& trail);

// Subject key identifier (4.2.1.2) in lower-case hexadecimal.
int keyIdentifierText(ByteString& value, ByteString& text, Trail& trail);

} // namespace vrno
