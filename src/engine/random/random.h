// The random generators: pools of bytes mixed by a digest, with a rolling position.
#pragma once

namespace vrno {

// 0, or -1 when the system gives no random bytes. What the output holds on entry goes into the result.

// Fills the output from the process-wide pool. The pool is seeded with bytes of the system's random source on first use, and
// anew in a forked child. One thread at a time uses it; a fork waits for that thread.
int randBytes(unsigned char* output, int length);

// Fills the output from a pool of this call's own, which is seeded with bytes of the system's random source. A digest that
// the calls of a process share links it to the calls before.
int randBytesLocal(unsigned char* output, int length);

// Mixes bytes into the process-wide pool.
int randSeed(const unsigned char* data, int length);

} // namespace vrno
