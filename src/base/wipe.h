// Work areas for secrets.
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

} // namespace vrno
