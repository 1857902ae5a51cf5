// What the processor can do, and the choice among the kernels of a function.
#pragma once

#include <cstddef>

namespace vrno {

enum class CpuFeature : unsigned {
    none,          // what every processor has
    shaExtensions, // the SHA-1 instructions of x86, with SSSE3 and SSE4.1 for the shuffles around them
    avx2,          // AVX2, whose registers the operating system saves
    vbmi512,       // AVX-512 F, BW and VBMI, whose registers the operating system saves
    gfni512,       // GFNI with AVX-512 F, BW and VL, whose registers the operating system saves
    gfni256,       // GFNI with AVX2, whose registers the operating system saves
    aes256,        // AES-NI with AVX2, whose registers the operating system saves
    ifma512,       // AVX-512 F, VL and IFMA, whose registers the operating system saves, and BMI2
};

// Asks the processor on the first call only. May be called from any thread.
bool cpuHas(CpuFeature feature);
// From now on the processor lacks the feature. It is for tests, which run the slower kernels by it.
void cpuForget(CpuFeature feature);

// A kernel is one body of a function that has several, with the feature that it needs. A table of kernels lists the fastest
// first and ends with one that needs nothing.
template <class Function> struct Kernel {
    const char* name;
    CpuFeature needs;
    Function* run;
};

template <class Function, std::size_t count> Function* pick(const Kernel<Function> (&kernels)[count])
{
    for (const Kernel<Function>& kernel : kernels) {
        if (cpuHas(kernel.needs)) return kernel.run;
    }
    return kernels[count - 1].run;
}

} // namespace vrno
