// Korean literals: UTF-8 in the source, code page 949 in the program.
#pragma once

#include "text/KscTable.h"

#include <cstddef>

namespace vrno {

// The bytes of a UTF-8 literal of ASCII and Hangul syllables in code page 949. Any other character is a compile error.
template <std::size_t N> struct KscText {
    char bytes[N]{};

    consteval KscText(const char8_t (&utf8)[N])
    {
        std::size_t to = 0;
        for (std::size_t at = 0; at + 1 < N;) {
            if (utf8[at] < 0x80) {
                bytes[to++] = static_cast<char>(utf8[at++]);
            } else {
                const int syllable = (utf8[at] & 0xF0) == 0xE0 ? ksc::codePoint(utf8 + at) : 0;
                const int code = ksc::codes.at(static_cast<std::size_t>(syllable - ksc::firstSyllable));
                bytes[to++] = static_cast<char>(code >> 8);
                bytes[to++] = static_cast<char>(code & 0xFF);
                at += 3;
            }
        }
    }
};

template <KscText Text> consteval const char* operator""_ksc() { return Text.bytes; }

} // namespace vrno
