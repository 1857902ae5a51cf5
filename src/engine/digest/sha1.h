// SHA-1 (FIPS 180-4, RFC 3174): a digest of 20 bytes.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vrno {

inline constexpr std::size_t sha1DigestLength = 20;

// A plain record: a copy of it goes on from the same place.
struct SHA1_State {
    std::uint32_t bitCountLow; // message length in bits modulo 2^64; (bitCountLow >> 3) % 64 bytes wait
    std::uint32_t bitCountHigh;
    std::uint32_t block[16]; // the waiting bytes, as they came
    std::uint32_t h[5];
};

// Update takes `length` bytes, any number; `data` may be null where it is 0, and must not lie in the state.
// Final writes 20 bytes outside the state, which then takes nothing but Init and is not wiped.
void SHA1_Init(SHA1_State& state);
void SHA1_Update(SHA1_State& state, const void* data, std::size_t length);
void SHA1_Final(SHA1_State& state, unsigned char* digest);

// All of it in one call, its state wiped; `digest` may overlap `data`.
void SHA1_Digest(unsigned char* digest, const void* data, std::size_t length);

// One compression from the initial value, without padding or length: the function G of FIPS 186. The input is 64 bytes as
// they lie in memory, the output 20 bytes, which may overlap it.
void SHA1_Compress(unsigned char* output, const std::uint32_t* input);

} // namespace vrno
