// The slots of the algorithms that have no room of their own: digests, the MAC, the generator.
#pragma once

#include "engine/frame/context.h"

namespace vrno {

struct DigestKind {
    unsigned int nHashId;
    int nOutputBlockLen;
    Slots slots;
};

extern const DigestKind md5Digest, sha1Digest;
extern const Slots hmacSlots, randomSlots;

} // namespace vrno
