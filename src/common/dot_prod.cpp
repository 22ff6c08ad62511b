// Exact dot products.
#include "arithmetic/basic_ops.h"
#include "common/exports.h"
#include "core/checks.h"
#include "vector/dot.h"

namespace vsp::VSP_LEVEL {

VspStatus vspsDotProd_G729A_16s32s(const Vsp16s* pSrc1, const Vsp16s* pSrc2, Vsp32s len, Vsp32s* pResult) {
    if (anyNull(pSrc1, pSrc2, pResult)) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    const auto same = [](auto a) { return a; };
    const Vsp64s doubled = 2 * dot(pSrc1, pSrc2, len, same, same);
    *pResult = Cnvrt_64s32s(doubled);
    return doubled == *pResult ? vspStsNoErr : vspStsOverflow;
}

VspStatus vspsDotProdAutoScale_16s32s_Sfs(const Vsp16s* pSrc1, const Vsp16s* pSrc2, Vsp32s len, Vsp32s* pResult,
                                          Vsp32s* pScale) {
    if (anyNull(pSrc1, pSrc2, pResult, pScale)) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    for (int shifts = 0;; shifts++) {
        const int shift1 = shifts / 2, shift2 = (shifts + 1) / 2;  // the second vector's first
        const auto shifted1 = [shift1](auto a) { return shr(a, shift1); };
        const auto shifted2 = [shift2](auto b) { return shr(b, shift2); };
        const Vsp64s sum = shifts == 0 ? dot(pSrc1, pSrc2, len) : dot(pSrc1, pSrc2, len, shifted1, shifted2);
        const Vsp64s result = 2 * sum - (pSrc1[0] >> shift1) * (pSrc2[0] >> shift2);  // the first product is not doubled
        if (result == Cnvrt_64s32s(result)) {
            *pResult = Vsp32s(result);
            *pScale = shifts;
            return vspStsNoErr;
        }
    }
}

}  // namespace vsp::VSP_LEVEL
