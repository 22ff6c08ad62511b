// Adaptation of the sub-band filters: NLMS and affine projection.
#include "common/basic_ops.h"
#include "core/checks.h"
#include "core/level.h"
#include "ec/subband_limits.h"

namespace vsp::VSP_LEVEL {

namespace {

// e * m / 2^31, rounded; the only product beyond 32 bits, of two -2^31, wraps.
VSP_INLINE Vsp32s mulQ31(Vsp32s e, Vsp32s m) { return Vsp32s((Vsp64s(e) * m + (1LL << 30)) >> 31); }

VSP_INLINE Vsp64s clamp(Vsp64s a, Vsp64s bound) { return a > bound ? bound : a < -bound ? -bound : a; }

// a / 2^shift, rounded but for a shift by one; shift >= 0.
VSP_INLINE Vsp64s shiftedRight(Vsp64s a, Vsp64s shift) {
    if (shift > 63) return 0;
    return shift < 2 ? a >> shift : (a >> shift) + ((a >> (shift - 1)) & 1);
}

// a * 2^shift as far as a sum with 32 bits can tell it; shift >= 1.
VSP_INLINE Vsp64s shiftedLeft(Vsp64s a, Vsp64s shift) {
    constexpr int kEnough = 33;
    const int n = shift < kEnough ? int(shift) : kEnough;
    return clamp(a, 1LL << (kEnough - n)) * (1LL << n);
}

VSP_INLINE Vsp32s addSat(Vsp32s coef, Vsp64s update) { return Cnvrt_64s32s(coef + clamp(update, 1LL << 33)); }

// x * me with x given by its real part and the imaginary part of its conjugate; only two products of -2^31 each wrap.
struct Update {
    Vsp64s re, im;
};
VSP_INLINE Update product(Vsp32s re, Vsp32s conjIm, Vsp32sc me) {
    return {Vsp64s(Vsp64u(Vsp64s(re) * me.re) - Vsp64u(Vsp64s(conjIm) * me.im)),
            Vsp64s(Vsp64u(Vsp64s(re) * me.im) + Vsp64u(Vsp64s(conjIm) * me.re))};
}

}  // namespace

VspStatus vspsFIRSubbandCoeffUpdate_EC_32fc_I(const Vsp64f* pStepSize, const Vsp32fc* const* ppSrc, const Vsp32fc* pErr,
                                              Vsp32fc* const* ppCoef, Vsp32s len, Vsp32s numSubbands) {
    if (anyNull(pStepSize, ppSrc, pErr, ppCoef)) return vspStsNullPtrErr;
    if (numSubbands < 1 || numSubbands > kMaxSubbands) return vspStsCountRangeErr;
    if (len < 1 || len > kMaxSubbandTaps) return vspStsRangeErr;
    for (Vsp32s k = 0; k < numSubbands; k++)
        if (pStepSize[k] < 0) return vspStsSizeErr;
    for (Vsp32s t = 0; t < len; t++) {
        const Vsp32fc* const src = ppSrc[t];
        Vsp32fc* const coef = ppCoef[t];
        for (Vsp32s k = 0; k < numSubbands; k++) {
            const Vsp64f a = pErr[k].re * pStepSize[k], b = pErr[k].im * pStepSize[k];
            const Vsp64f xr = src[k].re, xi = src[k].im;
            coef[k].re += Vsp32f(xr * a + xi * b);
            coef[k].im += Vsp32f(xr * b - xi * a);
        }
    }
    return vspStsNoErr;
}

VspStatus vspsFIRSubbandCoeffUpdate_EC_32sc_I(const Vsp32sc* pStepSize, const Vsp32sc* const* ppSrc, const Vsp32sc* pErr,
                                              Vsp32sc* const* ppCoef, Vsp32s len, Vsp32s numSubbands, Vsp32s scaleFactor) {
    if (anyNull(pStepSize, ppSrc, pErr, ppCoef)) return vspStsNullPtrErr;
    if (numSubbands < 1 || numSubbands > kMaxSubbands) return vspStsCountRangeErr;
    if (len < 1 || len > kMaxSubbandTaps) return vspStsRangeErr;
    if (scaleFactor < 0 || scaleFactor > kMaxSubbandScale) return vspStsRangeErr;
    for (Vsp32s k = 0; k < numSubbands; k++)
        if (pStepSize[k].re < 0) return vspStsSizeErr;
    for (Vsp32s k = 0; k < numSubbands; k++) {
        const Vsp32sc me = {mulQ31(pErr[k].re, pStepSize[k].re), mulQ31(pErr[k].im, pStepSize[k].re)};
        const Vsp64s shift = Vsp64s(pStepSize[k].im) - scaleFactor - 31;
        for (Vsp32s t = 0; t < len; t++) {
            const Vsp32s im = ppSrc[t][k].im;
            const Update update = product(ppSrc[t][k].re, im == kMin32 ? kMax32 : -im, me);
            Vsp32sc& coef = ppCoef[t][k];
            coef.re = addSat(coef.re, shift >= 0 ? shiftedRight(update.re, shift) : shiftedLeft(update.re, -shift));
            coef.im = addSat(coef.im, shift >= 0 ? shiftedRight(update.im, shift) : shiftedLeft(update.im, -shift));
        }
    }
    return vspStsNoErr;
}

VspStatus vspsFIRSubbandLowCoeffUpdate_EC_32sc_I(const Vsp32sc* const* ppSrc, const Vsp32sc* pErr, Vsp32sc* const* ppCoef,
                                                 Vsp32s len, Vsp32sc* pScratch, const Vsp32sc* pStepSize, Vsp32s firstBand,
                                                 Vsp32s numSubbands, Vsp32s scaleFactor) {
    if (anyNull(ppSrc, pErr, ppCoef, pScratch, pStepSize)) return vspStsNullPtrErr;
    if (len < 1 || len > kMaxSubbandTaps) return vspStsRangeErr;
    if (firstBand < 0 || firstBand > numSubbands) return vspStsRangeErr;
    if (numSubbands < 1 || numSubbands > kMaxSubbands) return vspStsCountRangeErr;
    if (scaleFactor < 0 || scaleFactor > kMaxSubbandScale) return vspStsRangeErr;
    for (Vsp32s k = firstBand; k < numSubbands; k++) {
        const Vsp32sc me = {mulQ31(pErr[k].re, pStepSize[k].re), mulQ31(pErr[k].im, pStepSize[k].re)};
        pScratch[k] = me;
        const Vsp64s shift = Vsp64s(pStepSize[k].im) - scaleFactor - 31;
        for (Vsp32s t = 0; t < len; t++) {
            const Update update = product(ppSrc[t][k].re, wrapSub_32s(0, ppSrc[t][k].im), me);
            Vsp32sc& coef = ppCoef[t][k];
            if (shift >= 0) {
                coef.re = wrapAdd_32s(coef.re, Vsp32s(shiftedRight(update.re, shift)));
                coef.im = wrapAdd_32s(coef.im, Vsp32s(shiftedRight(update.im, shift)));
            } else {
                coef.re = addSat(coef.re, shiftedLeft(update.re, -shift));
                coef.im = addSat(coef.im, shiftedLeft(update.im, -shift));
            }
        }
    }
    return vspStsNoErr;
}

VspStatus vspsFIRSubbandAPCoeffUpdate_EC_32fc_I(const Vsp64f* const* ppStepSize, const Vsp32fc* const* ppSrc,
                                                const Vsp32fc* const* ppErr, Vsp32fc* const* ppCoef, Vsp32u len,
                                                Vsp32u numSubbands, Vsp32u order) {
    if (anyNull(ppStepSize, ppSrc, ppErr, ppCoef)) return vspStsNullPtrErr;
    if (numSubbands < 1 || numSubbands > Vsp32u(kMaxSubbands)) return vspStsCountRangeErr;
    if (len < 1 || len > Vsp32u(kMaxSubbandTaps) || order < 1) return vspStsRangeErr;
    const Vsp64f g = 1.0f / Vsp32f(order);
    for (Vsp32u t = 0; t < len; t++)
        for (Vsp32u k = 0; k < numSubbands; k++) {
            Vsp64f re = 0, im = 0;
            for (unsigned long j = 0; j < order; j++) {
                const Vsp64f xr = ppSrc[t + j][k].re, xi = ppSrc[t + j][k].im, mu = ppStepSize[j][k];
                const Vsp64f er = ppErr[j][k].re, ei = ppErr[j][k].im;
                re += (er * xr + ei * xi) * mu;
                im += (ei * xr - er * xi) * mu;
            }
            ppCoef[t][k].re += Vsp32f(re * g);
            ppCoef[t][k].im += Vsp32f(im * g);
        }
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
