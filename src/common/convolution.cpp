// Partial convolution (G.729 Convolve).
#include "arithmetic/basic_ops.h"
#include "common/convolve.h"
#include "common/exports.h"
#include "common/lengths.h"
#include "core/checks.h"
#include "vector/dot.h"

namespace vsp::VSP_LEVEL {

namespace {

// Every partial sum saturates. From the end, so that pDst may be a source.
void convolveSaturating(const Vsp16s* pSrc1, const Vsp16s* pSrc2, Vsp16s* pDst, int len, int shift) {
    for (int n = len - 1; n >= 0; n--) {
        Vsp32s sum = 0;
        for (int i = 0; i <= n; i++) sum = mac_32s(sum, pSrc1[i], pSrc2[n - i]);
        pDst[n] = sat_16s((sum >> 1) >> shift);
    }
}

}  // namespace

VspStatus vspsConvPartial_16s_Sfs(const Vsp16s* pSrc1, const Vsp16s* pSrc2, Vsp16s* pDst, Vsp32s len, Vsp32s scaleFactor) {
    if (anyNull(pSrc1, pSrc2, pDst)) return vspStsNullPtrErr;
    if (scaleFactor < 0) return vspStsBadArgErr;
    if (len < 1) return vspStsSizeErr;
    const int shift = scaleFactor < 31 ? scaleFactor : 31;
    if (len > kMaxFast || !doubledSumsFit(energy(pSrc1, len), energy(pSrc2, len))) {
        convolveSaturating(pSrc1, pSrc2, pDst, len, shift);
        return vspStsNoErr;
    }
    if (len == kL_subfr)
        convolveExact(pSrc1, pSrc2, pDst, kL_subfr, shift);
    else
        convolveExact(pSrc1, pSrc2, pDst, len, shift);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
