// Exponentiation over products of half words.
#include "engine/bignum/montgomery_rows.h"

namespace vrno {

void modExpPortable(ZIRC_BN& r, const ZIRC_BN& a, const ZIRC_BN& p, const ZIRC_BN& m, bool secret)
{
    modExp<MontgomeryRows<WordsPortable>>(r, a, p, m, secret);
}

} // namespace vrno
