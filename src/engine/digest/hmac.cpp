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

// The inner and the outer digest each hash a message of 20 bytes after a pad of 64: one block, whose end is always the same.
void HMAC_Chain(const HMAC_State& keyed, unsigned char* xorOfLinks, const unsigned char* firstLink, int furtherLinks)
{
    constexpr unsigned int bits = 8 * (64 + sha1DigestLength);
    BlockFunction* const blocks = pick(sha1Kernels);
    SecretArea<64> block;
    std::memcpy(block.bytes, firstLink, sha1DigestLength);
    std::memcpy(xorOfLinks, firstLink, sha1DigestLength);
    block.bytes[sha1DigestLength] = 0x80;
    store32<std::endian::big>(block.bytes + 60, bits);
    std::uint32_t h[5];
    for (; furtherLinks > 0; --furtherLinks) {
        for (const SHA1_State* const pad : {&keyed.sha1, &keyed.outer}) {
            std::memcpy(h, pad->h, sizeof h);
            blocks(h, block.bytes, 1);
            for (std::size_t i = 0; i < 5; ++i) store32<std::endian::big>(block.bytes + 4 * i, h[i]);
        }
        for (std::size_t i = 0; i < sha1DigestLength; ++i) xorOfLinks[i] ^= block.bytes[i];
    }
    wipe(h, sizeof h);
}

} // namespace vrno
