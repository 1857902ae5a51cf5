// The error trail: where a failure happened, told from the outermost frame to the innermost.
#pragma once

#include "base/ByteString.h"

namespace vrno {

// Where a statement stands. As a default argument it names the caller's file, line and function; in a lambda the
// function's name is `operator()`, so hand it on from outside there.
struct Here {
    const char* file;
    int line;
    const char* function;

    static constexpr Here now(const char* f = __builtin_FILE(), int l = __builtin_LINE(), const char* fn = __builtin_FUNCTION())
    {
        return {f, l, fn};
    }

    // The same place, told as part of `method`.
    constexpr Here in(const char* method) const { return {file, line, method}; }
};

// Replaces `trail` by a frame "[file:line]Class::Method-Name(code)" with the file's base name, and behind it, where
// there is one, a comma and `message`. The message may be the trail itself: that is how an object keeps its own story.
void addTrailFrame(ByteString& trail, const char* pszFile, int nLine, const char* pszClass, const char* pszMethod,
                   const char* pszName, int nCode, const char* pszMessage);

// The same with the text that is to stand before the frame's own end: used where many frames are laid at once.
ByteString trailFrame(const char* pszFile, int nLine, const char* pszClass, const char* pszMethod, const char* pszName, int nCode,
                      bool followed);

// The code of a failure for want of memory where the step's own code would read as something else.
inline constexpr int noMemoryCode = 9999;

// Whether the story on the trail of a failed object is one of memory running out: it ends so, or was cut off for the same
// reason. For whoever goes on after a failure that says only what the data is not.
bool tellsOfMemory(const ByteString& trail);

// An object that carries a trail: a value, a record, a utility or facade object.
template <class T>
concept Trailed = requires(T& object)
{
    object.getErrorTrail();
};

// One frame on `object`'s trail with `message` behind it; returns `code`. The frame names Object::className.
template <Trailed Object> int fail(Object& object, int code, const char* name, const char* message, Here at = Here::now())
{
    object.addTrailFrame(at.file, at.line, Object::className, at.function, name, code, message);
    return code;
}

template <Trailed Object> int fail(Object& object, int code, const char* name, const ByteString& message, Here at = Here::now())
{
    return fail(object, code, name, message.getText(), at);
}

// The same with the story of the inner object behind it, which may be `object` itself.
template <Trailed Object, Trailed Inner> int fail(Object& object, int code, const char* name, Inner& inner, Here at = Here::now())
{
    return fail(object, code, name, inner.getErrorTrail().getText(), at);
}

// For operations that hand out `m_bsOutput`: fails as above, stores the code and gives the emptied output back.
template <Trailed Object, class Story>
ByteString& failOutput(Object& object, int code, const char* name, Story&& story, Here at = Here::now())
{
    object.m_nLastError = fail(object, code, name, story, at);
    object.m_bsOutput.clear();
    return object.m_bsOutput;
}

} // namespace vrno
