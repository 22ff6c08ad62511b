// Full-band NLMS: each sample's pass updates the taps by the error of the sample before and filters with them.
#include "arithmetic/basic_ops.h"
#include "core/checks.h"
#include "ec/echo_terms.h"
#include "ec/exports.h"
#include "vector/simd.h"

namespace vsp::VSP_LEVEL {

namespace {

// In vectors the taps lie in reverse order, so that they run in the direction of the reference.

void reverse(Vsp16s* x, Vsp32s n) {
    constexpr int W = Sliding16::width;
    Vsp32s i = 0, j = n;
    for (; j - i >= 2 * W; i += W, j -= W) {
        const Sliding16 front = Sliding16::load(x + i), back = Sliding16::load(x + j - W);
        reversed(back).store(x + i);
        reversed(front).store(x + j - W);
    }
    for (; j - i >= 2; i++, j--) {
        const Vsp16s front = x[i];
        x[i] = x[j - 1];
        x[j - 1] = front;
    }
}

// sat16(tap + ((ref * w + 2^12) >> 13)) where 4 w has 16 bits and so has the update.
template <class V>
struct SmallUpdate {
    V w4;
    explicit SmallUpdate(Vsp32s w) : w4(V::splat(Vsp16s(4 * w))) {}
    V operator()(V tap, V ref) const { return addSat(tap, mulRoundWrap(ref, w4)); }
};
constexpr Vsp32s kMaxSmallUpdate = 8191;

// The same where w has 32 bits: w = 2^16 high + low, low signed.
template <class V>
struct AnyUpdate {
    V low, high;
    explicit AnyUpdate(Vsp32s w) : low(V::splat(Vsp16s(w))), high(V::splat(Vsp16s((w + 0x8000LL) >> 16))) {}
    V operator()(V tap, V ref) const {
        const V zero = V::splat(0), lo = mulLo(ref, low), hi = add(mulHi(ref, low), mulLo(ref, high));
        const auto sum = [](auto product, auto wideTap) {
            const auto rounding = decltype(product)::splat(4096);
            return add(shr(wideTap, 16), shr(add(product, rounding), 13));
        };
        return packSat(sum(zipLo(lo, hi), zipLo(zero, tap)), sum(zipHi(lo, hi), zipHi(zero, tap)));
    }
};

// Updates and filters with numTaps taps. The oldest sample is ref[0]: taps[j] is updated with ref[j] and multiplies ref[j +
// 1]. What whole vectors leave is taken in one more vector, in which the mask puts zeros for the samples of the taps
// before.
template <class Update>
VSP_INLINE Vsp32s updateAndFilter(const Vsp16s* ref, Update update, Vsp16s* taps, Vsp32s numTaps, Sliding16 mask) {
    using V = Sliding16;
    constexpr int W = V::width;
    const Vsp32s whole = numTaps & -W;
    Wide<V> y = Wide<V>::splat(kPairBias * ((numTaps + W - 1) / W));
    const auto vector = [&](Vsp32s j, auto masked) {
        const V tap = update(V::load(taps + j), masked(V::load(ref + j)));
        tap.store(taps + j);
        y = add(y, biasedTermPairs(masked(V::load(ref + j + 1)), tap));
    };
    if (whole < numTaps) vector(numTaps - W, [mask](V x) { return V{x.v & mask.v}; });
    for (Vsp32s j = 0; j < whole; j += W) vector(j, [](V x) { return x; });
    return sum(y);
}

// Whatever the number of taps, in the order of the definition.
VSP_INLINE Vsp32s updateAndFilterSaturating(const Vsp16s* ref, Vsp32s w, Vsp16s* taps, Vsp32s numTaps) {
    Vsp32s y = 0;
    for (Vsp32s k = 0; k < numTaps; k++) {
        taps[k] = sat_16s(taps[k] + (wrapAdd_32s(wrapMul_32s(ref[-k - 1], w), 4096) >> 13));
        y = Add_32s(y, echoTerm(ref[-k], taps[k]));
    }
    return y;
}

// Subtracts the estimate and returns the scaled error.
VSP_INLINE Vsp32s subtractEcho(Vsp16s near, Vsp32s y, Vsp32s step, Vsp16s* dst) {
    *dst = sat_16s(wrapSub_32s(near, y));
    return wrapAdd_32s(wrapMul_32s(*dst, step), 1024) >> 11;
}

}  // namespace

VspStatus vspsNLMS_EC_32f(const Vsp32f* pRef, const Vsp32f* pNear, const Vsp32f* pStepSize, Vsp32f* pDst, Vsp32s len,
                          Vsp32f* pTaps, Vsp32s numTaps, Vsp32f* pScaledErr) {
    if (anyNull(pRef, pNear, pStepSize, pDst, pTaps, pScaledErr)) return vspStsNullPtrErr;
    if (len < 1 || numTaps < 1) return vspStsBadArgErr;
    Vsp32f w = *pScaledErr;
    for (Vsp32s n = 0; n < len; n++) {
        Vsp32f y = 0;  // one addition after the other takes so long that vectors gain nothing
        for (Vsp32s k = 0; k < numTaps; k++) {
            pTaps[k] += w * pRef[n - k - 1];
            y += pRef[n - k] * pTaps[k];
        }
        pDst[n] = pNear[n] - y;
        w = pDst[n] * pStepSize[n];
    }
    *pScaledErr = w;
    return vspStsNoErr;
}

VspStatus vspsNLMS_EC_16s(const Vsp16s* pRef, const Vsp16s* pNear, const Vsp32s* pStepSize, Vsp16s* pDst, Vsp32s len,
                          Vsp16s* pTaps, Vsp32s numTaps, Vsp16s* pScaledErr) {
    if (anyNull(pRef, pNear, pStepSize, pDst, pTaps, pScaledErr)) return vspStsNullPtrErr;
    if (len < 1 || numTaps < 1) return vspStsBadArgErr;
    using V = Sliding16;
    Vsp32s w = *pScaledErr;
    if (numTaps < V::width || numTaps > kMaxUnsaturatedTaps) {
        for (Vsp32s n = 0; n < len; n++) {
            const Vsp32s y = updateAndFilterSaturating(pRef + n, w, pTaps, numTaps);
            w = subtractEcho(pNear[n], y, pStepSize[n], pDst + n);
        }
    } else {
        Vsp16s maskBytes[V::width];
        for (int i = 0; i < V::width; i++) maskBytes[i] = Vsp16s(i < V::width - numTaps % V::width ? 0 : -1);
        const V mask = V::load(maskBytes);
        reverse(pTaps, numTaps);
        for (Vsp32s n = 0; n < len; n++) {
            const Vsp16s* oldest = pRef + n - numTaps;
            const bool small = w >= -kMaxSmallUpdate && w <= kMaxSmallUpdate;
            const Vsp32s y = small ? updateAndFilter(oldest, SmallUpdate<V>(w), pTaps, numTaps, mask)
                                   : updateAndFilter(oldest, AnyUpdate<V>(w), pTaps, numTaps, mask);
            w = subtractEcho(pNear[n], y, pStepSize[n], pDst + n);
        }
        reverse(pTaps, numTaps);
    }
    *pScaledErr = sat_16s(w);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
