// The functions of platform.h for Windows Vista and later.
#define WIN32_LEAN_AND_MEAN
#define NOMINMAX
#include <windows.h>

#include <bcrypt.h>

#include "platform/platform.h"

namespace vrno::platform {

// ---- files ----

namespace {

struct Handle {
    HANDLE file;
    explicit Handle(HANDLE opened) : file(opened) {}
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    ~Handle()
    {
        if (file != INVALID_HANDLE_VALUE) CloseHandle(file);
    }
};

} // namespace

FileError readFile(const char* path, FileBlock& out)
{
    if (path == nullptr || *path == '\0') return FileError::emptyPath;
    const Handle handle(CreateFileA(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (handle.file == INVALID_HANDLE_VALUE) return FileError::open;
    LARGE_INTEGER size;
    if (GetFileType(handle.file) != FILE_TYPE_DISK || !GetFileSizeEx(handle.file, &size)) return FileError::size;
    const FileError error = out.resize(static_cast<std::uint64_t>(size.QuadPart));
    if (error != FileError::none) return error;
    DWORD got = 0;
    if (!ReadFile(handle.file, out.bytes, static_cast<DWORD>(out.length), &got, nullptr)) return FileError::read;
    return got == static_cast<DWORD>(out.length) ? FileError::none : FileError::truncated;
}

// ---- dynamic libraries ----

static int lastError() { return static_cast<int>(GetLastError()); }

void* loadLibrary(const char* path, int& error)
{
    const HMODULE library = LoadLibraryA(path);
    if (!library) error = lastError();
    return library;
}

bool unloadLibrary(void* library, int& error)
{
    if (FreeLibrary(static_cast<HMODULE>(library))) return true;
    error = lastError();
    return false;
}

void* findSymbol(void* library, const char* name, int& error)
{
    const FARPROC symbol = GetProcAddress(static_cast<HMODULE>(library), name);
    if (!symbol) error = lastError();
    return reinterpret_cast<void*>(symbol);
}

// ---- the process and its clock ----

static constinit SRWLOCK processLock = SRWLOCK_INIT;
alignas(16) static constinit unsigned char processBytes[maxProcessMemory] = {};

void* lockProcessMemory()
{
    AcquireSRWLockExclusive(&processLock);
    return processBytes;
}

void unlockProcessMemory() { ReleaseSRWLockExclusive(&processLock); }

std::uint32_t processId() { return GetCurrentProcessId(); }

WallClock wallClock()
{
    FILETIME now; // 100 ns units since 1601-01-01
    GetSystemTimeAsFileTime(&now);
    const auto ticks = static_cast<std::int64_t>(static_cast<std::uint64_t>(now.dwHighDateTime) << 32 | now.dwLowDateTime);
    constexpr std::int64_t ticksPerSecond = 10'000'000, secondsFrom1601To1970 = 11'644'473'600;
    return {ticks / ticksPerSecond - secondsFrom1601To1970, static_cast<int>(ticks % ticksPerSecond / 10'000)};
}

bool localTime(std::int64_t seconds, std::tm& out)
{
    const auto value = static_cast<__time64_t>(seconds);
    return _localtime64_s(&out, &value) == 0;
}

bool utcTime(std::int64_t seconds, std::tm& out)
{
    const auto value = static_cast<__time64_t>(seconds);
    return _gmtime64_s(&out, &value) == 0;
}

bool randomBytes(void* out, std::size_t length)
{
    auto* at = static_cast<unsigned char*>(out);
    while (length > 0) {
        const ULONG piece = length < 0x10000000 ? static_cast<ULONG>(length) : 0x10000000;
        if (BCryptGenRandom(nullptr, at, piece, BCRYPT_USE_SYSTEM_PREFERRED_RNG) < 0) return false;
        at += piece;
        length -= piece;
    }
    return true;
}

} // namespace vrno::platform

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID)
{
    if (reason == DLL_PROCESS_ATTACH) DisableThreadLibraryCalls(module);
    return TRUE;
}
