// What the library asks of an operating system. Nothing outside this folder calls one.
//
// Texts are passed to the system byte for byte. Nothing here throws, and nothing but `Mutex` holds state.
#pragma once

#include "platform/wipe.h"

#include <atomic>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <ctime>

namespace vrno::platform {

// ---- files ----

enum class FileError : int {
    none = 0,
    emptyPath = 1,
    open = 2,   // missing, not permitted, held by a writer where the system can tell
    size = 3,   // no size (a folder, a pipe, a device), or one above 2^31 - 2 bytes
    memory = 4, // the block could not be allocated
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
    ~FileBlock()
    {
        wipe(bytes, static_cast<std::size_t>(length)); // it may be a private key
        std::free(bytes);
    }

    // A zeroed block for `fileSize` bytes and the zero behind them: none, size or memory.
    FileError allocate(std::uint64_t fileSize)
    {
        if (fileSize >= INT_MAX) return FileError::size;
        bytes = static_cast<unsigned char*>(std::calloc(static_cast<std::size_t>(fileSize) + 1, 1));
        if (!bytes) return FileError::memory;
        length = static_cast<int>(fileSize);
        return FileError::none;
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

std::uint32_t processId();

// Not recursive. A static one is constant-initialised and never destroyed. It is held in the name of the process, so that
// a forked child is not kept out by a thread that it does not have: what such a thread left half done is the child's to
// throw away.
class Mutex {
public:
    void lock()
    {
        const std::uint32_t process = processId();
        for (std::uint32_t holder = nobody; !m_holder.compare_exchange_weak(holder, process, std::memory_order_acquire);) {
            const bool isForeign = holder != nobody && holder != process;
            if (isForeign && m_holder.compare_exchange_strong(holder, process, std::memory_order_acquire)) return;
            holder = nobody;
            giveWay();
        }
    }
    void unlock() { m_holder.store(nobody, std::memory_order_release); }

private:
    static constexpr std::uint32_t nobody = 0;

    static void giveWay(); // to another thread

    std::atomic<std::uint32_t> m_holder = nobody;
};

// From its return on, forks of this process wait for the mutex and leave it free in parent and child, where `inChild` runs
// first. To be called before the mutex is locked, each time; for one mutex of the process. Nothing to do where there is
// no fork.
void holdDuringFork(Mutex& mutex, void (*inChild)());

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
