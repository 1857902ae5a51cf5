#include "support/secrets.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <algorithm>
#include <bitset>
#include <cstdint>
#include <set>

namespace test {

namespace {

constexpr std::size_t windowSize = 8;

#if defined(__has_feature)
#define SANITIZER(name) __has_feature(name##_sanitizer)
#else
#define SANITIZER(name) 0
#endif
#if !defined(__OPTIMIZE__) || defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || SANITIZER(address) ||               \
    SANITIZER(thread)
constexpr bool isPlainBuild = false;
#else
constexpr bool isPlainBuild = true;
#endif

std::string wordsTurned(std::string octets)
{
    for (std::size_t i = 0; i + 4 <= octets.size(); i += 4) std::reverse(octets.data() + i, octets.data() + i + 4);
    return octets;
}

// Of a number whose highest octet comes first, the lowest limb first, each in eight octets.
std::string limbs(const std::string& octets)
{
    constexpr std::size_t bits = 52;
    std::string out((octets.size() * 8 / bits + 1) * windowSize, '\0');
    for (std::size_t bit = 0; bit < octets.size() * 8; ++bit) {
        const int isSet = octets[octets.size() - 1 - bit / 8] >> bit % 8 & 1;
        char& octet = out[bit / bits * windowSize + bit % bits / 8];
        octet = static_cast<char>(octet | isSet << bit % bits % 8);
    }
    return out;
}

std::size_t start(const char* window)
{
    return std::size_t{static_cast<unsigned char>(window[0])} << 8 | static_cast<unsigned char>(window[1]);
}

} // namespace

void Secrets::add(const std::string& name, const std::string& octets)
{
    for (const std::string& form : {octets, {octets.rbegin(), octets.rend()}, wordsTurned(octets), limbs(octets)}) {
        for (std::size_t i = 0; i + windowSize <= form.size(); ++i) {
            const std::string window = form.substr(i, windowSize);
            if (std::count(window.begin(), window.end(), '\0') < 5) m_windows[window] = name;
        }
    }
}

std::string Secrets::in(const std::vector<std::string>& areas) const
{
    std::bitset<0x10000> starts; // whether any begins with these two octets
    for (const auto& [window, name] : m_windows) starts.set(start(window.data()));
    std::map<std::string, int> found;
    for (const std::string& area : areas) {
        std::set<std::string> here;
        for (std::size_t i = 0; i + windowSize <= area.size(); ++i) {
            if (!starts[start(&area[i])]) continue;
            const auto window = m_windows.find(area.substr(i, windowSize));
            if (window != m_windows.end()) here.insert(window->second);
        }
        for (const std::string& name : here) ++found[name];
    }
    std::string text;
    for (const auto& [name, count] : found) text += name + " in " + std::to_string(count) + " areas ";
    return text;
}

static constexpr char stackPaint = '\xA5';

std::string stackAfter(std::function<void()> step)
{
    constexpr std::size_t size = 1 << 20;
    std::string stack(size + 4096, stackPaint);
    void* const base = reinterpret_cast<void*>((reinterpret_cast<std::uintptr_t>(stack.data()) + 4095) & ~std::uintptr_t{4095});
    pthread_attr_t attributes;
    pthread_t thread;
    pthread_attr_init(&attributes);
    EXPECT_EQ(pthread_attr_setstack(&attributes, base, size), 0);
    const auto run = [](void* of) -> void* {
        char above[8192]; // what the end of a thread overwrites is not the step's
        __asm__ volatile("" : : "r"(above) : "memory");
        return (*static_cast<std::function<void()>*>(of))(), nullptr;
    };
    EXPECT_EQ(pthread_create(&thread, &attributes, run, &step), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
    return isPlainBuild ? stack : "";
}

std::size_t stackUse(const std::function<void()>& step)
{
    const std::string stack = stackAfter(step);
    return stack.size() - stack.find_first_not_of(stackPaint);
}

} // namespace test
