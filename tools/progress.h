// A bar on standard error for long reading and writing.
#pragma once

#include <cstddef>
#include <string>

namespace tool {

// Shows nothing for less than some MiB, nor where standard error is no terminal.
class Progress {
public:
    Progress(const std::string& what, std::size_t total);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress();

    void advanceTo(std::size_t done);

private:
    std::string m_what;
    std::size_t m_total; // 0 shows nothing
    int m_percent = -1;
};

} // namespace tool
