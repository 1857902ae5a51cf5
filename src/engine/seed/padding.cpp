#include "engine/seed/padding.h"

#include "engine/random/random.h"

#include <cstring>

namespace vrno {

static void fill(unsigned char* to, int value, int count)
{
    std::memset(to, value, static_cast<std::size_t>(count));
}

int padBuffer(ZIRC_Context& context, int nPaddintType)
{
    if (nPaddintType == ZIRC_PAD_NONE) return 0;
    const int count = context.sizes.nInputBlockLen - context.nBuffered % context.sizes.nInputBlockLen;
    unsigned char* const to = context.stagingBuffer + context.nBuffered;
    switch (nPaddintType) {
    case ZIRC_PAD_RANDOM: {
        unsigned char block[stagingLength] = {};
        if (!randBytes(block, context.sizes.nInputBlockLen)) return ZIRC_SetError(context, ZIRC_STAGED_OPERATION_FAILED);
        std::memcpy(to, block, static_cast<std::size_t>(count));
        break;
    }
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
        return ZIRC_SetError(context, ZIRC_INVALID_DATA);
    }
    context.nBuffered += count;
    return 0;
}

// Takes `count` bytes off the end, all of which must be `value`.
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

static int removeBit(unsigned char* data, int* length)
{
    int left = *length;
    while (left > 0 && data[left - 1] == 0) --left;
    if (left == 0 || data[left - 1] != 0x80) return -1;
    data[left - 1] = 0;
    *length = left - 1;
    return 0;
}

int unpadBuffer(unsigned char* data, int* length, int blockLength, int nPaddintType)
{
    if (nPaddintType == ZIRC_PAD_NONE || *length < 1) return 0;
    const unsigned char last = data[*length - 1];
    switch (nPaddintType) {
    case ZIRC_PAD_BIT:
        return removeBit(data, length);
    case ZIRC_PAD_LENGTH:
    case ZIRC_PAD_LENGTH + 1:
        return last < 1 || last > blockLength ? -1 : removeChecked(data, length, last, last);
    case ZIRC_PAD_LENGTH_MINUS_ONE:
    case ZIRC_PAD_LENGTH_MINUS_ONE + 1:
        return last > blockLength - 1 ? -1 : removeChecked(data, length, last + 1, last);
    default:
        return last;
    }
}

} // namespace vrno
