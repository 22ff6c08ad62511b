// Complex FIR filters, one per sub-band, and their adaptation by NLMS, in single precision.
#include "core/checks.h"
#include "ec/bands_32fc.h"
#include "ec/bands_single_32fc.h"
#include "ec/exports.h"
#include "ec/subband_limits.h"

namespace vsp::VSP_LEVEL {

namespace {

// Some groups of bands at once, as a sum alone would wait for its last addition.
template <class V, int groups>
VSP_INLINE void filter(const Vsp32fc* const* src, const Vsp32fc* const* coef, Vsp32fc* dst, Vsp32s len, Vsp32s k,
                       bool large) {
    V real[groups] = {}, imaginary[groups] = {};  // products with real and with imaginary parts of the coefficients
    for (Vsp32s t = 0; t < len; t++) {
        const Vsp32fc *const x = src[t] + k, *const c = coef[t] + k;
        prefetchNext(large, x, c);
        for (int i = 0; i < groups; i++) {
            const V value = V::load(x + i * V::width), tap = loadOnce<V>(c + i * V::width);
            real[i] = add(real[i], mul(value, realOf(tap)));
            imaginary[i] = add(imaginary[i], mul(value, imaginaryOf(tap)));
        }
    }
    for (int i = 0; i < groups; i++) subAdd(real[i], swapped(imaginary[i])).store(dst + k + i * V::width);
}

}  // namespace

VspStatus vspsFIRSubbandFast_EC_32fc(const Vsp32fc* const* ppSrc, const Vsp32fc* const* ppCoef, Vsp32fc* pDst, Vsp32s len,
                                     Vsp32s numSubbands) {
    if (anyNull(ppSrc, ppCoef, pDst)) return vspStsNullPtrErr;
    if (numSubbands < 1 || numSubbands > kMaxSubbands) return vspStsCountRangeErr;
    if (len < 1 || len > kMaxSubbandTaps) return vspStsRangeErr;
    const bool large = isLarge(len, numSubbands);
    Vsp32s k = 0;
    for (; numSubbands - k >= 2 * Bands::width; k += 2 * Bands::width) filter<Bands, 2>(ppSrc, ppCoef, pDst, len, k, large);
    forBandGroups<Bands>(k, numSubbands, [=]<class V>(Vsp32s at) { filter<V, 1>(ppSrc, ppCoef, pDst, len, at, large); });
    return vspStsNoErr;
}

VspStatus vspsFIRSubbandFastCoeffUpdate_EC_32fc_I(const Vsp64f* pStepSize, const Vsp32fc* const* ppSrc, const Vsp32fc* pErr,
                                                  Vsp32fc* const* ppCoef, Vsp32s len, Vsp32s numSubbands) {
    if (anyNull(pStepSize, ppSrc, pErr, ppCoef)) return vspStsNullPtrErr;
    if (numSubbands < 1 || numSubbands > kMaxSubbands) return vspStsCountRangeErr;
    if (len < 1 || len > kMaxSubbandTaps) return vspStsRangeErr;
    if (anyNegative(pStepSize, numSubbands)) return vspStsSizeErr;
    const bool large = isLarge(len, numSubbands);
    forBandGroups<Bands>(0, numSubbands, [=]<class V>(Vsp32s k) {
        const V scaled = mul(V::load(pErr + k), stepsAs(V(), pStepSize + k));
        const V turned = conjugated(swapped(scaled));
        for (Vsp32s t = 0; t < len; t++) {
            const Vsp32fc* const x = ppSrc[t] + k;
            Vsp32fc* const c = ppCoef[t] + k;
            prefetchNext(large, x, c);
            const V value = V::load(x);
            const V change = add(mul(scaled, realOf(value)), mul(turned, imaginaryOf(value)));
            add(V::load(c), change).store(c);
        }
    });
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
