// Octets that end where a page without access begins: a read behind them ends the process in every build.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <span>
#include <string>

namespace test {

class Guarded {
public:
    explicit Guarded(const std::string& octets) : m_size(octets.size())
    {
        const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
        m_room = (m_size + page - 1) / page * page;
        void* const area = mmap(nullptr, m_room + page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        m_area = static_cast<unsigned char*>(area);
        m_mapped = m_room + page;
        mprotect(m_area + m_room, page, PROT_NONE);
        std::memcpy(m_area + m_room - m_size, octets.data(), m_size);
    }
    ~Guarded() { munmap(m_area, m_mapped); }
    Guarded(const Guarded&) = delete;
    Guarded& operator=(const Guarded&) = delete;
    operator std::span<const unsigned char>() const { return {data(), m_size}; }
    const unsigned char* data() const { return m_area + m_room - m_size; }
    void makeReadOnly() const { mprotect(m_area, m_room, PROT_READ); }
    int size() const { return static_cast<int>(m_size); }

private:
    std::size_t m_size, m_room = 0, m_mapped = 0;
    unsigned char* m_area = nullptr;
};

} // namespace test
