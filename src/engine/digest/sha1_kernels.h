// The kernels of SHA-1's block function.
#pragma once

#include "engine/cpu.h"
#include "engine/digest/iterated.h"

namespace vrno {

void sha1BlocksPortable(std::uint32_t* h, const unsigned char* blocks, std::size_t count);
void sha1BlocksShani(std::uint32_t* h, const unsigned char* blocks, std::size_t count); // on x86 only

inline constexpr Kernel<BlockFunction> sha1Kernels[] = {
#if defined(__x86_64__) || defined(__i386__)
    {"shani", CpuFeature::shaExtensions, sha1BlocksShani},
#endif
    {"portable", CpuFeature::none, sha1BlocksPortable},
};

} // namespace vrno
