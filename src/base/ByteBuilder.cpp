#include "base/ByteBuilder.h"

#include "base/ByteString.h"
#include "base/wipe.h"

#include <climits>
#include <cstring>
#include <new>

namespace vrno {

bool ByteBuilder::room(std::size_t more)
{
    if (m_failed) return false;
    if (more <= m_capacity - m_size) return true;
    constexpr std::size_t limit = INT_MAX - 1; // what a ByteString can hold
    if (more > limit - m_size) {
        m_failed = true;
        return false;
    }
    std::size_t capacity = m_capacity + m_capacity / 2;
    if (capacity < m_size + more) capacity = m_size + more;
    if (capacity < 64) capacity = 64;
    auto* const block = new (std::nothrow) unsigned char[capacity];
    if (!block) {
        m_failed = true;
        return false;
    }
    if (m_size > 0) std::memcpy(block, m_block, m_size);
    releaseBlock();
    m_block = block;
    m_capacity = capacity;
    return true;
}

void ByteBuilder::releaseBlock()
{
    wipe(m_block, m_size);
    delete[] m_block;
}

void ByteBuilder::add(unsigned char octet)
{
    if (room(1)) m_block[m_size++] = octet;
}

void ByteBuilder::append(const void* data, std::size_t length)
{
    if (length == 0 || !room(length)) return;
    std::memcpy(m_block + m_size, data, length);
    m_size += length;
}

int ByteBuilder::into(ByteString& out) const
{
    if (m_failed) {
        out.setOutOfMemory();
        return ByteString::outOfMemory;
    }
    return out.setData(m_block, static_cast<int>(m_size));
}

} // namespace vrno
