// How the facade tells a failure: what failed stands as the frame's name, the engine's text behind it.
#pragma once

#include "VNCrypto/VNCodes.h"
#include "base/Objects.h"
#include "engine/frame/zirc.h"

namespace vrno {

// `what` holds a %d for the code that is not supported; there is no message.
template <class Object> int unsupported(Object& object, int code, const char* what, int value, Here at)
{
    const ByteString name = formatted(what, value);
    return name.isOutOfMemory() ? failMemory(object, code, what, memoryFailure, at) : fail(object, code, name.getText(), "", at);
}

// Maps an algorithm code, or fails with 1.
template <class Object> int mapAlgorithm(Object& object, int nAlgID, int& engine, Here at)
{
    engine = engineAlgorithm(nAlgID);
    return engine == vnUnsupported ? unsupported(object, 1, "The AlgID(%d) is not supported.", nAlgID, at) : 0;
}

template <class Object> int engineFailure(Object& object, int code, const char* name, int result, Here at = Here::now())
{
    if (result == ZIRC_MEMORY_ERROR) return failMemory(object, code, name, ZIRC_GetErrorText(result), at);
    return fail(object, code, name, ZIRC_GetErrorText(result), at);
}

} // namespace vrno
