#include "engine/digest/has160.h"

#include "engine/digest/iterated.h"

#include <utility>

namespace vrno {

namespace {

constexpr std::uint32_t constants[4] = {0x00000000, 0x5A827999, 0x6ED9EBA1, 0x8F1BBCDC};
constexpr int rotationsOfA[20] = {5, 11, 7, 15, 6, 13, 8, 14, 7, 12, 9, 11, 8, 15, 6, 12, 9, 14, 5, 13};
constexpr int rotationsOfB[4] = {10, 17, 25, 30};

// A round uses the 16 words in strides, starting with its first word.
constexpr struct {
    std::size_t first, stride;
} orders[4] = {{0, 1}, {3, 3}, {12, 9}, {7, 11}};

// The `i`-th word of a round.
template <std::size_t round, std::size_t i>
constexpr std::size_t word = (orders[round].first + orders[round].stride * (i % 16)) % 16;

// A round has four groups of five steps. The last four steps of a group use one word each. The first step uses the XOR of the
// four words of the group after the next one.
template <std::size_t round, std::size_t i> [[gnu::always_inline]] inline std::uint32_t has160Message(const std::uint32_t (&x)[16])
{
    constexpr std::size_t group = i / 5, place = i % 5;
    if constexpr (place > 0) {
        return x[word<round, 4 * group + place - 1>];
    } else {
        constexpr std::size_t other = 4 * group + 8;
        return x[word<round, other>] ^ x[word<round, other + 1>] ^ x[word<round, other + 2>] ^ x[word<round, other + 3>];
    }
}

template <std::size_t round>
[[gnu::always_inline]] inline std::uint32_t has160Mix(std::uint32_t b, std::uint32_t c, std::uint32_t d)
{
    if constexpr (round == 0) return d ^ (b & (c ^ d));
    if constexpr (round == 2) return c ^ (b | ~d);
    return b ^ c ^ d;
}

// The variables a to e stay in `v`; each step moves their roles by one place.
template <std::size_t t> [[gnu::always_inline]] inline void has160Step(std::uint32_t (&v)[5], const std::uint32_t (&x)[16])
{
    constexpr std::size_t round = t / 20;
    const auto role = [&v](std::size_t place) -> std::uint32_t& { return v[(place + 80 - t) % 5]; };
    const std::uint32_t a = role(0), b = role(1), c = role(2), d = role(3);
    role(4) += has160Message<round, t % 20>(x) + constants[round] + std::rotl(a, rotationsOfA[t % 20]) + has160Mix<round>(b, c, d);
    role(1) = std::rotl(b, rotationsOfB[round]);
}

template <std::size_t... t>
[[gnu::always_inline]] inline void has160Steps(std::uint32_t (&v)[5], const std::uint32_t (&x)[16], std::index_sequence<t...>)
{
    (has160Step<t>(v, x), ...);
}

void has160Blocks(std::uint32_t* h, const unsigned char* blocks, std::size_t count)
{
    for (; count > 0; --count, blocks += 64) {
        std::uint32_t v[5] = {h[0], h[1], h[2], h[3], h[4]}, x[16];
        for (std::size_t i = 0; i < 16; ++i) x[i] = load32<std::endian::little>(blocks + 4 * i);
        has160Steps(v, x, std::make_index_sequence<80>());
        for (std::size_t i = 0; i < 5; ++i) h[i] += v[i];
    }
}

struct Has160 {
    struct State {
        std::uint32_t bitCountLow, bitCountHigh;
        std::uint32_t h[5];
        std::uint32_t block[16];
    };
    static constexpr std::endian order = std::endian::little;
    static constexpr std::uint32_t initial[5] = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476, 0xC3D2E1F0};
    static constexpr auto blocks = has160Blocks;
};

} // namespace

void HAS160_Digest(unsigned char* digest, const void* data, std::size_t length) { iterated::digest<Has160>(digest, data, length); }

} // namespace vrno
