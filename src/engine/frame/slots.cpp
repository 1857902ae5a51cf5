#include "engine/frame/slots.h"

#include "engine/digest/kinds.h"
#include "engine/random/random.h"

#include <type_traits>

namespace vrno {

// ---- digests ----

template <class Digest> static typename Digest::State& stateOf(ZIRC_Context& context)
{
    if constexpr (std::is_same_v<Digest, Md5Kind>) {
        return context.digestState.md5;
    } else {
        return context.digestState.sha1;
    }
}

template <class Digest> static constexpr DigestKind digestKind(ZIRC_HashId id)
{
    return {id,
            Digest::size,
            {.fnDigestInit =
                 [](ZIRC_Context& context) {
                     Digest::init(stateOf<Digest>(context));
                     return 0;
                 },
             .fnDigestUpdate =
                 [](ZIRC_Context& context, const unsigned char* input, int length) {
                     Digest::update(stateOf<Digest>(context), input, static_cast<std::size_t>(length));
                     return 0;
                 },
             .fnDigestFinal =
                 [](ZIRC_Context& context, unsigned char* output, int* length) {
                     Digest::final(stateOf<Digest>(context), output);
                     *length = Digest::size;
                     return 0;
                 }}};
}

constinit const DigestKind md5Digest = digestKind<Md5Kind>(hashMd5);
constinit const DigestKind sha1Digest = digestKind<Sha1Kind>(hashSha1);

// ---- the MAC ----

static int macInit(ZIRC_Context& context, const unsigned char* key, int length)
{
    HMAC_Init(context.macState, key, static_cast<std::size_t>(length));
    return 0;
}

static int macUpdate(ZIRC_Context& context, const unsigned char* input, int length)
{
    HMAC_Update(context.macState, input, static_cast<std::size_t>(length));
    return 0;
}

static int macFinal(ZIRC_Context& context, unsigned char* output, int* length)
{
    HMAC_Final(context.macState, output);
    *length = 20;
    return 0;
}

static int macChain(ZIRC_Context& context, unsigned char* output, const unsigned char* firstLink, int furtherLinks)
{
    HMAC_Chain(context.macState, output, firstLink, furtherLinks);
    return 0;
}

const Slots hmacSlots{.fnMacInit = macInit, .fnMacUpdate = macUpdate, .fnMacFinal = macFinal, .fnMacChain = macChain};

// ---- the generator ----

static int random(ZIRC_Context&, unsigned char* output, int length, const unsigned char* seed, int seedLength)
{
    const bool seeded = seed != nullptr && seedLength > 0;
    for (int i = 0; i < length; ++i) output[i] = seeded ? seed[i % seedLength] : 0;
    return randBytesLocal(output, length) ? 0 : 1;
}

const Slots randomSlots{.fnRandom = random};

} // namespace vrno
