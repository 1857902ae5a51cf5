// The word layer from products of 16 by 16 bits, without a 64-bit type.
#include "engine/bignum/words.h"

#include <bit>

namespace vrno {

namespace {

using Word = WordsPortable::Word;

struct Product {
    Word high, low;
};

inline Product multiply(Word a, Word b)
{
    const Word aLow = a & 0xFFFF, aHigh = a >> 16, bLow = b & 0xFFFF, bHigh = b >> 16;
    const Word one = aLow * bHigh;
    const Word middle = one + aHigh * bLow;
    const Word low = aLow * bLow + (middle << 16);
    const Word middleCarry = static_cast<Word>(middle < one) << 16;
    return {aHigh * bHigh + (middle >> 16) + middleCarry + static_cast<Word>(low < middle << 16), low};
}

} // namespace

Word WordsPortable::mulRow(Word* r, const Word* a, std::size_t n, Word w)
{
    Word carry = 0;
    for (std::size_t i = 0; i < n; ++i) {
        const Product p = multiply(a[i], w);
        r[i] = p.low + carry;
        carry = p.high + static_cast<Word>(r[i] < carry);
    }
    return carry;
}

Word WordsPortable::mulAddRow(Word* r, const Word* a, std::size_t n, Word w)
{
    Word carry = 0;
    for (std::size_t i = 0; i < n; ++i) {
        const Product p = multiply(a[i], w);
        const Word sum = p.low + carry;
        carry = p.high + static_cast<Word>(sum < carry);
        r[i] += sum;
        carry += static_cast<Word>(r[i] < sum);
    }
    return carry;
}

Word WordsPortable::mulSubRow(Word* r, const Word* a, std::size_t n, Word w)
{
    Word borrow = 0;
    for (std::size_t i = 0; i < n; ++i) {
        const Product p = multiply(a[i], w);
        const Word low = p.low + borrow;
        borrow = p.high + static_cast<Word>(low < borrow) + static_cast<Word>(r[i] < low);
        r[i] -= low;
    }
    return borrow;
}

void WordsPortable::sqrWords(Word* r, const Word* a, std::size_t n)
{
    for (std::size_t i = 0; i < n; ++i) {
        const Product p = multiply(a[i], a[i]);
        r[2 * i] = p.low;
        r[2 * i + 1] = p.high;
    }
}

// Long division with digits of 16 bits (Knuth, TAOCP 4.3.1, algorithm D). With the top bit of d set, a digit estimated from
// the upper half of d is too large by 2 at most.
Word WordsPortable::bnDivWords(Word high, Word low, Word d)
{
    if (d == 0) return ~Word{0};
    const int shift = std::countl_zero(d);
    d <<= shift;
    if (shift > 0) high = high << shift | low >> (32 - shift);
    low <<= shift;
    const Word upperDivisor = d >> 16, lowerDivisor = d & 0xFFFF;
    // Divides (remainder, half) by d: the digit of the quotient, and what remains.
    const auto divideStep = [=](Word& remainder, Word half) {
        Word digit = remainder / upperDivisor, ofEstimate = remainder - digit * upperDivisor;
        while (ofEstimate <= 0xFFFF && (digit > 0xFFFF || digit * lowerDivisor > (ofEstimate << 16 | half))) {
            --digit;
            ofEstimate += upperDivisor;
        }
        remainder = (remainder << 16 | half) - digit * d;
        return digit;
    };
    const Word upperDigit = divideStep(high, low >> 16);
    return upperDigit << 16 | divideStep(high, low & 0xFFFF);
}

} // namespace vrno
