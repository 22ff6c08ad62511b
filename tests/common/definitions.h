// The formulas of the shared kernels in 64-bit arithmetic.
#pragma once

#include <algorithm>

#include "vspsc/types.h"

namespace vsp::test {

inline Vsp16s saturate16(Vsp64s x) { return Vsp16s(std::clamp<Vsp64s>(x, -32768, 32767)); }
inline Vsp32s saturate32(Vsp64s x) { return Vsp32s(std::clamp<Vsp64s>(x, -0x80000000LL, 0x7FFFFFFF)); }
inline Vsp64s wrap32(Vsp64s x) { return Vsp32s(Vsp32u(x)); }

// x plus the rounding constant of a scale factor, shifted right by it; both taken modulo 32.
inline Vsp64s roundShift(Vsp64s x, Vsp32s scaleFactor) {
    const Vsp64s rounding = scaleFactor == 0 ? 0 : 1LL << ((Vsp64s(scaleFactor) - 1) % 32);
    return wrap32(x + rounding) >> (scaleFactor % 32);
}

}  // namespace vsp::test
