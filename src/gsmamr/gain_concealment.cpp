// Replaces the gains of lost frames and tames those after one (`ec_gain_pitch`, `ec_gain_code`).
#include "arithmetic/standard_ops.h"
#include "common/history.h"
#include "common/median.h"
#include "core/checks.h"
#include "gsmamr/exports.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kWorstState = 6;
constexpr int kGains = 5, kPast = 5, kPrevGood = 6;  // words of a memory: five gains, the newest last, and two more

Vsp16s concealed(const Vsp16s* mem, Vsp16s attenuation) {
    const Vsp16s median = medianOf<kGains>(mem);
    return Mul_16s(median < mem[kPast] ? median : mem[kPast], attenuation);
}

// The gain after which a frame was bad does not exceed the last good one.
void takeGood(Vsp16s* mem, bool prevBad, Vsp16s* gain) {
    if (prevBad && *gain > mem[kPrevGood]) *gain = mem[kPrevGood];
    mem[kPrevGood] = *gain;
}

void remember(Vsp16s* mem, Vsp16s gain) {
    mem[kPast] = gain;
    pushBack<kGains>(mem, gain);
}

Vsp16s limitedAverage(const Vsp16s* past, Vsp16s least) {
    Vsp16s sum = past[0];
    for (int i = 1; i < 4; i++) sum = Add_16s(sum, past[i]);
    const Vsp16s average = Mul_16s(sum, 8192);
    return average < least ? least : average;
}

}  // namespace

VspStatus vspsPitchGainConceal_GSMAMR_16s(Vsp32s bfi, Vsp32s prevBfi, Vsp32s bfState, Vsp16s* pMem, Vsp16s* pGain) {
    static constexpr Vsp16s kAttenuation[kWorstState + 1] = {32767, 32112, 32112, 26214, 9830, 6553, 6553};
    constexpr Vsp16s kOne = 16384;
    if (anyNull(pMem, pGain)) return vspStsNullPtrErr;
    if (bfState < 0 || bfState > kWorstState) return vspStsRangeErr;
    if (bfi != 0)
        *pGain = concealed(pMem, kAttenuation[bfState]);
    else
        takeGood(pMem, prevBfi != 0, pGain);
    remember(pMem, *pGain < kOne ? *pGain : kOne);
    return vspStsNoErr;
}

VspStatus vspsCodeGainConceal_GSMAMR_16s(Vsp32s bfi, Vsp32s prevBfi, Vsp32s bfState, Vsp16s* pMem, Vsp16s* pPred,
                                         Vsp16s* pGain) {
    static constexpr Vsp16s kAttenuation[kWorstState + 1] = {32767, 32112, 32112, 32112, 32112, 32112, 22937};
    constexpr Vsp16s kLeastDecibels = -14336, kLeastLog2 = -2381;
    if (anyNull(pMem, pPred, pGain)) return vspStsNullPtrErr;
    if (bfState < 0 || bfState > kWorstState) return vspStsRangeErr;
    if (bfi != 0) {
        *pGain = concealed(pMem, kAttenuation[bfState]);
        pushFront<4>(pPred, limitedAverage(pPred, kLeastDecibels));
        pushFront<4>(pPred + 4, limitedAverage(pPred + 4, kLeastLog2));
    } else {
        takeGood(pMem, prevBfi != 0, pGain);
    }
    remember(pMem, *pGain);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
