// Gains of comfort noise: of silence descriptors and between them (`Qua_SidGain`, `Dec_SidGain`; G.723.1 A.4).
#include "core/checks.h"
#include "g723/exports.h"
#include "g723/operators.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kSteps = 16, kIndices = 4 * kSteps;  // the last of three segments has two times as many

// Gains of a segment: equally wide steps, each segment's twice those of the one before.
struct Segment {
    int number;
    Vsp16s gain(int step) const {
        static constexpr Vsp16s kBase[3] = {0, 32, 96};
        return Vsp16s(kBase[number] + (step << (number + 1)));
    }
    Vsp32s energy(int step) const { return Mul2_16s32s(gain(step), gain(step)); }
};

Segment segmentOf(Vsp32s energy) { return {energy >= 18432 ? 2 : energy >= 2048 ? 1 : 0}; }

Vsp16s quantise(Vsp32s energy) {
    constexpr Vsp32s kLoudest = 231233;
    if (energy >= kLoudest) return kIndices - 1;
    const Segment segment = segmentOf(energy);
    int step = segment.number == 2 ? kSteps : kSteps / 2;
    for (int by = step / 2; by > 0; by /= 2) step += energy >= segment.energy(step) ? by : -by;
    const Vsp32s above = Sub_32s(segment.energy(step), energy);
    const int other = above > 0 ? step - 1 : step + 1;
    const Vsp32s below = Sub_32s(energy, segment.energy(other));
    const bool keep = above > 0 ? above < below : above > below;
    return Vsp16s(kSteps * segment.number + (keep ? step : other));
}

}  // namespace

VspStatus vspsSIDGainQuant_G723_16s(const Vsp16s* pEnergy, const Vsp16s* pShift, Vsp32s n, Vsp16s* pIndex) {
    static constexpr Vsp16s kFactors[4] = {273, 998, 499, 333};
    if (anyNull(pEnergy, pShift, pIndex)) return vspStsNullPtrErr;
    if (n < 0 || n > 3) return vspStsSizeErr;
    if (n == 0) {
        const Vsp32s energy = shl_32s(pEnergy[0], Sub_16s(16, shl_16s(pShift[0], 1)));
        *pIndex = quantise(g723::mul_32s16s_Q15(energy, kFactors[0]));
        return vspStsNoErr;
    }
    Vsp16s smallest = pShift[0];
    for (int i = 1; i < n; i++) smallest = pShift[i] < smallest ? pShift[i] : smallest;
    Vsp32s sum = 0;
    for (int i = 0; i < n; i++) sum += mulRound_16s(kFactors[n], shr_16s(pEnergy[i], Sub_16s(pShift[i], smallest)));
    *pIndex = quantise(shl_32s(sum, Sub_16s(15, smallest)));
    return vspStsNoErr;
}

VspStatus vspsSIDGainDecode_G723_16s(Vsp16s index, Vsp16s* pGain) {
    if (anyNull(pGain)) return vspStsNullPtrErr;
    if (index < 0 || index >= kIndices) return vspStsCodeRangeErr;
    const int number = index / kSteps < 2 ? index / kSteps : 2;
    *pGain = Vsp16s(Segment{number}.gain(index - kSteps * number) << 5);
    return vspStsNoErr;
}

VspStatus vspsCNGGain_G723_16s(Vsp16s sidGain, Vsp32s pastType, Vsp16s* pGain) {
    constexpr Vsp32s kActive = 1;
    if (anyNull(pGain)) return vspStsNullPtrErr;
    if (pastType < 0 || pastType > 2) return vspStsRangeErr;
    *pGain = pastType == kActive ? sidGain : high_32s(Add_32s(Mul2_16s32s(*pGain, 28672), Mul2_16s32s(sidGain, 4096)));
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
