// The codebooks of the ISF quantisers of AMR-WB (3GPP TS 26.173), under the reference's names. Stored by element, so that a
// search runs over neighbouring entries.
#pragma once

#include "vspsc/types.h"

namespace vsp {

extern const Vsp16s mean_isf[16], mean_isf_noise[16];

// Speech: elements 0 .. 8 and 9 .. 15; then the error of these in five parts, or in three at 6.60 kbit/s.
extern const Vsp16s dico1_isf[9][256];
extern const Vsp16s dico2_isf[7][256];
extern const Vsp16s dico21_isf[3][64];
extern const Vsp16s dico22_isf[3][128];
extern const Vsp16s dico23_isf[3][128];
extern const Vsp16s dico24_isf[3][32];
extern const Vsp16s dico25_isf[4][32];
extern const Vsp16s dico21_isf_36b[5][128];
extern const Vsp16s dico22_isf_36b[4][128];
extern const Vsp16s dico23_isf_36b[7][64];

// Comfort noise, in five parts.
extern const Vsp16s dico1_isf_noise[2][64];
extern const Vsp16s dico2_isf_noise[3][64];
extern const Vsp16s dico3_isf_noise[3][64];
extern const Vsp16s dico4_isf_noise[4][32];
extern const Vsp16s dico5_isf_noise[4][32];

}  // namespace vsp
