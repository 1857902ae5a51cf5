// Views of bytes that somebody else owns.
#pragma once

#include <cstddef>
#include <span>

namespace vrno {

using Octets = std::span<const unsigned char>;

} // namespace vrno
