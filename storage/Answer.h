// What a read answers: a result that the toolkit can tell from all others, and a short text about a failure.
#pragma once

#include <p11-kit/pkcs11.h>

#include <cstdarg>
#include <cstddef>

namespace storage {

// The results that vrno.h gives a meaning, and those of this library. Codes of PKCS #11 are never results: some of them would
// mean something else, as CKR_USER_ALREADY_LOGGED_IN, which is 256.
enum Result : int {
    noToken = 256,
    wrongPin = 257,
    lockedPin = 0x63C0,
    otherFailure = 0x10000, // plus the low 16 bits of the code
    moduleNotLoadable = 0x10002,
    badSetting = otherFailure + CKR_ARGUMENTS_BAD,
    absent = otherFailure + CKR_OBJECT_HANDLE_INVALID,
    tooLong = otherFailure + CKR_BUFFER_TOO_SMALL,
};

class Answer {
public:
    static constexpr std::size_t messageSize = 512; // of the caller's area

    explicit Answer(char* message) : m_message(message) { *m_message = '\0'; }

    // Stores the text, in printable ASCII, and gives the result back.
    [[gnu::format(printf, 3, 4)]] int fail(int result, const char* format, ...);

    // The failure of a function of the module: 0 for CKR_OK, or the result for the code.
    int failOf(CK_RV code, const char* function);

private:
    char* m_message;
};

} // namespace storage
