// Tables of Annex B under the standard's names: detector, silence descriptor, comfort noise.
#pragma once

#include "g729/lsp_tables.h"

namespace vsp {

extern const Vsp16s lbf_corr[13];  // autocorrelation of the low-band filter
extern const Vsp32f lbf_corr_32f[13];
extern const Vsp16s factor_fx[33], shift_fx[33];  // 32 / (32 - i) as mantissa in Q15 and shift
extern const Vsp16s fact[3], marg[3];             // of the sum of energies of 0 (a decoder), 1 and 2 frames
constexpr int kSidGains = 32;
extern const Vsp16s tab_Sidgain[kSidGains];  // Q1

constexpr int kNoiseEntries1 = 32, kNoiseEntries2 = 16;
extern const Vsp8u PtrTab_1[kNoiseEntries1], PtrTab_2[2][kNoiseEntries2];  // entries of lspcb1 and of lspcb2
extern const Vsp16s Mp[2];                                                 // weights of the predictors' errors, Q15
extern const Vsp16s lspSid_reset[kLspOrder];                               // Q15

}  // namespace vsp
