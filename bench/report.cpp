// How figures are written: on the terminal, in the CSV file and in the page.
#include "bench.h"

#include <fstream>
#include <sstream>

namespace bench {

std::string number(double value)
{
    char text[32];
    std::snprintf(text, sizeof text, value < 0.0995 ? "%.3f" : value < 9.995 ? "%.2f" : value < 99.95 ? "%.1f" : "%.0f", value);
    return text;
}

std::string duration(double seconds)
{
    for (const auto& [unit, name] : {std::pair{1e-9, " ns"}, {1e-6, " us"}, {1e-3, " ms"}}) {
        if (seconds < 999.5 * unit) return number(seconds / unit) + name;
    }
    return number(seconds) + " s";
}

void Figures::add(const std::string& table, int row, const std::string& name, const std::string& side, double value,
                  const std::string& unit, double relative)
{
    std::ostringstream line;
    line << table << ',' << row << ",\"" << name << "\"," << side << ',' << value << ',' << unit << ',';
    if (relative > 0) line << relative;
    csv += line.str() + "\n";
}

void print(const Table& table)
{
    std::vector<std::size_t> widths(table.front().size());
    for (const auto& row : table) {
        for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].size());
    }
    for (const auto& row : table) {
        for (std::size_t i = 0; i < row.size(); ++i) std::printf("%-*s  ", static_cast<int>(widths[i]), row[i].c_str());
        std::printf("\n");
    }
    std::printf("\n");
    std::fflush(stdout);
}

static std::string markdown(const Table& table)
{
    std::string text;
    for (std::size_t i = 0; i < table.size(); ++i) {
        for (const std::string& cell : table[i]) text += "| " + cell + " ";
        text += "|\n";
        if (i > 0) continue;
        for (std::size_t column = 0; column < table[i].size(); ++column) text += "|---";
        text += "|\n";
    }
    return text;
}

void replaceTable(const std::string& page, const std::string& name, const Table& table)
{
    std::stringstream old;
    old << std::ifstream(page).rdbuf();
    std::string text = old.str();
    const std::string marker = "<!-- " + name + " -->\n";
    const std::size_t begin = text.find(marker), end = text.find("<!-- end -->", begin);
    require(begin != std::string::npos && end != std::string::npos, ("finding the table " + name + " of the page").c_str());
    text.replace(begin + marker.size(), end - begin - marker.size(), markdown(table));
    require(static_cast<bool>(std::ofstream(page) << text), "writing the page");
}

} // namespace bench
