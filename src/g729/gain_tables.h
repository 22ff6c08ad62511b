// The conjugate-structure codebooks of the gains and the prediction of the fixed-codebook gain, after the standard's tables
// gbk1, gbk2, thr1, thr2, coef, L_coef, map1, map2 and pred.
#pragma once

#include "vspsc/types.h"

namespace vsp {

constexpr int kEnergies = 4;  // memory of the predictor

// An entry is a part of the adaptive-codebook gain and one of the correction factor of the fixed-codebook gain; of each
// codebook the search takes some neighbouring entries.
struct GainCodebooks {
    int entries1, candidates1, entries2, candidates2;
    int codeShift;  // bits by which the factors have less than Q13
    Vsp16s gbk1[8][2], gbk2[16][2];
    Vsp16s thr1[4], thr2[8];
    Vsp16s coef[2][2];
    Vsp32s L_coef[2][2];
    Vsp16s inverseCoef;
    int gainShift, thr1Shift;
    Vsp16s map1[8], map2[16], imap1[8], imap2[16];  // entry to index and back
};
extern const GainCodebooks gainCodebooks, gainCodebooks_6k;  // 8 kbit/s and 6.4 kbit/s

extern const Vsp16s pred[kEnergies];  // Q13

// In floating point, factors.
struct GainCodebooks_32f {
    Vsp32f gbk1[8][2], gbk2[16][2];
    Vsp32f thr1[4], thr2[8];
    Vsp32f coef[2][2];
};
extern const GainCodebooks_32f gainCodebooks_32f;
extern const Vsp32f pred_32f[kEnergies];

}  // namespace vsp
