// Long division (Knuth, TAOCP 4.3.1, algorithm D) over any layer of words.
#pragma once

#include "engine/bignum/rows.h"

#include <algorithm>
#include <bit>

namespace vrno {

// A division, digit by digit. Dividend and divisor are shifted so that the top bit of the divisor is set; both are wiped on
// destruction.
template <class Layer> class Division {
public:
    using Word = typename Layer::Word;
    static constexpr std::size_t bits = std::numeric_limits<Word>::digits, parts = bits / 32;

    // As for divideRows, with an at least dn.
    Division(const std::uint32_t* a, std::size_t an, const std::uint32_t* d, std::size_t dn)
        : m(load(dividend, a, an)), n(load(divisor, d, dn)), shift(static_cast<std::size_t>(std::countl_zero(divisor[n - 1])))
    {
        dividend[m] = 0;
        shiftLeft(dividend, m + 1);
        shiftLeft(divisor, n);
    }
    Division(const Division&) = delete;
    Division& operator=(const Division&) = delete;
    ~Division()
    {
        wipe(dividend, (m + 1) * sizeof(Word));
        wipe(divisor, n * sizeof(Word));
    }

    std::size_t digits() const { return m - n + 1; }

    // Digit j of the quotient, after all above it. Subtracts its product with the divisor.
    Word digit(std::size_t j)
    {
        Word* const window = dividend + j; // n + 1 words; the upper n words are below the divisor
        Word digit = estimate(window);
        window[n] -= Layer::mulSubRow(window, divisor, n, digit);
        for (; window[n] > 0; --digit) window[n] += addRow(window, window, divisor, n); // while the difference is negative
        return digit;
    }

    void remainder(std::uint32_t* rem, std::size_t words) const
    {
        for (std::size_t i = 0; i < words; ++i) {
            const Word low = dividend[i / parts] >> shift, high = dividend[i / parts + 1];
            rem[i] = static_cast<std::uint32_t>((shift > 0 ? low | high << (bits - shift) : low) >> i % parts * 32);
        }
    }

private:
    // Returns the number of words of the layer.
    static std::size_t load(Word* r, const std::uint32_t* a, std::size_t words)
    {
        const std::size_t length = (words + parts - 1) / parts;
        std::fill_n(r, length, Word{0});
        for (std::size_t i = 0; i < words; ++i) r[i / parts] |= static_cast<Word>(a[i]) << i % parts * 32;
        return length;
    }

    void shiftLeft(Word* r, std::size_t length) const
    {
        if (shift == 0) return;
        for (std::size_t i = length; --i > 0;) r[i] = r[i] << shift | r[i - 1] >> (bits - shift);
        r[0] <<= shift;
    }

    // The two upper words of the window divided by the top word of the divisor: too large by 2 at most. The word below each of
    // them shows that in nearly all cases.
    Word estimate(const Word* window) const
    {
        const Word top = divisor[n - 1];
        if (window[n] == top) return ~Word{0};
        Word digit = Layer::bnDivWords(window[n], window[n - 1], top);
        if (n == 1) return digit;
        const Word second = divisor[n - 2];
        Word rest = window[n - 1] - digit * top, low = 0, high = Layer::mulRow(&low, &second, 1, digit);
        while (high > rest || (high == rest && low > window[n - 2])) {
            --digit;
            high -= static_cast<Word>(low < second);
            low -= second;
            rest += top;
            if (rest < top) break;
        }
        return digit;
    }

    Word dividend[maxDividend / parts + 2], divisor[bnWords / parts];
    const std::size_t m, n, shift; // words of the dividend without the one on top, and of the divisor
};

template <class Layer>
void divideRows(std::uint32_t* q, std::uint32_t* rem, const std::uint32_t* a, std::size_t an, const std::uint32_t* d,
                std::size_t dn)
{
    if (an < dn) {
        std::copy_n(a, an, rem);
        std::fill(rem + an, rem + dn, 0U);
        return;
    }
    Division<Layer> division(a, an, d, dn);
    for (std::size_t j = division.digits(); j-- > 0;) {
        const auto digit = division.digit(j);
        for (std::size_t part = 0; q && part < division.parts; ++part) {
            const std::size_t i = j * division.parts + part;
            if (i <= an - dn) q[i] = static_cast<std::uint32_t>(digit >> part * 32); // the words above are 0
        }
    }
    division.remainder(rem, dn);
}

} // namespace vrno
