// Complex FIR filters, one per sub-band, fixed point.
#include "core/checks.h"
#include "ec/bands_32sc.h"
#include "ec/exports.h"
#include "ec/subband_limits.h"

namespace vsp::VSP_LEVEL {

namespace {

struct Filters {
    const Vsp32sc* const* src;
    const Vsp32sc* const* coef;
    Vsp32s len;
    bool large;
};

template <class V>
struct Sums {
    V re = V::splat(0), im = V::splat(0);
};

// Calls op with the products of real and real, imaginary and imaginary, real and imaginary, imaginary and real parts of
// every tap of the bands at k.
template <class V, class Op>
VSP_INLINE void forProducts(Filters filters, Vsp32s k, Op op) {
    for (Vsp32s t = 0; t < filters.len; t++) {
        prefetchNext(filters.large, filters.src[t] + k, filters.coef[t] + k);
        const V x = loadBands<V>(filters.src[t] + k), c = loadBands<V>(filters.coef[t] + k);
        const V xi = imaginary(x), ci = imaginary(c);
        op(mulLo(x, c), mulLo(xi, ci), mulLo(x, ci), mulLo(xi, c));
    }
}

template <class V>
VSP_INLINE Sums<V> wrappingSums(Filters filters, Vsp32s k) {
    Sums<V> sum;
    forProducts<V>(filters, k, [&](V reRe, V imIm, V reIm, V imRe) {
        sum.re = add(sum.re, sub(reRe, imIm));
        sum.im = add(sum.im, add(reIm, imRe));
    });
    return sum;
}

// Every sum saturates. Only the sum of two products of an imaginary term can exceed 64 bits by itself.
template <class V>
VSP_INLINE Sums<V> saturatingSums(Filters filters, Vsp32s k) {
    Sums<V> sum;
    forProducts<V>(filters, k, [&](V reRe, V imIm, V reIm, V imRe) {
        sum.re = addSat(sum.re, sub(reRe, imIm));
        sum.im = addSat(sum.im, addSat(reIm, imRe));
    });
    return sum;
}

// The saturating sums, computed without saturation as long as no term is so large that len of them could exceed 64 bits.
template <class V>
VSP_INLINE Sums<V> sums(Filters filters, Vsp32s k) {
    Sums<V> sum;
    V magnitudes = V::splat(0);
    forProducts<V>(filters, k, [&](V reRe, V imIm, V reIm, V imRe) {
        const V re = sub(reRe, imIm), im = add(reIm, imRe);
        magnitudes = either(magnitudes, either(magnitudeHi(re), magnitudeHi(im)));
        sum.re = add(sum.re, re);
        sum.im = add(sum.im, im);
    });
    const int log2Len = 32 - __builtin_clz(Vsp32u(filters.len) * 2 - 1) - 1;  // rounded up
    const V tooLarge = V::splat(-1LL << (63 - log2Len));
    return anyOf(magnitudes, tooLarge) ? saturatingSums<V>(filters, k) : sum;
}

// sum / 2^s, rounded towards zero; s > 0
template <class V>
VSP_INLINE V divided(V sum, int s) {
    return shr(add(sum, both(negative(sum), V::splat((1LL << s) - 1))), s);
}

// sum * 2^s as far as 32 bits can tell it; 0 <= s <= 31
template <class V>
VSP_INLINE V multiplied(V sum, int s) {
    constexpr Vsp64s kEnough = 1LL << 31;
    return shl(clamp(sum, V::splat(-kEnough), V::splat(kEnough)), s);
}

}  // namespace

VspStatus vspsFIRSubband_EC_32sc_Sfs(const Vsp32sc* const* ppSrc, const Vsp32sc* const* ppCoef, Vsp32sc* pDst, Vsp32s len,
                                     Vsp32s numSubbands, Vsp32s scaleFactor) {
    if (anyNull(ppSrc, ppCoef, pDst)) return vspStsNullPtrErr;
    if (numSubbands < 1 || numSubbands > kMaxSubbands) return vspStsCountRangeErr;
    if (len < 1 || len > kMaxSubbandTaps) return vspStsRangeErr;
    if (scaleFactor < -kMaxSubbandScale || scaleFactor > kMaxSubbandScale) return vspStsRangeErr;
    const bool large = isLarge(len, numSubbands);
    forBandGroups<S64>(0, numSubbands, [=]<class V>(Vsp32s k) {
        const Sums<V> sum = sums<V>({ppSrc, ppCoef, len, large}, k);
        storeBands(scaleFactor > 0 ? packSat(divided(sum.re, scaleFactor), divided(sum.im, scaleFactor))
                                   : packSat(multiplied(sum.re, -scaleFactor), multiplied(sum.im, -scaleFactor)),
                   pDst + k);
    });
    return vspStsNoErr;
}

VspStatus vspsFIRSubbandLow_EC_32sc_Sfs(const Vsp32sc* const* ppSrc, const Vsp32sc* const* ppCoef, Vsp32s len,
                                        Vsp32sc* pDst, Vsp32s firstBand, Vsp32s numSubbands, Vsp32s scaleFactor) {
    if (anyNull(ppSrc, ppCoef, pDst)) return vspStsNullPtrErr;
    if (len < 1 || len > kMaxSubbandTaps) return vspStsRangeErr;
    if (firstBand < 0 || firstBand > numSubbands) return vspStsRangeErr;
    if (numSubbands < 1 || numSubbands > kMaxSubbands) return vspStsCountRangeErr;
    if (scaleFactor < 0 || scaleFactor > kMaxSubbandScale) return vspStsRangeErr;
    const bool large = isLarge(len, numSubbands);
    forBandGroups<S64>(firstBand, numSubbands, [=]<class V>(Vsp32s k) {
        const Sums<V> sum = wrappingSums<V>({ppSrc, ppCoef, len, large}, k);
        storeBands(packLo(shrU(sum.re, scaleFactor), shrU(sum.im, scaleFactor)), pDst + k);
    });
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
