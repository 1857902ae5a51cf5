// SEED (RFC 4269): a block cipher with a key and blocks of 128 bits, and its CBC mode.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vrno {

inline constexpr int SEED_ROUNDS = 16, SEED_BLOCK = 16;

// K(1,0), K(1,1), K(2,0) ... K(16,1) in native word order: 128 bytes, opaque to callers.
struct SEED_Schedule {
    std::uint32_t words[2 * SEED_ROUNDS];
};

// The schedule of a user key of 16 bytes.
void SEED_SetKey(SEED_Schedule& schedule, const unsigned char* userKey);

// One block in place, as four words in the order of the block, each the big-endian value of its four bytes.
void SEED_Encrypt(const SEED_Schedule& schedule, std::uint32_t* block);
void SEED_Decrypt(const SEED_Schedule& schedule, std::uint32_t* block);

// `length` is a multiple of 16; bytes after the last whole block are ignored. The output may be the input, and must not
// overlap it otherwise. The chaining value of 16 bytes is read first, and replaced by that for the next block at the end.
void SEED_CbcEncrypt(const SEED_Schedule& schedule, unsigned char* output, const unsigned char* input, std::size_t length,
                     unsigned char* chainingValue);
void SEED_CbcDecrypt(const SEED_Schedule& schedule, unsigned char* output, const unsigned char* input, std::size_t length,
                     unsigned char* chainingValue);

} // namespace vrno
