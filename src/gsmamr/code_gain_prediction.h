// The moving-average prediction of the code gain (3GPP TS 26.090, 5.8.2).
#pragma once

#include "arithmetic/split_32.h"
#include "common/history.h"
#include "core/level.h"
#include "gsmamr/mode_checks.h"

namespace vsp::VSP_LEVEL {

// A gain of 2^(exponent + fraction), the fraction in Q15.
struct PowerOfTwo {
    Vsp16s exponent, fraction;
};

VSP_INLINE PowerOfTwo splitPower(Vsp32s a) { return {Vsp16s(a >> 16), Vsp16s((a >> 1) & 0x7FFF)}; }

// What the predictor is fed with: 20 * log10 and log2 of the quantised correction, Q10.
struct Correction {
    Vsp16s decibels, log2;
};

// The memory of the predictor as the functions keep it: four corrections in decibels, then those in log2, which serve 12.2
// kbit/s; newest first.
VSP_INLINE void ownUpdatePredictor(Vsp16s* pred, Correction correction) {
    pushFront<4>(pred, correction.decibels);
    pushFront<4>(pred + 4, correction.log2);
}

// The correction of a factor of 2^(exponent + fraction).
VSP_INLINE Correction ownCorrectionOf(PowerOfTwo factor) {
    const Vsp16s log2 = Add_16s(shrRound_16s(factor.fraction, 5), shl_16s(factor.exponent, 10));
    const Vsp32s logarithm = Add_32s(factor.exponent * 65536, 2 * factor.fraction);
    return {round_32s(shl_32s(mulSplit_32s16s(logarithm, 24660), 13)), log2};
}

// That of a quantised correction at 4.75 kbit/s, Q12.
VSP_INLINE Correction ownCorrectionOfCode(Vsp16s code) {
    PowerOfTwo factor;
    ownLog2(code, &factor.exponent, &factor.fraction);
    factor.exponent = Vsp16s(factor.exponent - 12);
    return ownCorrectionOf(factor);
}

// The gain predicted for a code (`gc_pred`).
PowerOfTwo ownPredictCodeGain(const Vsp16s* pred, const Vsp16s* code, Vsp32s mode);

// The mantissa of a predicted gain, Q14.
VSP_INLINE Vsp16s mantissaOf(PowerOfTwo gain) { return Vsp16s(ownPow2(14, gain.fraction)); }

// The predicted gain at 12.2 kbit/s, Q5.
VSP_INLINE Vsp16s ownPredictedGain122(PowerOfTwo gain) { return shl_16s(Vsp16s(ownPow2(gain.exponent, gain.fraction)), 4); }

// A correction applied to the predicted gain, Q1; correctionBits are those after the point of the correction less 2.
VSP_INLINE Vsp16s ownCorrectedGain(Vsp16s correction, PowerOfTwo predicted, int correctionBits = 10) {
    const Vsp32s product = Mul2_16s32s(correction, mantissaOf(predicted));
    return high_32s(shr_32s(product, correctionBits - predicted.exponent));
}

}  // namespace vsp::VSP_LEVEL
