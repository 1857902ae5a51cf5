// A growing work buffer for a result whose size is not known before.
#pragma once

#include "base/Octets.h"

namespace vrno {

class ByteString;

// Grows by half, so that any number of additions takes linear time. After an allocation failure, or above the size of a
// ByteString, failed() is true and further additions do nothing. A block is overwritten before it is released.
class ByteBuilder {
public:
    ByteBuilder() = default;
    ByteBuilder(const ByteBuilder&) = delete;
    ByteBuilder& operator=(const ByteBuilder&) = delete;
    ~ByteBuilder() { releaseBlock(); }

    void add(unsigned char octet);
    void append(const void* data, std::size_t length);
    void append(Octets data) { append(data.data(), data.size()); }

    bool failed() const { return m_failed; }
    bool empty() const { return m_size == 0; }
    Octets octets() const { return {m_block, m_size}; }

    // Removes the last octet. There must be one.
    void drop() { --m_size; }

    // Copies the octets to `out`: 0, or 2 with `out` empty and its status 2 if this or an earlier allocation failed.
    int into(ByteString& out) const;

private:
    bool room(std::size_t more);
    void releaseBlock();

    unsigned char* m_block = nullptr;
    std::size_t m_size = 0;
    std::size_t m_capacity = 0;
    bool m_failed = false;
};

} // namespace vrno
