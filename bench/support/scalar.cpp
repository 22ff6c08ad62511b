// Every kernel as its definition reads, sample by sample, with the saturating operators where the definition saturates.
// Arguments are taken as valid.
#include "common/basic_ops.h"
#include "support/bench.h"

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

VspStatus dotProd(const Vsp16s* src1, const Vsp16s* src2, Vsp32s len, Vsp32s* result) {  // G.729 L_mac
    Vsp32s sum = 0;
    for (int i = 0; i < len; i++) sum = Add_32s(sum, Mul2_32s(src1[i] * src2[i]));
    *result = sum;
    return vspStsNoErr;
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

constexpr vsp::Api bench::kApi_scalar = [] {
    vsp::Api api{};
    api.vspsMulC_NR_16s_Sfs = mulC;
    api.vspsMulC_NR_16s_ISfs = mulCInPlace;
    api.vspsMul_NR_16s_Sfs = mul;
    api.vspsMul_NR_16s_ISfs = mulInPlace;
    api.vspsInterpolate_G729_16s = interpolate;
    api.vspsInterpolateC_G729_16s_Sfs = interpolateC;
    api.vspsInterpolateC_NR_G729_16s_Sfs = interpolateRounded;
    api.vspsDotProd_G729A_16s32s = dotProd;
    api.vspsAutoScale_16s = autoScale;
    api.vspsRandomNoiseExcitation_G729B_16s = randomNoise;
    return api;
}();
