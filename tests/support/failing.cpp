// What fails on demand: the linker sends malloc, calloc, realloc and getrandom here, and operator new is ours.
#include "support/failing.h"

#include <sys/types.h>

#include <cerrno>
#include <cstdlib>
#include <new>

namespace {

thread_local bool watching = false;
thread_local long counted = 0, failing = 0;
thread_local bool failsOnward = false;
thread_local std::size_t countedBytes = 0;

bool refuses(std::size_t size)
{
    if (!watching) return false;
    ++counted;
    countedBytes += size;
    return counted == failing || (failsOnward && counted > failing);
}

} // namespace

static thread_local bool givesNoRandomBytes = false;

extern "C" {
ssize_t __real_getrandom(void* out, std::size_t length, unsigned flags);
ssize_t __wrap_getrandom(void* out, std::size_t length, unsigned flags)
{
    if (!givesNoRandomBytes) return __real_getrandom(out, length, flags);
    errno = ENOSYS;
    return -1;
}
void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);
void* __real_realloc(void* block, std::size_t size);
void* __wrap_malloc(std::size_t size) { return refuses(size) ? nullptr : __real_malloc(size); }
void* __wrap_calloc(std::size_t count, std::size_t size) { return refuses(count * size) ? nullptr : __real_calloc(count, size); }
void* __wrap_realloc(void* block, std::size_t size) { return refuses(size) ? nullptr : __real_realloc(block, size); }
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return std::malloc(size ? size : 1); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return std::malloc(size ? size : 1); }
void* operator new(std::size_t size)
{
    if (void* const block = __real_malloc(size ? size : 1)) return block;
    throw std::bad_alloc();
}
void* operator new[](std::size_t size) { return operator new(size); }
void operator delete(void* block) noexcept { std::free(block); }
void operator delete[](void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
void operator delete[](void* block, std::size_t) noexcept { std::free(block); }

namespace test {

FailingAllocation::FailingAllocation(long number, bool onward)
{
    counted = 0;
    countedBytes = 0;
    failing = number;
    failsOnward = onward;
    watching = true;
}

FailingAllocation::~FailingAllocation() { watching = false; }

long FailingAllocation::count() { return counted; }

NoRandomBytes::NoRandomBytes() { givesNoRandomBytes = true; }

NoRandomBytes::~NoRandomBytes() { givesNoRandomBytes = false; }

std::size_t FailingAllocation::size() { return countedBytes; }

} // namespace test
