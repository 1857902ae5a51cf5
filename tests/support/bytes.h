// Octets and texts: a readable notation for encodings, hexadecimal, what stands in a file.
#pragma once

#include "base/Trail.h"

#include <string>

namespace test {

// Octets in hexadecimal, "texts", and {contents} with their definite length in front: 30{ 02{05} 0C{"text"} }
std::string der(const std::string& notation);
std::string hex(const std::string& bytes);
std::string fromKsc(const std::string& cp949); // to UTF-8, by the C library
std::string readFile(const std::string& path);

inline const unsigned char* at(const std::string& bytes) { return reinterpret_cast<const unsigned char*>(bytes.data()); }
inline std::string text(const unsigned char* from, std::size_t length) { return {reinterpret_cast<const char*>(from), length}; }
inline std::string bytes(const vrno::ByteString& from) { return {from.getText(), static_cast<std::size_t>(from.getLength())}; }
inline std::string bytes(const vrno::Trail& from) { return bytes(from.text()); }
inline vrno::ByteString byteString(const std::string& from) { return {from.data(), static_cast<int>(from.size())}; }

} // namespace test
