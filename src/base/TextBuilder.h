// A text put together from pieces.
#pragma once

#include "base/ByteBuilder.h"
#include "base/ByteString.h"

namespace vrno {

// Octets to be added in hexadecimal: as ByteString::toHex, or with a group as toHexGrouped.
struct Hex {
    ByteString& octets;
    int group = 0;
    int line = 0;
};

// Linear in what is added, and without the limit of ByteString::format. After an allocation failure, of a piece or of the
// builder's own, it has failed for good.
class TextBuilder {
public:
    TextBuilder& operator<<(const char* text);
    TextBuilder& operator<<(const ByteString& text); // all of it, zero octets too
    TextBuilder& operator<<(int number);
    TextBuilder& operator<<(const Hex& hex);
    // Overwrites the last character; there must be one.
    void replaceLast(char with);

    bool empty() const { return m_bytes.empty(); }
    // Copies the text: 0, or 2 with `text` empty and its status 2 when an allocation failed here or before.
    int into(ByteString& text) const;

private:
    ByteBuilder m_bytes;
    bool m_failed = false;
};

} // namespace vrno
