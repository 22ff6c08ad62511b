// LP filter of order 30 from the past synthesis, and filters of any order (G.729 Annex E).
#include "common/levinson.h"
#include "common/residual_filter.h"
#include "common/synthesis.h"
#include "core/checks.h"
#include "g729/exports.h"
#include "g729/lp_tables.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kM_bwd = 30, kScaleFactor = 12;

// Both filters with zeros for the coefficients and outputs that a lower order does not have.
template <int kOrder>
bool synthesisePadded(const Vsp16s* lpc, const Vsp16s* src, Vsp16s* dst, Vsp32s len, int order, const Vsp16s* mem) {
    Vsp16s paddedLpc[kOrder + 1] = {}, paddedMem[kOrder] = {};
    for (int j = 0; j <= order; j++) paddedLpc[j] = lpc[j];
    for (int j = 0; j < order; j++) paddedMem[kOrder - order + j] = mem[j];
    return SynthesisFilter<kOrder>::run(paddedLpc, src, dst, len, kScaleFactor, paddedMem);
}

VspStatus synthesise(const Vsp16s* lpc, const Vsp16s* src, Vsp16s* dst, Vsp32s len, int order, const Vsp16s* mem) {
    if (len < 1) return vspStsSizeErr;
    if (order < 1 || order > kM_bwd) return vspStsRangeErr;
    const bool overflow = order <= 10 ? synthesisePadded<10>(lpc, src, dst, len, order, mem)
                                      : synthesisePadded<kM_bwd>(lpc, src, dst, len, order, mem);
    return overflow ? vspStsOverflow : vspStsNoErr;
}

}  // namespace

VspStatus vspsLagWindow_G729E_32s_I(Vsp32s* pSrcDst) {
    if (anyNull(pSrcDst)) return vspStsNullPtrErr;
    const auto increased = [](Vsp32s a) { return Add_32s(a, 1); };
    const Vsp32s r0 = increased(pSrcDst[0]);
    const int shift = norm_32s(r0);
    pSrcDst[0] = splitValue(shl_32s(r0, shift));
    for (int i = 1; i <= kM_bwd; i++) {
        const Vsp32s windowed = increased(mulSplit_32s(pSrcDst[i], lagWindowBackward[i - 1]));
        pSrcDst[i] = splitValue(shl_32s(windowed, shift));
    }
    return vspStsNoErr;
}

VspStatus vspsLevinsonDurbin_G729E_32s16s(const Vsp32s* pAutoCorr, Vsp16s* pLPC, Vsp16s* pRC, Vsp16s* pErr, Vsp16s* pMem) {
    if (anyNull(pAutoCorr, pLPC, pRC, pErr, pMem)) return vspStsNullPtrErr;
    Levinson<kM_bwd> recursion;
    recursion.run<true>(pAutoCorr);
    return recursion.finish(pLPC, pRC, pErr, pMem);
}

VspStatus vspsResidualFilter_G729E_16s(const Vsp16s* pSrc, const Vsp16s* pLPC, Vsp16s* pDst, Vsp32s len, Vsp32s order) {
    if (anyNull(pSrc, pLPC, pDst)) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    if (order < 1 || order > kM_bwd) return vspStsRangeErr;
    ownResidual(pSrc, pLPC, order, pDst, len, kScaleFactor);
    return vspStsNoErr;
}

VspStatus vspsSynthesisFilter_G729E_16s(const Vsp16s* pLPC, const Vsp16s* pSrc, Vsp16s* pDst, Vsp32s len, Vsp32s order,
                                        const Vsp16s* pMem) {
    if (anyNull(pLPC, pSrc, pDst, pMem)) return vspStsNullPtrErr;
    return synthesise(pLPC, pSrc, pDst, len, order, pMem);
}

VspStatus vspsSynthesisFilter_G729E_16s_I(const Vsp16s* pLPC, Vsp16s* pSrcDst, Vsp32s len, Vsp32s order,
                                          const Vsp16s* pMem) {
    if (anyNull(pLPC, pSrcDst, pMem)) return vspStsNullPtrErr;
    return synthesise(pLPC, pSrcDst, pSrcDst, len, order, pMem);
}

VspStatus vspsWeightingFactors_G729E_16s(Vsp16s dominant, Vsp16s* pGamma1, Vsp16s* pGamma2) {
    if (anyNull(pGamma1, pGamma2)) return vspStsNullPtrErr;
    if (dominant != 0 && dominant != 1) return vspStsRangeErr;
    pGamma1[0] = pGamma1[1] = dominant != 0 ? Vsp16s(32112) : Vsp16s(29491);
    pGamma2[0] = pGamma2[1] = 13107;
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
