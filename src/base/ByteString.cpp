#include "base/ByteString.h"

#include "base/ByteBuilder.h"
#include "base/wipe.h"

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace vrno {

static void copyBytes(unsigned char* to, const void* from, int length)
{
    if (length > 0) std::memcpy(to, from, static_cast<std::size_t>(length));
}

// The length of a text; INT_MAX, which no ByteString can hold, for any longer one.
static int textLength(const char* text)
{
    const std::size_t length = std::strlen(text);
    return length < INT_MAX ? static_cast<int>(length) : INT_MAX;
}

ByteString::ByteString(const void* data, int length) { setData(data, length); }

ByteString::ByteString(const ByteString& other)
{
    setData(other.m_pData, other.m_nLength);
    copyStatus(other);
}

ByteString::~ByteString() { releaseBlock(); }

// A block for `length` bytes and the zero; null on allocation failure. It may be the one in use, with the content.
unsigned char* ByteString::newBlock(int length)
{
    return length <= maxShort ? m_short : static_cast<unsigned char*>(std::malloc(static_cast<std::size_t>(length) + 1));
}

// Takes a block of newBlock() that the caller has filled, and releases the old one if it is another.
void ByteString::replaceBlock(unsigned char* block, int length)
{
    if (block != m_pData) {
        releaseBlock();
    } else if (length < m_nLength) {
        shorten(length);
    }
    block[length] = 0;
    m_pData = block;
    m_nLength = length;
}

void ByteString::releaseBlock()
{
    if (isShort()) {
        vrno::wipe(m_short, sizeof m_short);
    } else {
        wipe();
        std::free(m_pData);
    }
}

void ByteString::copyStatus(const ByteString& other)
{
    if (other.isOutOfMemory()) m_nError = outOfMemory;
}

int ByteString::setData(const void* data, int length)
{
    const bool wanted = data != nullptr && length >= 0 && length < INT_MAX;
    unsigned char* const block = wanted ? newBlock(length) : nullptr;
    if (!block) {
        clear();
        return m_nError = wanted || (data != nullptr && length == INT_MAX) ? outOfMemory : good;
    }
    // The old block is released after the copy, since `data` may lie in it.
    if (length > 0) std::memmove(block, data, static_cast<std::size_t>(length));
    replaceBlock(block, length);
    return m_nError = good;
}

int ByteString::join(Octets first, Octets second)
{
    clear();
    unsigned char* const block =
        second.size() < INT_MAX - first.size() ? makeRoom(static_cast<int>(first.size() + second.size())) : nullptr;
    if (!block) return m_nError = outOfMemory;
    std::copy(second.begin(), second.end(), std::copy(first.begin(), first.end(), block));
    return good;
}

ByteString& ByteString::operator=(const char* text)
{
    if (!text || *text == '\0') {
        clear();
    } else {
        setData(text, textLength(text));
    }
    return *this;
}

ByteString& ByteString::operator=(const ByteString& other)
{
    m_nError = good;
    if (this == &other) return *this;
    clear();
    if (other.m_nLength > 0) setData(other.m_pData, other.m_nLength);
    copyStatus(other);
    return *this;
}

ByteString& ByteString::operator+=(const char* text)
{
    if (text) m_nError = append(text, textLength(text));
    return *this;
}

ByteString& ByteString::operator+=(const ByteString& other)
{
    m_nError = append(other.m_pData, other.m_nLength);
    copyStatus(other);
    return *this;
}

int ByteString::append(const void* data, int length)
{
    if (data == nullptr || length < 1) return good;
    if (length >= INT_MAX - m_nLength) return outOfMemory;
    unsigned char* const block = newBlock(m_nLength + length);
    if (!block) return outOfMemory;
    if (block != m_pData) copyBytes(block, m_pData, m_nLength);
    copyBytes(block + m_nLength, data, length);
    replaceBlock(block, m_nLength + length);
    return good;
}

// Returns a block for `length` bytes that starts with the content and replaces the old block. On allocation failure it returns null
// and keeps the old one.
unsigned char* ByteString::grownBlock(int length)
{
    const auto size = static_cast<std::size_t>(length) + 1;
    if (size > maxCopiedBlock && !isShort()) return static_cast<unsigned char*>(std::realloc(m_pData, size));
    unsigned char* const block = newBlock(length);
    if (!block || block == m_pData) return block;
    copyBytes(block, m_pData, m_nLength);
    releaseBlock();
    return block;
}

int ByteString::prepend(Octets front)
{
    if (front.empty()) return good;
    const auto length = static_cast<std::size_t>(m_nLength);
    if (front.size() >= INT_MAX - length) return outOfMemory;
    const int grown = m_nLength + static_cast<int>(front.size());
    unsigned char* const block = grownBlock(grown);
    if (!block) return outOfMemory;
    std::memmove(block + front.size(), block, length);
    std::memcpy(block, front.data(), front.size());
    block[grown] = 0;
    m_pData = block;
    m_nLength = grown;
    return good;
}

void ByteString::dropFront(int count)
{
    const int dropped = std::min(count, m_nLength);
    if (dropped <= 0) return;
    std::memmove(m_pData, m_pData + dropped, static_cast<std::size_t>(m_nLength - dropped));
    shorten(m_nLength - dropped);
}

const unsigned char* ByteString::getBytes() const
{
    static constexpr unsigned char empty = 0;
    return m_pData ? m_pData : &empty;
}

const char* ByteString::getText() const { return reinterpret_cast<const char*>(getBytes()); }

const char* ByteString::getTextOrEmpty() const { return m_nLength < 1 ? "" : getText(); }

int ByteString::getAt(int index, unsigned char* out) const
{
    if (index < 0 || index >= m_nLength) return outOfRange;
    *out = m_pData[index];
    return good;
}

int ByteString::setAt(int index, unsigned char value)
{
    if (index < 0 || index >= m_nLength) return outOfRange;
    m_pData[index] = value;
    return good;
}

bool ByteString::operator==(const char* text) const
{
    if (!text) return isNull();
    return textLength(text) == m_nLength && std::memcmp(getBytes(), text, static_cast<std::size_t>(m_nLength)) == 0;
}

void ByteString::clear()
{
    releaseBlock();
    m_pData = nullptr;
    m_nLength = 0;
    m_nError = good;
}

void ByteString::setOutOfMemory()
{
    clear();
    m_nError = outOfMemory;
}

unsigned char* ByteString::makeRoom(int length)
{
    clear();
    if (length >= 0 && length < INT_MAX) m_pData = newBlock(length);
    if (m_pData) {
        m_nLength = length;
        m_pData[length] = 0;
    } else {
        m_nError = outOfMemory;
    }
    return m_pData;
}

void ByteString::shorten(int length)
{
    if (length < 0 || length >= m_nLength) return;
    vrno::wipe(m_pData + length, static_cast<std::size_t>(m_nLength - length));
    m_nLength = length;
}

unsigned char* ByteString::release()
{
    const auto size = static_cast<std::size_t>(m_nLength) + 1;
    unsigned char* const block = isShort() ? static_cast<unsigned char*>(std::malloc(size)) : m_pData;
    if (!isShort()) {
        m_pData = nullptr;
        m_nLength = 0;
    } else if (block) {
        std::memcpy(block, m_short, size);
        clear();
    } else {
        setOutOfMemory();
    }
    return block;
}

void ByteString::swap(ByteString& other)
{
    const bool isOwn = isShort(), isItsOwn = other.isShort();
    std::swap(m_nLength, other.m_nLength);
    std::swap(m_nError, other.m_nError);
    std::swap(m_pData, other.m_pData);
    std::swap(m_short, other.m_short);
    if (isItsOwn) m_pData = m_short;
    if (isOwn) other.m_pData = other.m_short;
}

void ByteString::wipe()
{
    if (m_pData) vrno::wipe(m_pData, static_cast<std::size_t>(m_nLength));
}

ByteString ByteString::toHex()
{
    ByteString hex;
    if (m_nLength < 1) {
        hex.copyStatus(*this);
        return hex;
    }
    m_nError = good;
    unsigned char* at = m_nLength < INT_MAX / 2 ? hex.makeRoom(2 * m_nLength) : nullptr;
    if (!at) {
        m_nError = outOfMemory;
        hex.setOutOfMemory();
        return hex;
    }
    for (const unsigned char octet : octets()) {
        *at++ = static_cast<unsigned char>("0123456789abcdef"[octet >> 4]);
        *at++ = static_cast<unsigned char>("0123456789abcdef"[octet & 15]);
    }
    return hex;
}

ByteString ByteString::toHexGrouped(int group, int line)
{
    ByteBuilder out;
    int digits = 0;
    const auto startsNew = [&digits](int size) { return size > 0 && digits != 0 && digits % size == 0; };
    if (m_nLength > 0) m_nError = m_nLength < INT_MAX / 2 ? good : outOfMemory;
    for (const unsigned char octet : m_nError == good ? octets() : Octets{}) {
        for (const int digit : {octet >> 4, octet & 15}) {
            if (startsNew(group)) out.add(' ');
            if (startsNew(line)) out.append("\r\n", 2);
            out.add(static_cast<unsigned char>("0123456789ABCDEF"[digit]));
            ++digits;
        }
    }
    ByteString text;
    if (m_nError == good) m_nError = out.into(text);
    text.copyStatus(*this);
    return text;
}

int ByteString::format(const char* fmt, ...)
{
    std::va_list arguments;
    va_start(arguments, fmt);
    const int result = formatList(fmt, arguments);
    va_end(arguments);
    return result;
}

int ByteString::formatList(const char* fmt, std::va_list arguments)
{
    char work[2048];
    const int length = std::vsnprintf(work, sizeof work, fmt, arguments);
    if (length < 0 || length >= static_cast<int>(sizeof work)) return formatFailed;
    return setData(work, textLength(work));
}

ByteString formatted(const char* fmt, ...)
{
    ByteString text;
    std::va_list arguments;
    va_start(arguments, fmt);
    text.formatList(fmt, arguments);
    va_end(arguments);
    return text;
}

} // namespace vrno
