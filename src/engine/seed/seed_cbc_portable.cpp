// CBC decryption in plain C++. The rounds of a block are one chain of table lookups, each of which waits for the one before
// it. Several blocks side by side use that time.
#include "engine/seed/seed_kernels.h"
#include "engine/seed/seed_round.h"

namespace vrno {

using namespace seed;

// Decrypts as many groups of N blocks as there are, and advances behind them.
template <std::size_t N>
static void decryptGroups(const SEED_Schedule& schedule, unsigned char*& output, const unsigned char*& input, std::size_t& blocks,
                          Block& chain)
{
    for (; blocks >= N; blocks -= N, input += N * SEED_BLOCK, output += N * SEED_BLOCK) {
        Block cipher[N], plain[N];
#pragma GCC unroll 8
        for (std::size_t i = 0; i < N; ++i) plain[i] = cipher[i] = loadBlock(input + i * SEED_BLOCK);
        rounds<false>(schedule, plain);
#pragma GCC unroll 8
        for (std::size_t i = 0; i < N; ++i) storeBlock(output + i * SEED_BLOCK, plain[i] ^ (i == 0 ? chain : cipher[i - 1]));
        chain = cipher[N - 1];
    }
}

void seedCbcDecryptPortable(const SEED_Schedule& schedule, unsigned char* output, const unsigned char* input, std::size_t blocks,
                            unsigned char* chainingValue)
{
    Block chain = loadBlock(chainingValue);
    decryptGroups<4>(schedule, output, input, blocks, chain);
    decryptGroups<1>(schedule, output, input, blocks, chain);
    storeBlock(chainingValue, chain);
}

} // namespace vrno
