#include "engine/digest/md5.h"

#include "engine/digest/iterated.h"

#include <utility>

namespace vrno {

namespace {

// RFC 1321, 3.4: T[i] is the integer part of 2^32 times abs(sin(i)), i from 1 in radians.
constexpr std::uint32_t constants[64] = {
    0xD76AA478, 0xE8C7B756, 0x242070DB, 0xC1BDCEEE, 0xF57C0FAF, 0x4787C62A, 0xA8304613, 0xFD469501, //
    0x698098D8, 0x8B44F7AF, 0xFFFF5BB1, 0x895CD7BE, 0x6B901122, 0xFD987193, 0xA679438E, 0x49B40821, //
    0xF61E2562, 0xC040B340, 0x265E5A51, 0xE9B6C7AA, 0xD62F105D, 0x02441453, 0xD8A1E681, 0xE7D3FBC8, //
    0x21E1CDE6, 0xC33707D6, 0xF4D50D87, 0x455A14ED, 0xA9E3E905, 0xFCEFA3F8, 0x676F02D9, 0x8D2A4C8A, //
    0xFFFA3942, 0x8771F681, 0x6D9D6122, 0xFDE5380C, 0xA4BEEA44, 0x4BDECFA9, 0xF6BB4B60, 0xBEBFBC70, //
    0x289B7EC6, 0xEAA127FA, 0xD4EF3085, 0x04881D05, 0xD9D4D039, 0xE6DB99E5, 0x1FA27CF8, 0xC4AC5665, //
    0xF4292244, 0x432AFF97, 0xAB9423A7, 0xFC93A039, 0x655B59C3, 0x8F0CCC92, 0xFFEFF47D, 0x85845DD1, //
    0x6FA87E4F, 0xFE2CE6E0, 0xA3014314, 0x4E0811A1, 0xF7537E82, 0xBD3AF235, 0x2AD7D2BB, 0xEB86D391, //
};
constexpr int rotations[4][4] = {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};

// A round uses the 16 words in strides, starting with its first word.
constexpr struct {
    std::size_t first, stride;
} orders[4] = {{0, 1}, {1, 5}, {5, 3}, {0, 7}};

// The part of a round's function that depends on b. The other part of the second round is c & ~d; the two parts have no bit
// in common, so their sum is their OR.
template <std::size_t round> [[gnu::always_inline]] inline std::uint32_t md5Mix(std::uint32_t b, std::uint32_t c, std::uint32_t d)
{
    if constexpr (round == 0) return d ^ (b & (c ^ d));
    if constexpr (round == 1) return b & d;
    if constexpr (round == 2) return b ^ (c ^ d);
    return c ^ (b | ~d);
}

// The variables a to d stay in `v`; each step moves their roles by one place. Each step waits for the b of the step before it,
// so terms without b are added first. The barrier keeps the compiler to that order.
template <std::size_t t> [[gnu::always_inline]] inline void md5Step(std::uint32_t (&v)[4], const unsigned char* block)
{
    constexpr std::size_t round = t / 16, word = (orders[round].first + orders[round].stride * (t % 16)) % 16;
    std::uint32_t& a = v[(64 - t) % 4];
    const std::uint32_t b = v[(65 - t) % 4], c = v[(66 - t) % 4], d = v[(67 - t) % 4];
    a += constants[t] + load32<std::endian::little>(block + 4 * word) + (round == 1 ? c & ~d : 0);
    __asm__("" : "+r"(a));
    a = b + std::rotl(a + md5Mix<round>(b, c, d), rotations[round][t % 4]);
}

template <std::size_t... t>
[[gnu::always_inline]] inline void md5Steps(std::uint32_t (&v)[4], const unsigned char* block, std::index_sequence<t...>)
{
    (md5Step<t>(v, block), ...);
}

void md5Blocks(std::uint32_t* h, const unsigned char* blocks, std::size_t count)
{
    for (; count > 0; --count, blocks += 64) {
        std::uint32_t v[4] = {h[0], h[1], h[2], h[3]};
        md5Steps(v, blocks, std::make_index_sequence<64>());
        for (std::size_t i = 0; i < 4; ++i) h[i] += v[i];
    }
}

struct Md5 {
    using State = MD5_State;
    static constexpr std::endian order = std::endian::little;
    static constexpr std::uint32_t initial[4] = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476};
    static constexpr auto blocks = md5Blocks;
};

} // namespace

void MD5_Init(MD5_State& state) { iterated::init<Md5>(state); }

void MD5_Update(MD5_State& state, const void* data, std::size_t length) { iterated::update<Md5>(state, data, length); }

void MD5_Final(MD5_State& state, unsigned char* digest) { iterated::final<Md5>(state, digest); }

void MD5_Digest(unsigned char* digest, const void* data, std::size_t length) { iterated::digest<Md5>(digest, data, length); }

} // namespace vrno
