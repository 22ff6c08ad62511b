// The sub-band filters and updates as their definitions read. Arguments are taken as valid.
#include "ec/scalar_subband.h"

#include <algorithm>
#include <cmath>

#include "arithmetic/basic_ops.h"

namespace {

using namespace vsp;

VspStatus fir32fc(const Vsp32fc* const* src, const Vsp32fc* const* coef, Vsp32fc* dst, Vsp32s len, Vsp32s numSubbands) {
    for (int k = 0; k < numSubbands; k++) {
        Vsp32fc sum = {0, 0};
        for (int t = 0; t < len; t++) {
            const double xr = src[t][k].re, xi = src[t][k].im, cr = coef[t][k].re, ci = coef[t][k].im;
            sum.re += Vsp32f(xr * cr - xi * ci);
            sum.im += Vsp32f(xr * ci + xi * cr);
        }
        dst[k] = sum;
    }
    return vspStsNoErr;
}

VspStatus firFast32fc(const Vsp32fc* const* src, const Vsp32fc* const* coef, Vsp32fc* dst, Vsp32s len, Vsp32s numSubbands) {
    for (int k = 0; k < numSubbands; k++) {
        Vsp32fc a = {0, 0}, b = {0, 0};
        for (int t = 0; t < len; t++) {
            const Vsp32fc x = src[t][k], c = coef[t][k];
            a = {a.re + x.re * c.re, a.im + x.im * c.re};
            b = {b.re + x.re * c.im, b.im + x.im * c.im};
        }
        dst[k] = {a.re - b.im, a.im + b.re};
    }
    return vspStsNoErr;
}

VspStatus updateFast32fc(const Vsp64f* stepSize, const Vsp32fc* const* src, const Vsp32fc* err, Vsp32fc* const* coef,
                         Vsp32s len, Vsp32s numSubbands) {
    for (int k = 0; k < numSubbands; k++) {
        const Vsp32f step = Vsp32f(stepSize[k]), re = err[k].re * step, im = err[k].im * step;
        for (int t = 0; t < len; t++) {
            const Vsp32fc x = src[t][k];
            Vsp32fc& c = coef[t][k];
            c = {c.re + (re * x.re + im * x.im), c.im + (im * x.re + (0 - re) * x.im)};
        }
    }
    return vspStsNoErr;
}

Vsp64s addSat(Vsp64s a, Vsp64s b) {
    Vsp64s sum;
    if (__builtin_add_overflow(a, b, &sum)) return b < 0 ? kMin64 : kMax64;
    return sum;
}

Vsp32s scaled(Vsp64s sum, int s) {
    if (s > 0) return Cnvrt_64s32s((sum + (sum < 0 ? (1LL << s) - 1 : 0)) >> s);
    return Cnvrt_64s32s(Vsp64s(Cnvrt_64s32s(sum)) * (1LL << -s));
}

VspStatus fir32sc(const Vsp32sc* const* src, const Vsp32sc* const* coef, Vsp32sc* dst, Vsp32s len, Vsp32s numSubbands,
                  Vsp32s scaleFactor) {
    for (int k = 0; k < numSubbands; k++) {
        Vsp64s re = 0, im = 0;
        for (int t = 0; t < len; t++) {
            const Vsp64s xr = src[t][k].re, xi = src[t][k].im, cr = coef[t][k].re, ci = coef[t][k].im;
            re = addSat(re, xr * cr - xi * ci);
            im = addSat(im, addSat(xr * ci, xi * cr));
        }
        dst[k] = {scaled(re, scaleFactor), scaled(im, scaleFactor)};
    }
    return vspStsNoErr;
}

Vsp32s rounded(Vsp32f a) { return Vsp32s(std::lrint(std::clamp(a, -0x1p31f, 0x1p31f - 128))); }

VspStatus firFast32sc(const Vsp32sc* const* src, const Vsp32sc* const* coef, Vsp32sc* dst, Vsp32s len, Vsp32s numSubbands,
                      Vsp32s scaleFactor) {
    const Vsp32f factor = std::ldexp(1.0f, -scaleFactor);
    for (int k = 0; k < numSubbands; k++) {
        Vsp32fc a = {0, 0}, b = {0, 0};
        for (int t = 0; t < len; t++) {
            const Vsp32f xr = Vsp32f(src[t][k].re), xi = Vsp32f(src[t][k].im);
            const Vsp32f cr = Vsp32f(coef[t][k].re), ci = Vsp32f(coef[t][k].im);
            a = {a.re + xr * cr, a.im + xi * cr};
            b = {b.re + xr * ci, b.im + xi * ci};
        }
        dst[k] = {rounded((a.re - b.im) * factor), rounded((a.im + b.re) * factor)};
    }
    return vspStsNoErr;
}

VspStatus firLow(const Vsp32sc* const* src, const Vsp32sc* const* coef, Vsp32s len, Vsp32sc* dst, Vsp32s firstBand,
                 Vsp32s numSubbands, Vsp32s scaleFactor) {
    for (int k = firstBand; k < numSubbands; k++) {
        Vsp64u re = 0, im = 0;
        for (int t = 0; t < len; t++) {
            const Vsp64s xr = src[t][k].re, xi = src[t][k].im, cr = coef[t][k].re, ci = coef[t][k].im;
            re += Vsp64u(xr * cr) - Vsp64u(xi * ci);
            im += Vsp64u(xr * ci) + Vsp64u(xi * cr);
        }
        dst[k] = {Vsp32s(Vsp64s(re) >> scaleFactor), Vsp32s(Vsp64s(im) >> scaleFactor)};
    }
    return vspStsNoErr;
}

VspStatus update32fc(const Vsp64f* stepSize, const Vsp32fc* const* src, const Vsp32fc* err, Vsp32fc* const* coef,
                     Vsp32s len, Vsp32s numSubbands) {
    for (int t = 0; t < len; t++)
        for (int k = 0; k < numSubbands; k++) {
            const double a = err[k].re * stepSize[k], b = err[k].im * stepSize[k];
            const double xr = src[t][k].re, xi = src[t][k].im;
            coef[t][k].re += Vsp32f(xr * a + xi * b);
            coef[t][k].im += Vsp32f(xr * b - xi * a);
        }
    return vspStsNoErr;
}

VspStatus updateProjection(const Vsp64f* const* stepSize, const Vsp32fc* const* src, const Vsp32fc* const* err,
                           Vsp32fc* const* coef, Vsp32u len, Vsp32u numSubbands, Vsp32u order) {
    const double g = 1.0f / Vsp32f(order);
    for (Vsp32u t = 0; t < len; t++)
        for (Vsp32u k = 0; k < numSubbands; k++) {
            double re = 0, im = 0;
            for (Vsp32u j = 0; j < order; j++) {
                const double xr = src[t + j][k].re, xi = src[t + j][k].im, er = err[j][k].re, ei = err[j][k].im;
                re += (er * xr + ei * xi) * stepSize[j][k];
                im += (ei * xr - er * xi) * stepSize[j][k];
            }
            coef[t][k].re += Vsp32f(re * g);
            coef[t][k].im += Vsp32f(im * g);
        }
    return vspStsNoErr;
}

Vsp32s mulQ31(Vsp64s e, Vsp32s m) { return Vsp32s((e * m + (1LL << 30)) >> 31); }

Vsp64s shiftedRight(Vsp64s a, Vsp64s r) {
    if (r > 63) return 0;
    return r < 2 ? a >> r : ((a >> (r - 1)) + 1) >> 1;
}

Vsp64s shiftedLeft(Vsp64s a, Vsp64s n) {
    if (n > 33) n = 33;
    const Vsp64s limit = 1LL << (33 - n);
    return (a > limit ? limit : a < -limit ? -limit : a) * (1LL << n);
}

Vsp32s addSat32(Vsp32s coef, Vsp64s update) { return Cnvrt_64s32s(coef + update); }

VspStatus update32sc(const Vsp32sc* stepSize, const Vsp32sc* const* src, const Vsp32sc* err, Vsp32sc* const* coef,
                     Vsp32s len, Vsp32s numSubbands, Vsp32s scaleFactor) {
    for (int k = 0; k < numSubbands; k++) {
        const Vsp64s re = mulQ31(err[k].re, stepSize[k].re), im = mulQ31(err[k].im, stepSize[k].re);
        const Vsp64s r = Vsp64s(stepSize[k].im) - scaleFactor - 31;
        for (int t = 0; t < len; t++) {
            const Vsp64s xr = src[t][k].re, xi = src[t][k].im == kMin32 ? -kMax32 : src[t][k].im;
            const Vsp64s deltaRe = xr * re + xi * im, deltaIm = xr * im - xi * re;
            Vsp32sc& c = coef[t][k];
            c.re = addSat32(c.re, r >= 0 ? shiftedRight(deltaRe, r) : shiftedLeft(deltaRe, -r));
            c.im = addSat32(c.im, r >= 0 ? shiftedRight(deltaIm, r) : shiftedLeft(deltaIm, -r));
        }
    }
    return vspStsNoErr;
}

VspStatus updateFast32sc(const Vsp32sc* stepSize, const Vsp32sc* const* src, const Vsp32sc* err, Vsp32sc* const* coef,
                         Vsp32s len, Vsp32s numSubbands, Vsp32s scaleFactor) {
    for (int k = 0; k < numSubbands; k++) {
        const Vsp64s s = std::clamp<Vsp64s>(Vsp64s(stepSize[k].im) - scaleFactor, -30, 126);
        const Vsp32f step = std::ldexp(Vsp32f(stepSize[k].re), -int(s));
        const Vsp32f re = Vsp32f(err[k].re) * step, im = Vsp32f(err[k].im) * step;
        for (int t = 0; t < len; t++) {
            const Vsp32f xr = Vsp32f(src[t][k].re), xi = Vsp32f(src[t][k].im);
            Vsp32sc& c = coef[t][k];
            c = {addSat32(c.re, rounded(re * xr + im * xi)), addSat32(c.im, rounded(im * xr + (0 - re) * xi))};
        }
    }
    return vspStsNoErr;
}

VspStatus updateLow(const Vsp32sc* const* src, const Vsp32sc* err, Vsp32sc* const* coef, Vsp32s len, Vsp32sc* scratch,
                    const Vsp32sc* stepSize, Vsp32s firstBand, Vsp32s numSubbands, Vsp32s scaleFactor) {
    for (int k = firstBand; k < numSubbands; k++) {
        scratch[k] = {mulQ31(err[k].re, stepSize[k].re), mulQ31(err[k].im, stepSize[k].re)};
        const Vsp64s re = scratch[k].re, im = scratch[k].im, r = Vsp64s(stepSize[k].im) - scaleFactor - 31;
        for (int t = 0; t < len; t++) {
            const Vsp64s xr = src[t][k].re, conj = wrapSub_32s(0, src[t][k].im);
            const Vsp64s deltaRe = xr * re - conj * im, deltaIm = Vsp64s(Vsp64u(xr * im) + Vsp64u(conj * re));
            Vsp32sc& c = coef[t][k];
            if (r >= 0) {
                c = {wrapAdd_32s(c.re, Vsp32s(shiftedRight(deltaRe, r))),
                     wrapAdd_32s(c.im, Vsp32s(shiftedRight(deltaIm, r)))};
            } else {
                c = {addSat32(c.re, shiftedLeft(deltaRe, -r)), addSat32(c.im, shiftedLeft(deltaIm, -r))};
            }
        }
    }
    return vspStsNoErr;
}

}  // namespace

void bench::addScalarSubband(vsp::Api& api) {
    api.vspsFIRSubband_EC_32fc = fir32fc;
    api.vspsFIRSubbandFast_EC_32fc = firFast32fc;
    api.vspsFIRSubband_EC_32sc_Sfs = fir32sc;
    api.vspsFIRSubbandFast_EC_32sc_Sfs = firFast32sc;
    api.vspsFIRSubbandLow_EC_32sc_Sfs = firLow;
    api.vspsFIRSubbandCoeffUpdate_EC_32fc_I = update32fc;
    api.vspsFIRSubbandFastCoeffUpdate_EC_32fc_I = updateFast32fc;
    api.vspsFIRSubbandCoeffUpdate_EC_32sc_I = update32sc;
    api.vspsFIRSubbandFastCoeffUpdate_EC_32sc_I = updateFast32sc;
    api.vspsFIRSubbandLowCoeffUpdate_EC_32sc_I = updateLow;
    api.vspsFIRSubbandAPCoeffUpdate_EC_32fc_I = updateProjection;
}
