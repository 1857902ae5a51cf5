#include "engine/seed/padding.h"

#include "engine/random/random.h"

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

// Removes `count` bytes, all of which must be `value`.
static int removeChecked(unsigned char* data, int* length, int count, unsigned char value)
{
    if (count > *length) return -2;
    unsigned char* const padding = data + *length - count;
    for (int i = 0; i < count; ++i) {
        if (padding[i] != value) return -2;
    }
    fill(padding, 0, count);
    *length -= count;
    return 0;
}

// Removes zeros and the 0x80 in front of them.
static int removeBitPadding(unsigned char* data, int* length)
{
    int end = *length;
    while (end > 0 && data[end - 1] == 0) --end;
    if (end == 0 || data[end - 1] != 0x80) return -1;
    data[end - 1] = 0;
    *length = end - 1;
    return 0;
}

int unpadBuffer(unsigned char* data, int* length, int blockLength, int nPaddintType)
{
    if (nPaddintType == ZIRC_PAD_NONE || *length < 1) return 0;
    const unsigned char last = data[*length - 1];
    switch (nPaddintType) {
    case ZIRC_PAD_BIT:
        return removeBitPadding(data, length);
    case ZIRC_PAD_LENGTH:
    case ZIRC_PAD_LENGTH + 1:
        if (last < 1 || last > blockLength) return -1;
        return removeChecked(data, length, last, last);
    case ZIRC_PAD_LENGTH_MINUS_ONE:
    case ZIRC_PAD_LENGTH_MINUS_ONE + 1:
        if (last > blockLength - 1) return -1;
        return removeChecked(data, length, last + 1, last);
    default:
        return last;
    }
}

} // namespace vrno
