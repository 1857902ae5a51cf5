// KCDSA as an algorithm of the engine.
#pragma once

#include "engine/frame/context.h"

namespace vrno {

extern const Slots kcdsaSlots;

} // namespace vrno
