// Block scaling to a requested headroom.
#include "arithmetic/basic_ops.h"
#include "common/exports.h"
#include "core/checks.h"
#include "vector/magnitude.h"
#include "vector/map.h"

namespace vsp::VSP_LEVEL {

namespace {

VspStatus autoScale(const Vsp16s* pSrc, Vsp16s* pDst, Vsp32s len, Vsp32s* pScale) {
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
        map(
            len, [left](auto a) { return shr(a, -left); }, pDst, pSrc);
    }
    return vspStsNoErr;
}

}  // namespace

VspStatus vspsAutoScale_16s(const Vsp16s* pSrc, Vsp16s* pDst, Vsp32s len, Vsp32s* pScale) {
    if (anyNull(pSrc, pDst, pScale)) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    if (*pScale < 0) return vspStsScaleRangeErr;
    return autoScale(pSrc, pDst, len, pScale);
}

VspStatus vspsAutoScale_16s_I(Vsp16s* pSrcDst, Vsp32s len, Vsp32s* pScale) {
    if (anyNull(pSrcDst, pScale)) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    if (*pScale < 0) return vspStsScaleRangeErr;
    return autoScale(pSrcDst, pSrcDst, len, pScale);
}

}  // namespace vsp::VSP_LEVEL
