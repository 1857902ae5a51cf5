// Setting the session key, for all exported functions that do so.
#pragma once

#include "api/Call.h"

namespace vrno {

// Deletes the session key and IV of the context and sets new ones. 0, or 1002 with no key set.
int installSessionKey(Call& call, int nFacadeAlg, int nFacadeMode, Octets key, Octets iv);

} // namespace vrno
