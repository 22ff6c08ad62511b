// The formant weighting filter (G.723.1 2.8, `Wght_Lpc` and `Error_Wght`).
#include "core/checks.h"
#include "g723/exports.h"
#include "g723/filters.h"
#include "g723/lp_tables.h"
#include "vector/for_blocks.h"

namespace vsp::VSP_LEVEL {

VspStatus vspsWeightLPC_G723_16s(const Vsp16s* pLPC, Vsp16s* pDst) {
    if (anyNull(pLPC, pDst)) return vspStsNullPtrErr;
    for (int i = 0; i < kLpOrder; i++) {
        pDst[i] = mulRound_16s(pLPC[i], g723::weightZeros[i]);
        pDst[kLpOrder + i] = mulRound_16s(pLPC[i], g723::weightPoles[i]);
    }
    return vspStsNoErr;
}

VspStatus vspsFIR16s_G723_16s32s(const Vsp16s* pCoeff, const Vsp16s* pSrc, Vsp32s* pDst, Vsp32s len, Vsp16s* pMem) {
    if (anyNull(pCoeff, pSrc, pDst, pMem)) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    forBlocks(len, FilterLine::kRoom, [=](Vsp32s first, Vsp32s count) {
        FilterLine x(pMem);
        for (int n = 0; n < count; n++) {
            x.block()[n] = pSrc[first + n];
            pDst[first + n] = pSrc[first + n] * 16384;
        }
        subtractZeros(pCoeff, x, pDst + first, count);
        x.keep(pMem, count);
    });
    return vspStsNoErr;
}

VspStatus vspsIIR16s_G723_32s16s_Sfs(const Vsp16s* pCoeff, const Vsp32s* pSrc, Vsp16s* pDst, Vsp32s len, Vsp32s scaleFactor,
                                     Vsp16s* pMem) {
    if (anyNull(pCoeff, pSrc, pDst, pMem)) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    if (scaleFactor < 0 || scaleFactor > 15) return vspStsScaleRangeErr;
    forBlocks(len, FilterLine::kRoom, [=](Vsp32s first, Vsp32s count) {
        FilterLine y(pMem);
        Vsp32s sum[FilterLine::kRoom];
        for (int n = 0; n < count; n++) sum[n] = pSrc[first + n];
        addPoles(pCoeff, sum, y, count, scaleFactor);
        for (int n = 0; n < count; n++) pDst[first + n] = y.block()[n];
        y.keep(pMem, count);
    });
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
