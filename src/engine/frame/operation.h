// What the public operations share: the context of a call, its stages, the checks of their arguments.
#pragma once

#include "base/wipe.h"
#include "engine/frame/context.h"

namespace vrno {

// The stack that the stages use at most when they read a private key and use it, with the slowest kernel.
inline constexpr std::size_t privateKeyStack = 32 * 1024;

// Runs the stages of an operation in a context of its own, in order up to the first that fails. 0, or the context's error with
// that stage's offset: 1000, 2000, 3000 by position; ZIRC_MEMORY_ERROR has none.
template <class... Stage> int stages(Stage... stage)
{
    ZIRC_Context context;
    int offset = 0;
    const auto succeeds = [&](auto& next) {
        offset += 1000;
        return next(context) == 0;
    };
    const bool isDone = (succeeds(stage) && ...);
    if (context.hasPrivateKey) wipeStack<privateKeyStack>();
    if (isDone) return 0;
    return context.nError == ZIRC_MEMORY_ERROR ? ZIRC_MEMORY_ERROR : context.nError + offset;
}

// Runs a slot; 1 if the algorithm does not have it.
template <class Slot, class... Argument> int runSlot(ZIRC_Context& context, Slot Slots::*slot, Argument... arguments)
{
    const Slot run = context.slots->*slot;
    return run ? run(context, arguments...) : 1;
}

// The same with ZIRC_STAGED_OPERATION_FAILED for every failure.
template <class Slot, class... Argument> int runStagedSlot(ZIRC_Context& context, Slot Slots::*slot, Argument... arguments)
{
    if (runSlot(context, slot, arguments...) > 0) return ZIRC_SetError(context, ZIRC_STAGED_OPERATION_FAILED);
    return 0;
}

inline int checkOutput(ZIRC_Context& context, const unsigned char* output, int room, int needed)
{
    if (!output) return ZIRC_SetError(context, ZIRC_INVALID_DATA_POINTER);
    if (room < needed) return ZIRC_SetError(context, ZIRC_NOT_ENOUGH_BUFFER);
    return 0;
}

// The kinds of key: the least length that is accepted, and the slot that reads it.
struct KeyKind {
    int Sizes::*minLength;
    decltype(Slots::fnSetKey) Slots::*set;
};
inline constexpr KeyKind symmetricKey{&Sizes::nKeyLen, &Slots::fnSetKey};
inline constexpr KeyKind publicKey{&Sizes::nMinPublicKeyLen, &Slots::fnSetPublicKey};
inline constexpr KeyKind privateKey{&Sizes::nMinPrivateKeyLen, &Slots::fnSetPrivateKey};

inline int setKey(ZIRC_Context& context, const KeyKind& kind, const unsigned char* key, int length)
{
    if (runSlot(context, kind.set, key, length) == 0) return 0;
    return context.nError == ZIRC_MEMORY_ERROR ? 1 : ZIRC_SetError(context, ZIRC_INVALID_KEY);
}

} // namespace vrno
