// All that the library needs of an operating system. No other folder calls the system.
//
// Texts are passed to the system byte for byte. Nothing here throws. Only `Mutex` has state.
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
    open = 2,   // missing, not permitted, or opened by a writer on a system with share modes
    size = 3,   // not a file with a size (a folder, a pipe, a device), or one above 2^31 - 2 bytes
    memory = 4, // allocation failure
    read = 5,
    truncated = 6, // fewer bytes than the size
};

// The bytes of a file and a zero byte behind them, in a block of the plain heap that the object frees.
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

// Reads a whole file; others may read it at the same time. After a failure the contents of `out` have no meaning.
FileError readFile(const char* path, FileBlock& out);

// ---- dynamic libraries ----

// A failure stores the error number of the system (errno or GetLastError) in `error`; a success does not change it.
void* loadLibrary(const char* path, int& error);
bool unloadLibrary(void* library, int& error);
void* findSymbol(void* library, const char* name, int& error);

// ---- the process and its clock ----

std::uint32_t processId();

// Not recursive. A static one is constant-initialised and never destroyed. The holder is a process, not a thread: in a forked
// child a mutex that a thread of the parent holds counts as free, since the child does not have that thread. The child must
// then discard what the thread may have left incomplete.
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

// After this call forks of the process wait for the mutex. They leave it free in the parent and in the child; the child runs
// `inChild` first. Call it before each lock; only one mutex of the process may use it. It does nothing on a system without
// fork.
void holdDuringFork(Mutex& mutex, void (*inChild)());

struct WallClock {
    std::int64_t seconds; // since 1970-01-01 00:00:00 UTC
    int milliseconds;
};
WallClock wallClock();

// Breaks down seconds since 1970; false if the system cannot.
bool localTime(std::int64_t seconds, std::tm& out);
bool utcTime(std::int64_t seconds, std::tm& out);

// Fills `out` from the random source of the system; false if it gives no bytes.
bool randomBytes(void* out, std::size_t length);

} // namespace vrno::platform
