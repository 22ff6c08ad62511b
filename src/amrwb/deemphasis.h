// The recursion of de-emphasis.
#pragma once

#include "arithmetic/basic_ops.h"
#include "core/level.h"

namespace vsp::VSP_LEVEL {

// dst[n] = (addend(n) + dst[n-1] * factor) >> 15, saturated. No product is above the largest.
template <class Addend>
VSP_INLINE void deemphasize(Addend addend, Vsp64s factor, Vsp64s largest, Vsp32s len, Vsp16s* mem, Vsp16s* dst) {
    Vsp64s y = *mem;
    for (Vsp32s n = 0; n < len; n++) {
        Vsp64s product = y * factor;
        if (product > largest) [[unlikely]]
            product = largest;
        y = (addend(n) + product) >> 15;
        if (y != Vsp16s(y)) [[unlikely]]
            y = y < 0 ? kMin16 : kMax16;
        dst[n] = Vsp16s(y);
    }
    *mem = Vsp16s(y);
}

}  // namespace vsp::VSP_LEVEL
