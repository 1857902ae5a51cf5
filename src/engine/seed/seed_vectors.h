// CBC decryption of many blocks at once, written once over a type of vectors. A kernel defines SEED_TARGET, the instruction sets
// that it uses, in front of this header, and gives a type `V` of static functions:
//
//   Register          holds `lanes` parts of 128 bits: blocks in memory order, or one word each of 4 x `lanes` blocks
//   load, store       at any address
//   all               a word in every place
//   add, exclusive, masked (AND), addMasked (a ^ (b & mask))
//   substituted       S1 of the even octets of each word, and S2 of the odd ones, counted from the lowest
//   turned8, turned16  each word rotated right by 8 or 16 bits
//   swapped           each word with its octets reversed
//   lowWords, highWords, lowPairs, highPairs     the UNPCK instructions in each part
//   behind            the blocks one place up, with the given one in front
//
// and `fewest`, the number of blocks from which on the kernel is faster than the tables.
#pragma once

#include "base/wipe.h"
#include "engine/seed/seed_kernels.h"

#include <algorithm>
#include <cstring>
#include <utility>

#define VECTOR [[gnu::target(SEED_TARGET)]] static
#define VECTOR_INLINE [[gnu::target(SEED_TARGET), gnu::always_inline]] static inline

namespace vrno::seed {

// The four words of the blocks: `groups` registers each.
template <class V, std::size_t groups> struct VectorBlocks {
    typename V::Register l0[groups], l1[groups], r0[groups], r1[groups];
};

// The octet at place o of G is the sum of the octets at the places p under the masks 0xFC, 0xF3, 0xCF and 0x3F, in the order of
// p + o modulo 4. So it is a sum of rotations under four masks. A rotation by 24 is one by 16 and one by 8.
template <class V> VECTOR_INLINE typename V::Register G(typename V::Register x)
{
    const auto y = V::substituted(x), across = V::turned16(y);
    const auto here = V::addMasked(V::masked(y, V::all(0xCFFCCFFC)), across, V::all(0xFCCFFCCF));
    const auto beside = V::addMasked(V::masked(y, V::all(0xF33FF33F)), across, V::all(0x3FF33FF3));
    return V::exclusive(here, V::turned8(beside));
}

// One round, which leaves the halves where they are.
template <class V, std::size_t... g>
VECTOR_INLINE void oneRound(typename V::Register* l0, typename V::Register* l1, const typename V::Register* r0,
                            const typename V::Register* r1, const std::uint32_t* keys, std::index_sequence<g...>)
{
    const auto k0 = V::all(keys[0]), k1 = V::all(keys[1]);
    typename V::Register t0[] = {V::exclusive(r0[g], k0)...};
    typename V::Register t1[] = {G<V>(V::exclusive(V::exclusive(r1[g], k1), t0[g]))...};
    ((t0[g] = G<V>(V::add(t0[g], t1[g]))), ...);
    ((t1[g] = G<V>(V::add(t1[g], t0[g]))), ...);
    ((l0[g] = V::exclusive(l0[g], V::add(t0[g], t1[g]))), ...);
    ((l1[g] = V::exclusive(l1[g], t1[g])), ...);
}

// From four registers of blocks to one for each word, or back.
template <class V> VECTOR_INLINE void transpose(typename V::Register (&q)[4])
{
    const auto low01 = V::lowWords(q[0], q[1]), high01 = V::highWords(q[0], q[1]);
    const auto low23 = V::lowWords(q[2], q[3]), high23 = V::highWords(q[2], q[3]);
    q[0] = V::lowPairs(low01, low23);
    q[1] = V::highPairs(low01, low23);
    q[2] = V::lowPairs(high01, high23);
    q[3] = V::highPairs(high01, high23);
}

template <class V> constexpr std::size_t registerSize = std::size_t{SEED_BLOCK} * V::lanes;

template <class V, std::size_t groups>
VECTOR_INLINE void loadGroup(VectorBlocks<V, groups>& b, std::size_t g, const unsigned char* input)
{
    constexpr std::size_t size = registerSize<V>;
    const unsigned char* const from = input + 4 * g * size;
    typename V::Register q[4] = {V::swapped(V::load(from)), V::swapped(V::load(from + size)), V::swapped(V::load(from + 2 * size)),
                                 V::swapped(V::load(from + 3 * size))};
    transpose<V>(q);
    b.l0[g] = q[0];
    b.l1[g] = q[1];
    b.r0[g] = q[2];
    b.r1[g] = q[3];
}

// Adds the ciphertext one block back and stores, from the end to the front, since the output may be the input.
template <class V, std::size_t groups>
VECTOR_INLINE void storeGroup(const VectorBlocks<V, groups>& b, std::size_t g, unsigned char* output, const unsigned char* input,
                              const unsigned char* chainingValue)
{
    constexpr std::size_t size = registerSize<V>;
    const std::size_t at = 4 * g * size;
    typename V::Register q[4] = {b.r0[g], b.r1[g], b.l0[g], b.l1[g]}; // the halves change places behind the last round
    transpose<V>(q);
    V::store(output + at + 3 * size, V::exclusive(V::swapped(q[3]), V::load(input + at + 3 * size - SEED_BLOCK)));
    V::store(output + at + 2 * size, V::exclusive(V::swapped(q[2]), V::load(input + at + 2 * size - SEED_BLOCK)));
    V::store(output + at + size, V::exclusive(V::swapped(q[1]), V::load(input + at + size - SEED_BLOCK)));
    const auto before = g == 0 ? V::behind(V::load(input), chainingValue) : V::load(input + at - SEED_BLOCK);
    V::store(output + at, V::exclusive(V::swapped(q[0]), before));
}

// Each instruction waits for the one before it, and meanwhile the processor works on the other groups.
template <class V, std::size_t... g>
[[gnu::noinline]] VECTOR void decryptRun(const SEED_Schedule& schedule, unsigned char* output, const unsigned char* input,
                                         const unsigned char* chainingValue, std::index_sequence<g...> registers)
{
    VectorBlocks<V, sizeof...(g)> b;
    (loadGroup<V>(b, g, input), ...);
    for (int round = SEED_ROUNDS; round > 0; round -= 2) {
        oneRound<V>(b.l0, b.l1, b.r0, b.r1, schedule.words + 2 * (round - 1), registers);
        oneRound<V>(b.r0, b.r1, b.l0, b.l1, schedule.words + 2 * (round - 2), registers);
    }
    (storeGroup<V>(b, sizeof...(g) - 1 - g, output, input, chainingValue), ...);
}

template <class V, std::size_t groups> constexpr std::size_t runLength = registerSize<V> * 4 * groups;

// What fills no run, in an area for one.
template <class V, std::size_t groups>
VECTOR_INLINE void decryptRest(const SEED_Schedule& schedule, unsigned char* output, const unsigned char* input, std::size_t length,
                               const unsigned char* chainingValue)
{
    SecretArea<runLength<V, groups>> area;
    std::memcpy(area.bytes, input, length);
    decryptRun<V>(schedule, area.bytes, area.bytes, chainingValue, std::make_index_sequence<groups>());
    std::memcpy(output, area.bytes, length);
}

// Overwrites the frame of decryptRun, which has the same caller: the compiler keeps there what the registers do not hold, 1.8 KB at
// most, or 3.4 KB where there are eight registers.
[[gnu::noinline]] static void wipeSpilled()
{
    unsigned char area[sizeof(void*) > 4 ? 1920 : 3520];
    wipe(area, sizeof area);
}

template <class V>
VECTOR void cbcDecrypt(const SEED_Schedule& schedule, unsigned char* output, const unsigned char* input, std::size_t blocks,
                       unsigned char* chainingValue)
{
    constexpr std::size_t groups = 6, most = runLength<V, groups>; // with more, too little fits into the registers
    if (blocks < V::fewest) return seedCbcDecryptPortable(schedule, output, input, blocks, chainingValue);
    for (std::size_t length = 0; blocks >= V::fewest; blocks -= length / SEED_BLOCK, input += length, output += length) {
        length = std::min(blocks * SEED_BLOCK, most);
        unsigned char next[SEED_BLOCK];
        std::memcpy(next, input + length - SEED_BLOCK, SEED_BLOCK);
        if (length == most) {
            decryptRun<V>(schedule, output, input, chainingValue, std::make_index_sequence<groups>());
        } else if (length > runLength<V, 1>) {
            decryptRest<V, groups>(schedule, output, input, length, chainingValue);
        } else {
            decryptRest<V, 1>(schedule, output, input, length, chainingValue);
        }
        std::memcpy(chainingValue, next, SEED_BLOCK);
    }
    wipeSpilled();
    seedCbcDecryptPortable(schedule, output, input, blocks, chainingValue);
}

} // namespace vrno::seed
