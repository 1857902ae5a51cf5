// What the result codes of the library mean, why they come and what to do about them, in two languages.
#pragma once

#include "language.h"

#include <span>

namespace tool {

struct Code {
    int number;
    const char* name; // in vrno.h
    Words meaning;    // one sentence, which also tells of the failure when it happens
    Words cause;
    Words remedy;
};

// In ascending order, VRNO_OK first.
std::span<const Code> codes();

// Null for a number that is no code.
const Code* findCode(int number);

} // namespace tool
