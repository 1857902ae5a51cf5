// SHA-1's block function in plain C++, the 80 steps unrolled.
#include "engine/digest/sha1_kernels.h"

#include <utility>

namespace vrno {

namespace {

constexpr std::uint32_t constants[4] = {0x5A827999, 0x6ED9EBA1, 0x8F1BBCDC, 0xCA62C1D6};

template <std::size_t round> [[gnu::always_inline]] inline std::uint32_t sha1Mix(std::uint32_t b, std::uint32_t c, std::uint32_t d)
{
    if constexpr (round == 0) return d ^ (b & (c ^ d));
    if constexpr (round == 2) return (b & c) + (d & (b ^ c)); // no bit is in both, so + is OR
    return b ^ c ^ d;
}

// The variables a to e stay in `v`; each step moves their roles by one place. The schedule of 80 words is kept in 16.
template <std::size_t t> [[gnu::always_inline]] inline void sha1Step(std::uint32_t (&v)[5], std::uint32_t (&w)[16])
{
    constexpr std::size_t round = t / 20;
    const auto role = [&v](std::size_t place) -> std::uint32_t& { return v[(place + 80 - t) % 5]; };
    const std::uint32_t a = role(0), b = role(1), c = role(2), d = role(3);
    if constexpr (t >= 16) w[t % 16] = std::rotl(w[(t + 13) % 16] ^ w[(t + 8) % 16] ^ w[(t + 2) % 16] ^ w[t % 16], 1);
    role(4) += w[t % 16] + constants[round] + std::rotl(a, 5) + sha1Mix<round>(b, c, d);
    role(1) = std::rotl(b, 30);
}

template <std::size_t... t>
[[gnu::always_inline]] inline void sha1Steps(std::uint32_t (&v)[5], std::uint32_t (&w)[16], std::index_sequence<t...>)
{
    (sha1Step<t>(v, w), ...);
}

} // namespace

void sha1BlocksPortable(std::uint32_t* h, const unsigned char* blocks, std::size_t count)
{
    for (; count > 0; --count, blocks += 64) {
        std::uint32_t v[5] = {h[0], h[1], h[2], h[3], h[4]}, w[16];
        for (std::size_t i = 0; i < 16; ++i) w[i] = load32<std::endian::big>(blocks + 4 * i);
        sha1Steps(v, w, std::make_index_sequence<80>());
        for (std::size_t i = 0; i < 5; ++i) h[i] += v[i];
    }
}

} // namespace vrno
