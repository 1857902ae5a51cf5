// The terminal: what is printed, and passwords, which are not.
#pragma once

#include "files.h"

#include <optional>
#include <string>

namespace tool {

bool isTerminal(int file);

// UTF-8; on a Windows console by its wide interface.
void print(const std::string& text);
void printError(const std::string& text);

// Where a password or PIN comes from: a file, a descriptor or, when both are absent, a prompt.
struct SecretSource {
    std::string file;
    std::optional<int> descriptor;
};

using Secret = std::basic_string<char, std::char_traits<char>, WipingAllocator<char>>;

// Of a file and a descriptor one final line end does not count. Throws Problem for an empty secret, and where a prompt would be needed
// and there is no terminal. `twice` asks for it again, and throws when the two differ.
Secret readSecret(const SecretSource& source, const std::string& prompt, bool twice = false);

} // namespace tool
