// The closed-loop pitch searches of G.729 (3.7), its Annex A (A.3.7) and its Annex D.
#include "arithmetic/basic_ops.h"
#include "common/exports.h"
#include "common/norm_corr.h"
#include "core/checks.h"
#include "g729/adaptive_vector.h"
#include "g729/constants.h"
#include "g729/exports.h"
#include "g729/interpol_3.h"
#include "vector/dot.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kLongestFractional = 84;  // longer lags of the first subframe have no fraction

bool isLegal(Vsp16s lag, Vsp16s subframe) { return isLegalLag(lag) && (subframe == 0 || subframe == 1); }

struct Range {
    int t_min, t_max;
};

Range searchRange(Vsp16s lag, Vsp16s subframe) {
    const int below = subframe == 0 ? 3 : 5, span = subframe == 0 ? 6 : 9;
    int t_min = lag - below < kPitMin ? kPitMin : lag - below;
    if (t_min + span > kPitMax) t_min = kPitMax - span;
    return {t_min, t_min + span};
}

void copySubframe(const Vsp16s* from, Vsp16s* to) {
    for (int n = 0; n < kL_subfr; n++) to[n] = from[n];
}

struct Delay {
    int lag, fraction;
};

// The fraction from `first` to `last` with the largest interpolated correlation, the first of equal ones. corr is that of
// the integer lag.
Delay bestFraction(const Vsp16s* corr, int lag, int first, int last) {
    int fraction = first;
    Vsp32s max = ownInterpol_3(corr, first);
    for (int f = first + 1; f <= last; f++) {
        const Vsp32s value = ownInterpol_3(corr, f);
        if (value > max) {
            max = value;
            fraction = f;
        }
    }
    if (fraction == -2) return {lag - 1, 1};
    if (fraction == 2) return {lag + 1, -1};
    return {lag, fraction};
}

// The normalised correlations of a search range and of the lags beside it that their interpolation needs.
class NormalisedCorrelation {
  public:
    NormalisedCorrelation(const Vsp16s* excitation, const Vsp16s* target, const Vsp16s* impulse, Range range)
        : range_(range) {
        ownNorm_Corr(excitation, target, impulse, range.t_min - kL_inter4, range.t_max + kL_inter4, corr_);
    }

    const Vsp16s* at(int lag) const { return corr_ + kL_inter4 + lag - range_.t_min; }

    // Of equal ones the longest.
    int bestLag() const {
        int best = range_.t_min;
        for (int lag = range_.t_min + 1; lag <= range_.t_max; lag++)
            if (*at(lag) >= *at(best)) best = lag;
        return best;
    }

  private:
    Range range_;
    Vsp16s corr_[kMaxNormCorr];
};

// G.729 Pitch_fr3
Delay searchG729(const Vsp16s* excitation, const Vsp16s* target, const Vsp16s* impulse, Vsp16s lag, Vsp16s subframe) {
    const NormalisedCorrelation corr(excitation, target, impulse, searchRange(lag, subframe));
    const int best = corr.bestLag();
    if (subframe == 0 && best > kLongestFractional) return {best, 0};
    return bestFraction(corr.at(best), best, -2, 2);
}

// The second subframe of Annex D has fractions around the middle of the range only.
Delay searchG729D(const Vsp16s* excitation, const Vsp16s* target, const Vsp16s* impulse, Vsp16s lag, Vsp16s subframe) {
    if (subframe == 0) return searchG729(excitation, target, impulse, lag, subframe);
    const Range range = searchRange(lag, subframe);
    const NormalisedCorrelation corr(excitation, target, impulse, range);
    const int best = corr.bestLag();
    switch (best - (range.t_max - 4)) {
        case -2: return bestFraction(corr.at(best), best, 0, 2);
        case -1:
        case 0: return bestFraction(corr.at(best), best, -2, 2);
        case 1: return bestFraction(corr.at(best), best, -2, 0);
        default: return {best, 0};
    }
}

// What Annex A compares, saturated at the end only: doubled sums for the integer lags, plain ones for the fractions.
Vsp32s lagProduct(const Vsp16s* d, const Vsp16s* vector) { return Cnvrt_64s32s(2 * dot(d, vector, kL_subfr)); }
Vsp32s fractionProduct(const Vsp16s* d, const Vsp16s* vector) { return Cnvrt_64s32s(dot(d, vector, kL_subfr)); }

// G.729A Pitch_fr3_fast; leaves the vector at the delay found in excitation[0 .. 39].
Delay searchG729A(Vsp16s* excitation, const Vsp16s* target, const Vsp16s* impulse, Vsp16s lag, Vsp16s subframe) {
    Vsp16s d[kL_subfr];
    vspsCrossCorr_NormM_16s(target, impulse, kL_subfr, d);
    const Range range = searchRange(lag, subframe);
    int best = range.t_min;
    Vsp32s max = lagProduct(d, excitation - best);
    for (int k = range.t_min + 1; k <= range.t_max; k++) {
        const Vsp32s value = lagProduct(d, excitation - k);
        if (value > max) {
            max = value;
            best = k;
        }
    }

    ownPred_lt_3(excitation, best, 0);
    if (subframe == 0 && best > kLongestFractional) return {best, 0};
    Vsp16s kept[kL_subfr];
    copySubframe(excitation, kept);
    max = fractionProduct(d, excitation);
    int fraction = 0;
    for (int f = -1; f <= 1; f += 2) {
        ownPred_lt_3(excitation, best, f);
        const Vsp32s value = fractionProduct(d, excitation);
        if (value > max) {
            max = value;
            fraction = f;
            copySubframe(excitation, kept);
        }
    }
    copySubframe(kept, excitation);
    return {best, fraction};
}

void store(Delay delay, Vsp16s* pDelay) {
    pDelay[0] = Vsp16s(delay.lag);
    pDelay[1] = Vsp16s(delay.fraction);
}

}  // namespace

VspStatus vspsAdaptiveCodebookSearch_G729_16s(Vsp16s lag, const Vsp16s* pTarget, const Vsp16s* pImpulse,
                                              Vsp16s* pExcitation, Vsp16s* pDelay, Vsp16s* pVector, Vsp16s subframe) {
    if (anyNull(pTarget, pImpulse, pExcitation, pDelay, pVector)) return vspStsNullPtrErr;
    if (!isLegal(lag, subframe)) return vspStsRangeErr;
    Vsp16s* const current = pExcitation + kExcitationHistory;
    const Delay delay = searchG729(current, pTarget, pImpulse, lag, subframe);
    ownPred_lt_3(current, delay.lag, delay.fraction);
    copySubframe(current, pVector);
    store(delay, pDelay);
    return vspStsNoErr;
}

VspStatus vspsAdaptiveCodebookSearch_G729A_16s(Vsp16s lag, const Vsp16s* pTarget, const Vsp16s* pImpulse,
                                               Vsp16s* pExcitation, Vsp16s* pDelay, Vsp16s* pVector, Vsp16s subframe) {
    if (anyNull(pTarget, pImpulse, pExcitation, pDelay, pVector)) return vspStsNullPtrErr;
    if (!isLegal(lag, subframe)) return vspStsRangeErr;
    Vsp16s* const current = pExcitation + kExcitationHistory;
    store(searchG729A(current, pTarget, pImpulse, lag, subframe), pDelay);
    copySubframe(current, pVector);
    return vspStsNoErr;
}

VspStatus vspsAdaptiveCodebookSearch_G729D_16s(Vsp16s lag, const Vsp16s* pTarget, const Vsp16s* pImpulse,
                                               const Vsp16s* pExcitation, Vsp16s subframe, Vsp16s* pDelay) {
    if (anyNull(pTarget, pImpulse, pExcitation, pDelay)) return vspStsNullPtrErr;
    if (!isLegal(lag, subframe)) return vspStsRangeErr;
    store(searchG729D(pExcitation + kExcitationHistory, pTarget, pImpulse, lag, subframe), pDelay);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
