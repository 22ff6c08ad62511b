// What both sides of discontinuous transmission share (3GPP TS 26.192).
#pragma once

#include "amrwb/lengths.h"
#include "amrwb/normalised.h"
#include "common/dtx.h"
#include "common/random_vector.h"

namespace vsp::VSP_LEVEL {

VSP_INLINE void resetIsf(Vsp16s* isf) {
    for (int i = 0; i + 1 < kIsfOrder; i++) isf[i] = Vsp16s(1024 * (i + 1));
    isf[kIsfOrder - 1] = 3840;
}

// log2 of half the energy of a frame, Q7, less that of its length.
VSP_INLINE Vsp16s frameLogEnergy(Vsp64s energy) {
    Vsp16s exponent, fraction;
    ownLog2(Cnvrt_64s32s(2 * energy) >> 1, &exponent, &fraction);
    return Vsp16s((exponent << 7) + (fraction >> 8) - 1024);
}

// The log energy of an index, Q9; 2.625 steps are an octave.
VSP_INLINE Vsp16s logEnergyOfIndex(Vsp16s index) { return Mul_16s(Vsp16s(index << 9), 12483); }

// White noise with samples of 2^(exponent + fraction) on average, the fraction in Q15.
VSP_INLINE void ownNoiseExcitation(Vsp16s exponent, Vsp16s fraction, Vsp16s* seed, Vsp16s* exc) {
    const Vsp32s amplitude = ownPow2(Add_16s(exponent, 15), fraction);
    const int norm = norm_32s(amplitude);
    ownRandomVector(seed, 4, exc, kWideFrame);
    const Normalised root = ownInverseSqrt(ownNormalisedEnergy(exc, kWideFrame));
    const Vsp16s gain = Mul_16s(high_32s(shl_32s(amplitude, norm)), high_32s(root.value));
    const int shift = 15 - norm + root.exponent + 4;
    for (int i = 0; i < kWideFrame; i++) exc[i] = shl_16s(Mul_16s(exc[i], gain), shift);
}

}  // namespace vsp::VSP_LEVEL
