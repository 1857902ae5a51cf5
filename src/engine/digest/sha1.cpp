#include "engine/digest/sha1.h"

#include "engine/digest/iterated.h"
#include "engine/digest/sha1_kernels.h"

namespace vrno {

namespace {

struct Sha1 {
    using State = SHA1_State;
    static constexpr std::endian order = std::endian::big;
    static constexpr std::uint32_t initial[5] = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476, 0xC3D2E1F0};
    static void blocks(std::uint32_t* h, const unsigned char* blocks, std::size_t count) { pick(sha1Kernels)(h, blocks, count); }
};

} // namespace

void SHA1_Init(SHA1_State& state) { iterated::init<Sha1>(state); }

void SHA1_Update(SHA1_State& state, const void* data, std::size_t length) { iterated::update<Sha1>(state, data, length); }

void SHA1_Final(SHA1_State& state, unsigned char* digest) { iterated::final<Sha1>(state, digest); }

void SHA1_Digest(unsigned char* digest, const void* data, std::size_t length) { iterated::digest<Sha1>(digest, data, length); }

void SHA1_Compress(unsigned char* output, const std::uint32_t* input)
{
    SHA1_State state;
    SHA1_Init(state);
    Sha1::blocks(state.h, reinterpret_cast<const unsigned char*>(input), 1);
    for (std::size_t i = 0; i < 5; ++i) store32<Sha1::order>(output + 4 * i, state.h[i]);
    wipe(state.h, sizeof state.h);
}

} // namespace vrno
