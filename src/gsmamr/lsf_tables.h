// The codebooks of the LSF quantisers, under the names of the three-vector and the five-vector form: residuals of the
// prediction, Q15 of 16384 = 4 kHz. Stored by element, so that a search runs over neighbouring entries.
#pragma once

#include "vspsc/types.h"

namespace vsp {

extern const Vsp16s svq3_mean[10], svq5_mean[10];
extern const Vsp16s svq3_pred[10];     // prediction from the residual of the frame before, Q15
extern const Vsp16s svq3_init[8][10];  // start residuals of a silence descriptor

extern const Vsp16s svq3_cb1[3][256];
extern const Vsp16s svq3_cb1_795[3][512];
extern const Vsp16s svq3_cb2[3][512];
extern const Vsp16s svq3_cb3[4][512];
extern const Vsp16s svq3_cb3_475_515[4][128];
extern const Vsp16s svq5_cb1[4][128];
extern const Vsp16s svq5_cb2[4][256];
extern const Vsp16s svq5_cb3[4][256];
extern const Vsp16s svq5_cb4[4][256];
extern const Vsp16s svq5_cb5[4][64];

// The entries of svq3_cb2 that 4.75 and 5.15 kbit/s use.
template <int N>
struct EveryOther {
    Vsp16s entries[3][N / 2];
};
extern const EveryOther<512> svq3_cb2_half;

}  // namespace vsp
