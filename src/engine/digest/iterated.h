// What the digests share: counting, collecting blocks, padding and output. A digest is described by a type D with
//
//   State      its record: bitCountLow, bitCountHigh, block[16] and the chaining value h[]
//   initial    the first value of h
//   order      the byte order of the message's words, of its length and of the digest
//   blocks     its block function
#pragma once

#include "base/wipe.h"
#include "engine/words.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>

namespace vrno {

// Hashes `count` blocks of 64 bytes, at any address, into the chaining value `h`.
using BlockFunction = void(std::uint32_t* h, const unsigned char* blocks, std::size_t count);

namespace iterated {

// The message length is counted in bits modulo 2^64.
template <class State> void count(State& state, std::size_t length)
{
    const auto low = static_cast<std::uint32_t>(length << 3);
    state.bitCountLow += low;
    state.bitCountHigh += static_cast<std::uint32_t>(length >> 29) + (state.bitCountLow < low ? 1 : 0);
}

template <class State> std::size_t waiting(const State& state) { return state.bitCountLow >> 3 & 63; }

template <class D> void init(typename D::State& state)
{
    state.bitCountLow = 0;
    state.bitCountHigh = 0;
    std::memcpy(state.h, D::initial, sizeof state.h);
}

template <class D> void update(typename D::State& state, const void* data, std::size_t length)
{
    if (length == 0) return; // `data` may be null then, and memcpy must not be given null
    const auto* from = static_cast<const unsigned char*>(data);
    auto* const block = reinterpret_cast<unsigned char*>(state.block);
    const std::size_t held = waiting(state);
    count(state, length);
    if (length < 64 - held) {
        std::memcpy(block + held, from, length);
        return;
    }
    if (held > 0) {
        std::memcpy(block + held, from, 64 - held);
        D::blocks(state.h, block, 1);
        from += 64 - held;
        length -= 64 - held;
    }
    const std::size_t whole = length / 64;
    if (whole > 0) D::blocks(state.h, from, whole);
    std::memcpy(block, from + 64 * whole, length % 64);
}

// Appends one bit, zeros, and the length in the last eight bytes of a block: this block if it fits, else the next.
template <class D> void final(typename D::State& state, unsigned char* digest)
{
    constexpr bool highFirst = D::order == std::endian::big;
    auto* const block = reinterpret_cast<unsigned char*>(state.block);
    std::size_t held = waiting(state);
    block[held++] = 0x80;
    if (held > 56) {
        std::memset(block + held, 0, 64 - held);
        D::blocks(state.h, block, 1);
        held = 0;
    }
    std::memset(block + held, 0, 56 - held);
    store32<D::order>(block + 56, highFirst ? state.bitCountHigh : state.bitCountLow);
    store32<D::order>(block + 60, highFirst ? state.bitCountLow : state.bitCountHigh);
    D::blocks(state.h, block, 1);
    for (std::size_t i = 0; i < std::size(state.h); ++i) store32<D::order>(digest + 4 * i, state.h[i]);
}

template <class D> void digest(unsigned char* out, const void* data, std::size_t length)
{
    typename D::State state;
    init<D>(state);
    update<D>(state, data, length);
    final<D>(state, out);
    wipe(&state, sizeof state);
}

} // namespace iterated

} // namespace vrno
