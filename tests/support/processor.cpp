// The tests on a lesser processor: VRNO_PROCESSOR is avx2 (no AVX-512), aes (no GFNI either) or portable (no kernel but the
// portable).
#include "base/cpu.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace {

struct LesserProcessor : testing::Environment {
    void SetUp() override
    {
        using enum vrno::CpuFeature;
        const char* const set = std::getenv("VRNO_PROCESSOR");
        const std::string name = set ? set : "";
        if (name.empty()) return;
        for (const vrno::CpuFeature feature : {gfni512, ifma512, vbmi512}) vrno::cpuForget(feature);
        if (name == "avx2") return;
        vrno::cpuForget(gfni256);
        if (name == "aes") return;
        ASSERT_EQ(name, "portable");
        for (const vrno::CpuFeature feature : {aes256, avx2, shaExtensions}) vrno::cpuForget(feature);
    }
};

[[maybe_unused]] const testing::Environment* const processor = testing::AddGlobalTestEnvironment(new LesserProcessor);

} // namespace
