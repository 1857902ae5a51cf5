// SHA-1's block function and the chains of HMAC in plain C++, the 80 steps unrolled.
#include "engine/digest/sha1.h"
#include "engine/digest/sha1_kernels.h"

#include <algorithm>
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

// Hashes the block `w`, and leaves the end of its schedule there.
void sha1Block(std::uint32_t* h, std::uint32_t (&w)[16])
{
    std::uint32_t v[5] = {h[0], h[1], h[2], h[3], h[4]};
    sha1Steps(v, w, std::make_index_sequence<80>());
    for (std::size_t i = 0; i < 5; ++i) h[i] += v[i];
}

// A chain's work area, wiped on destruction.
struct ChainArea {
    std::uint32_t link[5], sum[5], w[16];

    ChainArea() {}
    ChainArea(const ChainArea&) = delete;
    ChainArea& operator=(const ChainArea&) = delete;
    ~ChainArea() { wipe(this, sizeof *this); }
};

// The link becomes the digest of a pad and the link.
void hashLink(ChainArea& area, const std::uint32_t* pad)
{
    std::fill_n(area.w, 16, 0U);
    std::copy_n(area.link, 5, area.w);
    area.w[5] = 0x80000000;
    area.w[15] = linkBits;
    std::copy_n(pad, 5, area.link);
    sha1Block(area.link, area.w);
}

} // namespace

void sha1BlocksPortable(std::uint32_t* h, const unsigned char* blocks, std::size_t count)
{
    for (; count > 0; --count, blocks += 64) {
        std::uint32_t w[16];
        for (std::size_t i = 0; i < 16; ++i) w[i] = load32<std::endian::big>(blocks + 4 * i);
        sha1Block(h, w);
    }
}

void sha1ChainsPortable(const std::uint32_t* inner, const std::uint32_t* outer, unsigned char* xorOfLinks,
                        const unsigned char* firstLinks, std::size_t chains, int furtherLinks)
{
    ChainArea area;
    for (; chains > 0; --chains, xorOfLinks += sha1DigestLength, firstLinks += sha1DigestLength) {
        for (std::size_t i = 0; i < 5; ++i) area.link[i] = area.sum[i] = load32<std::endian::big>(firstLinks + 4 * i);
        for (int links = furtherLinks; links > 0; --links) {
            hashLink(area, inner);
            hashLink(area, outer);
            for (std::size_t i = 0; i < 5; ++i) area.sum[i] ^= area.link[i];
        }
        for (std::size_t i = 0; i < 5; ++i) store32<std::endian::big>(xorOfLinks + 4 * i, area.sum[i]);
    }
}

} // namespace vrno
