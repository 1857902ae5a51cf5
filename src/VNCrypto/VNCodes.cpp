#include "VNCrypto/VNCodes.h"

#include "engine/frame/zirc.h"

namespace vrno {

namespace {

struct Pair {
    int code, engine;
};

constexpr Pair algorithms[] = {
    {vnSha1, 1400},
    {vnRandom, 3420},
    {vnSeed, 11110},
    {vnRsa1024, 12001},
    {vnRsa2048, 12002},
    {vnHmacSha1, 31400},
    {vnSha1WithRsa1024, 121401},
    {vnSha1WithRsa2048, 121402},
    {vnSha1WithKcdsa1024, 141401},
};
constexpr Pair modes[] = {
    {vnPrivateKey, ZIRC_MODE_PRIVATE_KEY},
    {vnPublicKey, ZIRC_MODE_PUBLIC_KEY},
    {vnCbc, ZIRC_MODE_CBC},
};
constexpr Pair paddings[] = {
    {vnPadNone, ZIRC_PAD_NONE},
    {vnPadZero, ZIRC_PAD_ZERO},
    {vnPadLength, ZIRC_PAD_LENGTH},
    {vnPadLengthMinusOne, ZIRC_PAD_LENGTH_MINUS_ONE},
    {vnPadLengthMinusOne + 1, ZIRC_PAD_LENGTH_MINUS_ONE},
};

template <int count> int mapped(const Pair (&pairs)[count], int code)
{
    for (const Pair& pair : pairs) {
        if (pair.code == code) return pair.engine;
    }
    return vnUnsupported;
}

} // namespace

int engineAlgorithm(int code) { return mapped(algorithms, code); }

int engineMode(int code) { return mapped(modes, code); }

int enginePadding(int code) { return mapped(paddings, code); }

} // namespace vrno
