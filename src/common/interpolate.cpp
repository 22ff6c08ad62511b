// Weighted sums of two vectors.
#include "arithmetic/basic_ops.h"
#include "common/exports.h"
#include "core/checks.h"
#include "vector/map.h"

namespace vsp::VSP_LEVEL {

namespace {

// (a * w) >> shift in 32 bits, as the low and the high elements of the lanes.
template <class V>
struct Products {
    Wide<V> lo, hi;
};

template <class V>
VSP_INLINE Products<V> shiftedProducts(V a, S16 weight, int shift) {
    const V w = lowest<V>(weight);
    const V lo = mulLo(a, w), hi = mulHi(a, w);
    return {shr(zipLo(lo, hi), shift), shr(zipHi(lo, hi), shift)};
}

template <class V>
VSP_INLINE Products<V> operator+(Products<V> a, Products<V> b) {
    return {add(a.lo, b.lo), add(a.hi, b.hi)};
}

}  // namespace

VspStatus vspsInterpolate_G729_16s(const Vsp16s* pSrc1, const Vsp16s* pSrc2, Vsp16s* pDst, Vsp32s len) {
    if (anyNull(pSrc1, pSrc2, pDst)) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    map(
        len, [](auto a, auto b) { return add(shr(a, 1), shr(b, 1)); }, pDst, pSrc1, pSrc2);
    return vspStsNoErr;
}

VspStatus vspsInterpolateC_G729_16s_Sfs(const Vsp16s* pSrc1, Vsp16s weight1, const Vsp16s* pSrc2, Vsp16s weight2,
                                        Vsp16s* pDst, Vsp32s len, Vsp32s scaleFactor) {
    if (anyNull(pSrc1, pSrc2, pDst)) return vspStsNullPtrErr;
    if (scaleFactor < 0) return vspStsScaleRangeErr;
    if (len < 1) return vspStsSizeErr;
    const S16 w1 = S16::splat(weight1), w2 = S16::splat(weight2);
    const int shift = scaleFactor < 31 ? scaleFactor : 31;
    const auto weightedSum = [=](auto a, auto b) {
        const auto sum = shiftedProducts(a, w1, shift) + shiftedProducts(b, w2, shift);
        return packSat(sum.lo, sum.hi);
    };
    map(len, weightedSum, pDst, pSrc1, pSrc2);
    return vspStsNoErr;
}

VspStatus vspsInterpolateC_NR_G729_16s_Sfs(const Vsp16s* pSrc1, Vsp16s weight1, const Vsp16s* pSrc2, Vsp16s weight2,
                                           Vsp16s* pDst, Vsp32s len, Vsp32s scaleFactor) {
    if (anyNull(pSrc1, pSrc2, pDst)) return vspStsNullPtrErr;
    if (scaleFactor < 0) return vspStsScaleRangeErr;
    if (len < 1) return vspStsSizeErr;
    const S16 weights{zipLo(S16::splat(weight1), S16::splat(weight2)).v};
    const S32 rounding = S32::splat(roundingConstant(scaleFactor));
    const int shift = scaleFactor & 31;
    const auto weightedSum = [=](auto a, auto b) {
        using V = decltype(a);
        using W = Wide<V>;
        // Both inputs of an element side by side, so that dot2 adds their products.
        const W lo = dot2(V{zipLo(a, b).v}, lowest<V>(weights)), hi = dot2(V{zipHi(a, b).v}, lowest<V>(weights));
        const W r = lowest<W>(rounding);
        return packSat(shr(add(lo, r), shift), shr(add(hi, r), shift));
    };
    map(len, weightedSum, pDst, pSrc1, pSrc2);
    return vspStsNoErr;
}

VspStatus vspsInterpolateC_NR_16s(const Vsp16s* pSrc1, Vsp16s val1, Vsp32s scaleFactor1, const Vsp16s* pSrc2, Vsp16s val2,
                                  Vsp32s scaleFactor2, Vsp16s* pDst, Vsp32s len) {
    if (anyNull(pSrc1, pSrc2, pDst)) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    if (scaleFactor1 < 0 || scaleFactor2 < 0) return vspStsScaleRangeErr;
    const Vsp32s m = scaleFactor1 < scaleFactor2 ? scaleFactor1 : scaleFactor2;
    const auto extraShift = [m](Vsp32s scaleFactor) { return scaleFactor - m < 31 ? scaleFactor - m : 31; };
    const int shift1 = extraShift(scaleFactor1), shift2 = extraShift(scaleFactor2);
    if (m > 15) {  // nothing to round; the shift goes left
        for (int i = 0; i < len; i++) {
            const Vsp32s sum = Add_32s(Mul_16s_Sfs(pSrc1[i], val1, shift1), Mul_16s_Sfs(pSrc2[i], val2, shift2));
            pDst[i] = ShiftL_16s(sat_16s(sum), m - 16);
        }
        return vspStsNoErr;
    }
    // The sum of two products of -32768 and -32768 is 2^31. With 2^16 taken off, a multiple of the divisor, every sum fits;
    // it is put back after the shift.
    const S32 rounding = S32::splat((1 << (15 - m)) - (1 << 16)), offset = S32::splat(1 << m);
    const S16 w1 = S16::splat(val1), w2 = S16::splat(val2);
    const auto weightedSum = [=](auto a, auto b) {
        using W = Wide<decltype(a)>;
        const W r = lowest<W>(rounding), back = lowest<W>(offset);
        const auto sum = shiftedProducts(a, w1, shift1) + shiftedProducts(b, w2, shift2);
        return packSat(add(shr(add(sum.lo, r), 16 - m), back), add(shr(add(sum.hi, r), 16 - m), back));
    };
    map(len, weightedSum, pDst, pSrc1, pSrc2);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
