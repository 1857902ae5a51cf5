// The library's own codes of algorithms, modes and paddings, and what they are in the engine.
#pragma once

namespace vrno {

// Algorithm codes, as callers of the facade pass them.
struct VNAlgorithm {
    static constexpr int sha1() { return 1011; }
    static constexpr int random() { return 2020; }
    static constexpr int seed() { return 3020; }
    static constexpr int rsa1024() { return 4001; } // PKCS#1 v1.5, by the length of the modulus
    static constexpr int rsa2048() { return 4002; }
    static constexpr int hmacSha1() { return 5030; }
    static constexpr int kcdsa1024() { return 7032; } // with SHA-1
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
