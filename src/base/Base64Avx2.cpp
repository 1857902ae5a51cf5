// Base64 with AVX2: 24 octets and 32 characters a step, half of them in each lane of 128 bits.
#include "base/Base64Kernels.h"

#if defined(__x86_64__) || defined(__i386__)

#include <immintrin.h>

#define AVX2 [[gnu::target("avx2")]]
#define AVX2_INLINE AVX2 [[gnu::always_inline]] inline

namespace vrno::base64 {

namespace {

constexpr std::size_t octetsOfLane = 12, charactersOfLane = 16;

// One entry for each value of four bits.
using Row = std::array<signed char, 16>;

AVX2_INLINE __m256i inBothLanes(const Row& row)
{
    return _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(row.data())));
}

AVX2_INLINE __m256i loadLanes(const unsigned char* low, const unsigned char* high)
{
    return _mm256_loadu2_m128i(reinterpret_cast<const __m128i*>(high), reinterpret_cast<const __m128i*>(low));
}

// What is added to a value to give its character. The characters are five ranges: A to Z, which has the entry 13, a to z, which has
// 0, the ten digits and the two last ones, which have one entry each.
constexpr Row toCharacter = [] {
    Row row{};
    const auto distance = [](std::size_t value) { return static_cast<signed char>(alphabet[value] - static_cast<int>(value)); };
    row[13] = distance(0);
    row[0] = distance(26);
    for (std::size_t value = 52; value < 64; ++value) row[value - 51] = distance(value);
    return row;
}();

// The 24 octets, twelve in each lane, as 32 values.
AVX2_INLINE __m256i splitGroups(__m256i octets)
{
    // Of each group a b c the word b a c b: each of its halves has two values whole.
    const Row order = {1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10};
    const __m256i words = _mm256_shuffle_epi8(octets, inBothLanes(order));
    // A product moves each value by an amount of its own: the high half of one to the right, the low half of the other to the left.
    const __m256i even = _mm256_mulhi_epu16(_mm256_and_si256(words, _mm256_set1_epi32(0x0FC0FC00)), _mm256_set1_epi32(0x04000040));
    const __m256i odd = _mm256_mullo_epi16(_mm256_and_si256(words, _mm256_set1_epi32(0x003F03F0)), _mm256_set1_epi32(0x01000010));
    return _mm256_or_si256(even, odd);
}

AVX2_INLINE __m256i charactersOf(__m256i valuesOfGroups)
{
    const __m256i behindLetters = _mm256_subs_epu8(valuesOfGroups, _mm256_set1_epi8(51));
    const __m256i upper = _mm256_and_si256(_mm256_cmpgt_epi8(_mm256_set1_epi8(26), valuesOfGroups), _mm256_set1_epi8(13));
    const __m256i entry = _mm256_or_si256(behindLetters, upper);
    return _mm256_add_epi8(valuesOfGroups, _mm256_shuffle_epi8(inBothLanes(toCharacter), entry));
}

// A character is in the alphabet if the entries of its two halves have no bit in common. The entry of an upper half is one bit of
// its own, the same for all that no character of the alphabet has; the entry of a lower half has the bits of those upper halves
// with which it gives no character.
constexpr signed char bitOfUpper(std::size_t upper)
{
    return static_cast<signed char>(upper >= 2 && upper <= 7 ? 1 << (upper - 1) : 1);
}

constexpr Row upperBits = [] {
    Row row{};
    for (std::size_t upper = 0; upper < 16; ++upper) row[upper] = bitOfUpper(upper);
    return row;
}();

constexpr Row lowerBits = [] {
    Row row{};
    for (std::size_t character = 0; character < 256; ++character) {
        signed char& entry = row[character % 16];
        if (values[character] == noValue) entry = static_cast<signed char>(entry | bitOfUpper(character / 16));
    }
    return row;
}();

// What is added to a character to give its value, by its upper half. The slash shares that with the plus sign; it has the entry 1.
constexpr Row toValue = [] {
    Row row{};
    for (const char character : {'/', '+', '0', 'A', 'P', 'a', 'p'}) {
        const auto index = static_cast<unsigned char>(character);
        row[character == '/' ? 1 : index / 16] = static_cast<signed char>(values[index] - index);
    }
    return row;
}();

AVX2_INLINE __m256i upperHalves(__m256i characters)
{
    return _mm256_and_si256(_mm256_srli_epi16(characters, 4), _mm256_set1_epi8(0x0F));
}

AVX2_INLINE bool allInAlphabet(__m256i characters)
{
    const __m256i upper = _mm256_shuffle_epi8(inBothLanes(upperBits), upperHalves(characters));
    const __m256i lower = _mm256_shuffle_epi8(inBothLanes(lowerBits), _mm256_and_si256(characters, _mm256_set1_epi8(0x0F)));
    return _mm256_testz_si256(upper, lower) != 0;
}

AVX2_INLINE __m256i valuesOf(__m256i characters)
{
    const __m256i slash = _mm256_cmpeq_epi8(characters, _mm256_set1_epi8('/')); // -1 there
    const __m256i entry = _mm256_add_epi8(upperHalves(characters), slash);
    return _mm256_add_epi8(characters, _mm256_shuffle_epi8(inBothLanes(toValue), entry));
}

// The 32 values as 24 octets, twelve at the front of each lane.
AVX2_INLINE __m256i joinGroups(__m256i valuesOfGroups)
{
    const __m256i pairs = _mm256_maddubs_epi16(valuesOfGroups, _mm256_set1_epi32(0x01400140)); // 64 times the first plus the second
    const __m256i groups = _mm256_madd_epi16(pairs, _mm256_set1_epi32(0x00011000)); // 4096 times the first plus the second
    const Row order = {2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1};
    return _mm256_shuffle_epi8(groups, inBothLanes(order));
}

} // namespace

AVX2 std::size_t encodeAvx2(unsigned char* out, const unsigned char* in, std::size_t length)
{
    std::size_t at = 0;
    for (; length - at >= octetsOfLane + 16; at += 2 * octetsOfLane, out += 2 * charactersOfLane) {
        const __m256i octets = loadLanes(in + at, in + at + octetsOfLane);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), charactersOf(splitGroups(octets)));
    }
    return at;
}

// A step writes 28 bytes. The result of the characters that remain is long enough for them.
AVX2 std::size_t decodeAvx2(unsigned char* out, const unsigned char* in, std::size_t length)
{
    std::size_t at = 0;
    for (; length - at >= 40; at += 2 * charactersOfLane, out += 2 * octetsOfLane) {
        const __m256i characters = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(in + at));
        if (!allInAlphabet(characters)) break;
        _mm256_storeu2_m128i(reinterpret_cast<__m128i*>(out + octetsOfLane), reinterpret_cast<__m128i*>(out),
                             joinGroups(valuesOf(characters)));
    }
    return at;
}

} // namespace vrno::base64

#endif
