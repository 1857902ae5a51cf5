// The failures of the facade: the frame's name says what failed, and the message is the engine's text.
#pragma once

#include "VNCrypto/VNCodes.h"
#include "base/Objects.h"
#include "engine/frame/zirc.h"

namespace vrno {

// `what` contains a %d for the code that is not supported; there is no message.
template <class Object> int unsupported(Object& object, int code, const char* what, int value, Here at)
{
    const ByteString name = formatted(what, value);
    return name.isOutOfMemory() ? failMemory(object, code, what, memoryFailure, at) : fail(object, code, name.getText(), "", at);
}

// The engine's number for an algorithm; 1 when there is none.
template <class Object> int mapAlgorithm(Object& object, int nAlgID, int& algorithm, Here at)
{
    algorithm = engineAlgorithm(nAlgID);
    return algorithm == vnUnsupported ? unsupported(object, 1, "The AlgID(%d) is not supported.", nAlgID, at) : 0;
}

template <class Object> int engineFailure(Object& object, int code, const char* name, int result, Here at = Here::now())
{
    if (result == ZIRC_MEMORY_ERROR) return failMemory(object, code, name, ZIRC_GetErrorText(result).text, at);
    return fail(object, code, name, ZIRC_GetErrorText(result).text, at);
}

} // namespace vrno
