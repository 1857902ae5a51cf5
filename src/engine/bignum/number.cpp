// Copies, comparisons, bits, bytes, sums and shifts.
#include "engine/bignum/rows.h"
#include "engine/words.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

namespace vrno {

namespace {

constexpr std::size_t capacity = bnWords;

// The magnitude of a plus or minus the word or row b into r, with the sign `neg`.
void setSum(ZIRC_BN& r, std::uint32_t neg, const ZIRC_BN& a, const std::uint32_t* b, std::size_t bn)
{
    const std::size_t an = significant(a);
    std::uint32_t carry = addRow(r.d, a.d, b, bn);
    if (&r != &a) std::copy(a.d + bn, a.d + an, r.d + bn);
    carry = addToRow(r.d + bn, an - bn, carry);
    if (an < capacity) r.d[an] = carry;
    r.neg = neg;
    setLength(r, std::min(an + 1, capacity));
}

void setDifference(ZIRC_BN& r, std::uint32_t neg, const ZIRC_BN& a, const std::uint32_t* b, std::size_t bn)
{
    const std::size_t an = significant(a);
    std::uint32_t borrow = subRow(r.d, a.d, b, std::min(an, bn));
    for (std::size_t i = bn; i < an; ++i) {
        const std::uint32_t word = a.d[i];
        r.d[i] = word - borrow;
        borrow &= static_cast<std::uint32_t>(word == 0);
    }
    r.neg = neg;
    setLength(r, an);
}

// The sum of a and b, where b has the sign `bNeg`.
void signedSum(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& b, std::uint32_t bNeg)
{
    const std::uint32_t aNeg = a.neg;
    if (aNeg == bNeg) {
        bnAddMagnitudes(r, a, b);
        r.neg = aNeg;
    } else if (bnIsGreaterOrEqual(a, b)) {
        bnSubMagnitudes(r, a, b);
        r.neg = aNeg;
    } else {
        bnSubMagnitudes(r, b, a);
        r.neg = bNeg;
    }
    if (r.top == 0) r.neg = 0;
}

} // namespace

// ---- copies and comparisons ----

void bnCopy(ZIRC_BN& r, const ZIRC_BN& a)
{
    if (&r == &a) return;
    r.neg = a.neg;
    std::copy_n(a.d, a.top, r.d);
    r.top = a.top;
}

void bnSetWord(ZIRC_BN& r, std::uint32_t w)
{
    r.neg = 0;
    r.d[0] = w;
    r.top = w > 0 ? 1 : 0;
}

bool bnIsZero(const ZIRC_BN& a) { return significant(a) == 0; }

bool bnIsEqual(const ZIRC_BN& a, const ZIRC_BN& b) { return bnCompareMagnitude(a, b) == 0; }

int bnCompareMagnitude(const ZIRC_BN& a, const ZIRC_BN& b)
{
    const std::size_t an = significant(a), bn = significant(b);
    if (an == bn) return compareRows(a.d, b.d, an);
    // Both forms of zero have the length of one word here.
    const int difference = static_cast<int>(std::max<std::size_t>(an, 1)) - static_cast<int>(std::max<std::size_t>(bn, 1));
    if (difference != 0) return difference;
    return an > bn ? 1 : -1;
}

int bnCompare(const ZIRC_BN& a, const ZIRC_BN& b)
{
    if (a.neg != b.neg && !(bnIsZero(a) && bnIsZero(b))) return a.neg ? -1 : 1;
    const int magnitude = bnCompareMagnitude(a, b);
    if (magnitude == 0) return 0;
    return (magnitude > 0) != (a.neg != 0) ? 1 : -1;
}

bool bnIsGreaterOrEqual(const ZIRC_BN& a, const ZIRC_BN& b) { return bnCompareMagnitude(a, b) >= 0; }

// ---- bits and bytes ----

int bnBits(const ZIRC_BN& a)
{
    if (a.top == 0 || a.d[a.top - 1] == 0) return 0;
    return 32 * a.top - std::countl_zero(a.d[a.top - 1]);
}

bool bnTestBit(const ZIRC_BN& a, int n)
{
    if (n < 0 || n / 32 >= a.top) return false;
    return (a.d[n / 32] >> (n % 32) & 1) != 0;
}

bool bnMaskBits(ZIRC_BN& a, int n)
{
    if (n < 0 || n / 32 >= a.top) return false;
    const auto word = static_cast<std::size_t>(n / 32);
    a.d[word] &= (1U << (n % 32)) - 1;
    setLength(a, word + 1);
    return true;
}

int bnToBytes(unsigned char* out, const ZIRC_BN& a)
{
    const int n = (bnBits(a) + 7) / 8;
    bnToBytesFixed(out, a, n);
    return n;
}

void bnToBytesFixed(unsigned char* out, const ZIRC_BN& a, int n)
{
    if (n <= 0 || (bnBits(a) + 7) / 8 > n) return;
    for (int i = 0; i < n; ++i) {
        const std::uint32_t word = i / 4 < a.top ? a.d[i / 4] : 0;
        out[n - 1 - i] = static_cast<unsigned char>(word >> (i % 4 * 8));
    }
}

void bnFromBytes(ZIRC_BN& r, const unsigned char* data, int n)
{
    r.neg = 0;
    r.top = 0;
    if (n < 1) return;
    const std::size_t length = static_cast<std::size_t>(std::min(n, bnBytes)), words = length / 4, partial = length % 4;
    const unsigned char* end = data + n;
    for (std::size_t i = 0; i < words; ++i) r.d[i] = load32<std::endian::big>(end -= 4);
    if (partial > 0) {
        r.d[words] = 0;
        for (std::size_t i = 0; i < partial; ++i) r.d[words] = r.d[words] << 8 | data[i];
    }
    setLength(r, words + (partial > 0));
}

// ---- sums ----

void bnAddMagnitudes(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& b)
{
    const bool swapped = significant(a) < significant(b);
    const ZIRC_BN& longer = swapped ? b : a;
    const ZIRC_BN& shorter = swapped ? a : b;
    setSum(r, 0, longer, shorter.d, significant(shorter));
}

void bnSubMagnitudes(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& b) { setDifference(r, 0, a, b.d, significant(b)); }

void bnAdd(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& b) { signedSum(r, a, b, b.neg); }

void bnSub(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& b) { signedSum(r, a, b, b.neg ^ 1); }

void bnAddWord(ZIRC_BN& r, const ZIRC_BN& a, std::uint32_t w)
{
    if (bnIsZero(a)) {
        const std::uint32_t neg = a.neg;
        bnSetWord(r, w);
        r.neg = neg;
    } else {
        setSum(r, a.neg, a, &w, 1);
    }
}

void bnSubWord(ZIRC_BN& r, const ZIRC_BN& a, std::uint32_t w) { setDifference(r, a.neg, a, &w, 1); }

void bnXor(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& b)
{
    const std::size_t an = significant(a), bn = significant(b), n = std::max({an, bn, std::size_t{1}});
    for (std::size_t i = 0; i < n; ++i) r.d[i] = (i < an ? a.d[i] : 0) ^ (i < bn ? b.d[i] : 0);
    r.neg = 0;
    setLength(r, n);
    r.top = std::max(r.top, 1);
}

// ---- shifts ----

void bnShiftLeftOne(ZIRC_BN& r, const ZIRC_BN& a) { bnShiftLeft(r, a, 1); }

void bnShiftRightOne(ZIRC_BN& r, const ZIRC_BN& a) { bnShiftRight(r, a, 1); }

void bnShiftLeft(ZIRC_BN& r, const ZIRC_BN& a, int n)
{
    const auto distance = static_cast<std::size_t>(std::max(n, 0));
    const std::size_t words = std::min(distance / 32, capacity), bits = distance % 32, an = significant(a);
    const std::size_t length = std::min(an + words + 1, capacity);
    for (std::size_t i = length; i-- > words;) { // from the top, since r may be a
        const std::uint32_t high = i - words < an ? a.d[i - words] : 0, low = i > words ? a.d[i - words - 1] : 0;
        r.d[i] = bits > 0 ? high << bits | low >> (32 - bits) : high;
    }
    std::fill_n(r.d, words, 0U);
    r.neg = a.neg;
    setLength(r, length);
}

void bnShiftRight(ZIRC_BN& r, const ZIRC_BN& a, int n)
{
    const auto distance = static_cast<std::size_t>(std::max(n, 0));
    const std::size_t an = significant(a), words = std::min(distance / 32, an), bits = distance % 32;
    for (std::size_t i = words; i < an; ++i) {
        const std::uint32_t low = a.d[i], high = i + 1 < an ? a.d[i + 1] : 0;
        r.d[i - words] = bits > 0 ? low >> bits | high << (32 - bits) : low;
    }
    r.neg = a.neg;
    setLength(r, an - words);
}

} // namespace vrno
