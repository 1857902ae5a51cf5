#include "base/Base64.h"

#include "base/wipe.h"

#include <array>
#include <climits>
#include <cstdint>
#include <new>

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

// A block that is zeroed before it goes back. `bytes` is null when there was no memory.
struct WorkBlock {
    std::size_t size;
    unsigned char* bytes;

    explicit WorkBlock(std::size_t length) : size(length), bytes(new (std::nothrow) unsigned char[length]) {}
    WorkBlock(const WorkBlock&) = delete;
    WorkBlock& operator=(const WorkBlock&) = delete;
    ~WorkBlock()
    {
        if (bytes) wipe(bytes, size);
        delete[] bytes;
    }
};

// The characters of up to three octets; missing octets count as zero, and their characters are not written.
void encodeGroup(const unsigned char* octets, std::size_t count, unsigned char* out)
{
    std::uint32_t group = 0;
    for (std::size_t i = 0; i < 3; ++i) group = group << 8 | (i < count ? octets[i] : 0U);
    for (std::size_t i = 0; i < 4; ++i) {
        out[i] = i <= count ? static_cast<unsigned char>(alphabet[group >> (18 - 6 * i) & 63]) : static_cast<unsigned char>('=');
    }
}

} // namespace

int base64Encode(ByteString& in, ByteString& out)
{
    const Octets octets = in.octets();
    if (octets.empty()) {
        out.clear();
        return 0;
    }
    const std::uint64_t length = (std::uint64_t{octets.size()} + 2) / 3 * 4;
    if (length >= INT_MAX) return 1;
    const WorkBlock text(static_cast<std::size_t>(length));
    if (!text.bytes) return 1;
    unsigned char* to = text.bytes;
    std::size_t at = 0;
    for (; octets.size() - at >= 3; at += 3, to += 4) encodeGroup(&octets[at], 3, to);
    if (at < octets.size()) encodeGroup(&octets[at], octets.size() - at, to);
    return out.setData(text.bytes, static_cast<int>(length)) == 0 ? 0 : 1;
}

int base64Decode(ByteString& in, ByteString& out)
{
    Octets text = in.octets();
    if (text.size() % 4 != 0) return 1;
    for (int padding = 0; padding < 2 && !text.empty() && text.back() == '='; ++padding) text = text.first(text.size() - 1);
    if (text.empty()) {
        out.clear();
        return 0;
    }
    const WorkBlock octets(text.size() * 3 / 4);
    if (!octets.bytes) return 1;
    std::uint32_t bits = 0;
    int count = 0; // how many low bits of `bits` are not written yet
    unsigned char* to = octets.bytes;
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
    return out.setData(octets.bytes, static_cast<int>(octets.size)) == 0 ? 0 : 1;
}

} // namespace vrno
