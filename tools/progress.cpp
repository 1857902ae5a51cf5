#include "progress.h"

#include "terminal.h"

namespace tool {

constexpr std::size_t smallestTotal = 8 << 20;
constexpr int barLength = 40;

Progress::Progress(const std::string& what, std::size_t total)
    : m_what(what), m_total(total >= smallestTotal && isTerminal(2) ? total : 0)
{
}

Progress::~Progress()
{
    if (m_total) printError("\r\033[K");
}

void Progress::advanceTo(std::size_t done)
{
    const int percent = m_total ? static_cast<int>(100.0 * static_cast<double>(done) / static_cast<double>(m_total)) : m_percent;
    if (percent == m_percent) return;
    m_percent = percent;
    const auto full = static_cast<std::size_t>(percent * barLength / 100);
    printError("\r[" + std::string(full, '#') + std::string(barLength - full, '.') + "] " + std::to_string(percent) + " % " + m_what);
}

} // namespace tool
