#include "base/Trail.h"

#include <utility>

namespace vrno {

static const char* baseName(const char* path)
{
    const char* base = path;
    for (const char* at = path; *at; ++at) {
        if (*at == '/' || *at == '\\') base = at + 1;
    }
    return base;
}

// ---- the trail ----

ByteString Trail::frameText(const Here& at, const char* className, const char* name, int code, bool isFollowed)
{
    return formatted(isFollowed ? "[%s:%d]%s::%s-%s(%d)," : "[%s:%d]%s::%s-%s(%d)", baseName(at.file), at.line, className,
                     at.function, name, code);
}

void Trail::frame(const Here& at, const char* className, const char* name, int code, const char* message)
{
    const bool isFollowed = message != nullptr && *message != '\0';
    ByteString text = frameText(at, className, name, code, isFollowed);
    m_outOfMemory = text.isOutOfMemory();
    if (isFollowed) text += message;
    m_outOfMemory |= text.isOutOfMemory();
    m_text.swap(text);
}

void Trail::frame(const Here& at, const char* className, const char* name, int code, const Trail& inner)
{
    const bool wasOutOfMemory = inner.m_outOfMemory; // `inner` may be this object
    frame(at, className, name, code, inner.getText());
    m_outOfMemory |= wasOutOfMemory;
}

void Trail::prepend(Octets frames) { m_outOfMemory |= m_text.prepend(frames) > 0; }

void Trail::swap(Trail& other)
{
    m_text.swap(other.m_text);
    std::swap(m_outOfMemory, other.m_outOfMemory);
}

// ---- the ways to fail ----

int failAs(Trailed& object, const char* className, int code, const char* name, const char* message, Here at)
{
    object.m_bsErrorTrail.frame(at, className, name, code, message);
    return code;
}

int failAs(Trailed& object, const char* className, int code, const char* name, const ByteString& message, Here at)
{
    object.m_bsErrorTrail.frame(at, className, name, code, message.getText());
    if (message.isOutOfMemory()) object.m_bsErrorTrail.setOutOfMemory();
    return code;
}

int failAs(Trailed& object, const char* className, int code, const char* name, const Trailed& inner, Here at)
{
    object.m_bsErrorTrail.frame(at, className, name, code, inner.m_bsErrorTrail);
    return code;
}

int failMemoryAs(Trailed& object, const char* className, int code, const char* name, const char* message, Here at)
{
    object.m_bsErrorTrail.frame(at, className, name, code, message);
    object.m_bsErrorTrail.setOutOfMemory();
    return code;
}

} // namespace vrno
