// What fails on demand: the linker sends malloc, calloc, realloc, free and getrandom here, and operator new is ours.
#include "support/failing.h"

#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/types.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

namespace {

// What is counted while it is watched, and fails at a number.
struct Countdown {
    bool isWatching = false, onward = false;
    long count = 0, failing = 0;

    void start(long number, bool fromThere) { *this = {true, fromThere, 0, number}; }
    bool refuses()
    {
        if (!isWatching) return false;
        ++count;
        return count == failing || (onward && count > failing);
    }
};
thread_local Countdown allocations, systemCalls;
thread_local std::size_t countedBytes = 0;

bool refuses(std::size_t size)
{
    if (allocations.isWatching) countedBytes += size;
    return allocations.refuses();
}

bool systemFails()
{
    const bool fails = systemCalls.refuses();
    if (fails) errno = EIO;
    return fails;
}

thread_local test::RandomSource::Kind randomSource = test::RandomSource::system;
thread_local bool isForkMarked = true;
thread_local std::function<int()>* readHook = nullptr;

thread_local test::HeapWatch* watch = nullptr;

// What the watch itself does with the heap is not seen.
template <class Step> void tell(Step step)
{
    if (test::HeapWatch* const told = std::exchange(watch, nullptr)) {
        step(*told);
        watch = told;
    }
}

void* taken(void* block, std::size_t size)
{
    if (block) tell([=](test::HeapWatch& heap) { heap.take(block, size); });
    return block;
}

} // namespace

extern "C" {
ssize_t __real_getrandom(void* out, std::size_t length, unsigned flags);
ssize_t __wrap_getrandom(void* out, std::size_t length, unsigned flags)
{
    using test::RandomSource;
    if (systemFails()) return -1;
    if (randomSource == RandomSource::system) return __real_getrandom(out, length, flags);
    if (randomSource == RandomSource::interrupted) {
        randomSource = RandomSource::withoutDevice;
        errno = EINTR;
        return -1;
    }
    if (randomSource == RandomSource::withoutDevice) return __real_getrandom(out, length, flags);
    if (randomSource == RandomSource::alwaysTheSame) return static_cast<ssize_t>((std::memset(out, 'r', length), length));
    errno = ENOSYS;
    return -1;
}
int __real_open(const char* path, int flags);
int __wrap_open(const char* path, int flags)
{
    using test::RandomSource;
    if (systemFails()) return -1;
    if (std::strcmp(path, "/dev/urandom") != 0) return __real_open(path, flags);
    if (randomSource == RandomSource::file) return __real_open("/proc/self/exe", flags);
    if (randomSource != RandomSource::none && randomSource != RandomSource::withoutDevice) return __real_open(path, flags);
    errno = ENOENT;
    return -1;
}
int __real_madvise(void* area, std::size_t length, int advice);
int __wrap_madvise(void* area, std::size_t length, int advice)
{
    if (isForkMarked || advice != MADV_WIPEONFORK) return __real_madvise(area, length, advice);
    __real_madvise(area, length, MADV_KEEPONFORK); // takes back the mark of the parent
    errno = EINVAL;
    return -1;
}
ssize_t __real_read(int file, void* out, std::size_t length);
ssize_t __wrap_read(int file, void* out, std::size_t length)
{
    if (systemFails()) return -1;
    const int error = readHook ? (*readHook)() : 0;
    if (error == 0) return __real_read(file, out, length);
    errno = error;
    return -1;
}
int __real_fstat(int file, struct stat* status);
int __wrap_fstat(int file, struct stat* status) { return systemFails() ? -1 : __real_fstat(file, status); }
void* __real_dlopen(const char* path, int flags);
void* __wrap_dlopen(const char* path, int flags) { return systemFails() ? nullptr : __real_dlopen(path, flags); }
void* __real_dlsym(void* library, const char* name);
void* __wrap_dlsym(void* library, const char* name) { return systemFails() ? nullptr : __real_dlsym(library, name); }
int __real_dlclose(void* library);
int __wrap_dlclose(void* library) { return systemFails() ? -1 : __real_dlclose(library); }

void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);
void* __real_realloc(void* block, std::size_t size);
void __real_free(void* block);
void* __wrap_malloc(std::size_t size)
{
    void* const block = refuses(size) ? nullptr : __real_malloc(size);
    if (block && watch) std::memset(block, 0xA5, size); // nothing is left in it of who had it before
    return taken(block, size);
}
void* __wrap_calloc(std::size_t count, std::size_t size)
{
    return refuses(count * size) ? nullptr : taken(__real_calloc(count, size), count * size);
}
void* __wrap_realloc(void* block, std::size_t size)
{
    if (refuses(size)) return nullptr;
    tell([&](test::HeapWatch& heap) { // as if it never grew in place
        void* const grown = std::memset(__real_malloc(size), 0xA5, size);
        if (block) std::memcpy(grown, block, std::min(heap.give(block), size));
        __real_free(block);
        heap.take(grown, size);
        block = grown;
    });
    return watch ? block : __real_realloc(block, size);
}
void __wrap_free(void* block)
{
    tell([=](test::HeapWatch& heap) { heap.give(block); });
    __real_free(block);
}
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
    countedBytes = 0;
    allocations.start(number, onward);
}

FailingAllocation::~FailingAllocation() { allocations.isWatching = false; }

long FailingAllocation::count() { return allocations.count; }

FailingSystem::FailingSystem(long number, bool onward) { systemCalls.start(number, onward); }

FailingSystem::~FailingSystem() { systemCalls.isWatching = false; }

long FailingSystem::count() { return systemCalls.count; }

RandomSource::RandomSource(Kind kind) { randomSource = kind; }

RandomSource::~RandomSource() { randomSource = system; }

void forgetForkMarks() { isForkMarked = false; }

ReadHook::ReadHook(std::function<int()> hook) : m_hook(std::move(hook)) { readHook = &m_hook; }

ReadHook::~ReadHook() { readHook = nullptr; }

HeapWatch::HeapWatch() { watch = this; }

HeapWatch::~HeapWatch() { watch = nullptr; }

void HeapWatch::take(void* block, std::size_t size) { m_blocks[block] = size; }

std::size_t HeapWatch::give(void* block)
{
    const auto found = m_blocks.find(block);
    if (found == m_blocks.end()) return 0;
    const std::size_t size = found->second;
    m_freed.emplace_back(static_cast<const char*>(block), size);
    m_blocks.erase(found);
    return size;
}

std::size_t FailingAllocation::size() { return countedBytes; }

} // namespace test
