#pragma once

#include "core/level.h"

namespace vsp::VSP_LEVEL {

// The standard's generator of pseudo-random numbers (`Random`).
VSP_INLINE Vsp16s ownRandom(Vsp16s* seed) {
    *seed = Vsp16s(*seed * 31821 + 13849);
    return *seed;
}

}  // namespace vsp::VSP_LEVEL
