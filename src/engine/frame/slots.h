// The slots of the algorithms that need no file of their own: digests, the MAC, the random generator.
#pragma once

#include "engine/digest/kinds.h"
#include "engine/frame/context.h"

#include <type_traits>

namespace vrno {

template <class Digest> typename Digest::State& digestState(ZIRC_Context& context)
{
    if constexpr (std::is_same_v<Digest, Md5Kind>) {
        return context.digestState.md5;
    } else {
        return context.digestState.sha1;
    }
}

template <class Digest> int digestInit(ZIRC_Context& context)
{
    Digest::init(digestState<Digest>(context));
    return 0;
}

template <class Digest> int digestUpdate(ZIRC_Context& context, const unsigned char* input, int length)
{
    Digest::update(digestState<Digest>(context), input, static_cast<std::size_t>(length));
    return 0;
}

template <class Digest> int digestFinal(ZIRC_Context& context, unsigned char* output, int* length)
{
    Digest::final(digestState<Digest>(context), output);
    *length = Digest::size;
    return 0;
}

// Slots with those of a digest added.
template <class Digest> constexpr Slots withDigest(Slots slots)
{
    slots.fnDigestInit = digestInit<Digest>;
    slots.fnDigestUpdate = digestUpdate<Digest>;
    slots.fnDigestFinal = digestFinal<Digest>;
    return slots;
}

struct DigestKind {
    unsigned int nHashId;
    int nOutputBlockLen;
    Slots slots;
};
inline constexpr DigestKind md5Digest{hashMd5, Md5Kind::size, withDigest<Md5Kind>({})};
inline constexpr DigestKind sha1Digest{hashSha1, Sha1Kind::size, withDigest<Sha1Kind>({})};

extern const Slots hmacSlots, randomSlots;

} // namespace vrno
