// The predictor of the code gain (3GPP TS 26.190, 5.8): the energies of the last four subframes give a gain, which the
// quantised correction multiplies.
#pragma once

#include "arithmetic/basic_ops.h"
#include "arithmetic/standard_ops.h"
#include "core/level.h"

namespace vsp::VSP_LEVEL {

// 14 bits and an exponent.
struct PredictedGain {
    Vsp16s mantissa;
    int exponent;

    // From the predicted energy in dB, Q8.
    [[gnu::always_inline]] static PredictedGain fromEnergy(Vsp16s energy) {
        const Vsp32s log2 = Mul2_16s32s(energy, 5443) >> 8;  // times log2(10) / 20
        return {Vsp16s(ownPow2(14, Vsp16s((log2 >> 1) & 0x7FFF))), (log2 >> 16) - 14};
    }

    // With a correction in Q11: the code gain in Q16.
    [[gnu::always_inline]] Vsp32s corrected(Vsp16s correction) const {
        return shl_32s(Mul2_16s32s(correction, mantissa), exponent + 4);
    }
};

// sum and what the past energies, the newest first, add to it.
VSP_INLINE Vsp32s addPredicted(Vsp32s sum, const Vsp16s* past) {
    constexpr Vsp16s kPrediction[4] = {4096, 3277, 2458, 1638};
    for (int i = 0; i < 4; i++) sum = mac_32s(sum, kPrediction[i], past[i]);
    return sum;
}

// (exponent + fraction) * factor as Mpy_32_16 forms it.
VSP_INLINE Vsp32s timesLog(Vsp16s exponent, Vsp16s fraction, Vsp16s factor) {
    return mac_32s(Mul2_16s32s(exponent, factor), Mul_16s(fraction, factor), 1);
}

// The energy of a correction (Q11) becomes the newest of the past ones.
VSP_INLINE void pushEnergy(Vsp16s* past, Vsp16s correction) {
    for (int i = 3; i > 0; i--) past[i] = past[i - 1];
    Vsp16s exponent = 0, fraction = 0;
    ownLog2(correction, &exponent, &fraction);
    past[0] = Vsp16s(timesLog(Vsp16s(exponent - 11), fraction, 24660) >> 3);  // 20 * log10(2)
}

}  // namespace vsp::VSP_LEVEL
