// What a call leaves behind of its secrets, in blocks that it has freed and on its stack.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace test {

// Secrets by name, each in the orders in which numbers and digests stand in memory: as it is, from its end, with each word of 32
// bits turned, and in limbs of 52 bits.
class Secrets {
public:
    void add(const std::string& name, const std::string& octets);
    // Which of them have eight octets in a row in the areas, and in how many, as "d in 3 areas ". Rows of zeros do not count.
    std::string in(const std::vector<std::string>& areas) const;

private:
    std::map<std::string, std::string> m_windows; // of eight octets, with their names
};

// The stack of a thread that runs the step and ends. Empty in a build with sanitizers or without optimisation: its code copies
// registers to the stack wherever it likes.
std::string stackAfter(std::function<void()> step);
// The octets of it that were written.
std::size_t stackUse(const std::function<void()>& step);

} // namespace test
