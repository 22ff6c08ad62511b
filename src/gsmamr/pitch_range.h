// How the lags of the adaptive codebook are coded.
#pragma once

#include "core/level.h"
#include "gsmamr/mode_checks.h"

namespace vsp::VSP_LEVEL {

constexpr int kLongestLag = 143;
constexpr int kFirstLag = 17, kLastLag = 144;  // what a coded lag may be, a fraction beside the limits of the search

VSP_INLINE int shortestLag(Vsp32s mode) { return mode == kMode122 ? 18 : 20; }

// Whether a subframe codes its lag relative to the one before.
VSP_INLINE bool isDeltaSubframe(Vsp32s mode, Vsp32s subframe) {
    return subframe == 1 || subframe == 3 || (subframe == 2 && (mode == kMode475 || mode == kMode515));
}

// Delta subframes of four bits have fractions in the middle of their range only.
VSP_INLINE bool hasCoarseDelta(Vsp32s mode) { return mode <= kMode670; }

struct LagRange {
    int min, max;

    // The middle of the fractions of a coarse range around a lag.
    [[gnu::always_inline]] int coarseMiddle(int lag) const {
        if (lag - min > 5) lag = min + 5;
        return max - lag > 4 ? max - 4 : lag;
    }
};

VSP_INLINE LagRange lagRange(Vsp32s mode, int lag, int below, int span) {
    const int min = lag - below < shortestLag(mode) ? shortestLag(mode) : lag - below;
    return min + span > kLongestLag ? LagRange{kLongestLag - span, kLongestLag} : LagRange{min, min + span};
}

// The lags of a delta subframe around the lag before.
VSP_INLINE LagRange deltaRange(Vsp32s mode, int lag) {
    return mode == kMode795 ? lagRange(mode, lag, 10, 19) : lagRange(mode, lag, 5, 9);
}

}  // namespace vsp::VSP_LEVEL
