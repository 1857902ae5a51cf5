// The bodies of CBC decryption. Encryption is a chain and has one; decryption goes over several blocks at once.
#pragma once

#include "engine/cpu.h"
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
