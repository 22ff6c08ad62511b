// The floating-point members of the pitch search and the adaptive codebook (G.729 Annex C).
#include <math.h>

#include "core/checks.h"
#include "g729/constants.h"
#include "g729/decimated_signal.h"
#include "g729/exports.h"
#include "g729/tables.h"
#include "vector/partial_sums_dot.h"
#include "vector/simd.h"

namespace vsp::VSP_LEVEL {

namespace {

using Decimated = DecimatedSignal<Vsp32f>;
using Largest = LagMax<Vsp32f>;

// out[i] = sum of x[n] * z[n + i] in the order of n, whole vectors of outputs.
VSP_INLINE void correlate(const Vsp32f* x, const Vsp32f* z, Vsp32f* out, int outputs) {
    constexpr int kVectors = 4;
    for (int i = 0; i < outputs; i += kVectors * Sliding32f::width) {
        Sliding32f sums[kVectors];
        for (Sliding32f& sum : sums) sum = Sliding32f::splat(0);
        for (int n = 0; n < Decimated::kSamples; n++)
            for (int u = 0; u < kVectors; u++)
                sums[u] = add(sums[u], mul(Sliding32f::splat(x[n]), Sliding32f::load(z + n + i + u * Sliding32f::width)));
        for (int u = 0; u < kVectors; u++) sums[u].store(out + i + u * Sliding32f::width);
    }
}

// The correlations of all lags that the search may try, and of the four below them.
struct Correlations {
    static constexpr int kLags = 64, kLongestEven = 142, kLongestOdd = 143;
    Vsp32f even[kLags], odd[kLags];

    explicit Correlations(const Decimated& signal) {
        correlate(signal.current(), signal.delayed(kLongestEven), even, kLags);
        correlate(signal.current(), signal.delayed(kLongestOdd), odd, kLags);
    }
    Vsp32f at(int lag) const { return lag % 2 == 0 ? even[(kLongestEven - lag) / 2] : odd[(kLongestOdd - lag) / 2]; }
};

// The largest correlation of the lags shortest, shortest + step, ... below end, of equal ones that of the shortest lag.
Largest searchSection(const Correlations& correlations, int shortest, int end, int step) {
    Largest best{correlations.at(shortest), shortest};
    for (int lag = shortest + step; lag < end; lag += step) best = larger(best, {correlations.at(lag), lag});
    return best;
}

}  // namespace

// The fixed-point search without its scaling.
VspStatus vspsOpenLoopPitchSearch_G729A_32f(const Vsp32f* pSrc, Vsp32s* pLag) {
    if (anyNull(pSrc, pLag)) return vspStsNullPtrErr;
    const Decimated signal(pSrc - kPitMax);
    const Correlations correlations(signal);
    Largest best1 = searchSection(correlations, 20, 40, 1), best2 = searchSection(correlations, 40, 80, 1);
    Largest best3 = searchSection(correlations, 80, kPitMax, 2);
    const int centre = best3.lag;
    for (int lag = centre + 1; lag >= centre - 1; lag -= 2) best3 = larger(best3, {correlations.at(lag), lag});

    const auto normalised = [&signal](Largest best) {
        const Vsp32f* const delayed = signal.delayed(best.lag);
        return Largest{best.max / sqrtf(partialSumsDot<16>(delayed, delayed, Decimated::kSamples) + 0.01f), best.lag};
    };
    best1 = normalised(best1);
    best2 = normalised(best2);
    best3 = normalised(best3);
    if (divides(best2.lag, best3.lag)) best2.max += 0.25f * best3.max;
    if (divides(best1.lag, best2.lag)) best1.max += 0.2f * best2.max;
    *pLag = larger(larger(best1, best2), best3).lag;
    return vspStsNoErr;
}

VspStatus vspsDotProd_G729A_32f(const Vsp32f* pSrc1, const Vsp32f* pSrc2, Vsp32s len, Vsp32f* pResult) {
    if (anyNull(pSrc1, pSrc2, pResult)) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    *pResult = partialSumsDot<16>(pSrc1, pSrc2, len);
    return vspStsNoErr;
}

VspStatus vspsInterpolateC_G729_32f(const Vsp32f* pSrc1, const Vsp32f* pSrc2, Vsp32f* pDst, Vsp32s len, Vsp32f weight1,
                                    Vsp32f weight2) {
    if (anyNull(pSrc1, pSrc2, pDst)) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    for (int n = 0; n < len; n++) pDst[n] = pSrc1[n] * weight1 + pSrc2[n] * weight2;
    return vspStsNoErr;
}

VspStatus vspsAdaptiveCodebookContribution_G729_32f(const Vsp32f* pFiltered, const Vsp32f* pTarget, Vsp32f* pDst,
                                                    Vsp32f gain) {
    if (anyNull(pFiltered, pTarget, pDst)) return vspStsNullPtrErr;
    const Vsp32f negated = -gain;
    for (int n = 0; n < kL_subfr; n++) pDst[n] = pTarget[n] + negated * pFiltered[n];
    return vspStsNoErr;
}

VspStatus vspsFilteredExcitation_G729_32f(const Vsp32f* pImpulse, Vsp32f* pFiltered, Vsp32s len, Vsp32f excitation) {
    if (anyNull(pImpulse, pFiltered)) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    // In the narrowest vectors: lag after lag goes through here, and wider loads would wait longer for the stores before.
    using V = F32_128;
    const V factor = V::splat(excitation);
    int n = len;
    for (; n > V::width; n -= V::width) {
        const int at = n - V::width;
        add(V::load(pFiltered + at - 1), mul(factor, V::load(pImpulse + at))).store(pFiltered + at);
    }
    while (--n > 0) pFiltered[n] = pFiltered[n - 1] + excitation * pImpulse[n];
    pFiltered[0] = excitation;
    return vspStsNoErr;
}

// Eight outputs at a time: with the shortest lag of 18 they still read none of each other.
VspStatus vspsDecodeAdaptiveVector_G729_32f_I(const Vsp32s* pDelay, Vsp32f* pSrcDst) {
    if (anyNull(pDelay, pSrcDst)) return vspStsNullPtrErr;
    const int lag = pDelay[0], fraction = pDelay[1];
    if (!isLegalLag(lag) || fraction < -1 || fraction > 1) return vspStsCodeRangeErr;
    constexpr int kOutputs = 8;
    const Vsp32f* const taps = inter_3l_32f_taps.taps[fraction > 0 ? 3 - fraction : -fraction];
    const Vsp32f* const z = pSrcDst - lag - (fraction > 0) - (kSideTaps - 1);
    for (int first = 0; first < kL_subfr; first += kOutputs) {
        Sliding32f sums[kOutputs / Sliding32f::width];
        for (Sliding32f& sum : sums) sum = Sliding32f::splat(0);
        const auto addTap = [&](int t) {
            for (int u = 0; u < kOutputs / Sliding32f::width; u++)
                sums[u] =
                    add(sums[u], mul(Sliding32f::load(z + first + u * Sliding32f::width + t), Sliding32f::splat(taps[t])));
        };
        for (int i = 0; i < kSideTaps; i++) {
            addTap(kSideTaps - 1 - i);
            addTap(kSideTaps + i);
        }
        for (int u = 0; u < kOutputs / Sliding32f::width; u++) sums[u].store(pSrcDst + first + u * Sliding32f::width);
    }
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
