#include "gsmamr/code_gain_prediction.h"

#include "common/lengths.h"
#include "vector/dot.h"

namespace vsp::VSP_LEVEL {

namespace {

// Mean energy of the code and a constant of its length, in units of a step of the sums below.
Vsp32s meanEnergy(Vsp32s mode) {
    switch (mode) {
        case kMode670: return 2 * 32268 * 32;
        case kMode740: return 2 * 32588 * 32;
        case kMode795: return 2 * 17062 * 64;
        default: return 2 * 16678 * 64;
    }
}

Vsp32s sumOfPast(Vsp32s start, const Vsp16s* pred, const Vsp16s (&weights)[4]) {
    for (int i = 0; i < 4; i++) start = mac_32s(start, pred[i], weights[i]);
    return start;
}

Vsp32s logarithmOf(Vsp32s energy, int exponentOffset) {
    Vsp16s exponent, fraction;
    ownLog2(energy, &exponent, &fraction);
    return (exponent - exponentOffset) * 65536 + 2 * fraction;
}

}  // namespace

PowerOfTwo ownPredictCodeGain(const Vsp16s* pred, const Vsp16s* code, Vsp32s mode) {
    static constexpr Vsp16s kWeightsLog2[4] = {44, 37, 22, 12}, kWeightsDecibels[4] = {5571, 4751, 2785, 1556};
    const Vsp32s codeEnergy = Cnvrt_64s32s(2 * energy(code, kL_subfr));
    if (mode == kMode122) {
        constexpr Vsp32s kMeanEnergy = 783741;
        const Vsp32s logarithm = logarithmOf(Mul2_16s32s(round_32s(codeEnergy), 26214), 30);
        return splitPower(Sub_32s(sumOfPast(kMeanEnergy, pred + 4, kWeightsLog2), logarithm) >> 1);
    }
    const Vsp32s logarithm = mulSplit_32s16s(logarithmOf(codeEnergy, 0), -24660);
    const Vsp32s innovation = shl_32s(Add_32s(logarithm, meanEnergy(mode)), 10);
    const Vsp16s decibels = high_32s(sumOfPast(innovation, pred, kWeightsDecibels));
    return splitPower(Mul2_16s32s(decibels, mode == kMode740 ? 5439 : 5443) >> 8);
}

}  // namespace vsp::VSP_LEVEL
