#include "engine/frame/slots.h"

#include "engine/random/random.h"

#include <cstring>

namespace vrno {

// ---- digests ----

static int md5Init(ZIRC_Context& context)
{
    MD5_Init(context.digestState.md5);
    return 0;
}

static int md5Update(ZIRC_Context& context, const unsigned char* input, int length)
{
    MD5_Update(context.digestState.md5, input, static_cast<std::size_t>(length));
    return 0;
}

static int md5Final(ZIRC_Context& context, unsigned char* output, int* length)
{
    MD5_Final(context.digestState.md5, output);
    *length = 16;
    return 0;
}

static int sha1Init(ZIRC_Context& context)
{
    SHA1_Init(context.digestState.sha1);
    return 0;
}

static int sha1Update(ZIRC_Context& context, const unsigned char* input, int length)
{
    SHA1_Update(context.digestState.sha1, input, static_cast<std::size_t>(length));
    return 0;
}

static int sha1Final(ZIRC_Context& context, unsigned char* output, int* length)
{
    SHA1_Final(context.digestState.sha1, output);
    *length = 20;
    return 0;
}

const DigestKind md5Digest{hashMd5, 16, {.fnDigestInit = md5Init, .fnDigestUpdate = md5Update, .fnDigestFinal = md5Final}};
const DigestKind sha1Digest{hashSha1, 20, {.fnDigestInit = sha1Init, .fnDigestUpdate = sha1Update, .fnDigestFinal = sha1Final}};

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

const Slots hmacSlots{.fnMacInit = macInit, .fnMacUpdate = macUpdate, .fnMacFinal = macFinal};

// ---- the generator ----

static int random(ZIRC_Context&, unsigned char* output, int length, const unsigned char* seed, int seedLength)
{
    const bool seeded = seed != nullptr && seedLength > 0;
    for (int i = 0; i < length; ++i) output[i] = seeded ? seed[i % seedLength] : 0;
    return randBytesLocal(output, length) ? 0 : 1;
}

const Slots randomSlots{.fnRandom = random};

} // namespace vrno
