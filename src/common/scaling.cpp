// Element-wise rounded products and scaling.
#include "arithmetic/basic_ops.h"
#include "common/exports.h"
#include "core/checks.h"
#include "vector/map.h"

namespace vsp::VSP_LEVEL {

namespace {

// sat16((a * b + r) >> shift), one vector
template <class V>
VSP_INLINE V mulRoundShift(V a, V b, S32 rounding, int shift) {
    const auto r = lowest<Wide<V>>(rounding);
    const V lo = mulLo(a, b), hi = mulHi(a, b);
    return packSat(shr(add(zipLo(lo, hi), r), shift), shr(add(zipHi(lo, hi), r), shift));
}

VSP_INLINE VspStatus mulC(const Vsp16s* pSrc, Vsp16s val, Vsp16s* pDst, Vsp32s len, Vsp32s scaleFactor) {
    const S16 factor = S16::splat(val);
    if (scaleFactor == 15 && val != kMin16) {  // no product saturates
        map(
            len, [=](auto a) { return mulRoundWrap(a, lowest<decltype(a)>(factor)); }, pDst, pSrc);
    } else {
        const S32 rounding = S32::splat(roundingConstant(scaleFactor));
        const int shift = scaleFactor & 31;
        map(
            len, [=](auto a) { return mulRoundShift(a, lowest<decltype(a)>(factor), rounding, shift); }, pDst, pSrc);
    }
    return vspStsNoErr;
}

VSP_INLINE VspStatus mul(const Vsp16s* pSrc1, const Vsp16s* pSrc2, Vsp16s* pDst, Vsp32s len, Vsp32s scaleFactor) {
    if (scaleFactor == 15) {
        map(
            len, [](auto a, auto b) { return mulRound(a, b); }, pDst, pSrc1, pSrc2);
    } else {
        const S32 rounding = S32::splat(roundingConstant(scaleFactor));
        const int shift = scaleFactor & 31;
        map(
            len, [=](auto a, auto b) { return mulRoundShift(a, b, rounding, shift); }, pDst, pSrc1, pSrc2);
    }
    return vspStsNoErr;
}

}  // namespace

VspStatus vspsMulC_NR_16s_Sfs(const Vsp16s* pSrc, Vsp16s val, Vsp16s* pDst, Vsp32s len, Vsp32s scaleFactor) {
    if (anyNull(pSrc, pDst)) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    if (scaleFactor < 0) return vspStsScaleRangeErr;
    return mulC(pSrc, val, pDst, len, scaleFactor);
}

VspStatus vspsMulC_NR_16s_ISfs(Vsp16s val, Vsp16s* pSrcDst, Vsp32s len, Vsp32s scaleFactor) {
    if (anyNull(pSrcDst)) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    if (scaleFactor < 0) return vspStsScaleRangeErr;
    return mulC(pSrcDst, val, pSrcDst, len, scaleFactor);
}

VspStatus vspsMul_NR_16s_Sfs(const Vsp16s* pSrc1, const Vsp16s* pSrc2, Vsp16s* pDst, Vsp32s len, Vsp32s scaleFactor) {
    if (anyNull(pSrc1, pSrc2, pDst)) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    if (scaleFactor < 0) return vspStsScaleRangeErr;
    return mul(pSrc1, pSrc2, pDst, len, scaleFactor);
}

VspStatus vspsMul_NR_16s_ISfs(const Vsp16s* pSrc, Vsp16s* pSrcDst, Vsp32s len, Vsp32s scaleFactor) {
    if (anyNull(pSrc, pSrcDst)) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    if (scaleFactor < 0) return vspStsScaleRangeErr;
    return mul(pSrc, pSrcDst, pSrcDst, len, scaleFactor);
}

// The power runs through a rounding in every step, so there is nothing to vectorise.
VspStatus vspsMulPowerC_NR_16s_Sfs(const Vsp16s* pSrc, Vsp16s val, Vsp16s* pDst, Vsp32s len, Vsp32s scaleFactor) {
    if (anyNull(pSrc, pDst)) return vspStsNullPtrErr;
    if (scaleFactor < 0) return vspStsScaleRangeErr;
    if (len < 1) return vspStsSizeErr;
    const Vsp32s r = roundingConstant(scaleFactor);
    const int shift = scaleFactor & 31;
    pDst[0] = pSrc[0];
    Vsp16s power = val;
    for (int i = 1; i < len; i++) {
        pDst[i] = Vsp16s(wrapAdd_32s(pSrc[i] * power, r) >> shift);
        power = Vsp16s(wrapAdd_32s(power * val, r) >> shift);
    }
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
