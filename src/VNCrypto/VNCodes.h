// The library's own codes of algorithms, modes and paddings, and what they are in the engine.
#pragma once

namespace vrno {

// Algorithms, as callers of the facade pass them. The facade knows some codes only to refuse them: the engine has no such
// algorithm.
enum VNAlgorithm : int {
    vnMd5 = 1002, // refused
    vnSha1 = 1011,
    vnSha256 = 1012, // refused

    vnRandom = 2020,

    vnCipher3000 = 3000, // refused, as are those below but SEED
    vnCipher3011 = 3011,
    vnSeed = 3020,
    vnCipher3090 = 3090,
    vnCipher3091 = 3091,
    vnCipher3200 = 3200,

    vnRsa1024 = 4001, // PKCS#1 v1.5, by the bits of the modulus
    vnRsa2048 = 4002,

    vnHmacSha1 = 5030,

    vnMd5WithRsa1024 = 7001, // refused
    vnMd5WithRsa2048 = 7002, // refused
    vnSha1WithRsa1024 = 7011,
    vnSha1WithRsa2048 = 7012,
    vnSha1WithKcdsa1024 = 7032,
    vnSha1WithRsaPss1024 = 7060, // refused
    vnSha1WithRsaPss2048 = 7061, // refused
    vnSha256WithRsa1024 = 7070,  // refused
    vnSha256WithRsa2048 = 7071,  // refused
};

enum VNMode : int { vnPrivateKey = 1, vnPublicKey = 2, vnCbc = 4 };

enum VNPadding : int {
    vnPadNone = 0,
    vnPadZero = 1,
    vnPadLength = 2,
    vnPadLengthMinusOne = 3, // also 4
};

inline constexpr int vnUnsupported = -1;

// The engine's number, or vnUnsupported.
int engineAlgorithm(int code);
int engineMode(int code);
int enginePadding(int code);

} // namespace vrno
