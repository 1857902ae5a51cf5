// All that the library needs of an operating system. No other folder calls the system.
//
// Texts are passed to the system byte for byte. Nothing here throws.
#pragma once

#include "platform/wipe.h"

#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>

namespace vrno::platform {

// ---- files ----

enum class FileError : int {
    none = 0,
    emptyPath = 1,
    open = 2,   // missing, not permitted, or opened by a writer on a system with share modes
    size = 3,   // not a file with a size (a folder, a pipe, a device), or one above 2^31 - 2 bytes
    memory = 4, // allocation failure
    read = 5,
    truncated = 6, // fewer bytes than the size
};

// The bytes of a file and a zero byte behind them, in a block of the plain heap that the object wipes and frees.
struct FileBlock {
    unsigned char* bytes = nullptr;
    int length = 0;

    FileBlock() = default;
    FileBlock(const FileBlock&) = delete;
    FileBlock& operator=(const FileBlock&) = delete;
    ~FileBlock() { release(); }

    // Makes the block one of `newLength` bytes and the zero byte, with the old bytes at its front: none, size or memory.
    FileError resize(std::uint64_t newLength)
    {
        if (newLength >= INT_MAX) return FileError::size;
        const auto size = static_cast<std::size_t>(newLength);
        auto* const block = static_cast<unsigned char*>(std::calloc(size + 1, 1));
        if (!block) return FileError::memory;
        const auto kept = static_cast<std::size_t>(length) < size ? static_cast<std::size_t>(length) : size;
        if (kept > 0) std::memcpy(block, bytes, kept);
        release();
        bytes = block;
        length = static_cast<int>(size);
        return FileError::none;
    }

    // Drops the bytes behind the first `newLength`.
    void shorten(std::size_t newLength)
    {
        length = static_cast<int>(newLength);
        bytes[newLength] = 0;
    }

private:
    void release()
    {
        wipe(bytes, static_cast<std::size_t>(length)); // it may be a private key
        std::free(bytes);
    }
};

// Reads a whole file, up to its end also where it grows meanwhile; others may read it at the same time. After a failure the
// contents of `out` have no meaning.
FileError readFile(const char* path, FileBlock& out);

// ---- dynamic libraries ----

// A failure stores the error number of the system in `error`, and a success does not change it. On POSIX the number says: 2 the
// file is missing (in the search path, for a name without a slash), 13 it may not be read, 8 it is no loadable library; 22 the
// library cannot be unloaded; 2 the symbol is missing.
void* loadLibrary(const char* path, int& error);
bool unloadLibrary(void* library, int& error);
void* findSymbol(void* library, const char* name, int& error);

// ---- the process and its clock ----

std::uint32_t processId();

// The library's one lock, and the memory under it: zero at first, and zero again in a forked child, where the lock is free,
// however the child was made. Not recursive. A thread that waits does not run; where the system has priority inheritance, the
// holder runs at the priority of the threads that wait for it.
inline constexpr std::size_t maxProcessMemory = 3072; // bytes
void* lockProcessMemory();
void unlockProcessMemory();

struct WallClock {
    std::int64_t seconds; // since 1970-01-01 00:00:00 UTC
    int milliseconds;
};
WallClock wallClock();

// Breaks down seconds since 1970; false if the system cannot.
bool localTime(std::int64_t seconds, std::tm& out);
bool utcTime(std::int64_t seconds, std::tm& out);

// Fills `out` from the random source of the system, or where that is missing from its random device; false if neither gives
// bytes.
bool randomBytes(void* out, std::size_t length);

} // namespace vrno::platform
