// The slots of all algorithms: constants for the rows of the algorithm table.
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

extern const Slots seedSlots, hmacSlots, randomSlots;
extern const Slots rsaSlots;                  // PKCS#1 v1.5
extern const Slots rsaMd5Slots, rsaSha1Slots; // the same with a digest, which ends as a DigestInfo
extern const Slots rsaOaepPssSlots;           // OAEP and PSS with SHA-1
extern const Slots kcdsaSlots;                // with SHA-1

} // namespace vrno
