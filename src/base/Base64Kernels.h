// The alphabet of Base64 (RFC 4648, section 4), and the kernels that convert whole groups: three octets, four characters.
#pragma once

#include "base/cpu.h"

#include <array>

namespace vrno::base64 {

inline constexpr std::size_t octetsOfGroup = 3, charactersOfGroup = 4;

inline constexpr char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// The value of each character, or noValue: the one value with the highest bit.
inline constexpr unsigned char noValue = 0x80;
inline constexpr std::array<unsigned char, 256> values = [] {
    std::array<unsigned char, 256> table{};
    table.fill(noValue);
    for (unsigned char value = 0; value < 64; ++value) table[static_cast<unsigned char>(alphabet[value])] = value;
    return table;
}();

// Converts whole groups from the front of `length` octets or characters, and returns how many of these it has converted. It may
// leave any number at the end to the portable kernel, which leaves less than a group. A decoder stops before a group with a
// character outside the alphabet. It reads and writes no further than the `length` bytes and their result.
using Function = std::size_t(unsigned char* out, const unsigned char* in, std::size_t length);

Function encodePortable, encodeAvx2, encodeVbmi512;
Function decodePortable, decodeAvx2, decodeVbmi512;

inline constexpr Kernel<Function> encodeKernels[] = {
#if defined(__x86_64__) || defined(__i386__)
    {"vbmi512", CpuFeature::vbmi512, encodeVbmi512},
    {"avx2", CpuFeature::avx2, encodeAvx2},
#endif
    {"portable", CpuFeature::none, encodePortable},
};

inline constexpr Kernel<Function> decodeKernels[] = {
#if defined(__x86_64__) || defined(__i386__)
    {"vbmi512", CpuFeature::vbmi512, decodeVbmi512},
    {"avx2", CpuFeature::avx2, decodeAvx2},
#endif
    {"portable", CpuFeature::none, decodePortable},
};

} // namespace vrno::base64
