// How a command ends when it cannot go on.
#pragma once

#include "language.h"

#include <string>

namespace tool {

// The exit statuses of the command.
enum Status { success = 0, failure = 1, usage = 2 };

// Thrown where a command cannot go on; main() prints the text and ends with the status.
struct Problem {
    Status status;
    std::string text; // one sentence in UTF-8, in the chosen language
};

[[noreturn]] inline void fail(const std::string& text) { throw Problem{failure, text}; }

// The words with what they are about in front: "letter.txt: No such file".
[[noreturn]] inline void failAt(const std::string& subject, const Words& words) { fail(subject + ": " + in(words)); }

} // namespace tool
