// 32-bit words in memory, in either byte order and at any address.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

namespace vrno {

template <std::endian order> inline std::uint32_t load32(const unsigned char* from)
{
    std::uint32_t word;
    std::memcpy(&word, from, sizeof word);
    return order == std::endian::native ? word : __builtin_bswap32(word);
}

template <std::endian order> inline void store32(unsigned char* to, std::uint32_t word)
{
    if (order != std::endian::native) word = __builtin_bswap32(word);
    std::memcpy(to, &word, sizeof word);
}

} // namespace vrno
