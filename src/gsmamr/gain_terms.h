// What the quantisers of the gains weigh up: energies and correlations of target, filtered vector and filtered code
// (3GPP TS 26.090, 5.8).
#pragma once

#include "arithmetic/split_32.h"
#include "common/lengths.h"
#include "gsmamr/code_gain_prediction.h"
#include "vector/dot.h"

namespace vsp::VSP_LEVEL {

// fraction * 2^exponent
struct Scaled {
    Vsp16s fraction, exponent;
};

// <y1, y1>, -2 <target, y1>, <y2, y2>, -2 <target, y2>, 2 <y1, y2> (`calc_filt_energies`).
struct GainTerms {
    Scaled term[5];
};

// start and a sum of doubled products, every step saturated.
VSP_INLINE Vsp32s saturatingSum(Vsp32s start, const Vsp16s* a, const Vsp16s* b) {
    if (doubledSumsFit(energy(a, kL_subfr), energy(b, kL_subfr))) return Vsp32s(start + 2 * dot(a, b, kL_subfr));
    for (int i = 0; i < kL_subfr; i++) start = mac_32s(start, a[i], b[i]);
    return start;
}

// The high half of a value shifted to the full range, and the shift.
VSP_INLINE Scaled normalised(Vsp32s value) {
    const int norm = norm_32s(value);
    return {Vsp16s(Vsp32s(Vsp32u(value) << norm) >> 16), Vsp16s(norm)};
}

// The terms of the filtered code are those of y2 >> 3, which is left in scaledY2.
VSP_INLINE GainTerms gainTerms(const Vsp16s* target, const Vsp16s* y1, const Vsp16s* y2, const Vsp16s* coeff, Vsp32s start,
                               Vsp16s* scaledY2) {
    for (int i = 0; i < kL_subfr; i++) scaledY2[i] = Vsp16s(y2[i] >> 3);
    const Scaled yy = normalised(saturatingSum(start, scaledY2, scaledY2));
    const Scaled xy = normalised(saturatingSum(start, target, scaledY2));
    const Scaled y1y2 = normalised(saturatingSum(start, y1, scaledY2));
    return {{{coeff[0], coeff[1]},
             {Negate_16s(coeff[2]), Add_16s(coeff[3], 1)},
             {yy.fraction, Vsp16s(-3 - yy.exponent)},
             {Negate_16s(xy.fraction), Vsp16s(7 - xy.exponent)},
             {y1y2.fraction, Vsp16s(7 - y1y2.exponent)}}};
}

// The code gain that the target asks for, not quantised.
VSP_INLINE Scaled unquantisedCodeGain(const Vsp16s* target2, const Vsp16s* scaledY2, Scaled yy) {
    const Scaled xy = normalised(saturatingSum(0, target2, scaledY2));
    if (xy.fraction <= 0) return {0, 0};
    return {Div_16s(Vsp16s(xy.fraction >> 1), yy.fraction), Vsp16s(6 - xy.exponent - yy.exponent - 14)};
}

// The exponents of the terms for a pitch gain and a correction of the predicted code gain, whose exponent is x less 11 (or
// 10, by the format of the correction).
VSP_INLINE void scaleExponents(const GainTerms& terms, int x, int* exponents) {
    exponents[0] = terms.term[0].exponent - 13;
    exponents[1] = terms.term[1].exponent - 14;
    exponents[2] = terms.term[2].exponent + 15 + 2 * x;
    exponents[3] = terms.term[3].exponent + x;
    exponents[4] = terms.term[4].exponent + 1 + x;
}

// All terms at one exponent, one above the largest.
VSP_INLINE void alignTerms(const Scaled* terms, const int* exponents, int count, Vsp32s* aligned) {
    int largest = exponents[0];
    for (int i = 1; i < count; i++) largest = exponents[i] > largest ? exponents[i] : largest;
    for (int i = 0; i < count; i++) aligned[i] = shr_32s(terms[i].fraction * 65536, largest + 1 - exponents[i]);
}

}  // namespace vsp::VSP_LEVEL
