// What is different on Windows: names of files in the active code page, errors of the loader, a DLL that is loaded late and by threads.
#include "support/calls.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <thread>
#include <vector>

using namespace test;

static const std::filesystem::path sample = SAMPLES "/hong.der";

// A name that Windows has in UTF-16, as the interface takes it.
static std::string inActiveCodePage(const std::wstring& name)
{
    char out[512];
    const int length = WideCharToMultiByte(CP_ACP, 0, name.data(), static_cast<int>(name.size()), out, sizeof out, nullptr, nullptr);
    return std::string(out, static_cast<std::size_t>(length));
}

TEST(Windows, PathsAreInTheActiveCodePage)
{
    const char* const expected = std::getenv("VRNO_CODE_PAGE");
    ASSERT_NE(expected, nullptr);
    ASSERT_EQ(std::to_string(GetACP()), expected);
    const auto folder = std::filesystem::temp_directory_path();
    for (const auto& [name, isKorean] : {std::pair{L"vrno (plain).der", false}, {L"vrno 홍길동.der", true}}) {
        const auto path = folder / name;
        std::filesystem::copy_file(sample, path, std::filesystem::copy_options::overwrite_existing);
        const Context context;
        const Result read = call(context, "VRNO_MEDIA_DISK_ReadCert path out", {{"path", inActiveCodePage(path.wstring())}});
        EXPECT_EQ(read.code, isKorean && GetACP() != 949 ? 2504 : 0) << context.error();
        std::filesystem::remove(path);
    }
}

TEST(Windows, FilesThatAreNoneAreRefused)
{
    const Context context;
    for (const auto& [path, code] : {std::pair{"C:/nothing", 2500}, {"C:/windows", 2500}, {"NUL", 2500}}) {
        EXPECT_EQ(call(context, "VRNO_MEDIA_DISK_ReadFile path out", {{"path", path}}).code, code) << path;
    }
}

TEST(Windows, StorageLibrariesAreLoadedOrTheErrorOfTheSystemIsTold)
{
    const Context context;
    const struct {
        const char* path;
        DWORD error;
    } table[] = {{"C:/nothing.dll", ERROR_MOD_NOT_FOUND}, {SAMPLES "/hong.der", ERROR_BAD_EXE_FORMAT}};
    for (const auto& [path, error] : table) {
        EXPECT_EQ(VRNO_MEDIA_Load(context, path), 2510);
        EXPECT_TRUE(context.error().ends_with("errcode=" + std::to_string(error) + ")")) << context.error();
    }
    EXPECT_EQ(VRNO_MEDIA_Load(context, STORAGE_LIBRARY), 0) << context.error();
    EXPECT_EQ(call(context, "VRNO_MEDIA_CARD_ReadCert 1 1234 out").code, 2514) << context.error();
    EXPECT_EQ(VRNO_MEDIA_Unload(context), 0);
}

TEST(Windows, TheSessionOfTheOtherSystemsGoesThrough)
{
    const std::vector<Step> steps = session("certificate");
    const std::vector<Result> results = run(steps, goodValues());
    for (std::size_t i = 0; i < steps.size(); ++i) {
        const bool mayFail = std::ranges::find(steps[i].failures, results[i].code) != steps[i].failures.end();
        EXPECT_TRUE(results[i].code == 0 || mayFail) << steps[i].line << " gives " << results[i].code;
    }
}

// Each time a text of the engine is made, which is thread-local.
TEST(Windows, ADllIsLoadedByThreadsAThousandTimes)
{
    const auto use = [] {
        const HMODULE library = LoadLibraryA(VRNO_LIBRARY);
        ASSERT_NE(library, nullptr) << GetLastError();
        const auto find = [library](const char* name) { return reinterpret_cast<void*>(GetProcAddress(library, name)); };
        const auto init = reinterpret_cast<decltype(&VRNO_API_Init)>(find("VRNO_API_Init"));
        const auto finish = reinterpret_cast<decltype(&VRNO_API_Finish)>(find("VRNO_API_Finish"));
        const auto draw = reinterpret_cast<decltype(&VRNO_CRYPT_GenKeyAndIV)>(find("VRNO_CRYPT_GenKeyAndIV"));
        const auto decrypt = reinterpret_cast<decltype(&VRNO_CRYPT_Decrypt)>(find("VRNO_CRYPT_Decrypt"));
        const auto text = reinterpret_cast<decltype(&VRNO_API_GetErrInfo)>(find("VRNO_API_GetErrInfo"));
        VRNO_API_CTX* context = nullptr;
        EXPECT_EQ(init(&context, "/"), 0);
        EXPECT_EQ(draw(context, VRNO_SYM_SEED), 0);
        unsigned char octets[15] = {};
        const VRNO_BINSTR message = {octets, 15};
        VRNO_BINSTR plain = {nullptr, 0};
        char told[2048] = "";
        EXPECT_EQ(decrypt(context, &message, &plain), 5006);
        EXPECT_EQ(text(context, sizeof told, told), 0);
        EXPECT_NE(std::string(told).find("ZIRC"), std::string::npos) << told;
        EXPECT_EQ(finish(&context), 0);
        EXPECT_TRUE(FreeLibrary(library));
    };
    const auto handles = [] {
        DWORD count = 0;
        GetProcessHandleCount(GetCurrentProcess(), &count);
        return count;
    };
    use();
    const DWORD before = handles();
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < 250; ++round) use();
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_LE(handles(), before + 8);
    EXPECT_EQ(GetModuleHandleA(VRNO_LIBRARY), nullptr);
}
