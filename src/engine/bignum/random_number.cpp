// Random numbers, and the random bytes of FIPS 186.
#include "engine/bignum/rows.h"
#include "engine/digest/sha1.h"
#include "engine/random/random.h"
#include "platform/platform.h"

#include <algorithm>
#include <cstring>

namespace vrno {

namespace {

bool seedWithTime()
{
    const auto time = static_cast<std::uint32_t>(platform::wallClock().seconds);
    unsigned char bytes[sizeof time];
    std::memcpy(bytes, &time, sizeof time);
    return randSeed(bytes, sizeof bytes);
}

} // namespace

bool bnRandom(ZIRC_BN& number, int bits, int top, int bottom)
{
    unsigned char bytes[bnBytes] = {}; // what a draw starts from goes into it
    bnSetWord(number, 1);
    if (bits < 1 || bits > 8 * bnBytes) return false;
    const int length = (bits + 7) / 8, bit = (bits - 1) % 8;
    if (!seedWithTime() || !randBytes(bytes, length)) return false;
    const int mask = 0xFF << bit;
    if (top != 0 && bit == 0) {
        bytes[0] = 1;
        if (length > 1) bytes[1] |= 0x80;
    } else {
        const int highest = top != 0 ? 3 << (bit - 1) : 1 << bit;
        bytes[0] = static_cast<unsigned char>((bytes[0] | highest) & ~(mask << 1));
    }
    if (bottom != 0) bytes[length - 1] |= 1;
    bnFromBytes(number, bytes, length);
    wipe(bytes, static_cast<std::size_t>(length));
    return true;
}

// FIPS 186-2, appendix 3.1, with a new XSEED for every 20 bytes; all numbers modulo 2^160.
bool fipsRandom(unsigned char* output, int length)
{
    constexpr int modulusBits = 160, digest = modulusBits / 8;
    if (length < 1) return true;
    Temporary XKEY, XSEED, XVAL, x;
    bool hasRandom = bnRandom(XKEY, modulusBits, 1, 1);
    for (int done = 0; hasRandom && done < length; done += digest) {
        hasRandom = bnRandom(XSEED, modulusBits, 1, 1);
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
    if (!hasRandom) std::memset(output, 0, static_cast<std::size_t>(length));
    return hasRandom;
}

} // namespace vrno
