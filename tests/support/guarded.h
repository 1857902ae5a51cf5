// Octets that end where a page without access begins: a read behind them ends the process in every build.
#pragma once

#include "support/pages.h"

#include <cstring>
#include <span>
#include <string>

namespace test {

class Guarded {
public:
    explicit Guarded(const std::string& octets) : m_size(octets.size())
    {
        const std::size_t page = pageSize();
        m_room = (m_size + page - 1) / page * page;
        m_mapped = m_room + page;
        m_area = mapPages(m_mapped);
        protectPages(m_area + m_room, page, false);
        std::memcpy(m_area + m_room - m_size, octets.data(), m_size);
    }
    ~Guarded() { unmapPages(m_area, m_mapped); }
    Guarded(const Guarded&) = delete;
    Guarded& operator=(const Guarded&) = delete;
    operator std::span<const unsigned char>() const { return {data(), m_size}; }
    const unsigned char* data() const { return m_area + m_room - m_size; }
    void makeReadOnly() const { protectPages(m_area, m_room, true); }
    int size() const { return static_cast<int>(m_size); }

private:
    std::size_t m_size, m_room = 0, m_mapped = 0;
    unsigned char* m_area = nullptr;
};

} // namespace test
