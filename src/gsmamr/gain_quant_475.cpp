// The gains of two subframes at once (`MR475_gain_quant`).
#include "gsmamr/gain_quant.h"
#include "gsmamr/gain_search.h"
#include "gsmamr/gain_tables.h"

namespace vsp::VSP_LEVEL {

namespace {

// What the even subframe leaves in the memory.
struct EvenSubframe {
    PowerOfTwo predicted;
    Scaled targetEnergy;
    GainTerms terms;

    void store(Vsp16s* words) const {
        words[0] = predicted.exponent;
        words[1] = predicted.fraction;
        words[2] = targetEnergy.exponent;
        words[3] = targetEnergy.fraction;
        for (int i = 0; i < 5; i++) {
            words[4 + i] = terms.term[i].exponent;
            words[9 + i] = terms.term[i].fraction;
        }
    }
    static EvenSubframe load(const Vsp16s* words) {
        EvenSubframe even{{words[0], words[1]}, {words[3], words[2]}, {}};
        for (int i = 0; i < 5; i++) even.terms.term[i] = {words[9 + i], words[4 + i]};
        return even;
    }
};

Scaled energyOf(const Vsp16s* target) {
    const Scaled energy = normalised(saturatingSum(0, target, target));
    return {energy.fraction, Vsp16s(16 - energy.exponent)};
}

// The correction that an unquantised gain stands for (`MR475_update_unq_pred`).
Correction unquantisedCorrection(Scaled gain, PowerOfTwo predicted) {
    constexpr Correction kLeast{-5443, -32768}, kLargest{3037, 18284};
    if (gain.fraction <= 0) return kLeast;
    const Vsp16s mantissa = mantissaOf(predicted);
    if (gain.fraction >= mantissa) {
        gain.fraction >>= 1;
        gain.exponent = Vsp16s(gain.exponent + 1);
    }
    PowerOfTwo factor;
    ownLog2(Div_16s(gain.fraction, mantissa), &factor.exponent, &factor.fraction);
    factor.exponent = Add_16s(factor.exponent, Sub_16s(Sub_16s(gain.exponent, predicted.exponent), 1));
    const Correction correction = ownCorrectionOf(factor);
    return correction.log2 > kLargest.log2 ? kLargest : correction;
}

// How much more the even subframe counts, as a power of two: the weaker target of the two counts more.
int balance(Scaled even, Scaled odd) {
    const int difference = even.exponent - odd.exponent;
    if (difference > 0)
        odd.fraction = shr_16s(odd.fraction, difference);
    else
        even.fraction = shl_16s(even.fraction, difference);
    if (shrRound_16s(odd.fraction, 1) > even.fraction) return 1;
    return Vsp16s(Add_16s(even.fraction, 3) >> 2) > odd.fraction ? -1 : 0;
}

// hi * x and lo * x into a sum, each step saturated (`Mac_32_16`).
Vsp32s macSplit(Vsp32s sum, Vsp32s c, Vsp16s x) {
    return mac_32s(mac_32s(sum, high_32s(c), x), Mul_16s(Vsp16s((c >> 1) & 0x7FFF), x), 1);
}

int searchSaturating(const Vsp32s (&c)[10], Vsp16s gcodeEven, Vsp16s gcodeOdd, Vsp16s limit) {
    Vsp32s least = kMax32;
    int best = 0;
    for (int i = 0; i < 256; i++) {
        Vsp32s sum = 0;
        for (int odd = 0; odd < 2; odd++) {
            const Vsp16s p = gain_MR475[2 * odd][i],
                         g = Mul_16s(gain_MR475[2 * odd + 1][i], odd != 0 ? gcodeOdd : gcodeEven);
            const Vsp32s* const terms = c + 5 * odd;
            sum = odd != 0 ? macSplit(sum, terms[0], Mul_16s(p, p)) : mulSplit_32s16s(terms[0], Mul_16s(p, p));
            sum = macSplit(sum, terms[1], p);
            sum = macSplit(sum, terms[2], Mul_16s(g, g));
            sum = macSplit(sum, terms[3], g);
            sum = macSplit(sum, terms[4], Mul_16s(g, p));
        }
        if (sum < least && gain_MR475[0][i] <= limit && gain_MR475[2][i] <= limit) {
            least = sum;
            best = i;
        }
    }
    return best;
}

int search(const Vsp32s (&c)[10], Vsp16s gcodeEven, Vsp16s gcodeOdd, Vsp16s limit) {
    constexpr Vsp16s kLargestPitch = 20717, kLargestCode = 26526;
    const GainColumns columns[2] = {{gain_MR475[0], gain_MR475[1], kLargestPitch, kLargestCode},
                                    {gain_MR475[2], gain_MR475[3], kLargestPitch, kLargestCode}};
    const Vsp16s gcode0[2] = {gcodeEven, gcodeOdd};
    if (limit < kLargestPitch || !gainSumsFit(columns, c, gcode0)) return searchSaturating(c, gcodeEven, gcodeOdd, limit);
    return searchGains(columns, c, gcode0, 256);
}

void takeGains(int odd, int index, PowerOfTwo predicted, Vsp16s* pred, Vsp16s* gain) {
    const Vsp16s code = gain_MR475[2 * odd + 1][index];
    gain[0] = gain_MR475[2 * odd][index];
    gain[1] = ownCorrectedGain(code, predicted);
    ownUpdatePredictor(pred, ownCorrectionOfCode(code));
}

}  // namespace

void ownPrepareGains475(const GainSignals& s, Vsp16s* pred, GainMemory mem, Vsp16s* gain) {
    for (int i = 0; i < 8; i++) mem.unquantisedPred()[i] = pred[i];
    EvenSubframe even;
    even.predicted = ownPredictCodeGain(pred, s.code, kMode475);
    Vsp16s scaledY2[kL_subfr];
    even.terms = gainTerms(s.target, s.y1, s.y2, s.coeff, 0, scaledY2);
    even.targetEnergy = energyOf(s.target);
    even.store(mem.evenSubframe());
    const Scaled code = unquantisedCodeGain(s.target2, scaledY2, even.terms.term[2]);
    gain[1] = shl_16s(code.fraction, code.exponent + 1);
    ownUpdatePredictor(mem.unquantisedPred(), unquantisedCorrection(code, even.predicted));
}

int ownQuantiseGains475(const GainSignals& s, Vsp16s limit, Vsp16s* pred, GainMemory mem, Vsp16s* gain, Vsp16s* gainPrev) {
    const EvenSubframe even = EvenSubframe::load(mem.evenSubframe());
    const PowerOfTwo predicted = ownPredictCodeGain(mem.unquantisedPred(), s.code, kMode475);
    Vsp16s scaledY2[kL_subfr];
    const GainTerms terms = gainTerms(s.target, s.y1, s.y2, s.coeff, 0, scaledY2);

    Scaled all[10];
    int exponents[10];
    scaleExponents(even.terms, even.predicted.exponent - 11, exponents);
    scaleExponents(terms, predicted.exponent - 11, exponents + 5);
    const int more = balance(even.targetEnergy, energyOf(s.target));
    for (int i = 0; i < 5; i++) {
        all[i] = even.terms.term[i];
        all[5 + i] = terms.term[i];
        exponents[i] += more;
    }
    Vsp32s c[10];
    alignTerms(all, exponents, 10, c);
    const int index = search(c, mantissaOf(even.predicted), mantissaOf(predicted), limit);
    takeGains(0, index, even.predicted, pred, gainPrev);
    takeGains(1, index, ownPredictCodeGain(pred, s.code, kMode475), pred, gain);
    return index;
}

}  // namespace vsp::VSP_LEVEL
