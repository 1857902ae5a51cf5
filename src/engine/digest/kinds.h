// MD5 and SHA-1 as types, for code that is written once for both.
#pragma once

#include "engine/digest/md5.h"
#include "engine/digest/sha1.h"

namespace vrno {

struct Sha1Kind {
    using State = SHA1_State;
    static constexpr auto init = SHA1_Init;
    static constexpr auto update = SHA1_Update;
    static constexpr auto final = SHA1_Final;
    static constexpr std::size_t size = 20;
};

struct Md5Kind {
    using State = MD5_State;
    static constexpr auto init = MD5_Init;
    static constexpr auto update = MD5_Update;
    static constexpr auto final = MD5_Final;
    static constexpr std::size_t size = 16;
};

} // namespace vrno
