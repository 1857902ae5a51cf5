// The byte buffer of the library, which owns its bytes: encodings, keys, texts in code page 949.
#pragma once

#include "base/Octets.h"

#include <cstdarg>

namespace vrno {

// Holds any bytes. A zero byte follows the data and is not counted, so that the content can be read as a text. A block belongs to
// one object; a copy has its own. A short one lies in the object, a longer one comes from malloc. A block is overwritten with zeros
// before it is released, because it may hold a key; only the growth of a large block by prepend() cannot do that.
//
// Nothing throws. On allocation failure the status is 2, and the content is empty or, where a comment says so, unchanged. A copy
// of an object with that status has it too, so the failure is not taken for empty data later.
//
// An object is empty in two ways, which isNull() tells apart: without a block, or with a block that has only the zero byte.
// setData() makes the second one from a pointer and the length 0.
class ByteString {
public:
    enum Result : int { good = 0, outOfRange = 1, outOfMemory = 2, formatFailed = 4 };

    ByteString() = default;
    ByteString(const void* data, int length);
    ByteString(const ByteString& other);
    virtual ~ByteString();

    // Copies `length` bytes and returns 0, or 2 with the object empty; the status is the same. A null pointer or a negative length
    // empties the object. `data` may lie in its own block.
    int setData(const void* data, int length);
    // The same with two values, one after the other. Neither may lie in its own block.
    int join(Octets first, Octets second);

    // Copy, with the result in the status. A null or empty text and an empty other leave no block.
    ByteString& operator=(const char* text);
    ByteString& operator=(const ByteString& other);

    // Append, with the result in the status. With 2 the content is unchanged. The other may be the object itself.
    ByteString& operator+=(const char* text);
    ByteString& operator+=(const ByteString& other);

    // Puts bytes of another object in front: 0, or 2 with content and status unchanged. A block above maxCopiedBlock bytes grows
    // in place if the heap can do so.
    int prepend(Octets front);
    // Removes `count` bytes from the front, or all if there are fewer. The block stays.
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

    // One byte by its index; 1 for an index out of range, with nothing read or written.
    int getAt(int index, unsigned char* out) const;
    int setAt(int index, unsigned char value);

    // A null text equals only an object without a block.
    bool operator==(const char* text) const;
    bool operator!=(const char* text) const { return !(*this == text); }

    void clear();
    // Empties the object and sets the status 2: its content could not be allocated.
    void setOutOfMemory();
    bool isOutOfMemory() const { return m_nError == outOfMemory; }
    // Replaces the content by a block of `length` bytes that the caller fills. On allocation failure it returns null, and the
    // object is empty with the status 2. shorten() then reduces the length to what was filled.
    unsigned char* makeRoom(int length);
    void shorten(int length);
    // Returns the block, which the caller must free(), and leaves the object empty; null if there is none. A short block is copied:
    // null, with the object empty and the status 2, on allocation failure.
    unsigned char* release();
    void swap(ByteString& other);
    // Overwrites the data with zeros; the length stays.
    void wipe();

    // Lower-case hexadecimal, two digits for each byte. On allocation failure the result is empty and both have status 2.
    ByteString toHex();
    // Upper-case hexadecimal, with a blank after each `group` digits and CR LF after each `line` digits, the blank first, but not
    // at the end. A value below 1 means none.
    ByteString toHexGrouped(int group, int line);

    // Replaces the content by a formatted text; the arguments may point into it. 4, with content and status unchanged: the text
    // has 2048 bytes or more, or cannot be formatted. 2, with the object empty: allocation failure.
    int format(const char* fmt, ...);
    int formatList(const char* fmt, std::va_list arguments);

private:
    // Blocks up to this size are copied when they grow, because realloc may release the old one without overwriting it. Larger
    // ones hold messages, which are not secret and too large to be held twice.
    static constexpr std::size_t maxCopiedBlock = std::size_t{1} << 20;

    // Up to this length the block lies in the object. It holds most tags, numbers, identifiers and dates.
    static constexpr int maxShort = 23;

    int append(const void* data, int length);
    unsigned char* newBlock(int length);
    void replaceBlock(unsigned char* block, int length);
    bool isShort() const { return m_pData == m_short; }
    unsigned char* grownBlock(int length);
    void releaseBlock();
    void copyStatus(const ByteString& other);

    int m_nLength = 0;
    int m_nError = good;
    unsigned char* m_pData = nullptr;
    unsigned char m_short[maxShort + 1] = {};
};

// A text made as by ByteString::format. It is empty on failure, and has status 2 if an allocation failed.
ByteString formatted(const char* fmt, ...);

} // namespace vrno
