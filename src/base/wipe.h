// Work areas for secrets, and the stack below them.
#pragma once

#include "platform/wipe.h"

namespace vrno {

// A work area for a secret: zeroed when it is made, wiped on destruction.
template <std::size_t length> struct SecretArea {
    unsigned char bytes[length] = {};

    SecretArea() = default;
    SecretArea(const SecretArea&) = delete;
    SecretArea& operator=(const SecretArea&) = delete;
    ~SecretArea() { wipe(bytes, length); }
};

// Wipes the stack that the functions called so far have used, down to `length` bytes below the caller's frame. Compilers keep
// words there for which they had no register, and no variable names them.
template <std::size_t length> [[gnu::noinline]] void wipeStack()
{
    unsigned char area[length];
    wipe(area, length);
}

} // namespace vrno
