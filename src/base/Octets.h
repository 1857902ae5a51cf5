// A view of bytes. It does not own them.
#pragma once

#include <cstddef>
#include <span>

namespace vrno {

using Octets = std::span<const unsigned char>;

} // namespace vrno
