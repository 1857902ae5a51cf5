#include "Answer.h"

#include <cstdio>

namespace storage {

int Answer::fail(int result, const char* format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(m_message, messageSize, format, arguments);
    va_end(arguments);
    for (char* at = m_message; *at; ++at) {
        if (*at < ' ' || *at > '~') *at = '?';
    }
    return result;
}

int Answer::failOf(CK_RV code, const char* function)
{
    switch (code) {
    case CKR_OK:
        return 0;
    case CKR_DEVICE_REMOVED:
    case CKR_TOKEN_NOT_PRESENT:
    case CKR_TOKEN_NOT_RECOGNIZED:
        return fail(noToken, "the token is not there (%s)", function);
    case CKR_PIN_INCORRECT:
    case CKR_PIN_INVALID:
    case CKR_PIN_LEN_RANGE:
        return fail(wrongPin, "wrong PIN");
    case CKR_PIN_LOCKED:
        return fail(lockedPin, "the PIN is locked");
    case CKR_USER_ALREADY_LOGGED_IN:
    case CKR_USER_ANOTHER_ALREADY_LOGGED_IN:
        return fail(otherFailure + static_cast<int>(code), "the process is logged in already, so the PIN cannot be tested");
    default:
        return fail(otherFailure + static_cast<int>(code & 0xFFFF), "%s failed, PKCS #11 code 0x%lx", function, code);
    }
}

} // namespace storage
