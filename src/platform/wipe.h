// Overwriting of memory whose content must not be read again.
#pragma once

#include <cstddef>
#include <cstring>

namespace vrno {

// Zeros `length` bytes at `data`, which may be null if there are none. The barrier keeps the compiler from dropping the writes.
inline void wipe(void* data, std::size_t length)
{
    if (length > 0) std::memset(data, 0, length);
    __asm__ __volatile__("" : : "r"(data) : "memory");
}

} // namespace vrno
