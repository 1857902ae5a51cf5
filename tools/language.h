// The language of the command's words.
#pragma once

namespace tool {

// One text in both languages, in UTF-8.
struct Words {
    const char* english;
    const char* korean;
};

// `ko` or `en`; anything else chooses by LC_ALL, LC_MESSAGES and LANG, the first that is set and not empty.
void chooseLanguage(const char* name);

bool isKorean();

// The words in the chosen language.
const char* in(const Words& words);

} // namespace tool
