#include "support/cases.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <fstream>
#include <map>
#include <sstream>

namespace test {

static std::string trimmed(const std::string& text)
{
    const auto first = text.find_first_not_of(" \t");
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

static std::string substituted(std::string text, const std::map<std::string, std::string>& definitions)
{
    for (std::size_t at; (at = text.find('$')) != std::string::npos;) {
        std::size_t end = at + 1;
        while (end < text.size() && std::isalnum(static_cast<unsigned char>(text[end]))) ++end;
        text.replace(at, end - at, definitions.at(text.substr(at + 1, end - at - 1)));
    }
    return text;
}

std::vector<Case> cases(const std::string& file, std::size_t fieldCount)
{
    std::ifstream in(TEST_DATA "/" + file);
    EXPECT_TRUE(in) << file;
    std::vector<Case> found;
    std::map<std::string, std::string> definitions;
    int number = 0;
    for (std::string line; std::getline(in, line);) {
        ++number;
        if (trimmed(line).empty() || line[0] == '#') continue;
        line = substituted(line, definitions);
        if (const auto sign = line.find(":="); sign != std::string::npos) {
            definitions[trimmed(line.substr(0, sign))] = trimmed(line.substr(sign + 2));
            continue;
        }
        Case next{file + ":" + std::to_string(number), {}};
        std::istringstream fields(line);
        for (std::string field; std::getline(fields, field, '|');) next.fields.push_back(trimmed(field));
        next.fields.resize(std::max(fieldCount, next.fields.size()));
        EXPECT_EQ(next.fields.size(), fieldCount) << next.where;
        found.push_back(next);
    }
    EXPECT_FALSE(found.empty()) << file;
    return found;
}

std::string outermost(const std::string& trail)
{
    const auto from = trail.find(']') + 1;
    return trail.substr(from, std::min(trail.find("),", from), trail.size() - 1) - from + 1);
}

std::string placeless(const std::string& trail)
{
    std::string out;
    for (std::size_t at = 0; at < trail.size(); ++at) {
        const std::size_t end = trail[at] == '[' ? trail.find(']', at) : std::string::npos;
        const std::string place = end == std::string::npos ? "" : trail.substr(at, end - at);
        if (place.find(".cpp:") != std::string::npos || place.find(".h:") != std::string::npos) {
            at = end;
        } else {
            out += trail[at];
        }
    }
    return out;
}

std::string innermost(const std::string& trail)
{
    const auto frame = trail.rfind("),");
    return frame == std::string::npos ? "" : trail.substr(frame + 2);
}

} // namespace test
