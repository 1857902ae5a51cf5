#include "Module.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#include <mutex>
#endif

namespace storage {

// ---- the system ----

namespace {

using GetFunctionList = CK_RV(CK_FUNCTION_LIST**);
constexpr const char* getFunctionListName = "C_GetFunctionList";

// The first function of a module, or null with the loader's text. The module stays loaded for good: threads and exit handlers
// that it started may outlive C_Finalize.
#if defined(_WIN32)
GetFunctionList* loadModule(const char* path, char (&text)[256])
{
    constexpr DWORD oneLine = FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK;
    const HMODULE library = LoadLibraryA(path);
    const FARPROC function = library ? GetProcAddress(library, getFunctionListName) : nullptr;
    if (function) return reinterpret_cast<GetFunctionList*>(reinterpret_cast<void*>(function));
    const DWORD error = GetLastError();
    const DWORD english = MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US);
    if (FormatMessageA(oneLine, nullptr, error, english, text, sizeof text, nullptr) == 0) {
        std::snprintf(text, sizeof text, "error %lu", error);
    }
    return nullptr;
}

constinit SRWLOCK lock = SRWLOCK_INIT;
void acquire() { AcquireSRWLockExclusive(&lock); }
void letGo() { ReleaseSRWLockExclusive(&lock); }
#else
GetFunctionList* loadModule(const char* path, char (&text)[256])
{
    void* const library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    void* const function = library ? dlsym(library, getFunctionListName) : nullptr;
    if (!function) {
        const char* const reason = dlerror();
        std::snprintf(text, sizeof text, "%s", reason ? reason : "no C_GetFunctionList");
    }
    return reinterpret_cast<GetFunctionList*>(function);
}

constinit std::mutex lock;
void acquire() { lock.lock(); }
void letGo() { lock.unlock(); }
#endif

// ---- the module in use ----

struct Used {
    char path[4096];
    CK_FUNCTION_LIST* functions;
    bool isInitialisedHere;
};
constinit Used used{};

// Finalising closes the sessions of everybody in the process. A module that does not count sessions may have others.
bool mayHaveSessions(const CK_FUNCTION_LIST& module)
{
    CK_SLOT_ID slots[64];
    CK_ULONG count = sizeof slots / sizeof *slots;
    if (module.C_GetSlotList(CK_TRUE, slots, &count) != CKR_OK) return true;
    for (CK_ULONG i = 0; i < count; ++i) {
        CK_TOKEN_INFO token;
        if (module.C_GetTokenInfo(slots[i], &token) == CKR_OK && token.ulSessionCount != 0) return true;
    }
    return false;
}

void release()
{
    if (used.isInitialisedHere && !mayHaveSessions(*used.functions)) used.functions->C_Finalize(nullptr);
    used = {};
}

// When this library is unloaded, and at the end of the process. A read that still runs in another thread then goes first.
#if !defined(_WIN32)
void releaseAtExit()
{
    if (!lock.try_lock()) return;
    release();
    lock.unlock();
}
#endif

CK_RV initialise()
{
    CK_C_INITIALIZE_ARGS arguments{};
    arguments.flags = CKF_OS_LOCKING_OK;
    const CK_RV code = used.functions->C_Initialize(&arguments);
    if (code == CKR_CRYPTOKI_ALREADY_INITIALIZED) return CKR_OK;
    used.isInitialisedHere = code == CKR_OK;
#if !defined(_WIN32) // there nothing may be called while a library is unloaded
    // After the module's own handlers, so that it runs before them.
    if (code == CKR_OK) std::atexit(releaseAtExit);
#endif
    return code;
}

int load(Answer& answer, const char* path)
{
    char text[256] = "";
    const std::size_t length = std::strlen(path);
    if (length >= sizeof used.path) return answer.fail(moduleNotLoadable, "the path in VRNO_P11_MODULE is too long");
    GetFunctionList* const getFunctionList = loadModule(path, text);
    if (!getFunctionList) return answer.fail(moduleNotLoadable, "the module cannot be loaded: %s", text);
    CK_RV code = getFunctionList(&used.functions);
    if (code == CKR_OK) code = initialise();
    if (code != CKR_OK) {
        used = {};
        return answer.failOf(code, "C_Initialize");
    }
    std::memcpy(used.path, path, length + 1);
    return 0;
}

} // namespace

// ---- for the others ----

ModuleLock::ModuleLock() { acquire(); }
ModuleLock::~ModuleLock() { letGo(); }

int useModule(Answer& answer, const CK_FUNCTION_LIST*& module)
{
    const char* const path = std::getenv("VRNO_P11_MODULE");
    if (!path || !*path) return answer.fail(moduleNotLoadable, "VRNO_P11_MODULE does not name a module");
    if (used.functions && std::strcmp(path, used.path) != 0) release();
    CK_INFO info;
    if (!used.functions) {
        if (const int failure = load(answer, path)) return failure;
    } else if (used.functions->C_GetInfo(&info) == CKR_CRYPTOKI_NOT_INITIALIZED) {
        // Somebody has finalised it, or the process is a forked one.
        if (const int failure = answer.failOf(initialise(), "C_Initialize")) return failure;
    }
    module = used.functions;
    return 0;
}

} // namespace storage
