// What fails on demand: the linker sends malloc, calloc, realloc, free and getrandom here, and operator new is ours.
#include "support/failing.h"

#include <sys/mman.h>
#include <sys/types.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

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
    if (randomSource == RandomSource::system) return __real_getrandom(out, length, flags);
    if (randomSource == RandomSource::alwaysTheSame) return static_cast<ssize_t>((std::memset(out, 'r', length), length));
    errno = ENOSYS;
    return -1;
}
int __real_open(const char* path, int flags);
int __wrap_open(const char* path, int flags)
{
    if (randomSource != test::RandomSource::none || std::strcmp(path, "/dev/urandom") != 0) return __real_open(path, flags);
    errno = ENOENT;
    return -1;
}
int __real_madvise(void* area, std::size_t length, int advice);
int __wrap_madvise(void* area, std::size_t length, int advice)
{
    if (isForkMarked || advice != MADV_WIPEONFORK) return __real_madvise(area, length, advice);
    __real_madvise(area, length, MADV_KEEPONFORK); // the parent's mark is inherited
    errno = EINVAL;
    return -1;
}
ssize_t __real_read(int file, void* out, std::size_t length);
ssize_t __wrap_read(int file, void* out, std::size_t length)
{
    const int error = readHook ? (*readHook)() : 0;
    if (error == 0) return __real_read(file, out, length);
    errno = error;
    return -1;
}
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
    counted = 0;
    countedBytes = 0;
    failing = number;
    failsOnward = onward;
    watching = true;
}

FailingAllocation::~FailingAllocation() { watching = false; }

long FailingAllocation::count() { return counted; }

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
