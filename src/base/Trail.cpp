#include "base/Trail.h"

#include <cstring>
#include <string_view>

namespace vrno {

static const char* baseName(const char* path)
{
    const char* base = path;
    for (const char* at = path; *at; ++at) {
        if (*at == '/' || *at == '\\') base = at + 1;
    }
    return base;
}

ByteString trailFrame(const char* pszFile, int nLine, const char* pszClass, const char* pszMethod, const char* pszName, int nCode,
                      bool followed)
{
    return formatted(followed ? "[%s:%d]%s::%s-%s(%d)," : "[%s:%d]%s::%s-%s(%d)", baseName(pszFile), nLine, pszClass, pszMethod,
                     pszName, nCode);
}

void addTrailFrame(ByteString& trail, const char* pszFile, int nLine, const char* pszClass, const char* pszMethod,
                   const char* pszName, int nCode, const char* pszMessage)
{
    const bool followed = pszMessage != nullptr && *pszMessage != '\0';
    ByteString text = trailFrame(pszFile, nLine, pszClass, pszMethod, pszName, nCode, followed);
    if (followed) text += pszMessage;
    trail = text;
}

bool tellsOfMemory(const ByteString& trail)
{
    const std::string_view story(trail.getText(), static_cast<std::size_t>(trail.getLength()));
    const auto says = [story](std::string_view text) { return story.find(text) != std::string_view::npos; };
    return story.empty() || story.ends_with(',') || story.ends_with("Memory Allocation Error") ||
           says("Memory allocation failed") || says("allocation is failed"); // the engine's words, and the facade's
}

} // namespace vrno
