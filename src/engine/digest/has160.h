// HAS-160 (TTAS.KO-12.0011/R2): a digest of 20 bytes.
#pragma once

#include <cstddef>

namespace vrno {

inline constexpr std::size_t has160DigestLength = 20;

// `data` may be null for a length of 0; `digest` may overlap `data`.
void HAS160_Digest(unsigned char* digest, const void* data, std::size_t length);

} // namespace vrno
