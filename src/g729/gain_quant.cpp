// Quantisation of the gains (G.729 3.9.2 and Annex D).
#include "arithmetic/standard_ops.h"
#include "core/checks.h"
#include "g729/constants.h"
#include "g729/exports.h"
#include "g729/gain_prediction.h"
#include "vector/dot.h"
#include "vector/map.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr Vsp16s kTamedPitch = 481;      // 0.94 in Q9
constexpr Vsp16s kTamedLimit = 16383;    // 0.9999 in Q14
constexpr int kMaxPairs = 36, kRow = 8;  // pairs of entries that are compared, at most; those of one entry

// value = mantissa * 2^-exponent
struct Scaled {
    Vsp16s mantissa;
    int exponent;
};

Scaled normalise(Vsp32s value, int exponent) {
    const int shift = norm_32s(value);
    return {round_32s(shl_32s(value, shift)), exponent + shift};
}

struct Sum {
    Vsp32s value;
    bool saturated;
};

// start + 2 <a, b>, every partial sum saturated.
Sum doubledDot(Vsp32s start, const Vsp16s* a, Vsp64s energyA, const Vsp16s* b, Vsp64s energyB) {
    if (doubledSumsFit(energyA, energyB)) return {Vsp32s(start + 2 * dot(a, b, kL_subfr)), false};
    Sum sum{start, false};
    for (int i = 0; i < kL_subfr; i++) {
        const Vsp64s product = Mul2_16s32s(a[i], b[i]), exact = sum.value + product;
        sum.saturated |= product == kMax32 || exact != Cnvrt_64s32s(exact);
        sum.value = Cnvrt_64s32s(exact);
    }
    return sum;
}

// The error of a pair of gains p, c is proportional to pp * p * p + p1 * p + cc * c * c + c1 * c + pc * p * c.
struct Terms {
    Scaled pp, p1, cc, c1, pc;
};

// The terms that G_pitch and Corr_xy2 leave.
Terms correlate(const Vsp16s* x, const Vsp16s* y1, const Vsp16s* y2) {
    Vsp16s quarter[kL_subfr], eighth[kL_subfr];
    map(
        kL_subfr, [](auto a) { return shr(a, 2); }, quarter, y1);
    map(
        kL_subfr, [](auto a) { return shr(a, 3); }, eighth, y2);
    const Vsp64s xx = energy(x, kL_subfr), yy = energy(y1, kL_subfr), zz = energy(eighth, kL_subfr);
    Terms t{};

    const bool large = yy > kMax32 / 2;
    t.pp = large ? normalise(Cnvrt_64s32s(1 + 2 * energy(quarter, kL_subfr)), -4) : normalise(Vsp32s(1 + 2 * yy), 0);
    t.pp.exponent -= 15;

    const Sum xy = doubledDot(0, x, xx, y1, yy);
    const Scaled correlation = xy.saturated ? normalise(doubledDot(0, x, xx, quarter, energy(quarter, kL_subfr)).value, -2)
                                            : normalise(xy.value, 0);
    t.p1 = {Negate_16s(correlation.mantissa), correlation.mantissa > 0 ? correlation.exponent - 16 : 14};

    t.cc = normalise(Vsp32s(1 + 2 * zz), 3);
    t.c1 = normalise(doubledDot(1, x, xx, eighth, zz).value, -7);
    t.c1.mantissa = Negate_16s(t.c1.mantissa);
    t.pc = normalise(doubledDot(1, y1, yy, eighth, zz).value, -7);
    return t;
}

// a - b in 32 bits, both in the smaller of their formats and shifted right by `guard`.
struct Difference {
    Vsp32s value;
    int exponent;
};
Difference subtract(Vsp32s a, int exponentA, Vsp32s b, int exponentB, int guard) {
    const int exponent = exponentA < exponentB ? exponentA : exponentB;
    return {Sub_32s(shr_32s(a, exponentA - exponent + guard), shr_32s(b, exponentB - exponent + guard)), exponent - guard};
}

// Normalised, the high half.
Scaled highOf(Difference d) {
    const int shift = norm_32s(d.value);
    return {high_32s(shl_32s(d.value, shift)), d.exponent + shift - 16};
}

// Numerator of an unquantised optimum: half of cross * linear - otherLinear * mixed, times -1 / denominator.
Vsp16s optimum(Scaled square, Scaled linear, Scaled otherLinear, Scaled mixed, Scaled inverse, int q) {
    const Scaled numerator =
        highOf(subtract(Mul2_16s32s(square.mantissa, linear.mantissa), square.exponent + linear.exponent,
                        Mul2_16s32s(otherLinear.mantissa, mixed.mantissa), otherLinear.exponent + mixed.exponent + 1, 1));
    const int shift = numerator.exponent + inverse.exponent - (q + 15);
    return high_32s(shr_32s(Mul2_16s32s(numerator.mantissa, inverse.mantissa), shift));
}

struct Optimum {
    Vsp16s pitch, code;  // Q9 and Q2
};

Optimum unquantised(const Terms& t, bool tame) {
    const Scaled denominator = highOf(subtract(Mul2_16s32s(t.pp.mantissa, t.cc.mantissa), t.pp.exponent + t.cc.exponent - 1,
                                               Mul2_16s32s(t.pc.mantissa, t.pc.mantissa), 2 * t.pc.exponent + 1, 0));
    const Scaled inverse = {Negate_16s(Div_16s(16384, denominator.mantissa)), 29 - denominator.exponent};
    const Vsp16s pitch = optimum(t.cc, t.p1, t.c1, t.pc, inverse, 9);
    return {tame && pitch > kTamedPitch ? kTamedPitch : pitch, optimum(t.pp, t.c1, t.p1, t.pc, inverse, 2)};
}

// How many thresholds, times the predicted gain, a value is above; below for a predicted gain that is not positive.
int passed(Vsp32s value, const Vsp16s* thresholds, int count, Vsp16s predicted, int shift) {
    int n = 0;
    for (; n < count; n++) {
        const Vsp32s threshold = Mul2_16s32s(thresholds[n], predicted) >> shift;
        if (predicted > 0 ? value <= threshold : value >= threshold) break;
    }
    return n;
}

// Gbk_presel: the first of the candidates of each codebook.
struct First {
    int entry1, entry2;
};
First preselect(const GainCodebooks& t, Optimum best, Vsp16s predicted) {  // predicted in Q4
    const Vsp32s pitch = Mul2_16s32s(t.coef[0][0], best.pitch);
    const Vsp16s sum = high_32s(Add_32s(pitch, t.L_coef[1][1] >> 15));
    const Vsp32s x = Sub_32s(shl_32s(best.code, t.gainShift), Mul2_16s32s(sum, predicted));
    const Vsp16s difference = Mul_16s(high_32s(Sub_32s(pitch, t.L_coef[0][1] >> 10)), predicted);
    const Vsp32s y = Sub_32s(Mul2_16s32s(difference, t.coef[1][0]), Mul2_16s32s(t.coef[0][0], best.code) >> 3);
    const auto scaled = [&t](Vsp32s a) { return Mul2_16s32s(high_32s(Mul4_32s(a)), t.inverseCoef); };
    return {passed(scaled(y), t.thr1, t.entries1 - t.candidates1, predicted, t.thr1Shift),
            passed(scaled(x), t.thr2, t.entries2 - t.candidates2, predicted, 5)};
}

// The terms in one format, split at 2^16.
struct Aligned {
    Vsp32s hi, lo;
};
Aligned align(Scaled term, int exponent, int smallest) {
    const Vsp32s value = shr_32s(term.mantissa * 0x10000, exponent - smallest);
    return {value >> 16, (value >> 1) & 0x7FFF};
}

// Mpy_32_16 of a factor that is not negative: nothing saturates.
VSP_INLINE Vsp32s times(Aligned a, Vsp32s factor) { return 2 * (a.hi * factor + ((a.lo * factor) >> 15)); }

// Add_32s in a form that the compiler puts into vectors.
VSP_INLINE Vsp32s addSaturating(Vsp32s a, Vsp32s b) {
    const Vsp32s sum = wrapAdd_32s(a, b);
    return ((a ^ sum) & (b ^ sum)) < 0 ? (a >> 31) ^ kMax32 : sum;
}

VspStatus quantise(const GainCodebooks& t, const Vsp16s* target, const Vsp16s* y1, const Vsp16s* y2, const Vsp16s* code,
                   bool tame, Vsp16s* pastEnergy, Vsp16s* gain, Vsp16s* index) {
    const Terms terms = correlate(target, y1, y2);
    const PredictedGain predicted = ownPredictGain(code, pastEnergy);
    const Vsp16s rounded = predicted.exponent >= 4 ? shr_16s(predicted.mantissa, predicted.exponent - 4)
                                                   : high_32s(shl_32s(predicted.mantissa, 20 - predicted.exponent));
    const First first = preselect(t, unquantised(terms, tame), rounded);

    const int e = predicted.exponent + t.codeShift;
    const int exponents[5] = {terms.pp.exponent + 13, terms.p1.exponent + 14, terms.cc.exponent + 2 * e - 21,
                              terms.c1.exponent + e - 3, terms.pc.exponent + e - 4};
    int smallest = exponents[0];
    for (const int exponent : exponents) smallest = exponent < smallest ? exponent : smallest;
    const Aligned pp = align(terms.pp, exponents[0], smallest), p1 = align(terms.p1, exponents[1], smallest),
                  cc = align(terms.cc, exponents[2], smallest), c1 = align(terms.c1, exponents[3], smallest),
                  pc = align(terms.pc, exponents[4], smallest);

    // All pairs, side by side.
    const int pairs = t.candidates1 * t.candidates2;
    Vsp32s pitches[kMaxPairs + kRow], codes[kMaxPairs + kRow], errors[kMaxPairs];
    for (int i = 0; i < t.candidates1; i++) {
        const Vsp16s* const a = t.gbk1[first.entry1 + i];
        const Vsp16s(*const b)[2] = t.gbk2 + first.entry2;
        for (int j = 0; j < kRow; j++) {  // more than the candidates where these are fewer, which the next row replaces
            pitches[i * t.candidates2 + j] = a[0] + b[j][0];
            codes[i * t.candidates2 + j] = (predicted.mantissa * ((a[1] + b[j][1]) >> 1)) >> 15;
        }
    }
    for (int i = 0; i < pairs; i++) {
        const Vsp32s p = pitches[i], c = codes[i];
        Vsp32s error = addSaturating(times(pp, (p * p) >> 15), times(p1, p));
        error = addSaturating(error, times(cc, (c * c) >> 15));
        error = addSaturating(error, times(c1, c));
        error = addSaturating(error, times(pc, (p * c) >> 15));
        errors[i] = tame && p >= kTamedLimit ? kMax32 : error;
    }
    int winner = 0;
    for (int i = 1; i < pairs; i++)
        if (errors[i] < errors[winner]) winner = i;

    const int entry1 = first.entry1 + winner / t.candidates2, entry2 = first.entry2 + winner % t.candidates2;
    ownGainsOfEntries(t, entry1, entry2, predicted, pastEnergy, gain);
    *index = Vsp16s(t.entries2 * t.map1[entry1] + t.map2[entry2]);
    return vspStsNoErr;
}

}  // namespace

VspStatus vspsGainQuant_G729_16s(const Vsp16s* pTarget, const Vsp16s* pFilteredAdaptive, const Vsp16s* pFilteredFixed,
                                 const Vsp16s* pCode, Vsp16s tameFlag, Vsp16s* pPastEnergy, Vsp16s* pGain, Vsp16s* pIndex) {
    if (anyNull(pTarget, pFilteredAdaptive, pFilteredFixed, pCode, pPastEnergy, pGain, pIndex)) return vspStsNullPtrErr;
    if (tameFlag != 0 && tameFlag != 1) return vspStsRangeErr;
    return quantise(gainCodebooks, pTarget, pFilteredAdaptive, pFilteredFixed, pCode, tameFlag != 0, pPastEnergy, pGain,
                    pIndex);
}

VspStatus vspsGainQuant_G729D_16s(const Vsp16s* pTarget, const Vsp16s* pFilteredAdaptive, const Vsp16s* pFilteredFixed,
                                  const Vsp16s* pCode, Vsp16s tameFlag, Vsp16s* pPastEnergy, Vsp16s* pGain,
                                  Vsp16s* pIndex) {
    if (anyNull(pTarget, pFilteredAdaptive, pFilteredFixed, pCode, pPastEnergy, pGain, pIndex)) return vspStsNullPtrErr;
    if (tameFlag != 0 && tameFlag != 1) return vspStsRangeErr;
    return quantise(gainCodebooks_6k, pTarget, pFilteredAdaptive, pFilteredFixed, pCode, tameFlag != 0, pPastEnergy, pGain,
                    pIndex);
}

}  // namespace vsp::VSP_LEVEL
