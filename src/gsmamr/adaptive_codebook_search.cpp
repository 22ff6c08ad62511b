// The closed-loop pitch search (`Pitch_fr`).
#include "arithmetic/standard_ops.h"
#include "common/norm_corr.h"
#include "core/checks.h"
#include "gsmamr/exports.h"
#include "gsmamr/pitch_range.h"
#include "gsmamr/pitch_tables.h"

namespace vsp::VSP_LEVEL {

namespace {

struct Delay {
    int lag, fraction;
};

LagRange searchRange(Vsp32s mode, bool delta, int lag) {
    if (delta) return deltaRange(mode, lag);
    return mode <= kMode515 ? lagRange(mode, lag, 5, 10) : lagRange(mode, lag, 3, 6);
}

// The correlation at corr + sixths / 6, sixths -5 .. 5 (`Interpol_3or6`).
Vsp16s interpolated(const Vsp16s* corr, int sixths) {
    if (sixths < 0) {
        sixths += kSixths;
        corr--;
    }
    Vsp32s sum = 0;
    for (int i = 0; i < kL_inter4; i++) {
        sum = mac_32s(sum, corr[-i], inter_6_search[sixths + kSixths * i]);
        sum = mac_32s(sum, corr[1 + i], inter_6_search[kSixths - sixths + kSixths * i]);
    }
    return round_32s(sum);
}

// Fractions in units of 1 / perSample of a sample.
Delay bestFraction(const Vsp16s* corr, int lag, int first, int last, int perSample) {
    const int sixths = kSixths / perSample;
    int best = first;
    Vsp16s largest = interpolated(corr, first * sixths);
    for (int fraction = first + 1; fraction <= last; fraction++) {
        const Vsp16s value = interpolated(corr, fraction * sixths);
        if (value > largest) {
            largest = value;
            best = fraction;
        }
    }
    if (perSample == 6) return best == -3 ? Delay{lag - 1, 3} : Delay{lag, best};
    return best == -2 ? Delay{lag - 1, 1} : best == 2 ? Delay{lag + 1, -1} : Delay{lag, best};
}

Delay search(const Vsp16s* target, const Vsp16s* impulse, const Vsp16s* excitation, Vsp32s mode, bool delta, int lagBefore,
             LagRange range) {
    Vsp16s values[kMaxNormCorr];
    ownNorm_Corr(excitation, target, impulse, range.min - kL_inter4, range.max + kL_inter4, values);
    const auto at = [&](int lag) { return values + kL_inter4 + lag - range.min; };
    int lag = range.min;
    for (int k = range.min + 1; k <= range.max; k++)
        if (*at(k) >= *at(lag)) lag = k;

    const int perSample = mode == kMode122 ? 6 : 3, outermost = perSample / 2 + perSample % 2;
    if (!delta && lag > (mode == kMode122 ? 94 : 84)) return {lag, 0};
    int first = -outermost, last = outermost;
    if (delta && hasCoarseDelta(mode)) {
        const int offset = lag - range.coarseMiddle(lagBefore);
        if (offset < -2 || offset > 1) return {lag, 0};
        if (offset == -2) first = 0;
        if (offset == 1) last = 0;
    }
    return bestFraction(at(lag), lag, first, last, perSample);
}

// `Enc_lag3`, `Enc_lag6`
int indexOf(Delay delay, Vsp32s mode, bool delta, int lagBefore, LagRange range) {
    const auto [lag, fraction] = delay;
    if (mode == kMode122) {
        if (delta) return 6 * (lag - range.min) + 3 + fraction;
        return lag <= 94 ? 6 * lag - 105 + fraction : lag + 368;
    }
    if (!delta) return lag <= 85 ? 3 * lag - 58 + fraction : lag + 112;
    if (!hasCoarseDelta(mode)) return 3 * (lag - range.min) + 2 + fraction;
    const int middle = range.coarseMiddle(lagBefore), thirds = 3 * lag + fraction;
    if (3 * (middle - 2) >= thirds) return lag - middle + 5;
    if (3 * (middle + 1) > thirds) return thirds - 3 * (middle - 2) + 3;
    return lag - middle + 11;
}

}  // namespace

VspStatus vspsAdaptiveCodebookSearch_GSMAMR_16s(const Vsp16s* pTarget, const Vsp16s* pImpulse, const Vsp16s* pExc,
                                                Vsp32s mode, Vsp32s subframe, Vsp16s openLag, Vsp16s* pPrevLag,
                                                Vsp16s* pDelay, Vsp16s* pIndex) {
    if (anyNull(pTarget, pImpulse, pExc, pPrevLag, pDelay, pIndex)) return vspStsNullPtrErr;
    if (!isSpeechMode(mode) || !isSubframe(subframe)) return vspStsRangeErr;
    const bool delta = isDeltaSubframe(mode, subframe);
    const int lag = delta ? *pPrevLag : openLag;
    if (delta && (lag < kFirstLag || lag > kLastLag)) return vspStsRangeErr;
    if (!delta && (lag < shortestLag(mode) || lag > kLongestLag)) return vspStsRangeErr;
    const LagRange range = searchRange(mode, delta, lag);
    const Delay delay = search(pTarget, pImpulse, pExc, mode, delta, lag, range);
    *pIndex = Vsp16s(indexOf(delay, mode, delta, lag, range));
    pDelay[0] = *pPrevLag = Vsp16s(delay.lag);
    pDelay[1] = Vsp16s(delay.fraction);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
