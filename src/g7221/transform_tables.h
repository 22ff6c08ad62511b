// Constant tables of the modulated lapped transform. Those of 640 samples begin with max_.
#pragma once

#include "vspsc/types.h"

namespace vsp {

constexpr int kMltLen = 320, kMltMaxLen = 640;

extern const Vsp16s samples_to_rmlt_window[kMltLen], max_samples_to_rmlt_window[kMltMaxLen];
extern const Vsp16s rmlt_to_samples_window[kMltLen], max_rmlt_to_samples_window[kMltMaxLen];

// Added before the forward and after the inverse transform of 320 samples, and to each input pair of an inverse transform.
extern const Vsp16s anal_bias[kMltLen], syn_bias_7khz[kMltLen];
extern const Vsp16s dither[kMltLen], max_dither[kMltMaxLen];

constexpr int kDctCore = 10;

// The matrix in whose products the transform begins.
struct DctCore {
    Vsp16s rows[kDctCore][kDctCore];    // symmetric
    Vsp16s pairs[kDctCore / 2][12][2];  // of two rows, the columns side by side; two columns of zeros
    Vsp32s safeEnergy;                  // an eighth of the energy of ten inputs up to which no partial sum saturates
};

// The rotations of all block lengths: those of a block of 2n samples begin at element n - 10.
struct DctRotations {
    Vsp16s cosine[630], sine[630];  // negated sines
    Vsp16s alternatingSine[630],
        alternatingCosine[630];  // every even one of the sines, every odd one of the cosines negated
};

extern const DctCore dctCoreForward, dctCoreInverse;
extern const DctRotations dctRotationsForward, dctRotationsInverse;

}  // namespace vsp
