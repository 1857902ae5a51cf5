// MD5 (RFC 1321): a digest of 16 bytes.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vrno {

inline constexpr std::size_t md5DigestLength = 16;

// A plain record: a copy of it goes on from the same place.
struct MD5_State {
    std::uint32_t bitCountLow; // message length in bits modulo 2^64; (bitCountLow >> 3) % 64 bytes wait
    std::uint32_t bitCountHigh;
    std::uint32_t h[4];
    std::uint32_t block[16]; // the waiting bytes, as they came
};

// Update takes `length` bytes, any number; `data` may be null where it is 0, and must not lie in the state.
// Final writes 16 bytes outside the state, which then takes nothing but Init and is not wiped.
void MD5_Init(MD5_State& state);
void MD5_Update(MD5_State& state, const void* data, std::size_t length);
void MD5_Final(MD5_State& state, unsigned char* digest);

// All of it in one call, its state wiped; `digest` may overlap `data`.
void MD5_Digest(unsigned char* digest, const void* data, std::size_t length);

} // namespace vrno
