#include "base/Base64.h"

#include <array>
#include <climits>
#include <cstdint>

namespace vrno {

namespace {

constexpr char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr unsigned char noValue = 0xFF;

constexpr std::array<unsigned char, 256> values = [] {
    std::array<unsigned char, 256> table{};
    table.fill(noValue);
    for (unsigned char value = 0; value < 64; ++value) table[static_cast<unsigned char>(alphabet[value])] = value;
    return table;
}();

// Writes the four characters of up to three octets. Missing octets count as zero; each gives a "=".
void encodeGroup(const unsigned char* octets, std::size_t count, unsigned char* out)
{
    std::uint32_t group = 0;
    for (std::size_t i = 0; i < 3; ++i) group = group << 8 | (i < count ? octets[i] : 0U);
    for (std::size_t i = 0; i < 4; ++i) {
        out[i] = i <= count ? static_cast<unsigned char>(alphabet[group >> (18 - 6 * i) & 63]) : static_cast<unsigned char>('=');
    }
}

int failMemory(ByteString& out)
{
    out.setOutOfMemory();
    return 1;
}

} // namespace

int base64Encode(Octets in, ByteString& out)
{
    if (in.empty()) {
        out.clear();
        return 0;
    }
    const std::uint64_t length = (std::uint64_t{in.size()} + 2) / 3 * 4;
    if (length >= INT_MAX) return 1;
    ByteString text;
    unsigned char* to = text.makeRoom(static_cast<int>(length));
    if (!to) return failMemory(out);
    std::size_t at = 0;
    for (; in.size() - at >= 3; at += 3, to += 4) encodeGroup(&in[at], 3, to);
    if (at < in.size()) encodeGroup(&in[at], in.size() - at, to);
    out.swap(text);
    return 0;
}

int base64Decode(Octets in, ByteString& out)
{
    Octets text = in;
    if (text.size() % 4 != 0) return 1;
    for (int padding = 0; padding < 2 && !text.empty() && text.back() == '='; ++padding) text = text.first(text.size() - 1);
    if (text.empty()) {
        out.clear();
        return 0;
    }
    ByteString octets;
    unsigned char* to = octets.makeRoom(static_cast<int>(text.size() * 3 / 4));
    if (!to) return failMemory(out);
    std::uint32_t bits = 0;
    int count = 0; // the number of low bits of `bits` that are not written yet
    for (const unsigned char character : text) {
        const unsigned char value = values[character];
        if (value == noValue) return 1;
        bits = bits << 6 | value;
        count += 6;
        if (count >= 8) {
            count -= 8;
            *to++ = static_cast<unsigned char>(bits >> count);
        }
    }
    out.swap(octets);
    return 0;
}

} // namespace vrno
