// Constant tables of G.722.
#pragma once

#include "vspsc/types.h"

namespace vsp {

// Coefficients of the quadrature mirror filter for sums over neighbouring samples, oldest first: those of the two values
// that a pair of samples gives.
struct QmfTaps {
    Vsp16s first[24], second[24];
};
extern const QmfTaps qmfAnalysis, qmfSynthesis;

constexpr int kLowThresholds = 29;
struct LowThresholds {
    Vsp16u values[32];  // decision levels of the low band (Q6) times 16; the last ones are 0
};
extern const LowThresholds lowThresholds;
constexpr Vsp32s kHighThreshold = 8 * 564;  // that of the high band (Q2)

// What a code stands for: its bits in the code word, the value of the inverse quantiser for the adaptation (QM4, QM2), and
// what it adds to the logarithmic scale factor (WL, WH).
struct QuantiserStep {
    Vsp16s code, level, logStep, unused;
};
struct LowQuantiser {
    QuantiserStep byThresholds[2][kLowThresholds + 1];  // sign of the difference, number of thresholds that it reaches
    QuantiserStep byCode[64];
};
extern const LowQuantiser lowQuantiser;
extern const QuantiserStep highQuantiser[4];

// Inverse quantisers of the low band's output (QM6, QM5, QM4) for whole codes, by mode - 1.
struct LowOutput {
    Vsp16s levels[3][64];
};
extern const LowOutput lowOutput;

// Scale factors of the high band by the upper bits of the logarithmic one; those of the low band begin at 64.
constexpr Vsp32s kLowScaleOffset = 64, kLowLogScaleMax = 18432, kHighLogScaleMax = 22528;
struct ScaleFactors {
    Vsp16s values[(kHighLogScaleMax >> 6) + 1];
};
extern const ScaleFactors scaleFactors;

}  // namespace vsp
