// A growing work buffer for results whose size is known only at their end.
#pragma once

#include "base/Octets.h"

namespace vrno {

class ByteString;

// Grows by half, so that any number of additions costs linear time. An addition for which there is no memory makes the
// builder fail: it stays so, and further additions do nothing.
class ByteBuilder {
public:
    ByteBuilder() = default;
    ByteBuilder(const ByteBuilder&) = delete;
    ByteBuilder& operator=(const ByteBuilder&) = delete;
    ~ByteBuilder() { delete[] m_block; }

    void add(unsigned char octet);
    void append(const void* data, std::size_t length);
    void append(Octets data) { append(data.data(), data.size()); }

    bool failed() const { return m_failed; }
    bool empty() const { return m_size == 0; }
    Octets octets() const { return {m_block, m_size}; }

    // Takes the last octet off; there must be one.
    void drop() { --m_size; }

    // Copies what was built into `out`: 0, or 2 with `out` empty when memory ran out here or before.
    int into(ByteString& out) const;

private:
    bool room(std::size_t more);

    unsigned char* m_block = nullptr;
    std::size_t m_size = 0;
    std::size_t m_capacity = 0;
    bool m_failed = false;
};

} // namespace vrno
