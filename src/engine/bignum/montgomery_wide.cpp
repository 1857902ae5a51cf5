// Exponentiation over words of 64 bits.
#include "engine/bignum/montgomery_rows.h"

#ifdef __SIZEOF_INT128__

namespace vrno {

void modExpWide(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& p, const ZIRC_BN& m, bool secret)
{
    modExp<MontgomeryRows<WordsWide>>(r, a, p, m, secret);
}

} // namespace vrno

#endif
