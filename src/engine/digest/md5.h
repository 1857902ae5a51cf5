// MD5 (RFC 1321): a digest of 16 bytes.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vrno {

inline constexpr std::size_t md5DigestLength = 16;

// A plain record; a copy continues from the same point.
struct MD5_State {
    std::uint32_t bitCountLow; // message length in bits modulo 2^64; (bitCountLow >> 3) % 64 bytes are in the block
    std::uint32_t bitCountHigh;
    std::uint32_t h[4];
    std::uint32_t block[16]; // the bytes in the order of the message
};

// Update takes any number of bytes; `data` may be null for a length of 0, and must not overlap the state.
// Final writes 16 bytes outside the state. After it only Init is valid; the state is not wiped.
void MD5_Init(MD5_State& state);
void MD5_Update(MD5_State& state, const void* data, std::size_t length);
void MD5_Final(MD5_State& state, unsigned char* digest);

// The three in one call, which wipes its state; `digest` may overlap `data`.
void MD5_Digest(unsigned char* digest, const void* data, std::size_t length);

} // namespace vrno
