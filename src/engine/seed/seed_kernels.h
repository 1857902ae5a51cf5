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

inline constexpr Kernel<CbcFunction> seedCbcDecryptKernels[] = {
    {"portable", CpuFeature::none, seedCbcDecryptPortable},
};

} // namespace vrno
