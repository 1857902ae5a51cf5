// What the library asks of an operating system. Nothing outside this folder calls one.
//
// Texts are passed to the system byte for byte. Nothing here throws, and nothing but `Mutex` holds state.
#pragma once

#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <ctime>

#ifndef _WIN32
#include <pthread.h>
#endif

namespace vrno::platform {

// ---- files ----

enum class FileError : int {
    none = 0,
    emptyPath = 1,
    open = 2,   // missing, not permitted, held by a writer where the system can tell
    size = 3,   // has no size: a folder, a pipe, a device
    memory = 4, // no block of the file's size, or a size above 2^31 - 2 bytes
    read = 5,
    truncated = 6, // fewer bytes came than the size said
};

// A file's bytes with a zero byte behind them, in a block of the plain heap that the object frees.
struct FileBlock {
    unsigned char* bytes = nullptr;
    int length = 0;

    FileBlock() = default;
    FileBlock(const FileBlock&) = delete;
    FileBlock& operator=(const FileBlock&) = delete;
    ~FileBlock() { std::free(bytes); }

    // A zeroed block for `fileSize` bytes and the zero behind them; false when there is none.
    bool allocate(std::uint64_t fileSize)
    {
        if (fileSize >= INT_MAX) return false;
        bytes = static_cast<unsigned char*>(std::calloc(static_cast<std::size_t>(fileSize) + 1, 1));
        length = bytes ? static_cast<int>(fileSize) : 0;
        return bytes != nullptr;
    }
};

// Reads an existing file whole, letting other readers be. On failure `out` holds no usable length.
FileError readFile(const char* path, FileBlock& out);

// ---- dynamic libraries ----

// Each failure stores the system's error number (errno or GetLastError) in `error`; a success leaves it alone.
void* loadLibrary(const char* path, int& error);
bool unloadLibrary(void* library, int& error);
void* findSymbol(void* library, const char* name, int& error);

// ---- the process and its clock ----

// Not recursive. A static one is constant-initialised and never destroyed.
class Mutex {
public:
    void lock();
    void unlock();

private:
#ifdef _WIN32
    void* m_native = nullptr; // an SRWLOCK, which starts as all zeros
#else
    pthread_mutex_t m_native = PTHREAD_MUTEX_INITIALIZER;
#endif
};

// From its return on, forks of this process wait for the mutex and leave it free in parent and child, where `inChild` runs
// first. To be called before the mutex is locked, each time; for one mutex of the process. Nothing to do where there is
// no fork.
void holdDuringFork(Mutex& mutex, void (*inChild)());

std::uint32_t processId();

struct WallClock {
    std::int64_t seconds; // since 1970-01-01 00:00:00 UTC
    int milliseconds;
};
WallClock wallClock();

// Seconds since 1970 as broken-down time; false where the system has none for them.
bool localTime(std::int64_t seconds, std::tm& out);
bool utcTime(std::int64_t seconds, std::tm& out);

// Bytes of the system's own random source; false when it gave none.
bool randomBytes(void* out, std::size_t length);

} // namespace vrno::platform
