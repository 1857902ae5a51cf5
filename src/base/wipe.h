// Overwriting of secrets that are about to be released.
#pragma once

#include <cstddef>
#include <cstring>

namespace vrno {

// Zeros `length` bytes at `data`; the barrier keeps the compiler from seeing that nobody reads them again.
inline void wipe(void* data, std::size_t length)
{
    if (length > 0) std::memset(data, 0, length);
    __asm__ __volatile__("" : : "r"(data) : "memory");
}

// A work area for a secret: zeroed when it is made, wiped when it goes.
template <std::size_t length> struct SecretArea {
    unsigned char bytes[length] = {};

    SecretArea() = default;
    SecretArea(const SecretArea&) = delete;
    SecretArea& operator=(const SecretArea&) = delete;
    ~SecretArea() { wipe(bytes, length); }
};

} // namespace vrno
