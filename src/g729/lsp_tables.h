// The codebooks of the LSP quantiser and its moving-average predictors, fixed point after the standard's tables of the same
// names, floating point after those of Annex C.
#pragma once

#include "vspsc/types.h"

namespace vsp {

constexpr int kLspOrder = 10;
constexpr int kLspHalf = kLspOrder / 2;  // the second stage has a codebook for each half
constexpr int kNc0 = 128, kNc1 = 32;     // entries of the first and of the second stage
constexpr int kMaTaps = 4;

extern const Vsp16s lspcb1[kNc0][kLspOrder], lspcb2[kNc1][kLspOrder];  // Q13
extern const Vsp32f lspcb1_32f[kNc0][kLspOrder], lspcb2_32f[kNc1][kLspOrder];

// The same in the order of a search that goes through the entries side by side.
struct LspPairs1 {
    Vsp16s pairs[kLspOrder / 2][kNc0][2];
};
struct LspPairs2 {
    Vsp16s pairs[2][(kLspHalf + 1) / 2][kNc1][2];  // of each half, 0 after the last
};
struct LspColumns1 {
    Vsp32f columns[kLspOrder][kNc0];
};
struct LspColumns2 {
    Vsp32f columns[kLspOrder][kNc1];
};
extern const LspPairs1 lspcb1_pairs;
extern const LspPairs2 lspcb2_pairs;
extern const LspColumns1 lspcb1_columns;
extern const LspColumns2 lspcb2_columns;

// A predictor from the vectors of the last frames, the newest first. What is coded has the weight `sum`; sumInverse takes
// it off again.
template <class T>
struct LspPredictor {
    T fg[kMaTaps][kLspOrder];  // Q15
    T sum[kLspOrder];          // Q15
    T sumInverse[kLspOrder];   // Q12
};
extern const LspPredictor<Vsp16s> lspPredictors[2];
extern const LspPredictor<Vsp16s> noisePredictors[2];  // of silence frames (noise_fg)
extern const LspPredictor<Vsp32f> lspPredictors_32f[2];

}  // namespace vsp
