// Division of the word layer on the native double word; its rows stand in the header.
#include "engine/bignum/words.h"

namespace vrno {

WordsNative::Word WordsNative::bnDivWords(Word high, Word low, Word d)
{
    if (d == 0) return ~Word{0};
    return static_cast<Word>((static_cast<std::uint64_t>(high) << 32 | low) / d);
}

} // namespace vrno
