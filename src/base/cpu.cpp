#include "base/cpu.h"

#include <atomic>

#if defined(__x86_64__) || defined(__i386__)
#include <cpuid.h>
#endif

namespace vrno {

namespace {

constexpr unsigned bit(CpuFeature feature) { return 1U << static_cast<unsigned>(feature); }

#if defined(__x86_64__) || defined(__i386__)
// The register sets that the operating system saves. Valid only if OSXSAVE is set.
unsigned savedRegisterSets()
{
    unsigned low = 0, high = 0;
    __asm__ volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
    return low;
}

unsigned askProcessor()
{
    constexpr auto has = [](unsigned flags, unsigned wanted) { return (flags & wanted) == wanted; };
    constexpr unsigned sse = 0x02, avx = 0x04, avx512 = 0xE0; // in XCR0
    unsigned found = bit(CpuFeature::none);
    unsigned eax = 0, ebx = 0, ecx = 0, edx = 0;
    if (!__get_cpuid(1, &eax, &ebx, &ecx, &edx)) return found;
    const unsigned basic = ecx;
    if (!__get_cpuid_count(7, 0, &eax, &ebx, &ecx, &edx)) return found;
    if (has(basic, bit_SSSE3 | bit_SSE4_1) && has(ebx, bit_SHA)) found |= bit(CpuFeature::shaExtensions);
    const unsigned saved = has(basic, bit_OSXSAVE) ? savedRegisterSets() : 0;
    if (!has(saved, sse | avx)) return found;
    if (has(ebx, bit_AVX2)) found |= bit(CpuFeature::avx2);
    if (has(ebx, bit_AVX2) && has(ecx, bit_GFNI)) found |= bit(CpuFeature::gfni256);
    if (has(ebx, bit_AVX2) && has(basic, bit_AES)) found |= bit(CpuFeature::aes256);
    if (!has(saved, avx512)) return found;
    if (has(ebx, bit_AVX512F | bit_AVX512BW) && has(ecx, bit_AVX512VBMI)) found |= bit(CpuFeature::vbmi512);
    if (has(ecx, bit_GFNI) && has(ebx, bit_AVX512F | bit_AVX512BW | bit_AVX512VL)) found |= bit(CpuFeature::gfni512);
    if (has(ebx, bit_AVX512F | bit_AVX512VL | bit_AVX512IFMA | bit_BMI2)) found |= bit(CpuFeature::ifma512);
    return found;
}
#else
unsigned askProcessor() { return bit(CpuFeature::none); }
#endif

constinit std::atomic<unsigned> features{0}; // zero before the first call; two first calls at once store the same value

} // namespace

bool cpuHas(CpuFeature feature)
{
    unsigned found = features.load(std::memory_order_relaxed);
    if (found == 0) {
        found = askProcessor();
        features.store(found, std::memory_order_relaxed);
    }
    return (found & bit(feature)) != 0;
}

void cpuForget(CpuFeature feature)
{
    if (cpuHas(feature)) features.fetch_and(~bit(feature), std::memory_order_relaxed);
}

} // namespace vrno
