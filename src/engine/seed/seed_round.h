// The G function and the rounds of SEED, for one block or several side by side.
#pragma once

#include "engine/seed/seed.h"
#include "engine/seed/seed_tables.h"
#include "engine/words.h"

#include <bit>
#include <utility>

namespace vrno::seed {

// The octet that takes two steps to reach comes last.
[[gnu::always_inline]] inline std::uint32_t G(std::uint32_t x)
{
    return ((SS0[x & 0xFF] ^ SS1[x >> 8 & 0xFF]) ^ SS3[x >> 24]) ^ SS2[x >> 16 & 0xFF];
}

struct Block {
    std::uint32_t l0, l1, r0, r1;
};

inline Block loadBlock(const unsigned char* bytes)
{
    constexpr auto word = load32<std::endian::big>;
    return {word(bytes), word(bytes + 4), word(bytes + 8), word(bytes + 12)};
}

inline void storeBlock(unsigned char* bytes, const Block& block)
{
    store32<std::endian::big>(bytes, block.l0);
    store32<std::endian::big>(bytes + 4, block.l1);
    store32<std::endian::big>(bytes + 8, block.r0);
    store32<std::endian::big>(bytes + 12, block.r1);
}

inline Block operator^(const Block& a, const Block& b) { return {a.l0 ^ b.l0, a.l1 ^ b.l1, a.r0 ^ b.r0, a.r1 ^ b.r1}; }

// The place of a round's two words in the schedule.
template <bool encrypts> constexpr int keyPlace(int round) { return 2 * (encrypts ? round : SEED_ROUNDS - 1 - round); }

// Round `round` on a single block, whose steps all wait for each other. `first` is what the first G of this round takes, and
// becomes that of the next round. All of it but t0 and t1 is known early, and the compiler must not add them in another order.
template <bool encrypts, int round>
[[gnu::always_inline]] inline void oneRound(const SEED_Schedule& schedule, Block& b, std::uint32_t& first)
{
    constexpr int key = keyPlace<encrypts>(round), next = keyPlace<encrypts>(round + 1);
    std::uint32_t known = b.l0 ^ b.l1;
    if constexpr (round + 1 < SEED_ROUNDS) known ^= schedule.words[next] ^ schedule.words[next + 1];
    __asm__("" : "+r"(known));
    std::uint32_t t0 = b.r0 ^ schedule.words[key], t1 = G(first);
    t0 = G(t0 + t1);
    t1 = G(t1 + t0);
    t0 += t1;
    first = (known ^ t1) ^ t0;
    b = {b.r0, b.r1, b.l0 ^ t0, b.l1 ^ t1};
}

// One round on each of `N` blocks; it also swaps their halves.
template <std::size_t N> [[gnu::always_inline]] inline void oneRound(Block (&blocks)[N], std::uint32_t k0, std::uint32_t k1)
{
#pragma GCC unroll 8
    for (Block& b : blocks) {
        std::uint32_t t0 = b.r0 ^ k0, t1 = b.r1 ^ k1;
        t1 = G(t1 ^ t0);
        t0 = G(t0 + t1);
        t1 = G(t1 + t0);
        t0 += t1;
        b = {b.r0, b.r1, b.l0 ^ t0, b.l1 ^ t1};
    }
}

template <bool encrypts, int... i>
[[gnu::always_inline]] inline void allRounds(const SEED_Schedule& schedule, Block& b, std::integer_sequence<int, i...>)
{
    std::uint32_t first = b.r0 ^ b.r1 ^ schedule.words[keyPlace<encrypts>(0)] ^ schedule.words[keyPlace<encrypts>(0) + 1];
    (oneRound<encrypts, i>(schedule, b, first), ...);
}

using AllRounds = std::make_integer_sequence<int, SEED_ROUNDS>;

// All rounds, in the order of encryption or in reverse. The halves are not swapped after the last round.
template <bool encrypts> [[gnu::always_inline]] inline void rounds(const SEED_Schedule& schedule, Block& block)
{
    allRounds<encrypts>(schedule, block, AllRounds());
    block = {block.r0, block.r1, block.l0, block.l1};
}
template <bool encrypts, std::size_t N> [[gnu::always_inline]] inline void rounds(const SEED_Schedule& schedule, Block (&blocks)[N])
{
    if constexpr (N == 1) return rounds<encrypts>(schedule, blocks[0]);
    for (int i = 0; i < SEED_ROUNDS; i += 2) {
        const std::uint32_t *first = schedule.words + keyPlace<encrypts>(i), *second = schedule.words + keyPlace<encrypts>(i + 1);
        oneRound(blocks, first[0], first[1]);
        oneRound(blocks, second[0], second[1]);
    }
#pragma GCC unroll 8
    for (Block& b : blocks) b = {b.r0, b.r1, b.l0, b.l1};
}

} // namespace vrno::seed
