#include "engine/seed/seed.h"

#include "engine/seed/seed_kernels.h"
#include "engine/seed/seed_round.h"

namespace vrno {

using namespace seed;

void SEED_SetKey(SEED_Schedule& schedule, const unsigned char* userKey)
{
    Block key = loadBlock(userKey);
    std::uint32_t constant = 0x9E3779B9; // the golden ratio; rotated for the further rounds
    for (int i = 0; i < SEED_ROUNDS; ++i) {
        schedule.words[2 * i] = G(key.l0 + key.r0 - constant);
        schedule.words[2 * i + 1] = G(key.l1 - key.r1 + constant);
        if (i % 2 == 0) { // rotates the left half right by an octet; the other rounds rotate the right half left
            key = {key.l0 >> 8 | key.l1 << 24, key.l1 >> 8 | key.l0 << 24, key.r0, key.r1};
        } else {
            key = {key.l0, key.l1, key.r0 << 8 | key.r1 >> 24, key.r1 << 8 | key.r0 >> 24};
        }
        constant = std::rotl(constant, 1);
    }
}

template <bool encrypts> static void oneBlock(const SEED_Schedule& schedule, std::uint32_t* words)
{
    Block block = {words[0], words[1], words[2], words[3]};
    rounds<encrypts>(schedule, block);
    words[0] = block.l0;
    words[1] = block.l1;
    words[2] = block.r0;
    words[3] = block.r1;
}

void SEED_Encrypt(const SEED_Schedule& schedule, std::uint32_t* block) { oneBlock<true>(schedule, block); }

void SEED_Decrypt(const SEED_Schedule& schedule, std::uint32_t* block) { oneBlock<false>(schedule, block); }

void SEED_CbcEncrypt(const SEED_Schedule& schedule, unsigned char* output, const unsigned char* input, std::size_t length,
                     unsigned char* chainingValue)
{
    Block chain = loadBlock(chainingValue);
    for (std::size_t blocks = length / SEED_BLOCK; blocks > 0; --blocks, input += SEED_BLOCK, output += SEED_BLOCK) {
        chain = chain ^ loadBlock(input);
        rounds<true>(schedule, chain);
        storeBlock(output, chain);
    }
    storeBlock(chainingValue, chain);
}

void SEED_CbcDecrypt(const SEED_Schedule& schedule, unsigned char* output, const unsigned char* input, std::size_t length,
                     unsigned char* chainingValue)
{
    pick(seedCbcDecryptKernels)(schedule, output, input, length / SEED_BLOCK, chainingValue);
}

} // namespace vrno
