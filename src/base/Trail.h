// Failures: the trail, which says where a failure happened; the base of all objects that have one; the functions that report it.
#pragma once

#include "base/ByteString.h"

namespace vrno {

// A place in the source. As a default argument it is the caller's file, line and function. Inside a lambda the function is
// `operator()`: use FailuresOf there, which gives the method's name.
struct Here {
    const char* file;
    int line;
    const char* function;

    static constexpr Here now(const char* f = __builtin_FILE(), int l = __builtin_LINE(), const char* fn = __builtin_FUNCTION())
    {
        return {f, l, fn};
    }

    // The same place, in the name of `method`.
    constexpr Here in(const char* method) const { return {file, line, method}; }
};

// A failure. For people: the text of its frames, the outermost first. For the program: whether an allocation failed, the one fact
// that changes a result code. The fact is also set if the text itself could not be allocated.
class Trail {
public:
    // Replaces the trail by the frame "[file:line]Class::Method-Name(code)", with the base name of the file. A comma and `message`
    // follow if `message` is not null or empty.
    void frame(const Here& at, const char* className, const char* name, int code, const char* message);
    // The same with the trail of `inner` as the message; its fact is kept. `inner` may be this object.
    void frame(const Here& at, const char* className, const char* name, int code, const Trail& inner);
    // Puts text in front, unchanged.
    void prepend(Octets frames);
    void setOutOfMemory() { m_outOfMemory = true; }
    void swap(Trail& other);

    // Only the frame; a comma follows it if `isFollowed`.
    static ByteString frameText(const Here& at, const char* className, const char* name, int code, bool isFollowed);

    const ByteString& text() const { return m_text; }
    const char* getText() const { return m_text.getText(); }
    bool outOfMemory() const { return m_outOfMemory; }

private:
    ByteString m_text;
    bool m_outOfMemory = false;
};

// The base of the four kinds of objects that carry a trail: values, records, utility and facade objects.
class Trailed {
public:
    Trailed() = default;
    Trailed(const Trailed&) = delete;
    Trailed& operator=(const Trailed&) = delete;
    virtual ~Trailed() = default;

    int getLastError() const { return m_nLastError; }
    const Trail& getErrorTrail() const { return m_bsErrorTrail; }
    bool outOfMemory() const { return m_bsErrorTrail.outOfMemory(); } // of the last failure
    void addTrailFrame(const char* pszFile, int nLine, const char* pszClass, const char* pszMethod, const char* pszName, int nCode,
                       const char* pszMessage)
    {
        m_bsErrorTrail.frame({pszFile, nLine, pszMethod}, pszClass, pszName, nCode, pszMessage);
    }

    int m_nLastError = 0;
    Trail m_bsErrorTrail;
};

// ---- the ways to fail: each replaces the trail by one frame, followed by the cause, and returns `code` ----

// Each with a class name that may differ from the one of the object.
int failAs(Trailed& object, const char* className, int code, const char* name, const char* message, Here at);
int failAs(Trailed& object, const char* className, int code, const char* name, const ByteString& message, Here at);
int failAs(Trailed& object, const char* className, int code, const char* name, const Trailed& inner, Here at);
int failMemoryAs(Trailed& object, const char* className, int code, const char* name, const char* message, Here at);

// The frame has the name Object::className. `cause` is a message, or the object whose trail follows; it may be `object`.
template <class Object, class Cause> int fail(Object& object, int code, const char* name, Cause&& cause, Here at = Here::now())
{
    return failAs(object, Object::className, code, name, cause, at);
}

inline constexpr const char* memoryFailure = "Memory Allocation Error";

// For the place where an allocation failed.
template <class Object>
int failMemory(Object& object, int code, const char* name, const char* message = memoryFailure, Here at = Here::now())
{
    return failMemoryAs(object, Object::className, code, name, message, at);
}

// For operations that return `m_bsOutput`: stores the code of a failure, empties the output and returns it.
template <class Object> ByteString& failedOutput(Object& object, int code)
{
    object.m_nLastError = code;
    object.m_bsOutput.clear();
    if (object.outOfMemory()) object.m_bsOutput.setOutOfMemory();
    return object.m_bsOutput;
}

template <class Object, class Cause>
ByteString& failOutput(Object& object, int code, const char* name, Cause&& cause, Here at = Here::now())
{
    return failedOutput(object, fail(object, code, name, cause, at));
}

template <class Object> ByteString& failOutputMemory(Object& object, int code, const char* name, Here at = Here::now())
{
    return failedOutput(object, failMemory(object, code, name, memoryFailure, at));
}

// The failures of a helper that is a part of a method: the frames have the name of the method and the line of the statement.
//     const FailuresOf failed{*this, "makeEnvelopedData"};
//     return failed(4, "m_bsContentType", eci);
class FailuresOf {
public:
    template <class Object> FailuresOf(Object& object, const char* method) : FailuresOf(object, Object::className, method) {}
    FailuresOf(Trailed& object, const char* className, const char* method)
        : m_object(object), m_className(className), m_method(method)
    {}

    template <class Cause> int operator()(int code, const char* name, Cause&& cause, Here at = Here::now()) const
    {
        return failAs(m_object, m_className, code, name, cause, at.in(m_method));
    }
    int memory(int code, const char* name, const char* message = memoryFailure, Here at = Here::now()) const
    {
        return failMemoryAs(m_object, m_className, code, name, message, at.in(m_method));
    }

private:
    Trailed& m_object;
    const char* m_className;
    const char* m_method;
};

} // namespace vrno
