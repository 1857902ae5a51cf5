// Cases from tests/data, and what a trail says.
#pragma once

#include <initializer_list>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace test {

// One line a case, its fields between bars, "#" for a remark. "name := text" defines $name for the lines behind it.
struct Case {
    std::string where; // file and line
    std::vector<std::string> fields;
    const std::string& operator[](std::size_t i) const { return fields.at(i); }
};
std::vector<Case> cases(const std::string& file, std::size_t fieldCount);

// Things by their names, which come as a macro's arguments do: "A, B, C".
template <class T> std::map<std::string, T> byName(const char* names, std::initializer_list<T> things)
{
    std::map<std::string, T> all;
    std::istringstream words(names);
    for (const T& thing : things) {
        std::string name;
        words >> name;
        all[name.substr(0, name.find(','))] = thing;
    }
    return all;
}

// What an object tells of its last failure.
template <class Object> std::string trail(const Object& object) { return object.getErrorTrail().getText(); }
// All frames of a trail and the text behind them, without their places: "A::f-x(1),B::g-y(2),text".
std::string placeless(const std::string& trail);
// The outermost frame without its place, as in "RValidity::fromASN1Object-asnSeq(2)".
std::string outermost(const std::string& trail);
// What stands behind the innermost frame.
std::string innermost(const std::string& trail);

} // namespace test
