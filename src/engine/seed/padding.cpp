#include "engine/seed/padding.h"

#include "engine/masks.h"
#include "engine/random/random.h"

#include <algorithm>
#include <cstring>

namespace vrno {

static void fill(unsigned char* to, int value, int count) { std::memset(to, value, static_cast<std::size_t>(count)); }

int padBuffer(unsigned char* data, int* length, int blockLength, int nPaddintType)
{
    if (nPaddintType == ZIRC_PAD_NONE) return 0;
    const int count = blockLength - *length % blockLength;
    unsigned char* const to = data + *length;
    switch (nPaddintType) {
    case ZIRC_PAD_RANDOM:
        if (randBytes(to, blockLength) < 0) return -2;
        break;
    case ZIRC_PAD_ZERO:
        fill(to, 0, count);
        break;
    case ZIRC_PAD_BIT:
        fill(to, 0, count);
        to[0] = 0x80;
        break;
    case ZIRC_PAD_55:
        fill(to, 0x55, count);
        break;
    case ZIRC_PAD_FF:
        fill(to, 0xFF, count);
        break;
    case ZIRC_PAD_LENGTH:
    case ZIRC_PAD_LENGTH + 1:
        fill(to, count, count);
        break;
    case ZIRC_PAD_LENGTH_MINUS_ONE:
    case ZIRC_PAD_LENGTH_MINUS_ONE + 1:
        fill(to, count - 1, count);
        break;
    default:
        return -1;
    }
    *length += count;
    return 0;
}

static int asResult(std::uint32_t value) { return static_cast<int>(value); }
static std::uint32_t asValue(int result) { return static_cast<std::uint32_t>(result); }

// Padding whose octets all have the value `count` - `less`.
static int countedPadding(const unsigned char* data, int length, int blockLength, std::uint32_t less)
{
    const std::uint32_t last = data[length - 1], count = last + less;
    const Mask isCount = ~isZero(count) & ~isLess(asValue(blockLength), count);
    std::uint32_t wrong = isLess(asValue(length), count);
    for (int i = 0; i < std::min(length, blockLength); ++i) {
        wrong |= isLess(asValue(i), count) & (data[length - 1 - i] ^ last);
    }
    const std::uint32_t ofOctets = choose(isZero(wrong & 0xFF), count, asValue(-2));
    return asResult(choose(isCount, ofOctets, asValue(-1)));
}

// Zeros and the 0x80 in front of them.
static int bitPadding(const unsigned char* data, int length)
{
    const Run zeros = runOf(data + length - 1, length, -1, isZero);
    return asResult(choose(isEqual(zeros.next, 0x80), zeros.length + 1, asValue(-1)));
}

int paddingLength(const unsigned char* data, int length, int blockLength, int nPaddintType)
{
    switch (nPaddintType) {
    case ZIRC_PAD_BIT:
        return bitPadding(data, length);
    case ZIRC_PAD_LENGTH:
    case ZIRC_PAD_LENGTH + 1:
        return countedPadding(data, length, blockLength, 0);
    case ZIRC_PAD_LENGTH_MINUS_ONE:
    case ZIRC_PAD_LENGTH_MINUS_ONE + 1:
        return countedPadding(data, length, blockLength, 1);
    default:
        return 0;
    }
}

int unpadBuffer(unsigned char* data, int* length, int blockLength, int nPaddintType)
{
    if (*length < 1) return 0;
    const int count = paddingLength(data, *length, blockLength, nPaddintType);
    if (count < 0) return count;
    *length -= count;
    fill(data + *length, 0, count);
    return 0;
}

} // namespace vrno
