// Decisions on secret values without a branch: a mask has all bits set for true and none for false.
//
// The masks and the values that they choose are as secret as what they come from. The time of all routines here depends on
// lengths and positions of the caller alone.
#pragma once

#include <cstdint>

namespace vrno {

// Keeps the compiler from turning a mask back into a branch.
template <class Word> Word hidden(Word mask)
{
    __asm__("" : "+r"(mask));
    return mask;
}

using Mask = std::uint32_t;

inline Mask isZero(std::uint32_t a) { return hidden(((a | (0 - a)) >> 31) - 1); }
inline Mask isEqual(std::uint32_t a, std::uint32_t b) { return isZero(a ^ b); }
inline Mask isLess(std::uint32_t a, std::uint32_t b) { return hidden(0 - ((a - b) >> 31)); } // of values below 2^31

inline std::uint32_t choose(Mask mask, std::uint32_t ifSet, std::uint32_t otherwise)
{
    return (ifSet & mask) | (otherwise & ~mask);
}

// The octets at the start of a row that are of one kind, and the octet behind them.
struct Run {
    std::uint32_t length;
    std::uint32_t next; // 0x100 when they are the whole row
};

// `isOfKind` gives the mask of an octet. The row has `count` octets from `first` on, each `step` behind the one before.
template <class IsOfKind> Run runOf(const unsigned char* first, int count, int step, IsOfKind isOfKind)
{
    Run run{0, 0x100};
    Mask inside = ~Mask{0};
    for (int i = 0; i < count; ++i) {
        const std::uint32_t octet = first[i * step];
        const Mask goesOn = inside & isOfKind(octet);
        run.length -= goesOn;
        run.next = choose(inside & ~goesOn, octet, run.next);
        inside = goesOn;
    }
    return run;
}

} // namespace vrno
