#include "language.h"

#include <cstdlib>
#include <cstring>
#include <initializer_list>

namespace tool {

static bool korean = false;

static const char* languageOfEnvironment()
{
    for (const char* const name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* const value = std::getenv(name);
        if (value && *value) return value;
    }
    return "";
}

void chooseLanguage(const char* name)
{
    const bool isNamed = std::strcmp(name, "ko") == 0 || std::strcmp(name, "en") == 0;
    korean = std::strncmp(isNamed ? name : languageOfEnvironment(), "ko", 2) == 0;
}

bool isKorean() { return korean; }

const char* in(const Words& words) { return korean ? words.korean : words.english; }

} // namespace tool
