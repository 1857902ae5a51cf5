// Files that change or fail while they are read, and libraries that may not be read.
#include "support/calls.h"
#include "support/failing.h"
#include "support/folder.h"

#include <dlfcn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <iterator>

using namespace test;

namespace {

// Reads the file while `atRead` runs before each read, with the number of the read.
Result readWith(const std::string& path, const std::function<int(int)>& atRead)
{
    int number = 0;
    const ReadHook hook([&] { return atRead(++number); });
    return call(Context(), "VRNO_MEDIA_DISK_ReadFile " + path + " out");
}

} // namespace

TEST(Files, AreReadToTheirEndAlsoWhileTheyChange)
{
    const Folder folder;
    const std::string content(100000, 'c'), more(300000, 'm'), path = folder.path("file");
    const auto append = [&](const std::string& what) { std::ofstream(path, std::ios::app) << what; };
    const auto cut = [&](off_t length) { EXPECT_EQ(truncate(path.c_str(), length), 0); };
    const struct {
        const char* what;
        std::function<int(int)> atRead; // its result is the read's error
        Result result;
    } table[] = {
        {"a file at rest", [](int) { return 0; }, {0, content}},
        {"interrupted reads", [](int n) { return n % 2 ? EINTR : 0; }, {0, content}},
        {"grown by one byte", [&](int n) { return n == 1 ? append("m"), 0 : 0; }, {0, content + "m"}},
        {"grown by much", [&](int n) { return n == 2 ? append(more), 0 : 0; }, {0, content + more}},
        {"grown again and again",
         [&](int n) { return n < 9 ? append(more), 0 : 0; },
         {0, content + std::string(8 * more.size(), 'm')}},
        {"shrunken", [&](int n) { return n == 1 ? cut(99999), 0 : 0; }, {2500, ""}},
        {"emptied", [&](int n) { return n == 1 ? cut(0), 0 : 0; }, {2500, ""}},
        {"a read that fails", [](int n) { return n == 1 ? EIO : 0; }, {2500, ""}},
        {"a failure at the end", [](int n) { return n == 2 ? EIO : 0; }, {2500, ""}},
        {"a failure behind the end", [&](int n) { return n == 2 ? append(more), 0
                                                     : n == 3   ? EIO
                                                                : 0; }, {2500, ""}},
    };
    const int descriptor = dup(0);
    close(descriptor);
    for (const auto& row : table) {
        folder.put("file", content);
        const Result result = readWith(path, row.atRead);
        EXPECT_TRUE(result == row.result) << row.what << ": " << result.code << ", " << result.output.size() << " bytes";
    }
    const int next = dup(0);
    EXPECT_EQ(next, descriptor); // none stays open
    close(next);
    cut(0x7FFFFFFF); // a hole, more than can be held
    EXPECT_EQ(readWith(path, [](int) { return ADD_FAILURE(), 0; }).code, 2500);
}

// The text of the failure, in a process that may not read the file.
TEST(Libraries, OneThatMayNotBeReadIsToldFromAMissingOne)
{
    const Folder folder;
    chmod(folder.path().c_str(), 0755);
    const std::string library = folder.put("library.so", "\x7F"
                                                         "ELF");
    chmod(library.c_str(), 0);
    const pid_t child = fork();
    if (child == 0) {
        const bool isUser = geteuid() != 0 || setuid(65534) == 0;
        const Context context;
        const bool refused = VRNO_MEDIA_Load(context, library.c_str()) == 2510;
        _exit(isUser && refused && context.error().ends_with("(fnc=LoadLibrary,errcode=13)") ? 0 : 1);
    }
    int status = 1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
}

// A library that the system does not let go: its handle is given back behind our back.
TEST(Libraries, OneThatCannotBeReleasedStaysLoaded)
{
    Context context;
    VRNO_API_CTX& fields = *context;
    void* const library = fields.hMediaLib = dlopen("libm.so.6", RTLD_NOW);
    ASSERT_EQ(dlclose(library), 0);
    EXPECT_EQ(VRNO_MEDIA_Unload(context), 2511);
    EXPECT_EQ(context.error(), "[VRNO_MEDIA_Unload] DLL을 해제하는데 실패 (fnc=FreeLibrary,errcode=22)");
    EXPECT_EQ(fields.hMediaLib, library);
    fields.hMediaLib = nullptr;
}

TEST(Libraries, FinishReleasesTheLoadedOne)
{
    {
        const Context context;
        ASSERT_EQ(VRNO_MEDIA_Load(context, ODD_STORAGE_LIBRARY), 0);
        EXPECT_NE(dlopen(ODD_STORAGE_LIBRARY, RTLD_NOW | RTLD_NOLOAD), nullptr);
    }
    void* const library = dlopen(ODD_STORAGE_LIBRARY, RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(library, nullptr); // by the handle above
    dlclose(library);
    dlclose(library);
    EXPECT_EQ(dlopen(ODD_STORAGE_LIBRARY, RTLD_NOW | RTLD_NOLOAD), nullptr);
}

// The storage library, and this library as a program loads it.
TEST(Libraries, AreLoadedAThousandTimes)
{
    const auto mapped = [] { // a sanitizer's own memory has no file
        std::ifstream maps("/proc/self/maps");
        return std::count(std::istreambuf_iterator<char>(maps), {}, '/');
    };
    const auto use = [] {
        void* const library = dlopen(VRNO_LIBRARY, RTLD_NOW);
        const auto init = reinterpret_cast<decltype(&VRNO_API_Init)>(dlsym(library, "VRNO_API_Init"));
        const auto draw = reinterpret_cast<decltype(&VRNO_CRYPT_GenKeyAndIV)>(dlsym(library, "VRNO_CRYPT_GenKeyAndIV"));
        const auto load = reinterpret_cast<decltype(&VRNO_MEDIA_Load)>(dlsym(library, "VRNO_MEDIA_Load"));
        const auto finish = reinterpret_cast<decltype(&VRNO_API_Finish)>(dlsym(library, "VRNO_API_Finish"));
        VRNO_API_CTX* context = nullptr;
        ASSERT_EQ(init(&context, "/"), 0);
        EXPECT_EQ(draw(context, VRNO_SYM_SEED), 0);
        EXPECT_EQ(load(context, STORAGE_LIBRARY), 0);
        EXPECT_EQ(finish(&context), 0);
        EXPECT_EQ(dlclose(library), 0);
    };
    use();
    const auto before = mapped();
    for (int i = 0; i < 1000; ++i) use();
    EXPECT_EQ(mapped(), before);
    EXPECT_EQ(dlopen(VRNO_LIBRARY, RTLD_NOW | RTLD_NOLOAD), nullptr);
}
