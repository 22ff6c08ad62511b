// The gains at 7.95 kbit/s: quantised on the target first, then the code gain once more so that the energy of the
// excitation stays where the long-term prediction is weak (`MR795_gain_quant`, `gain_adapt`).
#include "common/history.h"
#include "common/median.h"
#include "gsmamr/gain_quant.h"
#include "gsmamr/gain_tables.h"
#include "gsmamr/pitch_gain_index.h"
#include "gsmamr/square_root.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kCodes = 32;

Vsp32s product(Vsp16s a, Vsp16s b) { return splitValue(Mul2_16s32s(a, b)); }

struct Choice {
    int pitch, code;
};

// The entry of the pitch gain and its two neighbours with all entries of the code gain (`MR795_gain_code_quant3`).
Choice searchBoth(const GainTerms& terms, PowerOfTwo predicted, Vsp16s pitch, Vsp16s limit) {
    int exponents[5];
    scaleExponents(terms, predicted.exponent - 10, exponents);
    Vsp32s c[5];
    alignTerms(terms.term, exponents, 5, c);
    const int nearest = ownPitchGainIndex(pitch, limit);
    const bool last = nearest == 15 || qua_gain_pitch[nearest + 1] > limit;
    const int first = nearest == 0 ? 0 : last ? nearest - 2 : nearest - 1;
    const Vsp16s gcode0 = mantissaOf(predicted);
    Vsp32s least = kMax32;
    Choice best{first, 0};
    for (int j = first; j < first + 3; j++) {
        const Vsp16s p = qua_gain_pitch[j];
        const Vsp32s start = Add_32s(mulSplit_32s16s(c[0], Mul_16s(p, p)), mulSplit_32s16s(c[1], p));
        for (int i = 0; i < kCodes; i++) {
            const Vsp16s g = Mul_16s(qua_gain_code[0][i], gcode0);
            Vsp32s sum = Add_32s(start, mulSplit_32s(c[2], product(g, g)));
            sum = Add_32s(sum, mulSplit_32s16s(c[3], g));
            sum = Add_32s(sum, mulSplit_32s(c[4], product(g, p)));
            if (sum >= least) continue;
            least = sum;
            best = {j, i};
        }
    }
    return best;
}

// Energies of the unfiltered signals (`calc_unfilt_energies`).
struct Energies {
    Scaled residual, vector, crossed, code;
    Vsp16s ltpGain;  // log2 of what the long-term prediction gains, Q13
};

Energies measure(const GainSignals& s, Vsp16s pitch) {
    const auto scaled = [](Vsp32s sum, int exponent) {
        const Scaled normal = normalised(sum);
        return Scaled{normal.fraction, Vsp16s(exponent - normal.exponent)};
    };
    const Vsp32s ofResidual = saturatingSum(0, s.residual, s.residual);
    Energies e{};
    e.residual = ofResidual < 400 ? Scaled{0, -15} : scaled(ofResidual, 15);
    e.vector = scaled(saturatingSum(0, s.exc, s.exc), 15);
    e.crossed = scaled(saturatingSum(0, s.exc, s.code), 2);
    e.code = scaled(saturatingSum(0, s.code, s.code), -11);

    Vsp16s rest[kL_subfr];
    for (int i = 0; i < kL_subfr; i++) rest[i] = Sub_16s(s.residual[i], round_32s(Mul2_32s(Mul2_16s32s(s.exc[i], pitch))));
    const Scaled ofRest = scaled(saturatingSum(0, rest, rest), 15);
    if (ofRest.fraction > 0 && e.residual.fraction > 0) {
        const Vsp16s ratio = Div_16s(Vsp16s(e.residual.fraction >> 1), ofRest.fraction);
        PowerOfTwo gain;
        ownLog2(shr_32s(ratio * 65536, ofRest.exponent - e.residual.exponent + 3), &gain.exponent, &gain.fraction);
        e.ltpGain = round_32s(shl_32s((gain.exponent - 27) * 65536 + 2 * gain.fraction, 13));
    }
    return e;
}

// The weight of the energy against the target (`gain_adapt`), Q15.
Vsp16s adapt(Vsp16s ltpGain, Vsp16s codeGain, GainMemory mem) {
    constexpr Vsp16s kModerate = 2721, kHigh = 5443, kOnset = 8, kAudible = 200;
    int adaptation = ltpGain <= kModerate ? 0 : ltpGain <= kHigh ? 1 : 2;
    if (shrRound_16s(codeGain, 1) > mem.codeGain() && codeGain > kAudible)
        mem.onset() = kOnset;
    else if (mem.onset() != 0)
        mem.onset() = Sub_16s(mem.onset(), 1);
    if (mem.onset() != 0 && adaptation < 2) adaptation++;

    mem.ltpGains()[0] = ltpGain;
    const Vsp16s median = medianOf<5>(mem.ltpGains());
    Vsp16s alpha = 0;
    if (adaptation == 0 && median <= kHigh)
        alpha = median < 0 ? Vsp16s(16384) : Sub_16s(16384, Mul_16s(24660, shl_16s(median, 2)));
    if (mem.alpha() == 0) alpha >>= 1;
    pushFront<5>(mem.ltpGains(), ltpGain);
    mem.alpha() = alpha;
    mem.codeGain() = codeGain;
    return alpha;
}

// The code gain chosen with the energy (`MR795_gain_code_quant_mod`).
int searchCode(const Energies& e, Vsp16s alpha, Vsp16s pitch, PowerOfTwo predicted, Scaled unquantised, Vsp16s codeGain) {
    const int exponent = predicted.exponent, x = exponent - 10;
    const Vsp16s pitch2 = Mul_16s(pitch, pitch);
    const auto weighted = [alpha](Vsp16s a) { return high_32s(Mul2_32s(Mul2_16s32s(alpha, a))); };
    Vsp32s k1 = Mul2_16s32s(weighted(e.vector.fraction), pitch2);
    const Vsp16s ofCrossed = Mul_16s(weighted(e.crossed.fraction), pitch), ofCode = weighted(e.code.fraction);
    const Vsp16s ofError = Mul_16s(Add_16s(Sub_16s(32767, alpha), 1), e.code.fraction);
    const int e1 = e.vector.exponent - 15, e2 = e.crossed.exponent + x, e3 = e.code.exponent + 2 * exponent - 7,
              e4 = e3 + 1;
    const SquareRoot root = ownSquareRoot(Mul2_16s32s(alpha, e.residual.fraction));
    const int e0 = e.residual.exponent - (root.exponent + 47);

    int largest = e0 + 31;
    const int others[4] = {e1, e2, e3, e4};
    for (const int own : others) largest = own > largest ? own : largest;
    k1 = shr_32s(k1, largest - e1);
    const Vsp32s k2 = shr_32s(ofCrossed * 65536, largest - e2), k3 = shr_32s(ofCode * 65536, largest - e3);
    const Vsp32s k4 = shr_32s(ofError * 65536, largest - e4);
    const int d = largest - 31 - e0;
    Vsp32s k0 = shr_32s(root.value, d >> 1);
    if ((d & 1) != 0) k0 = mulSplit_32s16s(k0, 23170);

    const Vsp16s wanted = shl_16s(unquantised.fraction, unquantised.exponent - x);
    const Vsp16s bound = shl_16s(codeGain, -x);
    const Vsp16s gcode0 = mantissaOf(predicted);
    Vsp32s least = kMax32;
    int best = 0;
    for (int i = 0; i < kCodes; i++) {
        const Vsp16s g = Mul_16s(qua_gain_code[0][i], gcode0);
        if (g >= bound) break;
        const Vsp32s sum = Add_32s(Add_32s(k1, mulSplit_32s16s(k2, g)), mulSplit_32s(k3, product(g, g)));
        const SquareRoot level = ownSquareRoot(sum);
        const Vsp16s r = round_32s(Sub_32s(level.value >> (level.exponent >> 1), k0)), error = Sub_16s(g, wanted);
        const Vsp32s distance = Add_32s(Mul2_16s32s(r, r), mulSplit_32s(k4, product(error, error)));
        if (distance >= least) continue;
        least = distance;
        best = i;
    }
    return best;
}

}  // namespace

void ownQuantiseGains795(const GainSignals& s, Vsp16s limit, Vsp16s* pred, GainMemory mem, Vsp16s* gain, Vsp16s* index) {
    const PowerOfTwo predicted = ownPredictCodeGain(pred, s.code, kMode795);
    Vsp16s scaledY2[kL_subfr];
    const GainTerms terms = gainTerms(s.target, s.y1, s.y2, s.coeff, 0, scaledY2);
    const Scaled unquantised = unquantisedCodeGain(s.target2, scaledY2, terms.term[2]);
    Choice choice = searchBoth(terms, predicted, gain[0], limit);
    gain[0] = qua_gain_pitch[choice.pitch];
    gain[1] = ownCorrectedGain(qua_gain_code[0][choice.code], predicted, 9);

    const Energies energies = measure(s, gain[0]);
    const Vsp16s alpha = adapt(energies.ltpGain, gain[1], mem);
    if (energies.residual.fraction != 0 && alpha > 0) {
        choice.code = searchCode(energies, alpha, gain[0], predicted, unquantised, gain[1]);
        gain[1] = ownCorrectedGain(qua_gain_code[0][choice.code], predicted, 9);
    }
    ownUpdatePredictor(pred, {qua_gain_code[2][choice.code], qua_gain_code[1][choice.code]});
    index[0] = Vsp16s(choice.pitch);
    index[1] = Vsp16s(choice.code);
}

}  // namespace vsp::VSP_LEVEL
