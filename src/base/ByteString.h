// The one owned byte buffer of the library: encodings, keys, texts in code page 949.
#pragma once

#include "base/Octets.h"

#include <cstdarg>

namespace vrno {

// Binary safe. Behind the data there is a zero byte that the length does not count, so that the content can be read as a
// text. Every block comes from the plain heap and belongs to one object; a copy has a block of its own. A block is
// overwritten with zeros before it is released, whatever operation releases it: any of them may hold a key.
//
// Nothing throws. On allocation failure the status is 2 and the content is empty or, where it says so, unchanged. A copy of
// an object with that status has it too, so the failure is not mistaken for empty data further on.
//
// Empty comes in two forms, which isNull() tells apart: no block at all, and a block of only the zero byte, which
// setData() with a pointer and the length 0 gives.
class ByteString {
public:
    enum Result : int { good = 0, outOfRange = 1, outOfMemory = 2, formatFailed = 4 };

    ByteString() = default;
    ByteString(const void* data, int length);
    ByteString(const ByteString& other);
    virtual ~ByteString();

    // Copies `length` bytes and returns 0, or 2 with the object empty; the status is the same. A null pointer or a negative
    // length empties the object. `data` may lie in its own block.
    int setData(const void* data, int length);
    // The same with two values behind each other.
    int join(Octets first, Octets second);

    // Copies, with the result in the status. A null text and an empty other both give the form without a block.
    ByteString& operator=(const char* text);
    ByteString& operator=(const ByteString& other);

    // Appends, with the result in the status: 2 leaves the content as it was. The other may be the object itself.
    ByteString& operator+=(const char* text);
    ByteString& operator+=(const ByteString& other);

    // Puts bytes of another object in front: 0, or 2 with the content as it was. A block above maxCopiedBlock bytes grows in
    // place where the heap can do so.
    int prepend(Octets front);
    // Removes that many bytes from the front, at most all, in the same block.
    void dropFront(int count);

    int getLength() const { return m_nLength; }
    bool isNull() const { return m_pData == nullptr; }
    int getError() const { return m_nError; }

    // Never null; an object without a block gives a constant empty text.
    const unsigned char* getBytes() const;
    const char* getText() const;
    const char* getTextOrEmpty() const;
    unsigned char* mutableBytes() { return m_pData; } // null when there is no block
    Octets octets() const { return {getBytes(), static_cast<std::size_t>(m_nLength)}; }

    // One byte by its index; 1 when there is none, with nothing read or written.
    int getAt(int index, unsigned char* out) const;
    int setAt(int index, unsigned char value);

    // A null text equals only an object without a block.
    bool operator==(const char* text) const;
    bool operator!=(const char* text) const { return !(*this == text); }

    void clear();
    // Empties the object and sets the status 2: what it should hold could not be allocated.
    void setOutOfMemory();
    bool isOutOfMemory() const { return m_nError == outOfMemory; }
    // Replaces the content by a block of `length` bytes for the caller to fill; null, with the object empty and the status
    // 2, on allocation failure. shorten() then cuts it to what was filled.
    unsigned char* makeRoom(int length);
    void shorten(int length);
    // Gives the block away, which is the caller's to free() from then on, and leaves the object empty; null without one.
    unsigned char* release();
    void swap(ByteString& other);
    // Overwrites the data with zeros; the length stays.
    void wipe();

    // Lower-case hexadecimal, two digits a byte. Out of memory is status 2 here and an empty result.
    ByteString toHex();
    // Upper-case hexadecimal with a blank before each multiple of `group` digits and CR LF before each multiple of
    // `line` digits, the blank first; a value below 1 means none.
    ByteString toHexGrouped(int group, int line);

    // Replaces the content by a formatted text, whose arguments may point into it. 4: the text has 2048 bytes or more,
    // or cannot be formatted; 2: no memory. A failure leaves content and status as they were, but for 2 of the copy.
    int format(const char* fmt, ...);
    int formatList(const char* fmt, std::va_list arguments);

private:
    // Blocks up to this size are copied when they grow, since realloc may release the old one with its content. Larger ones
    // hold messages, which are no secrets and too large to be held twice.
    static constexpr std::size_t maxCopiedBlock = std::size_t{1} << 20;

    int append(const void* data, int length);
    unsigned char* grownBlock(std::size_t size);
    void releaseBlock();
    void copyStatus(const ByteString& other);

    int m_nLength = 0;
    unsigned char* m_pData = nullptr;
    int m_nError = good;
};

// A text made as by ByteString::format, with the status of that; empty when it fails.
ByteString formatted(const char* fmt, ...);

} // namespace vrno
