// Complex FIR filters, one per sub-band, floating point.
#include "core/checks.h"
#include "ec/bands_32fc.h"
#include "ec/exports.h"
#include "ec/subband_limits.h"

namespace vsp::VSP_LEVEL {

VspStatus vspsFIRSubband_EC_32fc(const Vsp32fc* const* ppSrc, const Vsp32fc* const* ppCoef, Vsp32fc* pDst, Vsp32s len,
                                 Vsp32s numSubbands) {
    if (anyNull(ppSrc, ppCoef, pDst)) return vspStsNullPtrErr;
    if (numSubbands < 1 || numSubbands > kMaxSubbands) return vspStsCountRangeErr;
    if (len < 1 || len > kMaxSubbandTaps) return vspStsRangeErr;
    const bool large = isLarge(len, numSubbands);
    forBandGroups<F64>(0, numSubbands, [=]<class V>(Vsp32s k) {
        NarrowBands<V> sum = {};
        for (Vsp32s t = 0; t < len; t++) {
            prefetchNext(large, ppSrc[t] + k, ppCoef[t] + k);
            const Complex<V> product = mul(loadBands<V>(ppSrc[t] + k), loadBands<V>(ppCoef[t] + k));
            sum = add(sum, {narrow(product.re), narrow(product.im)});
        }
        storeBands<V>(sum, pDst + k);
    });
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
