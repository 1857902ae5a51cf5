// The installation of a session key, for every exported function that leaves one.
#pragma once

#include "api/Call.h"

namespace vrno {

// Replaces the context's session key and IV; the old ones are gone from the start. 0, or 1002 with no key set.
int installSessionKey(Call& call, int nFacadeAlg, int nFacadeMode, Octets key, Octets iv);

} // namespace vrno
