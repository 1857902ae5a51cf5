#include "base/Base64Kernels.h"

#include <cstdint>

namespace vrno::base64 {

std::size_t encodePortable(unsigned char* out, const unsigned char* in, std::size_t length)
{
    std::size_t at = 0;
    for (; length - at >= octetsOfGroup; at += octetsOfGroup, out += charactersOfGroup) {
        const std::uint32_t group = std::uint32_t{in[at]} << 16 | std::uint32_t{in[at + 1]} << 8 | in[at + 2];
        const auto character = [group](int shift) { return static_cast<unsigned char>(alphabet[group >> shift & 63]); };
        out[0] = character(18);
        out[1] = character(12);
        out[2] = character(6);
        out[3] = character(0);
    }
    return at;
}

std::size_t decodePortable(unsigned char* out, const unsigned char* in, std::size_t length)
{
    std::size_t at = 0;
    for (; length - at >= charactersOfGroup; at += charactersOfGroup, out += octetsOfGroup) {
        const std::uint32_t a = values[in[at]], b = values[in[at + 1]], c = values[in[at + 2]], d = values[in[at + 3]];
        if ((a | b | c | d) & noValue) break;
        out[0] = static_cast<unsigned char>(a << 2 | b >> 4);
        out[1] = static_cast<unsigned char>(b << 4 | c >> 2);
        out[2] = static_cast<unsigned char>(c << 6 | d);
    }
    return at;
}

} // namespace vrno::base64
