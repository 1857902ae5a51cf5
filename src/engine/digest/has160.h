// HAS-160 (TTAS.KO-12.0011/R2): a digest of 20 bytes.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vrno {

inline constexpr std::size_t has160DigestLength = 20;

// A plain record: a copy of it goes on from the same place.
struct HAS160_State {
    std::uint32_t bitCountLow; // message length in bits modulo 2^64; (bitCountLow >> 3) % 64 bytes wait
    std::uint32_t bitCountHigh;
    std::uint32_t h[5];
    std::uint32_t block[16]; // the waiting bytes, as they came
};

// Update takes `length` bytes, any number; `data` may be null where it is 0, and must not lie in the state.
// Final writes 20 bytes outside the state, which then takes nothing but Init and is not wiped.
void HAS160_Init(HAS160_State& state);
void HAS160_Update(HAS160_State& state, const void* data, std::size_t length);
void HAS160_Final(HAS160_State& state, unsigned char* digest);

// All of it in one call, its state wiped; `digest` may overlap `data`.
void HAS160_Digest(unsigned char* digest, const void* data, std::size_t length);

} // namespace vrno
