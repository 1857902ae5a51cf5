#include "engine/digest/has160.h"

#include "engine/digest/iterated.h"

#include <utility>

namespace vrno {

namespace {

constexpr std::uint32_t constants[4] = {0x00000000, 0x5A827999, 0x6ED9EBA1, 0x8F1BBCDC};
constexpr int rotationsOfA[20] = {5, 11, 7, 15, 6, 13, 8, 14, 7, 12, 9, 11, 8, 15, 6, 12, 9, 14, 5, 13};
constexpr int rotationsOfB[4] = {10, 17, 25, 30};

// A round takes the 16 words in strides, from its first word on.
constexpr struct {
    std::size_t first, stride;
} orders[4] = {{0, 1}, {3, 3}, {12, 9}, {7, 11}};

// The `i`-th word of a round.
template <std::size_t round, std::size_t i>
constexpr std::size_t word = (orders[round].first + orders[round].stride * (i % 16)) % 16;

// A round is four groups of five steps. The last four of a group take a word each; the first takes the sum modulo two of
// the four that the group after the next one has.
template <std::size_t round, std::size_t i> [[gnu::always_inline]] inline std::uint32_t message(const std::uint32_t (&x)[16])
{
    constexpr std::size_t group = i / 5, place = i % 5;
    if constexpr (place > 0) {
        return x[word<round, 4 * group + place - 1>];
    } else {
        constexpr std::size_t other = 4 * group + 8;
        return x[word<round, other>] ^ x[word<round, other + 1>] ^ x[word<round, other + 2>] ^ x[word<round, other + 3>];
    }
}

template <std::size_t round> [[gnu::always_inline]] inline std::uint32_t mix(std::uint32_t b, std::uint32_t c, std::uint32_t d)
{
    if constexpr (round == 0) return d ^ (b & (c ^ d));
    if constexpr (round == 2) return c ^ (b | ~d);
    return b ^ c ^ d;
}

// The variables a to e stay in `v`, and their roles move on by one place a step.
template <std::size_t t> [[gnu::always_inline]] inline void step(std::uint32_t (&v)[5], const std::uint32_t (&x)[16])
{
    constexpr std::size_t round = t / 20;
    const auto role = [&v](std::size_t place) -> std::uint32_t& { return v[(place + 80 - t) % 5]; };
    const std::uint32_t a = role(0), b = role(1), c = role(2), d = role(3);
    role(4) += message<round, t % 20>(x) + constants[round] + std::rotl(a, rotationsOfA[t % 20]) + mix<round>(b, c, d);
    role(1) = std::rotl(b, rotationsOfB[round]);
}

template <std::size_t... t>
[[gnu::always_inline]] inline void steps(std::uint32_t (&v)[5], const std::uint32_t (&x)[16], std::index_sequence<t...>)
{
    (step<t>(v, x), ...);
}

struct Has160 {
    using State = HAS160_State;
    static constexpr std::endian order = std::endian::little;
    static constexpr std::uint32_t initial[5] = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476, 0xC3D2E1F0};
    static void blocks(std::uint32_t* h, const unsigned char* blocks, std::size_t count)
    {
        for (; count > 0; --count, blocks += 64) {
            std::uint32_t v[5] = {h[0], h[1], h[2], h[3], h[4]}, x[16];
            for (std::size_t i = 0; i < 16; ++i) x[i] = load32<std::endian::little>(blocks + 4 * i);
            steps(v, x, std::make_index_sequence<80>());
            for (std::size_t i = 0; i < 5; ++i) h[i] += v[i];
        }
    }
};

} // namespace

void HAS160_Init(HAS160_State& state)
{
    iterated::init<Has160>(state);
}

void HAS160_Update(HAS160_State& state, const void* data, std::size_t length)
{
    iterated::update<Has160>(state, data, length);
}

void HAS160_Final(HAS160_State& state, unsigned char* digest)
{
    iterated::final<Has160>(state, digest);
}

void HAS160_Digest(unsigned char* digest, const void* data, std::size_t length)
{
    iterated::digest<Has160>(digest, data, length);
}

} // namespace vrno
