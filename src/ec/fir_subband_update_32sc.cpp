// Adaptation of the sub-band filters by NLMS, fixed point.
#include "core/checks.h"
#include "ec/bands_32sc.h"
#include "ec/exports.h"
#include "ec/subband_limits.h"

namespace vsp::VSP_LEVEL {

namespace {

template <class V>
struct Parts {
    V re, im;
};

// e * m / 2^31, rounded, in the lower halves; the only product beyond 32 bits, of two -2^31, wraps.
template <class V>
VSP_INLINE V mulQ31(V e, V m) {
    return shrU(add(mulLo(e, m), V::splat(1LL << 30)), 31);
}

// The shifts of a group of bands: right by r = x - scaleFactor - 31, or left by -r, where x is the exponent in the upper
// half of a step size.
template <class V>
struct Shifts {
    V isLeft, vanishes;  // all bits where the shift is to the left, where a right shift leaves nothing
    V left, limit;       // left shift, and the values beyond which it saturates
    V right, rounding;   // right shift but for the rounding, and one more bit, which rounds, or none

    [[gnu::always_inline]] Shifts(V stepSize, Vsp32s scaleFactor) {
        constexpr int kEnough = 33;  // the sum with 32 bits cannot tell more
        const V zero = V::splat(0), r = sub(signedHi(stepSize), V::splat(scaleFactor + 31LL));
        isLeft = negative(r);
        left = clamp(sub(zero, r), zero, V::splat(kEnough));
        limit = shl(V::splat(1), sub(V::splat(kEnough), left));
        vanishes = negative(sub(V::splat(63), r));
        const V count = clamp(r, zero, V::splat(63));
        rounding = shrU(sub(V::splat(1), count), 63);  // by one bit there is none
        right = sub(count, rounding);
    }

    // Rounded without a sum that could wrap.
    [[gnu::always_inline]] V shiftedRight(V update) const { return shr(add(shr(update, right), rounding), rounding); }

    // As far as a sum with 32 bits can tell it.
    [[gnu::always_inline]] V shiftedLeft(V update) const {
        return shl(clamp(update, sub(V::splat(0), limit), limit), left);
    }
};

template <class V>
VSP_INLINE V addSaturating(V coef, V re, V im) {
    return packSat(add(signedLo(coef), re), add(signedHi(coef), im));
}

// The full update: saturates.
struct Full {
    // me * conj(x), where -(-2^31) is 2^31-1
    template <class V>
    [[gnu::always_inline]] static Parts<V> product(V x, Parts<V> me) {
        const V xi = maxLo(imaginary(x), V::splat(Vsp32u(-kMax32)));
        return {add(mulLo(x, me.re), mulLo(xi, me.im)), sub(mulLo(x, me.im), mulLo(xi, me.re))};
    }

    template <bool someLeft, class V>
    [[gnu::always_inline]] static V added(V coef, Parts<V> update, const Shifts<V>& shifts) {
        const auto shifted = [&](V a) {
            return someLeft ? select(shifts.isLeft, shifts.shiftedLeft(a), shifts.shiftedRight(a)) : shifts.shiftedRight(a);
        };
        return addSaturating(coef, shifted(update.re), shifted(update.im));
    }
};

// The low update: wraps, but for left shifts.
struct Low {
    // me * conj(x), where -(-2^31) is -2^31
    template <class V>
    [[gnu::always_inline]] static Parts<V> product(V x, Parts<V> me) {
        const V conj = sub(V::splat(0), imaginary(x));
        return {sub(mulLo(x, me.re), mulLo(conj, me.im)), add(mulLo(x, me.im), mulLo(conj, me.re))};
    }

    template <bool someLeft, class V>
    [[gnu::always_inline]] static V added(V coef, Parts<V> update, const Shifts<V>& shifts) {
        const V sum = addHalves(coef, packLo(shifts.shiftedRight(update.re), shifts.shiftedRight(update.im)));
        if (!someLeft) return sum;
        return select(shifts.isLeft, addSaturating(coef, shifts.shiftedLeft(update.re), shifts.shiftedLeft(update.im)),
                      sum);
    }
};

struct Filters {
    const Vsp32sc* const* src;
    Vsp32sc* const* coef;
    Vsp32s len;
    bool large;
};

template <class Kind, bool someLeft, class V>
VSP_INLINE void updateTaps(Filters filters, Vsp32s k, Parts<V> me, const Shifts<V>& shifts) {
    for (Vsp32s t = 0; t < filters.len; t++) {
        Vsp32sc* const coef = filters.coef[t] + k;
        prefetchNext(filters.large, filters.src[t] + k, coef);
        const Parts<V> update = Kind::product(loadBands<V>(filters.src[t] + k), me);
        storeBands(Kind::template added<someLeft>(loadBands<V>(coef), update, shifts), coef);
    }
}

// Updates the bands at k by the product me of error and mantissa.
template <class Kind, class V>
VSP_INLINE void update(Filters filters, Vsp32s k, Parts<V> me, V stepSize, Vsp32s scaleFactor) {
    const Shifts<V> shifts(stepSize, scaleFactor);
    const Parts<V> visible = {without(me.re, shifts.vanishes), without(me.im, shifts.vanishes)};
    if (anyOf(shifts.isLeft, shifts.isLeft))
        updateTaps<Kind, true>(filters, k, visible, shifts);
    else
        updateTaps<Kind, false>(filters, k, visible, shifts);
}

}  // namespace

VspStatus vspsFIRSubbandCoeffUpdate_EC_32sc_I(const Vsp32sc* pStepSize, const Vsp32sc* const* ppSrc, const Vsp32sc* pErr,
                                              Vsp32sc* const* ppCoef, Vsp32s len, Vsp32s numSubbands, Vsp32s scaleFactor) {
    if (anyNull(pStepSize, ppSrc, pErr, ppCoef)) return vspStsNullPtrErr;
    if (numSubbands < 1 || numSubbands > kMaxSubbands) return vspStsCountRangeErr;
    if (len < 1 || len > kMaxSubbandTaps) return vspStsRangeErr;
    if (scaleFactor < 0 || scaleFactor > kMaxSubbandScale) return vspStsRangeErr;
    if (anyNegativeMantissa(pStepSize, numSubbands)) return vspStsSizeErr;
    const bool large = isLarge(len, numSubbands);
    forBandGroups<S64>(0, numSubbands, [=]<class V>(Vsp32s k) {
        const V err = loadBands<V>(pErr + k), stepSize = loadBands<V>(pStepSize + k);
        const Parts<V> me = {mulQ31(err, stepSize), mulQ31(imaginary(err), stepSize)};
        update<Full>({ppSrc, ppCoef, len, large}, k, me, stepSize, scaleFactor);
    });
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
    const bool large = isLarge(len, numSubbands);
    forBandGroups<S64>(firstBand, numSubbands, [=]<class V>(Vsp32s k) {
        const V err = loadBands<V>(pErr + k), stepSize = loadBands<V>(pStepSize + k);
        const Parts<V> me = {mulQ31(err, stepSize), mulQ31(imaginary(err), stepSize)};
        storeBands(packLo(me.re, me.im), pScratch + k);
        update<Low>({ppSrc, ppCoef, len, large}, k, me, stepSize, scaleFactor);
    });
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
