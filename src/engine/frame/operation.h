// What the public operations share: the context of a call, and its way through the stages.
#pragma once

#include "base/wipe.h"
#include "engine/frame/context.h"

#include <memory>
#include <new>

namespace vrno {

struct WipedDelete {
    void operator()(ZIRC_Context* context) const
    {
        wipe(context, offsetof(ZIRC_Context, keyArea) + context->keyAreaUsed);
        delete context;
    }
};
using OwnedContext = std::unique_ptr<ZIRC_Context, WipedDelete>;

inline OwnedContext newContext()
{
    return OwnedContext(new (std::nothrow) ZIRC_Context);
}

// Runs the stages in order up to the first that fails. 0, or the context's error with that stage's offset: 1000, 2000,
// 3000 by position.
template <class... Stage> int stages(ZIRC_Context& context, Stage... stage)
{
    int offset = 0;
    const bool done = ((offset += 1000, stage(context) == 0) && ...);
    return done ? 0 : context.nError + offset;
}

// Runs a slot, or refuses where the algorithm has none.
template <class Slot, class... Argument> int runSlot(ZIRC_Context& context, Slot slot, Argument... arguments)
{
    return slot ? slot(context, arguments...) : 1;
}

} // namespace vrno
