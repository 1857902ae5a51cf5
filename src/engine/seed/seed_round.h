// The G function and the rounds of SEED, for one block or several side by side.
#pragma once

#include "engine/seed/seed.h"
#include "engine/seed/seed_tables.h"
#include "engine/words.h"

#include <bit>
#include <utility>

namespace vrno::seed {

inline std::uint32_t G(std::uint32_t x) { return (SS0[x & 0xFF] ^ SS3[x >> 24]) ^ (SS1[x >> 8 & 0xFF] ^ SS2[x >> 16 & 0xFF]); }

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

// One round on each of `N` blocks; it also swaps their halves.
template <std::size_t N> [[gnu::always_inline]] inline void oneRound(Block (&blocks)[N], std::uint32_t k0, std::uint32_t k1)
{
    for (Block& b : blocks) {
        std::uint32_t t0 = b.r0 ^ k0, t1 = b.r1 ^ k1;
        t1 = G(t1 ^ t0);
        t0 = G(t0 + t1);
        t1 = G(t1 + t0);
        t0 += t1;
        b = {b.r0, b.r1, b.l0 ^ t0, b.l1 ^ t1};
    }
}

template <bool encrypts, std::size_t N, int... i>
[[gnu::always_inline]] inline void allRounds(const SEED_Schedule& schedule, Block (&blocks)[N], std::integer_sequence<int, i...>)
{
    constexpr auto key = [](int round) { return 2 * (encrypts ? round : SEED_ROUNDS - 1 - round); };
    (oneRound(blocks, schedule.words[key(i)], schedule.words[key(i) + 1]), ...);
}

// All rounds, in the order of encryption or in reverse. The halves are not swapped after the last round.
template <bool encrypts, std::size_t N> [[gnu::always_inline]] inline void rounds(const SEED_Schedule& schedule, Block (&blocks)[N])
{
    allRounds<encrypts>(schedule, blocks, std::make_integer_sequence<int, SEED_ROUNDS>());
    for (Block& b : blocks) b = {b.r0, b.r1, b.l0, b.l1};
}

} // namespace vrno::seed
