// A text put together from pieces.
#pragma once

#include "base/ByteBuilder.h"
#include "base/ByteString.h"

namespace vrno {

// Linear in what is added, and without a text's usual limit of length. A piece that could not be had for want of memory
// makes the builder fail, as one that cannot be added does: it stays so, and into() tells.
class TextBuilder {
public:
    TextBuilder& operator<<(const char* text);
    TextBuilder& operator<<(const ByteString& text); // all of it, zero octets too
    TextBuilder& operator<<(int number);
    // As ByteString::toHex, or with a group as toHexGrouped.
    TextBuilder& hex(ByteString& octets, int group = 0, int line = 0);
    // Overwrites the last character; there must be one.
    void replaceLast(char with);

    bool empty() const { return m_bytes.empty(); }
    // Copies the text: 0, or 2 with `text` empty when memory ran out here or before.
    int into(ByteString& text) const { return m_failed ? (text.clear(), ByteString::outOfMemory) : m_bytes.into(text); }

private:
    ByteBuilder m_bytes;
    bool m_failed = false;
};

} // namespace vrno
