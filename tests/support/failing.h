// Allocations and random bytes that fail on demand.
#pragma once

#include <cstddef>

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

// While an object lives, the system gives no random bytes.
class NoRandomBytes {
public:
    NoRandomBytes();
    ~NoRandomBytes();
    NoRandomBytes(const NoRandomBytes&) = delete;
    NoRandomBytes& operator=(const NoRandomBytes&) = delete;
};

} // namespace test
