// What the open-loop pitch searches of the ITU-T and GSM coders share (G.729 3.4, 3GPP TS 26.090 5.3).
#pragma once

#include "arithmetic/basic_ops.h"
#include "common/inv_sqrt.h"
#include "common/lag_max.h"
#include "vector/dot.h"
#include "vector/map.h"

namespace vsp::VSP_LEVEL {

// How far the signal is shifted to the right: 3 if the doubled sum of its squares leaves 32 bits, -3 if that is small.
VSP_INLINE int openLoopShift(Vsp64s energyOfSignal) {
    constexpr Vsp64s kLoud = 0x3FFFFFFF, kQuiet = 1 << 19;
    return energyOfSignal > kLoud ? 3 : energyOfSignal < kQuiet ? -3 : 0;
}

VSP_INLINE void shiftSignal(int shift, const Vsp16s* signal, Vsp16s* scaled, int n) {
    const auto timesEight = [](auto a) {
        a = addSat(a, a);
        a = addSat(a, a);
        return addSat(a, a);
    };
    if (shift > 0)
        map(
            n, [](auto a) { return shr(a, 3); }, scaled, signal);
    else if (shift == 0)
        map(
            n, [](auto a) { return a; }, scaled, signal);
    else
        map(n, timesEight, scaled, signal);
}

// A lag, its correlation, and the energy of the signal so much earlier; doubled sums.
struct Candidate {
    int lag;
    Vsp32s correlation, energy;
};

// The correlations over the last `len` samples, of all lags up to the longest.
struct LagScan {
    const Vsp16s* current;
    int len, longest;
    const Vsp32s* sums;  // the longest lag first

    [[gnu::always_inline]] Candidate candidate(int lag) const {
        return {lag, sums[longest - lag], Cnvrt_64s32s(2 * energy(current - lag, len))};
    }

    // The largest correlation from one lag to another, of equal ones that of the shorter lag.
    [[gnu::always_inline]] Candidate largest(int from, int to) const {
        return candidate(to - ownLastMax(sums + (longest - to), to - from + 1));
    }
};

// The correlation over the square root of the energy.
VSP_INLINE Vsp32s normalised(const Candidate& c) { return Mpy_32(c.correlation, ownInvSqrt(c.energy)); }

// Which of three sections of lags is taken by its normalised correlation, the one of the longest lags first: shorter lags
// are preferred, so that multiples of the pitch are not taken for it.
VSP_INLINE int favourShorter(const Vsp16s (&values)[3]) {
    constexpr Vsp32s THRESHPIT = 27853;  // 0.85 in Q15
    int best = 0;
    for (int i = 1; i < 3; i++)
        if ((values[best] * THRESHPIT) >> 15 < values[i]) best = i;
    return best;
}

}  // namespace vsp::VSP_LEVEL
