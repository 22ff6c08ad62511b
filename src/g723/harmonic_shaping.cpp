// The harmonic noise shaping filter (G.723.1 2.11, `Comp_Pw` and `Filt_Pw`).
#include "core/checks.h"
#include "g723/correlations.h"
#include "g723/exports.h"
#include "g723/filters.h"

namespace vsp::VSP_LEVEL {

VspStatus vspsHarmonicSearch_G723_16s(const Vsp16s* pSrc, Vsp16s lag, Vsp16s* pDelay, Vsp16s* pGain) {
    constexpr int kDelays = 7, kFurthest = 3;
    constexpr Vsp16s kFactor = 10240;  // 0.3125
    if (anyNull(pSrc, pDelay, pGain)) return vspStsNullPtrErr;
    if (lag < 18 || lag > 142) return vspStsRangeErr;
    const Segment target(pSrc, kL_subfr_G723);
    Vsp32s sums[1 + 2 * kDelays];
    sums[0] = target.energy32();
    for (int i = 0; i < kDelays; i++) {
        const Segment delayed(pSrc - (lag - kFurthest + i), kL_subfr_G723);
        sums[1 + 2 * i] = delayed.energy32();
        sums[2 + 2 * i] = correlation(target, delayed);
    }
    Vsp16s scaled[1 + 2 * kDelays];
    normaliseTogether(sums, 1 + 2 * kDelays, scaled);

    int best = -1;
    Vsp32s bestSquare = 1, bestEnergy = kMax16;
    for (int i = 0; i < kDelays; i++) {
        const Vsp16s energy = scaled[1 + 2 * i], cross = scaled[2 + 2 * i];
        if (cross <= 0) continue;
        const Vsp32s square = mulRound_16s(cross, cross);
        if (square * bestEnergy <= energy * bestSquare) continue;
        best = i;
        bestSquare = square;
        bestEnergy = energy;
    }
    *pDelay = lag;
    *pGain = 0;
    if (best < 0) return vspStsNoErr;
    const Vsp16s energy = scaled[1 + 2 * best], cross = scaled[2 + 2 * best];
    const Vsp32s product = Mul2_16s32s(scaled[0], energy);
    *pDelay = Vsp16s(lag - kFurthest + best);
    if ((product >> 2) + (product >> 3) < Mul2_16s32s(cross, cross))
        *pGain = cross >= energy ? kFactor : mulRound_16s(Div_16s(cross, energy), kFactor);
    return vspStsNoErr;
}

VspStatus vspsHarmonicFilter_G723_16s(const Vsp16s* pSrc, Vsp16s delay, Vsp16s gain, Vsp16s* pDst) {
    if (anyNull(pSrc, pDst)) return vspStsNullPtrErr;
    if (delay < 15 || delay > 145) return vspStsRangeErr;
    addScaled(pSrc, pSrc - delay, -gain, pDst);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
