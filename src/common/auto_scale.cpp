// Block scaling to a requested headroom.
#include "common/basic_ops.h"
#include "core/checks.h"
#include "core/level.h"
#include "vector/map.h"

namespace vsp::VSP_LEVEL {

namespace {

// The largest magnitude of len elements, one vector or more.
template <class V>
VSP_INLINE Vsp16u maxMagnitudeWhole(const Vsp16s* pSrc, Vsp32s len) {
    V largest = magnitude(V::load(pSrc + len - V::width));
    for (int i = 0; i < len - V::width; i += V::width) largest = maxU(largest, magnitude(V::load(pSrc + i)));
    return maxOfAll(largest);
}

template <class V = S16>
VSP_INLINE Vsp16u maxMagnitude(const Vsp16s* pSrc, Vsp32s len) {
    if (len >= V::width) return maxMagnitudeWhole<V>(pSrc, len);
    if constexpr (V::width > 8) {
        return maxMagnitude<Half<V>>(pSrc, len);
    } else {
        int largest = 0;
        for (int i = 0; i < len; i++) {
            const int a = pSrc[i] < 0 ? -pSrc[i] : pSrc[i];
            largest = a > largest ? a : largest;
        }
        return Vsp16u(largest);
    }
}

void autoScale(const Vsp16s* pSrc, Vsp16s* pDst, Vsp32s len, Vsp32s* pScale) {
    const Vsp16u largest = maxMagnitude(pSrc, len);
    const int headroom = largest == 0 ? 16 : Exp_16s_Pos(largest > kMax16 ? Vsp16u(kMax16) : largest);
    const int left = headroom - *pScale;
    *pScale = left;
    if (left == 0 || largest == 0) {
        if (pDst != pSrc)
            map(
                len, [](auto a) { return a; }, pDst, pSrc);
    } else if (left > 0) {
        map(
            len, [left](auto a) { return shl(a, left); }, pDst, pSrc);
    } else {
        const int right = -left < 15 ? -left : 15;
        map(
            len, [right](auto a) { return shr(a, right); }, pDst, pSrc);
    }
}

}  // namespace

VspStatus vspsAutoScale_16s(const Vsp16s* pSrc, Vsp16s* pDst, Vsp32s len, Vsp32s* pScale) {
    if (anyNull(pSrc, pDst, pScale)) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    if (*pScale < 0) return vspStsScaleRangeErr;
    autoScale(pSrc, pDst, len, pScale);
    return vspStsNoErr;
}

VspStatus vspsAutoScale_16s_I(Vsp16s* pSrcDst, Vsp32s len, Vsp32s* pScale) {
    if (anyNull(pSrcDst, pScale)) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    if (*pScale < 0) return vspStsScaleRangeErr;
    autoScale(pSrcDst, pSrcDst, len, pScale);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
