// Exponentiation over words of 32 bits.
#include "engine/bignum/montgomery_rows.h"

namespace vrno {

void modExpNative(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& p, const ZIRC_BN& m, bool secret)
{
    modExp<MontgomeryRows<WordsNative>>(r, a, p, m, secret);
}

} // namespace vrno
