// Every kernel as its definition reads, sample by sample, with the saturating operators where the definition saturates.
// Arguments are taken as valid.
#include "common/scalar_common.h"

#include "arithmetic/basic_ops.h"
#include "common/tables.h"

namespace {

using namespace vsp;

Vsp16s roundedProduct(int a, int b, int scaleFactor) {
    return sat_16s(wrapAdd_32s(a * b, roundingConstant(scaleFactor)) >> (scaleFactor & 31));
}

VspStatus mulC(const Vsp16s* src, Vsp16s val, Vsp16s* dst, Vsp32s len, Vsp32s scaleFactor) {
    for (int i = 0; i < len; i++) dst[i] = roundedProduct(src[i], val, scaleFactor);
    return vspStsNoErr;
}

VspStatus mulCInPlace(Vsp16s val, Vsp16s* srcDst, Vsp32s len, Vsp32s scaleFactor) {
    return mulC(srcDst, val, srcDst, len, scaleFactor);
}

VspStatus mul(const Vsp16s* src1, const Vsp16s* src2, Vsp16s* dst, Vsp32s len, Vsp32s scaleFactor) {
    for (int i = 0; i < len; i++) dst[i] = roundedProduct(src1[i], src2[i], scaleFactor);
    return vspStsNoErr;
}

VspStatus mulInPlace(const Vsp16s* src, Vsp16s* srcDst, Vsp32s len, Vsp32s scaleFactor) {
    return mul(src, srcDst, srcDst, len, scaleFactor);
}

VspStatus interpolate(const Vsp16s* src1, const Vsp16s* src2, Vsp16s* dst, Vsp32s len) {
    for (int i = 0; i < len; i++) dst[i] = sat_16s((src1[i] >> 1) + (src2[i] >> 1));
    return vspStsNoErr;
}

VspStatus interpolateC(const Vsp16s* src1, Vsp16s w1, const Vsp16s* src2, Vsp16s w2, Vsp16s* dst, Vsp32s len, Vsp32s sf) {
    for (int i = 0; i < len; i++) dst[i] = sat_16s(wrapAdd_32s((src1[i] * w1) >> sf, (src2[i] * w2) >> sf));
    return vspStsNoErr;
}

VspStatus interpolateRounded(const Vsp16s* src1, Vsp16s w1, const Vsp16s* src2, Vsp16s w2, Vsp16s* dst, Vsp32s len,
                             Vsp32s sf) {
    for (int i = 0; i < len; i++)
        dst[i] = sat_16s(wrapAdd_32s(wrapAdd_32s(src1[i] * w1, src2[i] * w2), roundingConstant(sf)) >> sf);
    return vspStsNoErr;
}

VspStatus interpolateScaled(const Vsp16s* src1, Vsp16s val1, Vsp32s sf1, const Vsp16s* src2, Vsp16s val2, Vsp32s sf2,
                            Vsp16s* dst, Vsp32s len) {  // scale factors up to 15
    const int m = sf1 < sf2 ? sf1 : sf2;
    for (int i = 0; i < len; i++) {
        const Vsp32s sum = Add_32s((src1[i] * val1) >> (sf1 - m), (src2[i] * val2) >> (sf2 - m));
        dst[i] = sat_16s(Add_32s(sum, 1 << (15 - m)) >> (16 - m));
    }
    return vspStsNoErr;
}

VspStatus mulPower(const Vsp16s* src, Vsp16s val, Vsp16s* dst, Vsp32s len, Vsp32s sf) {
    Vsp16s power = val;
    dst[0] = src[0];
    for (int i = 1; i < len; i++) {
        dst[i] = Vsp16s((src[i] * power + roundingConstant(sf)) >> sf);
        power = Vsp16s((power * val + roundingConstant(sf)) >> sf);
    }
    return vspStsNoErr;
}

VspStatus dotProd(const Vsp16s* src1, const Vsp16s* src2, Vsp32s len, Vsp32s* result) {  // G.729 L_mac
    Vsp32s sum = 0;
    for (int i = 0; i < len; i++) sum = Add_32s(sum, Mul2_32s(src1[i] * src2[i]));
    *result = sum;
    return vspStsNoErr;
}

VspStatus dotProdAutoScale(const Vsp16s* src1, const Vsp16s* src2, Vsp32s len, Vsp32s* result, Vsp32s* scale) {
    for (int shifts = 0;; shifts++) {
        const int shift1 = shifts / 2, shift2 = shifts - shift1;
        Vsp64s sum = -(src1[0] >> shift1) * (src2[0] >> shift2);
        for (int i = 0; i < len; i++) sum += 2 * (src1[i] >> shift1) * (src2[i] >> shift2);
        if (sum != Cnvrt_64s32s(sum)) continue;
        *result = Vsp32s(sum);
        *scale = shifts;
        return vspStsNoErr;
    }
}

VspStatus autoScale(const Vsp16s* src, Vsp16s* dst, Vsp32s len, Vsp32s* scale) {
    int largest = 0;
    for (int i = 0; i < len; i++) {
        const int a = src[i] == kMin16 ? kMax16 : src[i] < 0 ? -src[i] : src[i];
        if (a > largest) largest = a;
    }
    const int left = Exp_16s_Pos(Vsp16u(largest)) - *scale;
    for (int i = 0; i < len; i++) dst[i] = left >= 0 ? ShiftL_16s(src[i], left) : Vsp16s(src[i] >> -left);
    *scale = left;
    return vspStsNoErr;
}

VspStatus autoScaleInPlace(Vsp16s* srcDst, Vsp32s len, Vsp32s* scale) { return autoScale(srcDst, srcDst, len, scale); }

VspStatus invSqrt(Vsp32s* srcDst, Vsp32s len) {  // G.729 Inv_sqrt
    for (int i = 0; i < len; i++) {
        Vsp32s x = srcDst[i];
        const int n = Norm_32s_Pos_I(&x), e = 32 - n;
        if (e % 2 == 0) x >>= 1;
        const int k = (x >> 25) - 16;
        srcDst[i] = (tabsqr[k] - ((x >> 10) & 0x7FFF) * tabsqr_d[k]) >> (e >> 1);
    }
    return vspStsNoErr;
}

VspStatus lagWindow(Vsp32s* srcDst, Vsp32s len) {
    for (int i = 0; i < len; i++) {
        const Vsp32s hi1 = srcDst[i] >> 16, lo1 = (srcDst[i] >> 1) & 0x7FFF, hi2 = wlag[i] >> 16,
                     lo2 = (wlag[i] >> 1) & 0x7FFF;
        srcDst[i] = 2 * (hi1 * hi2 + ((hi1 * lo2) >> 15) + ((lo1 * hi2) >> 15));
    }
    return vspStsNoErr;
}

VspStatus randomNoise(Vsp16s* seed, Vsp16s* dst, Vsp32s len) {
    for (int i = 0; i < len; i++) {
        Vsp32s sum = 0;
        for (int k = 0; k < 12; k++) {
            *seed = Vsp16s(*seed * 31821 + 13849);
            sum += *seed;
        }
        dst[i] = Vsp16s(sum >> 7);
    }
    return vspStsNoErr;
}

}  // namespace

void bench::addScalarCommon(vsp::Api& api) {
    api.vspsMulC_NR_16s_Sfs = mulC;
    api.vspsMulC_NR_16s_ISfs = mulCInPlace;
    api.vspsMul_NR_16s_Sfs = mul;
    api.vspsMul_NR_16s_ISfs = mulInPlace;
    api.vspsInterpolate_G729_16s = interpolate;
    api.vspsInterpolateC_G729_16s_Sfs = interpolateC;
    api.vspsInterpolateC_NR_G729_16s_Sfs = interpolateRounded;
    api.vspsInterpolateC_NR_16s = interpolateScaled;
    api.vspsMulPowerC_NR_16s_Sfs = mulPower;
    api.vspsDotProd_G729A_16s32s = dotProd;
    api.vspsDotProdAutoScale_16s32s_Sfs = dotProdAutoScale;
    api.vspsAutoScale_16s = autoScale;
    api.vspsAutoScale_16s_I = autoScaleInPlace;
    api.vspsInvSqrt_32s_I = invSqrt;
    api.vspsLagWindow_G729_32s_I = lagWindow;
    api.vspsRandomNoiseExcitation_G729B_16s = randomNoise;
}
