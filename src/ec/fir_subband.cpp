// Complex FIR filters, one per sub-band.
#include "common/basic_ops.h"
#include "core/checks.h"
#include "core/level.h"
#include "ec/subband_limits.h"

namespace vsp::VSP_LEVEL {

namespace {

VSP_INLINE Vsp64s addSat_64s(Vsp64s a, Vsp64s b) {
    Vsp64s sum;
    if (__builtin_add_overflow(a, b, &sum)) return b < 0 ? kMin64 : kMax64;
    return sum;
}

// sum / 2^s rounded towards zero, saturated to 32 bits; -31 <= s <= 31.
VSP_INLINE Vsp32s scaled(Vsp64s sum, int s) {
    if (s > 0) return Cnvrt_64s32s((sum >> s) + (sum < 0 && (sum & ((1LL << s) - 1)) != 0));
    return Cnvrt_64s32s(Vsp64s(Cnvrt_64s32s(sum)) * (1LL << -s));
}

}  // namespace

VspStatus vspsFIRSubband_EC_32fc(const Vsp32fc* const* ppSrc, const Vsp32fc* const* ppCoef, Vsp32fc* pDst, Vsp32s len,
                                 Vsp32s numSubbands) {
    if (anyNull(ppSrc, ppCoef, pDst)) return vspStsNullPtrErr;
    if (numSubbands < 1 || numSubbands > kMaxSubbands) return vspStsCountRangeErr;
    if (len < 1 || len > kMaxSubbandTaps) return vspStsRangeErr;
    for (Vsp32s k = 0; k < numSubbands; k++) {
        Vsp32fc sum = {0, 0};
        for (Vsp32s t = 0; t < len; t++) {
            const Vsp64f xr = ppSrc[t][k].re, xi = ppSrc[t][k].im, cr = ppCoef[t][k].re, ci = ppCoef[t][k].im;
            sum.re += Vsp32f(xr * cr - xi * ci);
            sum.im += Vsp32f(xr * ci + xi * cr);
        }
        pDst[k] = sum;
    }
    return vspStsNoErr;
}

VspStatus vspsFIRSubband_EC_32sc_Sfs(const Vsp32sc* const* ppSrc, const Vsp32sc* const* ppCoef, Vsp32sc* pDst, Vsp32s len,
                                     Vsp32s numSubbands, Vsp32s scaleFactor) {
    if (anyNull(ppSrc, ppCoef, pDst)) return vspStsNullPtrErr;
    if (numSubbands < 1 || numSubbands > kMaxSubbands) return vspStsCountRangeErr;
    if (len < 1 || len > kMaxSubbandTaps) return vspStsRangeErr;
    if (scaleFactor < -kMaxSubbandScale || scaleFactor > kMaxSubbandScale) return vspStsRangeErr;
    for (Vsp32s k = 0; k < numSubbands; k++) {
        Vsp64s re = 0, im = 0;
        for (Vsp32s t = 0; t < len; t++) {
            const Vsp64s xr = ppSrc[t][k].re, xi = ppSrc[t][k].im, cr = ppCoef[t][k].re, ci = ppCoef[t][k].im;
            re = addSat_64s(re, xr * cr - xi * ci);
            im = addSat_64s(im, addSat_64s(xr * ci, xi * cr));
        }
        pDst[k] = {scaled(re, scaleFactor), scaled(im, scaleFactor)};
    }
    return vspStsNoErr;
}

VspStatus vspsFIRSubbandLow_EC_32sc_Sfs(const Vsp32sc* const* ppSrc, const Vsp32sc* const* ppCoef, Vsp32s len,
                                        Vsp32sc* pDst, Vsp32s firstBand, Vsp32s numSubbands, Vsp32s scaleFactor) {
    if (anyNull(ppSrc, ppCoef, pDst)) return vspStsNullPtrErr;
    if (len < 1 || len > kMaxSubbandTaps) return vspStsRangeErr;
    if (firstBand < 0 || firstBand > numSubbands) return vspStsRangeErr;
    if (numSubbands < 1 || numSubbands > kMaxSubbands) return vspStsCountRangeErr;
    if (scaleFactor < 0 || scaleFactor > kMaxSubbandScale) return vspStsRangeErr;
    for (Vsp32s k = firstBand; k < numSubbands; k++) {
        Vsp64u re = 0, im = 0;  // wrap
        for (Vsp32s t = 0; t < len; t++) {
            const Vsp64s xr = ppSrc[t][k].re, xi = ppSrc[t][k].im, cr = ppCoef[t][k].re, ci = ppCoef[t][k].im;
            re += Vsp64u(xr * cr) - Vsp64u(xi * ci);
            im += Vsp64u(xr * ci) + Vsp64u(xi * cr);
        }
        pDst[k] = {Vsp32s(Vsp64s(re) >> scaleFactor), Vsp32s(Vsp64s(im) >> scaleFactor)};
    }
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
