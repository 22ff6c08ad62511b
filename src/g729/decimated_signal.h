// What the fixed-point and the floating-point open-loop search of G.729 Annex A share (A.3.4, Pitch_ol_fast).
#pragma once

#include "core/inline.h"
#include "g729/constants.h"

namespace vsp {

// The search sees every second sample of its vectors. So the even and the odd samples apart hold all that it multiplies:
// the frame begins at an odd one, even lags stay among the odd samples and odd lags lead to the even ones.
template <class T>
struct DecimatedSignal {
    static constexpr int kSamples = kL_frame / 2;               // of the frame
    static constexpr int kHalf = (kPitMax + kL_frame + 1) / 2;  // of the signal

    T even[kHalf], odd[kHalf];

    // From kPitMax samples of history and the frame.
    [[gnu::always_inline]] explicit DecimatedSignal(const T* signal) {
        for (int i = 0; i < kHalf - 1; i++) {
            even[i] = signal[2 * i];
            odd[i] = signal[2 * i + 1];
        }
        even[kHalf - 1] = signal[2 * kHalf - 2];
        odd[kHalf - 1] = 0;
    }

    // kSamples of the frame, or `lag` earlier.
    [[gnu::always_inline]] const T* delayed(int lag) const { return (lag % 2 == 0 ? odd : even) + kPitMax / 2 - lag / 2; }
    [[gnu::always_inline]] const T* current() const { return delayed(0); }
};

template <class T>
struct LagMax {
    T max;
    int lag;
};

// Whether the lag is about half or a third of the longer one.
VSP_INLINE bool divides(int lag, int longer) {
    const int fromDouble = 2 * lag - longer, fromTriple = 3 * lag - longer;
    return (-5 < fromDouble && fromDouble < 5) || (-7 < fromTriple && fromTriple < 7);
}

// Of equal correlations that of the shorter lag.
template <class T>
VSP_INLINE LagMax<T> larger(LagMax<T> shorter, LagMax<T> longer) {
    return shorter.max < longer.max ? longer : shorter;
}

}  // namespace vsp
