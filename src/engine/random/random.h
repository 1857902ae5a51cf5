// The random generators: pools of bytes mixed by a digest, with a rolling position.
#pragma once

namespace vrno {

// Fills the output from the process-wide pool, which is seeded with bytes of the system's random source when it is first
// used, and anew in a forked child. What the output holds goes into the result. One thread at a time gets in; a fork
// waits for it. False when the system gives no random bytes.
bool randBytes(unsigned char* output, int length);

// Fills the output from a pool of this call's own, seeded with bytes of the system's random source every time. The
// process's running digest links it to the calls before. What the output holds goes into the result. False when the
// system gives no random bytes.
bool randBytesLocal(unsigned char* output, int length);

// Mixes bytes into the process-wide pool.
bool randSeed(const unsigned char* data, int length);

} // namespace vrno
