// SHA-1 (FIPS 180-4, RFC 3174): a digest of 20 bytes.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vrno {

inline constexpr std::size_t sha1DigestLength = 20;

// A plain record; a copy continues from the same point.
struct SHA1_State {
    std::uint32_t bitCountLow; // message length in bits modulo 2^64; (bitCountLow >> 3) % 64 bytes are in the block
    std::uint32_t bitCountHigh;
    std::uint32_t block[16]; // the bytes in the order of the message
    std::uint32_t h[5];
};

// Update takes any number of bytes; `data` may be null for a length of 0, and must not overlap the state.
// Final writes 20 bytes outside the state. After it only Init is valid; the state is not wiped.
void SHA1_Init(SHA1_State& state);
void SHA1_Update(SHA1_State& state, const void* data, std::size_t length);
void SHA1_Final(SHA1_State& state, unsigned char* digest);

// The three in one call, which wipes its state; `digest` may overlap `data`.
void SHA1_Digest(unsigned char* digest, const void* data, std::size_t length);

// One compression from the initial value, without padding or length: the function G of FIPS 186. The input is 64 bytes in
// memory order, the output 20 bytes, which may overlap it.
void SHA1_Compress(unsigned char* output, const std::uint32_t* input);

} // namespace vrno
