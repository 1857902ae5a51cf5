// RSA as an algorithm of the engine.
#pragma once

#include "engine/frame/context.h"

namespace vrno {

extern const Slots rsaSlots;                  // PKCS#1 v1.5
extern const Slots rsaMd5Slots, rsaSha1Slots; // the same with a digest, which ends as a DigestInfo
extern const Slots rsaOaepPssSlots;           // OAEP and PSS with SHA-1

} // namespace vrno
