// What a user does, from the birth of a context to its end.
#pragma once

#include <string>
#include <vector>

namespace test {

// What a user does with one certificate's bytes, and with a session key, from the context's birth to its end: each code, and where
// it is 0 what the call gave.
struct Result {
    int code;
    std::string output;
    bool operator==(const Result&) const = default;
};
std::vector<Result> useCertificate(const std::string& certificate);
// What a user does with a private key: protects it, opens the protected one, holds it against the certificate.
std::vector<Result> useKey(const std::string& certificate, const std::string& key, const std::string& blob);

} // namespace test
