// The modulated lapped transform: windows that overlap by half, around the type IV cosine transform. Sums of two products
// with a window cannot overflow and saturate once, at their end.
#include "arithmetic/standard_ops.h"
#include "core/checks.h"
#include "g7221/exports.h"
#include "g7221/transform_tables.h"
#include "vector/map.h"

namespace vsp::VSP_LEVEL {

namespace {

using V = Sliding16;

// a * u + b * v, rounded and shifted right.
VSP_INLINE V weighted(V a, V u, V b, V v, int shift) {
    const auto round = [&](Wide<V> x) { return shr(add(x, Wide<V>::splat(1 << (shift - 1))), shift); };
    const auto pairs = [](Wide<V> x) { return V{x.v}; };
    return packSat(round(dot2(pairs(zipLo(a, b)), pairs(zipLo(u, v)))),
                   round(dot2(pairs(zipHi(a, b)), pairs(zipHi(u, v)))));
}

VSP_INLINE V negated(V a) { return sub(V::splat(0), a); }

// Elements i .. i + width - 1 of p, counted from the last one of len backwards.
VSP_INLINE V loadBackwards(const Vsp16s* p, int len, int i) { return reversed(V::load(p + len - i - V::width)); }

struct Magnitudes {
    Vsp32s largest, sum;
};

// The last frame and the new one, folded to as many elements as one has.
VSP_INLINE Magnitudes fold(const Vsp16s* last, const Vsp16s* frame, const Vsp16s* window, int len, Vsp16s* folded) {
    const int half = len / 2;
    V largest = V::splat(0);
    Wide<V> total = Wide<V>::splat(0);
    const auto take = [&](V x, Vsp16s* to) {
        x.store(to);
        const V magnitudes = max(x, subSat(V::splat(0), x));
        largest = max(largest, magnitudes);
        total = add(total, dot2(magnitudes, V::splat(1)));
    };
    for (int i = 0; i < half; i += V::width) {
        take(weighted(loadBackwards(last, half, i), loadBackwards(window, half, i), V::load(last + half + i),
                      V::load(window + half + i), 15),
             folded + i);
        take(weighted(V::load(frame + i), loadBackwards(window, len, i), loadBackwards(frame, len, i),
                      negated(V::load(window + i)), 15),
             folded + half + i);
    }
    alignas(32) Vsp16s each[V::width];
    largest.store(each);
    Vsp32s most = 0;
    for (const Vsp16s x : each) most = x > most ? x : most;
    return {most, sum(total)};
}

// The left shift that leaves the transform the most bits without overflow.
VSP_INLINE int magShiftFor(Magnitudes of) {
    int shift = 0;
    if (of.largest < 14000) {
        const Vsp32s scaled = ((of.largest < 438 ? of.largest + 1 : of.largest) * 2 * 9587) >> 20;
        shift = scaled == 0 ? 9 : norm_16s(Vsp16s(scaled)) == 0 ? 9 : norm_16s(Vsp16s(scaled)) - 6;
    }
    return of.largest < of.sum >> 7 ? shift - 1 : shift;
}

}  // namespace

VspStatus vspsMLTAnalysis_G722_16s(const Vsp16s* pSrc, Vsp32s len, Vsp16s* pMem, Vsp16s* pDst, Vsp16s* pMagShift) {
    if (anyNull(pSrc, pMem, pDst, pMagShift)) return vspStsNullPtrErr;
    if (len != kMltLen && len != kMltMaxLen) return vspStsSizeErr;
    const Vsp16s* window = len == kMltLen ? samples_to_rmlt_window : max_samples_to_rmlt_window;
    alignas(32) Vsp16s folded[kMltMaxLen];
    const int shift = magShiftFor(fold(pMem, pSrc, window, len, folded));
    // The magnitudes stay below 32768.
    if (shift > 0)
        map(
            len, [=](auto x) { return shl(x, shift); }, folded, folded);
    if (shift < 0)
        map(
            len, [=](auto x) { return shr(x, -shift); }, folded, folded);
    map(
        len, [](auto x) { return x; }, pMem, pSrc);
    vspsDCTFwd_G722_16s(folded, pDst, len);
    *pMagShift = Vsp16s(shift);
    return vspStsNoErr;
}

VspStatus vspsMLTSynthesis_G722_16s(const Vsp16s* pSrc, Vsp32s magShift, Vsp32s len, Vsp16s* pMem, Vsp16s* pDst) {
    if (anyNull(pSrc, pMem, pDst)) return vspStsNullPtrErr;
    if (len != kMltLen && len != kMltMaxLen) return vspStsSizeErr;
    const Vsp16s* window = len == kMltLen ? rmlt_to_samples_window : max_rmlt_to_samples_window;
    const int half = len / 2;
    alignas(32) Vsp16s y[kMltMaxLen];
    vspsDCTInv_G722_16s(pSrc, y, len);
    if (magShift > 0)
        map(
            len, [=](auto x) { return shr(x, magShift < 15 ? magShift : 15); }, y, y);
    for (int doublings = magShift > -16 ? -magShift : 16; doublings > 0; doublings--)
        map(
            len, [](auto x) { return addSat(x, x); }, y, y);
    for (int i = 0; i < half; i += V::width) {
        weighted(loadBackwards(y, half, i), V::load(window + i), V::load(pMem + i), loadBackwards(window, len, i), 13)
            .store(pDst + i);
        weighted(V::load(y + i), V::load(window + half + i), loadBackwards(pMem, half, i),
                 negated(loadBackwards(window, half, i)), 13)
            .store(pDst + half + i);
    }
    map(
        half, [](auto x) { return x; }, pMem, y + half);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
