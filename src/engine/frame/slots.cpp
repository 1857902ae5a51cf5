// HMAC and the random generator as algorithms of the engine.
#include "engine/frame/slots.h"
#include "engine/random/random.h"

namespace vrno {

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
    *length = sha1DigestLength;
    return 0;
}

static int macChain(ZIRC_Context& context, unsigned char* output, const unsigned char* firstLinks, int length, int furtherLinks)
{
    HMAC_Chain(context.macState, output, firstLinks, static_cast<std::size_t>(length), furtherLinks);
    return 0;
}

const Slots hmacSlots{.fnMacInit = macInit, .fnMacUpdate = macUpdate, .fnMacFinal = macFinal, .fnMacChain = macChain};

// ---- the random generator ----

static int random(ZIRC_Context&, unsigned char* output, int length, const unsigned char* seed, int seedLength)
{
    const bool seeded = seed != nullptr && seedLength > 0;
    for (int i = 0; i < length; ++i) output[i] = seeded ? seed[i % seedLength] : 0;
    return randBytesLocal(output, length) < 0 ? 1 : 0;
}

const Slots randomSlots{.fnRandom = random};

} // namespace vrno
