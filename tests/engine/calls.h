// Operations of the engine on strings.
#pragma once

#include "engine/frame/zirc.h"
#include "support/bytes.h"

#include <gtest/gtest.h>

namespace test {

inline int size(const std::string& of) { return static_cast<int>(of.size()); }

// One operation with a key pair's blob: the code, and the result in `out`, empty after a failure.
inline int cipher(bool encrypts, int id, int mode, std::string blob, const std::string& in, std::string& out, int room = 2048)
{
    const auto run = encrypts ? vrno::ZIRC_EncryptData : vrno::ZIRC_DecryptData;
    std::vector<unsigned char> result(static_cast<std::size_t>(room));
    auto* const key = reinterpret_cast<unsigned char*>(blob.data());
    const int code = run(key, size(blob), id, mode, result.data(), &room, at(in), size(in), nullptr, 0, 0);
    out = code == 0 ? text(result.data(), static_cast<std::size_t>(room)) : "";
    return code;
}

inline int sign(int id, const std::string& blob, const std::string& in, std::string& signature, bool isVerifiedNext = false)
{
    unsigned char result[2048];
    int length = sizeof result;
    const int code = vrno::ZIRC_SignData(at(blob), size(blob), id, result, &length, at(in), size(in), isVerifiedNext);
    signature = code == 0 ? text(result, static_cast<std::size_t>(length)) : "";
    return code;
}

inline int verify(int id, const std::string& blob, const std::string& in, const std::string& signature)
{
    return vrno::ZIRC_VerifyData(at(blob), size(blob), id, at(signature), size(signature), at(in), size(in));
}

} // namespace test
