// RSA as an algorithm of the engine.
#pragma once

#include "engine/frame/context.h"

namespace vrno {

extern const Slots rsaSlots;           // keys, and the forms of PKCS#1 v1.5
extern const Slots rsaDigestInfoSlots; // the digest leaves a DigestInfo behind
extern const Slots rsaOaepPssSlots;    // in place of PKCS#1 v1.5

} // namespace vrno
