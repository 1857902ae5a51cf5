#include "support/bytes.h"

#include "vrno_cp949.hpp"

#include <gtest/gtest.h>

#include <cctype>
#include <fstream>
#include <sstream>

namespace test {

static std::string derBlock(const std::string& notation, std::size_t& at)
{
    std::string out;
    while (at < notation.size() && notation[at] != '}') {
        const char c = notation[at++];
        if (c == '"') {
            while (notation.at(at) != '"') out += notation[at++];
            ++at;
        } else if (c == '{') {
            const std::string contents = derBlock(notation, at);
            EXPECT_EQ(notation.at(at), '}') << notation;
            ++at;
            std::string length(1, static_cast<char>(contents.size()));
            for (std::size_t rest = contents.size() >> 8; rest > 0; rest >>= 8) length.insert(0, 1, static_cast<char>(rest));
            if (contents.size() >= 0x80) out += static_cast<char>(0x80 + length.size());
            out += length + contents;
        } else if (std::isxdigit(static_cast<unsigned char>(c))) {
            out += static_cast<char>(std::stoi(notation.substr(at - 1, 2), nullptr, 16));
            ++at;
        } else {
            EXPECT_TRUE(std::isspace(static_cast<unsigned char>(c))) << notation;
        }
    }
    return out;
}

std::string der(const std::string& notation)
{
    std::size_t at = 0;
    std::string out = derBlock(notation, at);
    EXPECT_EQ(at, notation.size()) << notation;
    return out;
}

std::string hex(const std::string& bytes)
{
    std::string out;
    for (const char octet : bytes) {
        out += "0123456789abcdef"[octet >> 4 & 15];
        out += "0123456789abcdef"[octet & 15];
    }
    return out;
}

std::string fromKsc(const std::string& cp949) { return vrno::toUtf8(cp949); }

std::string readFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file) << path;
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

} // namespace test
