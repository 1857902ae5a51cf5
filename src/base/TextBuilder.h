// Builds a text from pieces.
#pragma once

#include "base/ByteBuilder.h"
#include "base/ByteString.h"

namespace vrno {

// Octets to add in hexadecimal: as by ByteString::toHex, or by toHexGrouped if `group` is not 0.
struct Hex {
    ByteString& octets;
    int group = 0;
    int line = 0;
};

// Takes linear time and does not have the size limit of ByteString::format. After an allocation failure, of a piece or of the
// builder, into() fails.
class TextBuilder {
public:
    TextBuilder& operator<<(const char* text);
    TextBuilder& operator<<(const ByteString& text); // all of it, zero octets too
    TextBuilder& operator<<(int number);
    TextBuilder& operator<<(const Hex& hex);
    // Overwrites the last character. There must be one.
    void replaceLast(char with);

    bool empty() const { return m_bytes.empty(); }
    // Copies the text: 0, or 2 with `text` empty and its status 2 if this or an earlier allocation failed.
    int into(ByteString& text) const;

private:
    ByteBuilder m_bytes;
    bool m_failed = false;
};

} // namespace vrno
