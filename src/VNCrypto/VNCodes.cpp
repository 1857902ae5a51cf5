#include "VNCrypto/VNCodes.h"

#include "engine/frame/zirc.h"

namespace vrno {

namespace {

struct Pair {
    int code, engine;
};

constexpr Pair algorithms[] = {
    {1011, 1400},   // SHA-1
    {2020, 3420},   // random generator
    {3020, 11110},  // SEED
    {4001, 12001},  // RSA 1024, PKCS#1 v1.5
    {4002, 12002},  // RSA 2048
    {5030, 31400},  // HMAC-SHA-1
    {7011, 121401}, // SHA-1 with RSA 1024
    {7012, 121402}, // SHA-1 with RSA 2048
    {7032, 141401}, // SHA-1 with KCDSA 1024
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

int engineAlgorithm(int code)
{
    return mapped(algorithms, code);
}

int engineMode(int code)
{
    return mapped(modes, code);
}

int enginePadding(int code)
{
    return mapped(paddings, code);
}

} // namespace vrno
