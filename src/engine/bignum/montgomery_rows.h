// Montgomery's multiplication over any layer of words.
#pragma once

#include "engine/bignum/exponent.h"
#include "engine/bignum/limbs.h"
#include "engine/bignum/montgomery.h"

namespace vrno {

template <class Layer> class MontgomeryRows {
public:
    using Word = typename Layer::Word;
    static constexpr int bits = std::numeric_limits<Word>::digits;
    static constexpr std::size_t maxLength = montgomeryMaxBits / bits;
    struct Element {
        Word d[maxLength];
    };

    explicit MontgomeryRows(const ZIRC_BN& m) : n((significant(m) * 32 + bits - 1) / bits), ri(n * bits)
    {
        toLimbs<bits>(N, n, m);
        n0 = negativeInverse(N[0]);
        Temporary square;
        powerOfTwo(square, 2 * ri, m);
        toLimbs<bits>(RR.d, n, square);
    }
    MontgomeryRows(const MontgomeryRows&) = delete;
    MontgomeryRows& operator=(const MontgomeryRows&) = delete;
    ~MontgomeryRows()
    {
        wipe(N, sizeof N);
        wipe(&RR, sizeof RR);
        wipe(product, sizeof product);
        wipe(squares, sizeof squares);
    }

    // Not inline: powers have many of them.
    [[gnu::noinline]] void mul(Element& r, const Element& a, const Element& b)
    {
        mulRows<Layer>(product, a.d, n, b.d, n);
        reduce(r);
    }

    [[gnu::noinline]] void sqr(Element& r)
    {
        sqrRows<Layer>(product, r.d, n, squares);
        reduce(r);
    }

    void select(Element& r, const Element* table, int count, unsigned index) const
    {
        std::fill_n(r.d, n, Word{0});
        for (unsigned i = 0; i < static_cast<unsigned>(count); ++i) {
            const Word mask = hidden<Word>(Word{0} - static_cast<Word>(i == index));
            for (std::size_t k = 0; k < n; ++k) r.d[k] |= table[i].d[k] & mask;
        }
    }

    // Into Montgomery's form, and back.
    void enter(Element& r, const ZIRC_BN& a)
    {
        toLimbs<bits>(r.d, n, a);
        mul(r, r, RR);
    }
    void leave(ZIRC_BN& r, const Element& a, std::size_t words)
    {
        std::copy_n(a.d, n, product);
        std::fill_n(product + n, n, Word{0});
        Element plain;
        reduce(plain);
        fromLimbs<bits>(r, words, plain.d, n);
        wipe(&plain, sizeof plain);
    }

private:
    // r = the product / R modulo N. The value is below 2 x N before the last step, which subtracts N without a branch.
    void reduce(Element& r)
    {
        Word carry = 0;
        for (std::size_t i = 0; i < n; ++i) {
            const Word high = Layer::mulAddRow(product + i, N, n, product[i] * n0);
            const Word partial = product[i + n] + carry;
            carry = static_cast<Word>(partial < carry);
            product[i + n] = partial + high;
            carry |= static_cast<Word>(product[i + n] < high);
        }
        const Word* const value = product + n;
        const Word borrow = subRow(r.d, value, N, n);
        const Word isBelow = hidden<Word>(Word{0} - (borrow & (carry ^ 1)));
        for (std::size_t i = 0; i < n; ++i) r.d[i] = (value[i] & isBelow) | (r.d[i] & ~isBelow);
    }

    std::size_t n;  // words of the modulus
    std::size_t ri; // bits of R
    Word n0;        // -1 / N modulo one word
    Element RR;     // R squared modulo N
    Word N[maxLength], product[2 * maxLength], squares[2 * maxLength];
};

template <class Montgomery> void modExp(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& p, const ZIRC_BN& m, bool secret)
{
    using Element = typename Montgomery::Element;
    Montgomery montgomery(m);
    PowerTable<Element, 2> values;
    Element &result = values.v[0], &base = values.v[1];
    montgomery.enter(base, a);
    if (secret) {
        Temporary one;
        bnSetWord(one, 1);
        montgomery.enter(result, one);
        powerSecret(montgomery, result, base, p);
    } else {
        power(montgomery, result, base, p);
    }
    montgomery.leave(r, result, significant(m));
}

} // namespace vrno
