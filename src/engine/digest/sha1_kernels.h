// The kernels of SHA-1's block function and of the chains of HMAC.
#pragma once

#include "base/cpu.h"
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

// The chains of HMAC_Chain, whose links stand one behind the other. `inner` and `outer` are the chaining values after the pads.
using ChainFunction = void(const std::uint32_t* inner, const std::uint32_t* outer, unsigned char* xorOfLinks,
                           const unsigned char* firstLinks, std::size_t chains, int furtherLinks);

ChainFunction sha1ChainsPortable;
ChainFunction sha1ChainsShani; // on x86 only

// The end of the block that holds a link, in bits: what was hashed is a pad of 64 bytes and the link.
inline constexpr std::uint32_t linkBits = 8 * (64 + 20);

inline constexpr Kernel<ChainFunction> sha1ChainKernels[] = {
#if defined(__x86_64__) || defined(__i386__)
    {"shani", CpuFeature::shaExtensions, sha1ChainsShani},
#endif
    {"portable", CpuFeature::none, sha1ChainsPortable},
};

} // namespace vrno
