// The toolkit as the commands use it: octets in, octets out, and a Problem for every failure.
#pragma once

#include "files.h"
#include "terminal.h"

#include "vrno.hpp"

#include <functional>
#include <string>

namespace tool {

// Set by -v: the text of a failure is followed by the trail to its place.
extern bool isVerbose;

// Throws the sentence for a code, as "[2004] The password of the private key is wrong.".
[[noreturn]] void failBy(const vrno::Failure& failure);

template <typename T> T valueOf(vrno::Result<T> result)
{
    if (!result) failBy(result.error());
    return *std::move(result);
}

vrno::Context makeContext();

// DER out of a file that holds DER or PEM; of several PEM blocks the first. A text of PEM without a block is a failure.
Octets derOf(const Octets& content);

// A PEM block in lines of 64 characters.
std::string pem(const char* label, std::span<const unsigned char> der);

// Calls `open` with the octets of the password as they are and then, if that gives the code of a wrong password, in code page 949.
vrno::Result<vrno::Octets> withPassword(const Secret& password, const std::function<vrno::Result<vrno::Octets>(const std::string&)>& open);

// Wiped copies of what the toolkit gives.
Octets secretCopy(vrno::Octets octets);

} // namespace tool
