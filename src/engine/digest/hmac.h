// HMAC with SHA-1 (RFC 2104): a code of 20 bytes.
#pragma once

#include "engine/digest/sha1.h"

namespace vrno {

// A plain record, as secret as the key: its owner wipes it. A copy made after Init can hash a message without hashing the
// key's two blocks again.
struct HMAC_State {
    SHA1_State sha1;        // ipad and the message so far
    unsigned char opad[64]; // the key, zero-filled, XOR 0x5C
    SHA1_State outer;       // the outer digest after opad
};

// A key of up to 64 bytes is used as it is; a longer one is replaced by its digest. `key` may be null for a length of 0.
void HMAC_Init(HMAC_State& state, const void* key, std::size_t keyLength);
void HMAC_Update(HMAC_State& state, const void* data, std::size_t length); // as SHA1_Update
// Writes 20 bytes outside the state. After it only Init is valid.
void HMAC_Final(HMAC_State& state, unsigned char* mac);

// The XOR of a chain of MACs: of a first link, and of `furtherLinks` more, each of which is the MAC of the one before it: the
// loop of PBKDF2 (RFC 8018, 5.2). A link has 20 bytes. Several first links, one behind the other, give several chains and as
// much output; two chains in one call take less time than in two. `keyed` is a state after Init.
void HMAC_Chain(const HMAC_State& keyed, unsigned char* xorOfLinks, const unsigned char* firstLinks, std::size_t length,
                int furtherLinks);

} // namespace vrno
