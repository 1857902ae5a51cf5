// The one owned byte buffer of the library: encodings, keys, texts in code page 949.
#pragma once

#include "base/Octets.h"

#include <cstdarg>

namespace vrno {

// Binary safe. Behind the data stands a zero byte that the length does not count, so that the content can be read as a
// text. Every block is of exactly the size it needs, comes from the plain heap and belongs to one object; copies duplicate
// it. Nothing throws: a failed allocation is the status 2, with the content empty or, where told, unchanged.
//
// Empty comes in two forms, told apart by isNull(): no block at all, and a block of only the zero byte, which
// setData() with a pointer and the length 0 gives.
class ByteString {
public:
    enum Result : int { good = 0, outOfRange = 1, outOfMemory = 2, formatFailed = 4 };

    ByteString() = default;
    ByteString(const void* data, int length);
    ByteString(const ByteString& other);
    virtual ~ByteString();

    // Copies `length` bytes and returns 0, or 2 with the object empty. A null pointer or a negative length empties it.
    int setData(const void* data, int length);

    // Copies, with the result in the status. A null text and an empty other both give the form without a block.
    ByteString& operator=(const char* text);
    ByteString& operator=(const ByteString& other);

    // Appends, with the result in the status: 2 leaves the content as it was. The other may be the object itself.
    ByteString& operator+=(const char* text);
    ByteString& operator+=(const ByteString& other);

    // Puts bytes of another object in front, in the same block where the heap can make it larger: 0, or 2 with the content
    // as it was.
    int prepend(Octets front);
    // Takes that many bytes off the front, at most all, in the same block.
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
    // Replaces the content by a block of `length` bytes for the caller to fill; null, with the object empty, when there
    // is no memory. shorten() then cuts it to what was filled.
    unsigned char* makeRoom(int length);
    void shorten(int length);
    // Gives the block away, which is the caller's to free() from then on, and leaves the object empty; null without one.
    unsigned char* release();
    void swap(ByteString& other);
    // Overwrites the data with zeros, which no compiler drops; the length stays.
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
    int append(const void* data, int length);

    int m_nLength = 0;
    unsigned char* m_pData = nullptr;
    int m_nError = good;
};

// One that holds a secret, and overwrites it when it goes and where setData or join replace it. Growing it, or filling it
// anew as a ByteString, leaves a copy behind.
class SecretString : public ByteString {
public:
    SecretString() = default;
    SecretString(const void* data, int length) : ByteString(data, length) {}
    SecretString(const SecretString&) = delete;
    SecretString& operator=(const SecretString&) = delete;
    ~SecretString() override { wipe(); }

    int setData(const void* data, int length)
    {
        wipe();
        return ByteString::setData(data, length);
    }
    // Two values behind each other: 0, or 2 with the object empty.
    int join(const ByteString& first, const ByteString& second);
};

// A text made as by ByteString::format; empty when that fails.
ByteString formatted(const char* fmt, ...);

} // namespace vrno
