// Which token serves a device.
#pragma once

#include "Answer.h"

#include <string_view>

namespace storage {

struct Token {
    CK_SLOT_ID slot = 0;
    CK_TOKEN_INFO info{};

    std::string_view label() const;
};

// Finds the token of a device: 0 is the first one that VRNO_P11_TOKENS names. Without that variable the only token there is
// serves every device.
int findToken(Answer& answer, const CK_FUNCTION_LIST& module, int device, Token& token);

} // namespace storage

// A text as an argument of "%.*s".
#define SIZED(text) static_cast<int>((text).size()), (text).data()
