// The kernels of CBC decryption, which work on several blocks at once. Encryption has one body: each block waits for the one
// before it.
#pragma once

#include "base/cpu.h"
#include "engine/seed/seed.h"

namespace vrno {

// As SEED_CbcDecrypt, with a count of whole blocks.
using CbcFunction = void(const SEED_Schedule& schedule, unsigned char* output, const unsigned char* input, std::size_t blocks,
                         unsigned char* chainingValue);

CbcFunction seedCbcDecryptPortable;
CbcFunction seedCbcDecryptGfni512, seedCbcDecryptGfni256, seedCbcDecryptAes256; // on x86 only

inline constexpr Kernel<CbcFunction> seedCbcDecryptKernels[] = {
#if defined(__x86_64__) || defined(__i386__)
    {"gfni512", CpuFeature::gfni512, seedCbcDecryptGfni512},
    {"gfni256", CpuFeature::gfni256, seedCbcDecryptGfni256},
    {"aes256", CpuFeature::aes256, seedCbcDecryptAes256},
#endif
    {"portable", CpuFeature::none, seedCbcDecryptPortable},
};

} // namespace vrno
