// The functions of platform.h for POSIX.
#include "platform/platform.h"

#include <cerrno>
#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <sched.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>

namespace vrno::platform {

// ---- files ----

namespace {

struct Descriptor {
    int fd;
    explicit Descriptor(int opened) : fd(opened) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor()
    {
        if (fd >= 0) close(fd);
    }
};

FileError readWhole(int fd, FileBlock& out)
{
    for (std::size_t got = 0, all = static_cast<std::size_t>(out.length); got < all;) {
        const ssize_t n = read(fd, out.bytes + got, all - got);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) return FileError::read;
        if (n == 0) return FileError::truncated;
        got += static_cast<std::size_t>(n);
    }
    return FileError::none;
}

} // namespace

FileError readFile(const char* path, FileBlock& out)
{
    if (path == nullptr || *path == '\0') return FileError::emptyPath;
    const Descriptor file(open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK)); // or opening a pipe waits for a writer
    if (file.fd < 0) return FileError::open;
    struct stat status;
    if (fstat(file.fd, &status) != 0 || !S_ISREG(status.st_mode) || status.st_size < 0) return FileError::size;
    if (const FileError error = out.allocate(static_cast<std::uint64_t>(status.st_size)); error != FileError::none) return error;
    return readWhole(file.fd, out);
}

// ---- dynamic libraries ----

// dlopen and its relatives report by a text. errno is that of their system calls, if one failed; if not, `otherwise` is used.
static int errorNumber(int otherwise) { return errno != 0 ? errno : otherwise; }

void* loadLibrary(const char* path, int& error)
{
    errno = 0;
    void* const library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    if (!library) error = errorNumber(ENOEXEC);
    return library;
}

bool unloadLibrary(void* library, int& error)
{
    errno = 0;
    if (dlclose(library) == 0) return true;
    error = errorNumber(EINVAL);
    return false;
}

void* findSymbol(void* library, const char* name, int& error)
{
    errno = 0;
    void* const symbol = dlsym(library, name);
    if (!symbol) error = errorNumber(ENOENT);
    return symbol;
}

// ---- the process and its clock ----

void Mutex::giveWay() { sched_yield(); }

namespace {

// The process that is registering the handlers, which its children inherit; or one of the two constants.
constexpr std::uint32_t notDone = 0, done = ~0U;
constinit std::atomic<std::uint32_t> registrar = notDone;
using Hook = void (*)();
constinit std::atomic<Mutex*> heldDuringFork = nullptr; // both are written before a handler can run on any thread
constinit std::atomic<Hook> forkedChild = nullptr;
constinit thread_local int forkDepth = 0; // a child may register handlers that it has from its parent already

void lockBeforeFork()
{
    if (forkDepth++ == 0) heldDuringFork.load()->lock();
}

void unlockAfterFork()
{
    if (--forkDepth == 0) heldDuringFork.load()->unlock();
}

void unlockInChild()
{
    if (--forkDepth > 0) return;
    forkedChild.load()();
    heldDuringFork.load()->unlock();
}

} // namespace

// A child whose parent was registering has no thread that will finish, so it registers the handlers itself.
void holdDuringFork(Mutex& mutex, void (*inChild)())
{
    const std::uint32_t process = processId();
    for (std::uint32_t state; (state = registrar.load(std::memory_order_acquire)) != done;) {
        if (state == process || !registrar.compare_exchange_strong(state, process)) {
            sched_yield();
            continue;
        }
        heldDuringFork = &mutex;
        forkedChild = inChild;
        const bool registered = pthread_atfork(lockBeforeFork, unlockAfterFork, unlockInChild) == 0;
        registrar.store(registered ? done : notDone, std::memory_order_release);
        if (!registered) return; // allocation failure: the next call tries again
    }
}

std::uint32_t processId() { return static_cast<std::uint32_t>(getpid()); }

WallClock wallClock()
{
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return {now.tv_sec, static_cast<int>(now.tv_nsec / 1'000'000)};
}

bool localTime(std::int64_t seconds, std::tm& out)
{
    const auto value = static_cast<std::time_t>(seconds);
    return localtime_r(&value, &out) != nullptr;
}

bool utcTime(std::int64_t seconds, std::tm& out)
{
    const auto value = static_cast<std::time_t>(seconds);
    return gmtime_r(&value, &out) != nullptr;
}

bool randomBytes(void* out, std::size_t length)
{
    auto* at = static_cast<unsigned char*>(out);
    while (length > 0) {
        const ssize_t n = getrandom(at, length, 0);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        at += n;
        length -= static_cast<std::size_t>(n);
    }
    return true;
}

} // namespace vrno::platform
