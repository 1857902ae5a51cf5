// Pages of memory and their protection.
#pragma once

#include <cstddef>

#ifdef _WIN32
#include <windows.h>
#else
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace test {

#ifdef _WIN32
inline std::size_t pageSize() { return 4096; }
inline unsigned char* mapPages(std::size_t size)
{
    return static_cast<unsigned char*>(VirtualAlloc(nullptr, size, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE));
}
inline void unmapPages(void* area, std::size_t) { VirtualFree(area, 0, MEM_RELEASE); }
inline void protectPages(void* area, std::size_t size, bool isRead)
{
    DWORD before;
    if (size > 0) VirtualProtect(area, size, isRead ? PAGE_READONLY : PAGE_NOACCESS, &before);
}
#else
inline std::size_t pageSize() { return static_cast<std::size_t>(sysconf(_SC_PAGESIZE)); }
inline unsigned char* mapPages(std::size_t size)
{
    return static_cast<unsigned char*>(mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
}
inline void unmapPages(void* area, std::size_t size) { munmap(area, size); }
inline void protectPages(void* area, std::size_t size, bool isRead) { mprotect(area, size, isRead ? PROT_READ : PROT_NONE); }
#endif

} // namespace test
