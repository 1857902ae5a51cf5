// Random numbers, and the random bytes of FIPS 186.
#include "engine/bignum/rows.h"
#include "engine/digest/sha1.h"
#include "engine/random/random.h"
#include "platform/platform.h"

#include <algorithm>
#include <cstring>

namespace vrno {

namespace {

int seedWithTime()
{
    const auto time = static_cast<std::uint32_t>(platform::wallClock().seconds);
    unsigned char bytes[sizeof time];
    std::memcpy(bytes, &time, sizeof time);
    return randSeed(bytes, sizeof bytes);
}

} // namespace

int bnRandom(ZIRC_BN& number, int bits, bool top, bool bottom)
{
    unsigned char bytes[bnBytes] = {}; // zeroed, since a draw hashes what is there
    bnSetWord(number, 1);
    if (bits < 1 || bits > 8 * bnBytes) return -1;
    const int length = (bits + 7) / 8, bit = (bits - 1) % 8;
    if (seedWithTime() < 0 || randBytes(bytes, length) < 0) return -1;
    const int mask = 0xFF << bit;
    if (top && bit == 0) {
        bytes[0] = 1;
        if (length > 1) bytes[1] |= 0x80;
    } else {
        const int highest = top ? 3 << (bit - 1) : 1 << bit;
        bytes[0] = static_cast<unsigned char>((bytes[0] | highest) & ~(mask << 1));
    }
    if (bottom) bytes[length - 1] |= 1;
    bnFromBytes(number, bytes, length);
    wipe(bytes, static_cast<std::size_t>(length));
    return 0;
}

// FIPS 186-2, appendix 3.1, with a new XSEED for every 20 bytes; all numbers modulo 2^160.
int fipsRandom(unsigned char* output, int length)
{
    constexpr int modulusBits = 160, digest = modulusBits / 8;
    if (length < 1) return 0;
    Temporary XKEY, XSEED, XVAL, x;
    int result = bnRandom(XKEY, modulusBits, true, true);
    for (int done = 0; result == 0 && done < length; done += digest) {
        result = bnRandom(XSEED, modulusBits, true, true);
        bnAdd(XVAL, XKEY, XSEED);
        bnMaskBits(XVAL, modulusBits);
        unsigned char block[64] = {}, bytes[digest];
        std::uint32_t words[16];
        bnToBytesFixed(block, XVAL, digest);
        std::memcpy(words, block, sizeof words);
        SHA1_Compress(bytes, words);
        bnFromBytes(x, bytes, digest);
        bnAdd(XKEY, XKEY, x);
        bnAddWord(XKEY, XKEY, 1);
        bnMaskBits(XKEY, modulusBits);
        std::memcpy(output + done, bytes, static_cast<std::size_t>(std::min(length - done, digest)));
        wipe(block, sizeof block);
        wipe(words, sizeof words);
        wipe(bytes, sizeof bytes);
    }
    if (result < 0) std::memset(output, 0, static_cast<std::size_t>(length));
    return result;
}

} // namespace vrno
