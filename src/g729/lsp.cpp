// Conversions between LP filters, line spectral pairs and frequencies (G.729 3.2.3 to 3.2.6).
#include "common/lsf.h"
#include "common/lsp_roots.h"
#include "common/lsp_to_lpc.h"
#include "core/checks.h"
#include "g729/exports.h"
#include "g729/lp_tables.h"

namespace vsp::VSP_LEVEL {

static constexpr int kOrder = 10, kHalf = kOrder / 2;

// G.729 Az_lsp: Q11 polynomials, or Q10 where one of their coefficients leaves 16 bits.
static void lpcToLsp(const Vsp16s* lpc, const Vsp16s* previous, const LspGrid& grid, Vsp16s* dst) {
    static constexpr ChebyshevForm q11{256, 512, 4096, 2048, 10}, q10{128, 256, 4096, 2048, 9};
    LspPolynomial<kHalf> polynomials[2];
    const bool saturated = lspPolynomials(lpc, 2048, 1, polynomials);
    if (saturated) lspPolynomials(lpc, 1024, 2, polynomials);
    LspRootSearch<kHalf> search{polynomials, saturated ? q10 : q11, grid};
    Vsp16s roots[kOrder];
    const Vsp16s* const lsp = search.run(roots, kOrder) == kOrder ? roots : previous;
    for (int i = 0; i < kOrder; i++) dst[i] = lsp[i];
}

VspStatus vspsLPCToLSP_G729_16s(const Vsp16s* pLPC, const Vsp16s* pPrevLSP, Vsp16s* pLSP) {
    if (anyNull(pLPC, pPrevLSP, pLSP)) return vspStsNullPtrErr;
    lpcToLsp(pLPC, pPrevLSP, {lspGrid, 61, 4}, pLSP);
    return vspStsNoErr;
}

VspStatus vspsLPCToLSP_G729A_16s(const Vsp16s* pLPC, const Vsp16s* pPrevLSP, Vsp16s* pLSP) {
    if (anyNull(pLPC, pPrevLSP, pLSP)) return vspStsNullPtrErr;
    lpcToLsp(pLPC, pPrevLSP, {gridAnnexA, 51, 2}, pLSP);
    return vspStsNoErr;
}

VspStatus vspsLSPToLPC_G729_16s(const Vsp16s* pLSP, Vsp16s* pLPC) {
    if (anyNull(pLSP, pLPC)) return vspStsNullPtrErr;
    lspToLpc(pLSP, pLPC);
    return vspStsNoErr;
}

VspStatus vspsLSPToLSF_Norm_G729_16s(const Vsp16s* pLSP, Vsp16s* pLSF) {
    if (anyNull(pLSP, pLSF)) return vspStsNullPtrErr;
    lspToLsf<kOrder>(pLSP, pLSF);
    return vspStsNoErr;
}

VspStatus vspsLSPToLSF_G729_16s(const Vsp16s* pLSP, Vsp16s* pLSF) {
    constexpr Vsp16s kPi = 25736;  // Q13
    if (anyNull(pLSP, pLSF)) return vspStsNullPtrErr;
    int step = kCosineSteps - 1;
    for (int i = kOrder - 1; i >= 0; i--) {
        step = cosineStep(pLSP[i], step);
        const Vsp32s product = 2 * lsfAcosSlope[step] * sat_16s(pLSP[i] - lsfCosine[step]);
        pLSF[i] = Vsp16s((sat_16s(step * 512 + Vsp16s(product >> 12)) * kPi) >> 15);
    }
    return vspStsNoErr;
}

VspStatus vspsLSFToLSP_G729_16s(const Vsp16s* pLSF, Vsp16s* pLSP) {
    constexpr Vsp16s kInversePi = 20861;  // Q17 of 1 / (2 pi)
    if (anyNull(pLSF, pLSP)) return vspStsNullPtrErr;
    for (int i = 0; i < kOrder; i++) {
        const int freq = (pLSF[i] * kInversePi) >> 15;
        const int step = freq < 0 ? 0 : freq >> 8 < kCosineSteps ? freq >> 8 : kCosineSteps - 1;
        pLSP[i] = sat_16s(lsfCosine[step] + Vsp16s((2 * slope_cos[step] * (freq & 0xFF)) >> 13));
    }
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
