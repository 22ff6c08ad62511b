// Short-term analysis (G.729 3.2.1 and 3.2.2) and the residual.
#include "common/levinson.h"
#include "common/residual_filter.h"
#include "common/tables.h"
#include "core/checks.h"
#include "g729/exports.h"
#include "vector/map.h"

namespace vsp::VSP_LEVEL {

static constexpr int kOrder = 10, kL_window = 240;

VspStatus vspsAnalysisWindow_G729_16s(const Vsp16s* pSrc, Vsp16s* pDst) {
    if (anyNull(pSrc, pDst)) return vspStsNullPtrErr;
    map(
        kL_window, [](auto x, auto w) { return mulRound(x, w); }, pDst, pSrc, hammingCosine);
    return vspStsNoErr;
}

VspStatus vspsLevinsonDurbin_G729_32s16s(const Vsp32s* pAutoCorr, Vsp16s* pLPC, Vsp16s* pRC, Vsp16s* pErr, Vsp16s* pMem) {
    if (anyNull(pAutoCorr, pLPC, pRC, pErr, pMem)) return vspStsNullPtrErr;
    Levinson<kOrder> recursion;
    recursion.run(pAutoCorr);
    return recursion.finish(pLPC, pRC, pErr, pMem);
}

VspStatus vspsResidualFilter_G729_16s(const Vsp16s* pSrc, const Vsp16s* pLPC, Vsp16s* pDst, Vsp32s len) {
    if (anyNull(pSrc, pLPC, pDst)) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    ownResidual(pSrc, pLPC, kOrder, pDst, len, 12);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
