// SEED as an algorithm of the engine.
#include "base/wipe.h"
#include "engine/frame/slots.h"
#include "engine/seed/seed.h"

#include <cstring>

namespace vrno {

static_assert(sizeof(SEED_Schedule) == seedScheduleLength);

static int generateSchedule(ZIRC_Context&, unsigned char* output, const unsigned char* userKey)
{
    SEED_Schedule schedule;
    SEED_SetKey(schedule, userKey);
    std::memcpy(output, &schedule, sizeof schedule);
    wipe(&schedule, sizeof schedule);
    return 0;
}

static int setSchedule(ZIRC_Context& context, const unsigned char* key, int length)
{
    if (length < context.sizes.nKeyLen) return 1;
    std::memcpy(&context.seedKey, key, sizeof context.seedKey);
    return 0;
}

using CbcRoutine = void (*)(const SEED_Schedule&, unsigned char*, const unsigned char*, std::size_t, unsigned char*);

// One run over whole blocks, from the context's chaining value, which it replaces.
template <CbcRoutine run>
static int runCbc(ZIRC_Context& context, int, unsigned char* output, int* outputLength, const unsigned char* input, int inputLength)
{
    if (inputLength % context.sizes.nInputBlockLen != 0) return 1;
    run(context.seedKey, output, input, static_cast<std::size_t>(inputLength), context.iv);
    *outputLength = inputLength;
    return 0;
}

const Slots seedSlots{.fnGenerateKey = generateSchedule,
                      .fnSetKey = setSchedule,
                      .fnEncrypt = runCbc<SEED_CbcEncrypt>,
                      .fnDecrypt = runCbc<SEED_CbcDecrypt>};

} // namespace vrno
