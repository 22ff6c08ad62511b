// The long-term predictor (GSM 06.10 5.2.11, 5.2.12, 5.2.18 and 5.3.2).
#include "arithmetic/basic_ops.h"
#include "common/lag_max.h"
#include "core/checks.h"
#include "gsmfr/exports.h"
#include "gsmfr/frame.h"
#include "gsmfr/tables.h"
#include "vector/correlate.h"
#include "vector/dot.h"
#include "vector/magnitude.h"
#include "vector/map.h"

namespace vsp::VSP_LEVEL {

namespace {

// The code of the gain from the correlation at the best lag and the power there.
VSP_INLINE Vsp16s gainCode(Vsp32s correlation, Vsp32s power) {
    if (correlation <= 0) return 0;
    if (correlation >= power) return 3;
    const int n = norm_32s_Pos(power);
    const Vsp32s r = (correlation << n) >> 16, s = (power << n) >> 16;
    Vsp16s code = 0;
    while (code < 3 && r > (s * DLB[code]) >> 15) code++;
    return code;
}

}  // namespace

VspStatus vspsLongTermPredict_GSMFR_16s(const Vsp16s* pSrc, const Vsp16s* pPast, Vsp16s* pDst, Vsp16s* pLag,
                                        Vsp16s* pGain) {
    if (anyNull(pSrc, pPast, pDst, pLag, pGain)) return vspStsNullPtrErr;
    const Vsp16u dmax = maxMagnitude(pSrc, kSubframe);
    const int norm = Exp_16s_Pos(dmax > kMax16 ? Vsp16u(kMax16) : dmax), scal = norm < 6 ? 6 - norm : 0;
    Vsp16s wt[kSubframe];
    map(
        kSubframe, [scal](auto x) { return shr(x, scal); }, wt, pSrc);

    // With what is scaled to 10 bits, a sum fits 31.
    constexpr int kLags = kLagMax - kLagMin + 1;
    Vsp32s sums[kLags];  // from the longest lag on
    correlate(wt, kSubframe, pPast, sums, kLags);
    int best = ownLastMax(sums, kLags);
    if (sums[best] <= 0) best = kLagMax - kLagMin;
    const Vsp16s* const dp = pPast + best;
    const auto eighth = [](auto x) { return shr(x, 3); };
    const Vsp32s power = Vsp32s(2 * dot(dp, dp, kSubframe, eighth, eighth));
    const Vsp16s gain = gainCode((2 * sums[best]) >> (6 - scal), power);

    *pLag = Vsp16s(kLagMax - best);
    *pGain = gain;
    const Vsp16s factor = QLB[gain];
    map(
        kSubframe, [factor](auto d, auto past) { return subSat(d, mulRoundWrap(past, decltype(past)::splat(factor))); },
        pDst, pSrc, dp);
    return vspStsNoErr;
}

VspStatus vspsLongTermSynthesis_GSMFR_16s(const Vsp16s* pSrc, Vsp16s* pPast, Vsp16s* pDst, Vsp16s lag, Vsp16s gain,
                                          Vsp16s* pPrevLag) {
    if (anyNull(pSrc, pPast, pDst, pPrevLag)) return vspStsNullPtrErr;
    const auto inRange = [](Vsp16s x) { return x >= kLagMin && x <= kLagMax; };
    if (inRange(lag)) *pPrevLag = lag;
    const int used = inRange(*pPrevLag) ? *pPrevLag : kLagMin;
    const Vsp16s factor = QLB[gain & 3];
    map(
        kSubframe, [factor](auto e, auto past) { return addSat(e, mulRoundWrap(past, decltype(past)::splat(factor))); },
        pDst, pSrc, pPast + kPast - used);
    __builtin_memmove(pPast, pPast + kSubframe, (kPast - kSubframe) * sizeof(Vsp16s));
    __builtin_memcpy(pPast + kPast - kSubframe, pDst, kSubframe * sizeof(Vsp16s));
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
