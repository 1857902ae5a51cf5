// The functions of platform.h for POSIX.
#include "platform/platform.h"

#include <cerrno>
#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
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

// Opens a file for reading, if it can be, and looks what it is. A pipe without a writer does not block us, and no terminal
// becomes that of the process.
struct OpenFile : Descriptor {
    struct stat status {};
    bool isKnown;
    explicit OpenFile(const char* path) : Descriptor(opened(path)), isKnown(fd >= 0 && fstat(fd, &status) == 0) {}

private:
    static int opened(const char* path)
    {
        int fd = -1;
        do fd = open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
        while (fd < 0 && errno == EINTR);
        return fd;
    }
};

// Reads up to `length` bytes; fewer only at the end of the file.
bool readUpTo(int fd, unsigned char* to, std::size_t length, std::size_t& got)
{
    for (got = 0; got < length;) {
        const ssize_t n = read(fd, to + got, length - got);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) return false;
        if (n == 0) break;
        got += static_cast<std::size_t>(n);
    }
    return true;
}

// Appends what the file has got behind the size that it had when it was opened.
FileError readGrowth(int fd, FileBlock& out)
{
    constexpr std::uint64_t maxLength = INT_MAX - 1, minPiece = 65536;
    for (;;) {
        const auto length = static_cast<std::size_t>(out.length);
        unsigned char next = 0;
        std::size_t got = 0;
        if (!readUpTo(fd, &next, 1, got)) return FileError::read;
        if (got == 0) return FileError::none;
        if (length == maxLength) return FileError::size;
        const std::uint64_t room = std::min(length + std::max<std::uint64_t>(length / 2, minPiece), maxLength);
        if (const FileError error = out.resize(room); error != FileError::none) return error;
        out.bytes[length] = next;
        if (!readUpTo(fd, out.bytes + length + 1, static_cast<std::size_t>(room) - length - 1, got)) return FileError::read;
        out.shorten(length + 1 + got);
    }
}

FileError readWhole(int fd, std::uint64_t size, FileBlock& out)
{
    if (const FileError error = out.resize(size); error != FileError::none) return error;
    std::size_t got = 0;
    if (!readUpTo(fd, out.bytes, static_cast<std::size_t>(size), got)) return FileError::read;
    return got < size ? FileError::truncated : readGrowth(fd, out);
}

} // namespace

FileError readFile(const char* path, FileBlock& out)
{
    if (path == nullptr || *path == '\0') return FileError::emptyPath;
    const OpenFile file(path);
    if (file.fd < 0) return FileError::open;
    if (!file.isKnown || !S_ISREG(file.status.st_mode) || file.status.st_size < 0) return FileError::size;
    return readWhole(file.fd, static_cast<std::uint64_t>(file.status.st_size), out);
}

// ---- dynamic libraries ----

// Whether the message of a failed dlopen says that the file of this name is missing.
static bool saysMissing(const char* message, const char* name)
{
    const std::size_t length = std::strlen(name); // a library that it depends on may be the missing one
    return message && std::strncmp(message, name, length) == 0 && message[length] == ':' &&
           std::strstr(message, std::strerror(ENOENT));
}

// The error of a path that names no file for dlopen, which would wait for the writer of a pipe; 0 for one that it can try.
static int pathError(const char* path)
{
    const OpenFile file(path);
    if (file.fd >= 0) return file.isKnown && S_ISREG(file.status.st_mode) ? 0 : ENOEXEC;
    if (errno == EACCES) return EACCES;
    return errno == ENOENT || errno == ENOTDIR ? ENOENT : ENOEXEC;
}

// dlopen has no error number. A bare name is looked for in the search path, which only dlopen itself knows.
void* loadLibrary(const char* path, int& error)
{
    const bool isBareName = !std::strchr(path, '/');
    const int refused = isBareName ? 0 : pathError(path);
    void* const library = refused ? nullptr : dlopen(path, RTLD_NOW | RTLD_LOCAL);
    if (!library) error = refused ? refused : isBareName && saysMissing(dlerror(), path) ? ENOENT : ENOEXEC;
    return library;
}

bool unloadLibrary(void* library, int& error)
{
    if (dlclose(library) == 0) return true;
    error = EINVAL;
    return false;
}

void* findSymbol(void* library, const char* name, int& error)
{
    void* const symbol = dlsym(library, name);
    if (!symbol) error = ENOENT;
    return symbol;
}

// ---- the process and its clock ----

namespace {

constexpr std::size_t pageLength = 4096;

// All zero at first, and again in a child: then neither mutex nor marks have been made.
struct alignas(pageLength) ProcessPage {
    pthread_once_t once;
    pthread_mutex_t mutex;
    alignas(16) unsigned char memory[maxProcessMemory];
};
static_assert(sizeof(ProcessPage) == pageLength && PTHREAD_ONCE_INIT == 0);
constinit ProcessPage page{};
constinit std::atomic<bool> hasForkHandler = false;

void clearInChild() { std::memset(&page, 0, sizeof page); }

// Asks the kernel to zero the page in every child. Where it cannot, a handler does so in children that fork() makes.
void markPage()
{
    if (sysconf(_SC_PAGESIZE) == pageLength && madvise(&page, sizeof page, MADV_WIPEONFORK) == 0) return;
    if (!hasForkHandler.exchange(true)) pthread_atfork(nullptr, nullptr, clearInChild);
}

// With priority inheritance where the system has it.
void makeMutex()
{
    pthread_mutexattr_t attributes;
    const bool isMade = pthread_mutexattr_init(&attributes) == 0 &&
                        pthread_mutexattr_setprotocol(&attributes, PTHREAD_PRIO_INHERIT) == 0 &&
                        pthread_mutex_init(&page.mutex, &attributes) == 0;
    if (!isMade) pthread_mutex_init(&page.mutex, nullptr);
}

} // namespace

void* lockProcessMemory()
{
    pthread_once(&page.once, [] {
        markPage();
        makeMutex();
    });
    pthread_mutex_lock(&page.mutex);
    return page.memory;
}

void unlockProcessMemory() { pthread_mutex_unlock(&page.mutex); }

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

// From the device, for systems that lack the call or forbid it.
static bool deviceBytes(unsigned char* to, std::size_t length)
{
    const OpenFile device("/dev/urandom");
    if (!device.isKnown || !S_ISCHR(device.status.st_mode)) return false;
    std::size_t got = 0;
    return readUpTo(device.fd, to, length, got) && got == length;
}

bool randomBytes(void* out, std::size_t length)
{
    auto* at = static_cast<unsigned char*>(out);
    while (length > 0) {
        const ssize_t n = getrandom(at, length, 0);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return deviceBytes(at, length);
        at += n;
        length -= static_cast<std::size_t>(n);
    }
    return true;
}

} // namespace vrno::platform
