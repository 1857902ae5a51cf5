#pragma once

namespace storage {

inline int hexDigit(char c)
{
    if (c >= '0' && c <= '9') return c - '0';
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

// The octet that two hexadecimal digits stand for, -1 if they are none.
inline int hexOctet(char high, char low)
{
    return hexDigit(high) < 0 || hexDigit(low) < 0 ? -1 : hexDigit(high) * 16 + hexDigit(low);
}

} // namespace storage
