#include "engine/digest/hmac.h"

#include "base/wipe.h"
#include "engine/digest/sha1_kernels.h"

#include <cstring>

namespace vrno {

namespace {

void xorBlock(unsigned char (&block)[64], unsigned char pad)
{
    for (unsigned char& octet : block) octet ^= pad;
}

} // namespace

// The key is stored in the place of opad only: first as it is, then XOR ipad.
void HMAC_Init(HMAC_State& state, const void* key, std::size_t keyLength)
{
    std::memset(state.opad, 0, sizeof state.opad);
    if (keyLength > sizeof state.opad)
        SHA1_Digest(state.opad, key, keyLength);
    else if (keyLength > 0)
        std::memcpy(state.opad, key, keyLength);

    xorBlock(state.opad, 0x36);
    SHA1_Init(state.sha1);
    SHA1_Update(state.sha1, state.opad, sizeof state.opad);
    xorBlock(state.opad, 0x36 ^ 0x5C);
    SHA1_Init(state.outer);
    SHA1_Update(state.outer, state.opad, sizeof state.opad);
}

void HMAC_Update(HMAC_State& state, const void* data, std::size_t length) { SHA1_Update(state.sha1, data, length); }

void HMAC_Final(HMAC_State& state, unsigned char* mac)
{
    unsigned char inner[sha1DigestLength];
    SHA1_Final(state.sha1, inner);
    state.sha1 = state.outer;
    SHA1_Update(state.sha1, inner, sizeof inner);
    SHA1_Final(state.sha1, mac);
    wipe(inner, sizeof inner);
}

void HMAC_Chain(const HMAC_State& keyed, unsigned char* xorOfLinks, const unsigned char* firstLinks, std::size_t length,
                int furtherLinks)
{
    pick(sha1ChainKernels)(keyed.sha1.h, keyed.outer.h, xorOfLinks, firstLinks, length / sha1DigestLength, furtherLinks);
}

} // namespace vrno
