// Conversions between LP filters, line spectral pairs and frequencies, and their interpolation (3GPP TS 26.090 5.2.3, 5.2.4
// and 5.2.6).
#include "arithmetic/standard_ops.h"
#include "common/lsf.h"
#include "common/lsp_roots.h"
#include "common/lsp_to_lpc.h"
#include "core/checks.h"
#include "gsmamr/exports.h"
#include "gsmamr/modes.h"

namespace vsp::VSP_LEVEL {

static constexpr int kOrder = 10, kHalf = kOrder / 2;

VspStatus vspsLPCToLSP_GSMAMR_16s(const Vsp16s* pLPC, const Vsp16s* pPrevLSP, Vsp16s* pLSP) {
    if (anyNull(pLPC, pPrevLSP, pLSP)) return vspStsNullPtrErr;
    constexpr ChebyshevForm form{256, 512, 8192, 4096, 10};
    constexpr LspGrid grid{lspGrid, 61, 4};
    LspPolynomial<kHalf> polynomials[2];
    lspPolynomials(pLPC, 1024, 2, polynomials);
    LspRootSearch<kHalf> search{polynomials, form, grid};
    Vsp16s roots[kOrder];
    const Vsp16s* const lsp = search.run(roots, kOrder) == kOrder ? roots : pPrevLSP;
    for (int i = 0; i < kOrder; i++) pLSP[i] = lsp[i];
    return vspStsNoErr;
}

VspStatus vspsLSPToLPC_GSMAMR_16s(const Vsp16s* pLSP, Vsp16s* pLPC) {
    if (anyNull(pLSP, pLPC)) return vspStsNullPtrErr;
    lspToLpc(pLSP, pLPC);
    return vspStsNoErr;
}

VspStatus vspsLSPToLSF_GSMAMR_16s(const Vsp16s* pLSP, Vsp16s* pLSF) {
    if (anyNull(pLSP, pLSF)) return vspStsNullPtrErr;
    lspToLsf<kOrder>(pLSP, pLSF);
    return vspStsNoErr;
}

VspStatus vspsLSFToLSP_GSMAMR_16s(const Vsp16s* pLSF, Vsp16s* pLSP) {
    if (anyNull(pLSF, pLSP)) return vspStsNullPtrErr;
    for (int i = 0; i < kOrder; i++) {
        const int lsf = pLSF[i] < 0 ? 0 : pLSF[i] > 16383 ? 16383 : pLSF[i];
        const int step = lsf >> 8;
        pLSP[i] = Vsp16s(lsfCosine[step] + ((lsfCosine[step + 1] - lsfCosine[step]) * (lsf & 0xFF) >> 8));
    }
    return vspStsNoErr;
}

VspStatus vspsInterpolateLSP_GSMAMR_16s(const Vsp16s* pPrevLSP, const Vsp16s* pMidLSP, const Vsp16s* pNewLSP, Vsp32s mode,
                                        Vsp16s* pLSP) {
    if (anyNull(pPrevLSP, pNewLSP, pLSP)) return vspStsNullPtrErr;
    if (!isSpeechMode(mode)) return vspStsRangeErr;
    if (mode == kMode122 && anyNull(pMidLSP)) return vspStsNullPtrErr;
    const auto half = [](Vsp16s a, Vsp16s b) { return Vsp16s((a >> 1) + (b >> 1)); };
    const auto quarter = [](Vsp16s a, Vsp16s b) { return Vsp16s((a >> 2) + (b - (b >> 2))); };  // of a
    for (int i = 0; i < kOrder; i++) {
        const Vsp16s before = pPrevLSP[i], after = pNewLSP[i];
        const Vsp16s middle = mode == kMode122 ? pMidLSP[i] : half(before, after);
        pLSP[i] = mode == kMode122 ? half(middle, before) : quarter(after, before);
        pLSP[kOrder + i] = middle;
        pLSP[2 * kOrder + i] = mode == kMode122 ? half(middle, after) : quarter(before, after);
        pLSP[3 * kOrder + i] = after;
    }
    return vspStsNoErr;
}

VspStatus vspsLSFAverage_GSMAMR_16s(const Vsp16s* pLSF, Vsp16s* pMean) {
    constexpr Vsp16s kNew = 5243;  // 0.16, Q15
    if (anyNull(pLSF, pMean)) return vspStsNullPtrErr;
    for (int i = 0; i < kOrder; i++)
        pMean[i] = round_32s(mac_32s(msu_32s(pMean[i] * 65536, kNew, pMean[i]), kNew, pLSF[i]));
    return vspStsNoErr;
}

// 26.073 check_lsp
VspStatus vspsResonanceDetect_GSMAMR_16s(const Vsp16s* pLSP, Vsp16s* pCount, Vsp32s* pFlag) {
    constexpr Vsp16s kFrames = 12;  // in a row that make a resonance
    if (anyNull(pLSP, pCount, pFlag)) return vspStsNullPtrErr;
    const auto smallestDistance = [pLSP](int first, int last) {
        Vsp16s smallest = kMax16;
        for (int i = first; i <= last; i++) {
            const Vsp16s distance = sat_16s(pLSP[i] - pLSP[i + 1]);
            if (distance < smallest) smallest = distance;
        }
        return smallest;
    };
    const Vsp16s limit = pLSP[1] > 32000 ? 600 : pLSP[1] > 30500 ? 800 : 1100;
    const bool close = smallestDistance(3, 7) < 1500 || smallestDistance(1, 2) < limit;
    const Vsp16s count = close ? sat_16s(*pCount + 1) : Vsp16s(0);
    *pFlag = count >= kFrames;
    *pCount = count < kFrames ? count : kFrames;
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
