// The factor that gives one signal the energy of another (`agc`, `agc2`).
#pragma once

#include "arithmetic/standard_ops.h"
#include "common/inv_sqrt.h"
#include "common/lengths.h"
#include "vector/dot.h"

namespace vsp::VSP_LEVEL {

// Energy of a subframe; a very large one is measured from a quarter of the samples.
VSP_INLINE Vsp32s ownSubframeEnergy(const Vsp16s* x) {
    const Vsp64s exact = 2 * energy(x, kL_subfr);
    if (exact < kMax32) return Vsp32s(exact) >> 4;
    const auto quarter = [](auto a) { return shr(a, 2); };
    return Cnvrt_64s32s(2 * dot(x, x, kL_subfr, quarter, quarter));
}

// sqrt(wanted / present) in Q12, rounded; present is not 0.
VSP_INLINE Vsp16s ownAmplitudeRatio(Vsp32s wanted, Vsp32s present) {
    if (wanted == 0) return 0;
    const int presentNorm = norm_32s(present) - 1, wantedNorm = norm_32s(wanted);
    const Vsp16s mantissa = round_32s(shl_32s(present, presentNorm)),
                 wantedMantissa = round_32s(shl_32s(wanted, wantedNorm));
    const Vsp32s ratio = Div_16s(mantissa, wantedMantissa) * 128;
    return round_32s(shl_32s(ownInvSqrt(shr_32s(ratio, presentNorm - wantedNorm)), 9));
}

}  // namespace vsp::VSP_LEVEL
