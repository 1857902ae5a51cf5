// Files, standard input and standard output, as all commands treat them.
#pragma once

#include <span>
#include <string>
#include <vector>

namespace tool {

// Memory that is overwritten before it is released, as for keys and passwords.
template <typename T> struct WipingAllocator {
    using value_type = T;
    WipingAllocator() = default;
    template <typename U> explicit WipingAllocator(const WipingAllocator<U>&) {}
    T* allocate(std::size_t count) { return std::allocator<T>().allocate(count); }
    void deallocate(T* block, std::size_t count)
    {
        volatile auto* const octets = reinterpret_cast<volatile unsigned char*>(block);
        for (std::size_t i = 0; i < count * sizeof(T); ++i) octets[i] = 0;
        std::allocator<T>().deallocate(block, count);
    }
    bool operator==(const WipingAllocator&) const = default;
};
using Octets = std::vector<unsigned char, WipingAllocator<unsigned char>>;

// What a file holds; `-` is standard input. Throws Problem.
Octets readFile(const std::string& name);

struct Output {
    std::string name;      // empty or `-`: standard output
    bool replaces = false; // a target that exists is replaced
    bool isSecret = false; // made with mode 0600
    bool isText = false;   // may go to a terminal
};

// Writes all or nothing: under a temporary name beside the target, which it replaces at the end. Throws Problem, before the work
// whose result would be lost if it is asked by `checkOutput`.
void checkOutput(const Output& output);
void writeOutput(const Output& output, std::span<const unsigned char> octets);

} // namespace tool
