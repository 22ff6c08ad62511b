// Adaptation of the sub-band filters, floating point: NLMS and affine projection.
#include "core/checks.h"
#include "ec/bands_32fc.h"
#include "ec/exports.h"
#include "ec/subband_limits.h"

namespace vsp::VSP_LEVEL {

namespace {

// Some taps of a group of bands. Each vector of the reference is converted once for all of them.
template <class V, int taps>
VSP_INLINE void projectTaps(const Vsp64f* const* ppStepSize, const Vsp32fc* const* ppSrc, const Vsp32fc* const* ppErr,
                            Vsp32fc* const* ppCoef, unsigned long order, Vsp64f g, Vsp32s k, bool large) {
    Complex<V> sum[taps] = {}, src[taps] = {};
    for (int t = 1; t < taps; t++) src[t] = loadBands<V>(ppSrc[t - 1] + k);
    for (unsigned long j = 0; j < order; j++) {
        const Complex<V> err = loadBands<V>(ppErr[j] + k);
        const V stepSize = loadSteps<V>(ppStepSize[j] + k);
        for (int t = 1; t < taps; t++) src[t - 1] = src[t];
        src[taps - 1] = loadBands<V>(ppSrc[j + taps - 1] + k);
        for (int t = 0; t < taps; t++) sum[t] = add(sum[t], scale(mulConj(err, src[t]), stepSize));
    }
    for (int t = 0; t < taps; t++) {
        prefetchNext(large, ppSrc[t] + k, ppCoef[t] + k);
        addToBands(scale(sum[t], V::splat(g)), ppCoef[t] + k);
    }
}

}  // namespace

VspStatus vspsFIRSubbandCoeffUpdate_EC_32fc_I(const Vsp64f* pStepSize, const Vsp32fc* const* ppSrc, const Vsp32fc* pErr,
                                              Vsp32fc* const* ppCoef, Vsp32s len, Vsp32s numSubbands) {
    if (anyNull(pStepSize, ppSrc, pErr, ppCoef)) return vspStsNullPtrErr;
    if (numSubbands < 1 || numSubbands > kMaxSubbands) return vspStsCountRangeErr;
    if (len < 1 || len > kMaxSubbandTaps) return vspStsRangeErr;
    if (anyNegative(pStepSize, numSubbands)) return vspStsSizeErr;
    const bool large = isLarge(len, numSubbands);
    forBandGroups<F64>(0, numSubbands, [=]<class V>(Vsp32s k) {
        const Complex<V> scaledErr = scale(loadBands<V>(pErr + k), loadSteps<V>(pStepSize + k));
        for (Vsp32s t = 0; t < len; t++) {
            prefetchNext(large, ppSrc[t] + k, ppCoef[t] + k);
            addToBands(mulConj(scaledErr, loadBands<V>(ppSrc[t] + k)), ppCoef[t] + k);
        }
    });
    return vspStsNoErr;
}

VspStatus vspsFIRSubbandAPCoeffUpdate_EC_32fc_I(const Vsp64f* const* ppStepSize, const Vsp32fc* const* ppSrc,
                                                const Vsp32fc* const* ppErr, Vsp32fc* const* ppCoef, Vsp32u len,
                                                Vsp32u numSubbands, Vsp32u order) {
    if (anyNull(ppStepSize, ppSrc, ppErr, ppCoef)) return vspStsNullPtrErr;
    if (numSubbands < 1 || numSubbands > Vsp32u(kMaxSubbands)) return vspStsCountRangeErr;
    if (len < 1 || len > Vsp32u(kMaxSubbandTaps) || order < 1) return vspStsRangeErr;
    const Vsp64f g = 1.0f / Vsp32f(order);
    const bool large = isLarge(Vsp32s(len), Vsp32s(numSubbands));
    forBandGroups<F64>(0, Vsp32s(numSubbands), [=]<class V>(Vsp32s k) {
        constexpr int kTaps = V::width == 8 ? 4 : 2;  // at a time, as the registers allow
        Vsp32u t = 0;
        for (; t + kTaps <= len; t += kTaps)
            projectTaps<V, kTaps>(ppStepSize, ppSrc + t, ppErr, ppCoef + t, order, g, k, large);
        for (; t < len; t++) projectTaps<V, 1>(ppStepSize, ppSrc + t, ppErr, ppCoef + t, order, g, k, large);
    });
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
