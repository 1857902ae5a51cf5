#include "base/TextBuilder.h"

#include <charconv>
#include <cstring>

namespace vrno {

TextBuilder& TextBuilder::operator<<(const char* text)
{
    m_bytes.append(text, std::strlen(text));
    return *this;
}

TextBuilder& TextBuilder::operator<<(const ByteString& text)
{
    m_failed |= text.getError() > 0;
    m_bytes.append(text.octets());
    return *this;
}

TextBuilder& TextBuilder::operator<<(int number)
{
    char digits[12];
    m_bytes.append(digits, static_cast<std::size_t>(std::to_chars(digits, digits + sizeof digits, number).ptr - digits));
    return *this;
}

TextBuilder& TextBuilder::operator<<(const Hex& hex)
{
    return *this << (hex.group == 0 ? hex.octets.toHex() : hex.octets.toHexGrouped(hex.group, hex.line));
}

int TextBuilder::into(ByteString& text) const
{
    if (!m_failed) return m_bytes.into(text);
    text.setOutOfMemory();
    return ByteString::outOfMemory;
}

void TextBuilder::replaceLast(char with)
{
    if (m_bytes.failed()) return;
    m_bytes.drop();
    m_bytes.add(static_cast<unsigned char>(with));
}

} // namespace vrno
