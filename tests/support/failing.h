// Allocations and random bytes that fail on demand, and what lies in memory that was freed.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace test {

// Lets the allocation of this number (from 1) in the library's own code fail, and with `onward` every one behind it.
// Allocations are counted and fail only while an object lives, on its thread.
class FailingAllocation {
public:
    explicit FailingAllocation(long number, bool onward = false);
    ~FailingAllocation();
    FailingAllocation(const FailingAllocation&) = delete;
    FailingAllocation& operator=(const FailingAllocation&) = delete;
    static long count();       // so far
    static std::size_t size(); // their bytes
};

// Keeps what the blocks held that the library allocates and frees while the object lives, on its thread.
class HeapWatch {
public:
    HeapWatch();
    ~HeapWatch();
    HeapWatch(const HeapWatch&) = delete;
    HeapWatch& operator=(const HeapWatch&) = delete;
    std::size_t live() const { return m_blocks.size(); }
    std::vector<std::string> freed() { return std::exchange(m_freed, {}); } // since the last time

    void take(void* block, std::size_t size);
    std::size_t give(void* block); // its size; 0 for one that is not known

private:
    std::unordered_map<void*, std::size_t> m_blocks;
    std::vector<std::string> m_freed;
};

// The same for calls of the operating system: files, libraries and random bytes. The error is EIO.
class FailingSystem {
public:
    explicit FailingSystem(long number, bool onward = false);
    ~FailingSystem();
    FailingSystem(const FailingSystem&) = delete;
    FailingSystem& operator=(const FailingSystem&) = delete;
    static long count();
};

// Calls `hook` before each read of a file while an object lives, on its thread. A result above 0 is the error that the read
// fails with.
class ReadHook {
public:
    explicit ReadHook(std::function<int()> hook);
    ~ReadHook();
    ReadHook(const ReadHook&) = delete;
    ReadHook& operator=(const ReadHook&) = delete;

private:
    std::function<int()> m_hook;
};

// From now on the kernel of this thread cannot clear memory in children.
void forgetForkMarks();

// Where the system's random bytes come from while an object lives, on its thread. `device`: there is no call for them, and `file`:
// a file stands in the device's place. `interrupted`: the first call is; there is no device.
class RandomSource {
public:
    enum Kind { system, device, file, none, interrupted, withoutDevice, alwaysTheSame };

    explicit RandomSource(Kind kind);
    ~RandomSource();
    RandomSource(const RandomSource&) = delete;
    RandomSource& operator=(const RandomSource&) = delete;
};

} // namespace test
