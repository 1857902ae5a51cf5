// Rows of words, least significant first: the layer under the big numbers. A layer is a type with
//
//   Word       an unsigned type
//   mulRow     r = a x w for n words; returns the carry word
//   mulAddRow  r += a x w for n words; returns the carry word
//   mulSubRow  r -= a x w for n words; returns the borrow word
//   sqrWords   r[2i] and r[2i + 1] become the square of a[i], for n words of a
//   bnDivWords the two words (high, low) divided by d, for a high below d; all ones for a d of 0
//
// r is a or does not overlap it; n may be 0; no branch depends on the value of a word, but for bnDivWords.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <type_traits>

namespace vrno {

// On products of half words, for machines without a product of two words.
struct WordsPortable {
    using Word = std::uint32_t;
    static Word mulRow(Word* r, const Word* a, std::size_t n, Word w);
    static Word mulAddRow(Word* r, const Word* a, std::size_t n, Word w);
    static Word mulSubRow(Word* r, const Word* a, std::size_t n, Word w);
    static void sqrWords(Word* r, const Word* a, std::size_t n);
    static Word bnDivWords(Word high, Word low, Word d);
};

// On a native double word.
template <class Single, class Double> struct WordsOf {
    using Word = Single;
    static constexpr int bits = std::numeric_limits<Single>::digits;

    static Word mulRow(Word* r, const Word* a, std::size_t n, Word w)
    {
        Word carry = 0;
        for (std::size_t i = 0; i < n; ++i) {
            const Double t = static_cast<Double>(a[i]) * w + carry; // at most (2^b - 1)^2 + 2^b - 1, below 2^2b
            r[i] = static_cast<Word>(t);
            carry = static_cast<Word>(t >> bits);
        }
        return carry;
    }

    static Word mulAddRow(Word* r, const Word* a, std::size_t n, Word w)
    {
        Word carry = 0;
        for (std::size_t i = 0; i < n; ++i) {
            const Double t = static_cast<Double>(a[i]) * w + r[i] + carry; // at most (2^b - 1)^2 + 2 x (2^b - 1) = 2^2b - 1
            r[i] = static_cast<Word>(t);
            carry = static_cast<Word>(t >> bits);
        }
        return carry;
    }

    static Word mulSubRow(Word* r, const Word* a, std::size_t n, Word w)
    {
        Word borrow = 0;
        for (std::size_t i = 0; i < n; ++i) {
            const Double t = static_cast<Double>(a[i]) * w + borrow; // as for mulRow
            const Word low = static_cast<Word>(t);
            borrow = static_cast<Word>(t >> bits) + static_cast<Word>(r[i] < low);
            r[i] -= low;
        }
        return borrow;
    }

    static void sqrWords(Word* r, const Word* a, std::size_t n)
    {
        for (std::size_t i = 0; i < n; ++i) {
            const Double t = static_cast<Double>(a[i]) * a[i];
            r[2 * i] = static_cast<Word>(t);
            r[2 * i + 1] = static_cast<Word>(t >> bits);
        }
    }

    static Word bnDivWords(Word high, Word low, Word d)
    {
        return d > 0 ? static_cast<Word>((static_cast<Double>(high) << bits | low) / d) : ~Word{0};
    }
};

using WordsNative = WordsOf<std::uint32_t, std::uint64_t>;
using Words = std::conditional_t<sizeof(void*) >= 8, WordsNative, WordsPortable>;

// 64-bit words, for the inner loops of exponentiation and division.
#ifdef __SIZEOF_INT128__
__extension__ typedef unsigned __int128 DoubleLimb;
using WordsWide = WordsOf<std::uint64_t, DoubleLimb>;
using WidestWords = WordsWide;
#else
using WidestWords = Words;
#endif

// ---- rows without products ----

// r = a + b; returns the carry.
template <class Word> Word addRow(Word* r, const Word* a, const Word* b, std::size_t n)
{
    Word carry = 0;
    for (std::size_t i = 0; i < n; ++i) {
        const Word partial = a[i] + carry;
        const Word sum = partial + b[i];
        carry = static_cast<Word>(partial < carry) | static_cast<Word>(sum < partial);
        r[i] = sum;
    }
    return carry;
}

// r = a - b; returns the borrow.
template <class Word> Word subRow(Word* r, const Word* a, const Word* b, std::size_t n)
{
    Word borrow = 0;
    for (std::size_t i = 0; i < n; ++i) {
        const Word partial = a[i] - b[i];
        const Word newBorrow = static_cast<Word>(a[i] < b[i]) | static_cast<Word>(partial < borrow);
        r[i] = partial - borrow;
        borrow = newBorrow;
    }
    return borrow;
}

// Adds w to the row; returns the carry.
template <class Word> Word addToRow(Word* r, std::size_t n, Word w)
{
    for (std::size_t i = 0; i < n && w > 0; ++i) {
        r[i] += w;
        w = static_cast<Word>(r[i] < w);
    }
    return w;
}

template <class Word> int compareRows(const Word* a, const Word* b, std::size_t n)
{
    while (n-- > 0) {
        if (a[n] != b[n]) return a[n] > b[n] ? 1 : -1;
    }
    return 0;
}

// r = 2r; returns the bit that is shifted out.
template <class Word> Word doubleRow(Word* r, std::size_t n)
{
    constexpr int last = std::numeric_limits<Word>::digits - 1;
    Word carry = 0;
    for (std::size_t i = 0; i < n; ++i) {
        const Word topBit = r[i] >> last;
        r[i] = r[i] << 1 | carry;
        carry = topBit;
    }
    return carry;
}

// ---- products; r has an + bn or 2n words and does not overlap the factors ----

template <class Layer>
void mulRows(typename Layer::Word* r, const typename Layer::Word* a, std::size_t an, const typename Layer::Word* b, std::size_t bn)
{
    if (bn == 0) {
        for (std::size_t i = 0; i < an; ++i) r[i] = 0;
        return;
    }
    r[an] = Layer::mulRow(r, a, an, b[0]);
    for (std::size_t i = 1; i < bn; ++i) r[an + i] = Layer::mulAddRow(r + i, a, an, b[i]);
}

// The products of different words once, doubled, and the squares of the words. `squares` is room for 2n words.
template <class Layer>
void sqrRows(typename Layer::Word* r, const typename Layer::Word* a, std::size_t n, typename Layer::Word* squares)
{
    if (n == 0) return;
    r[0] = r[2 * n - 1] = 0;
    r[n] = Layer::mulRow(r + 1, a + 1, n - 1, a[0]);
    for (std::size_t i = 1; i + 1 < n; ++i) r[n + i] = Layer::mulAddRow(r + 2 * i + 1, a + i + 1, n - 1 - i, a[i]);
    doubleRow(r, 2 * n);
    Layer::sqrWords(squares, a, n);
    addRow(r, r, squares, 2 * n);
}

} // namespace vrno
