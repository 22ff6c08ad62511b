/**
 * @file
 * G.729: conversions between LP filters, line spectral pairs (LSP: cosines, Q15) and line spectral frequencies (LSF).
 */
#ifndef VSPSC_G729_LSP_H
#define VSPSC_G729_LSP_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * LP filter to line spectral pairs (G.729 3.2.3, Az_lsp).
 *
 * The sum and the difference polynomial are searched in turn for changes of sign on a grid of 60 intervals, which are
 * bisected four times and interpolated. Where fewer than ten roots are found, the result is pPrevLSP.
 *
 * @param[in]  pLPC      11 coefficients, Q12
 * @param[in]  pPrevLSP  previous LSPs, 10
 * @param[out] pLSP      10 LSPs; may be pPrevLSP
 * @retval vspStsNullPtrErr  pLPC, pPrevLSP or pLSP is null
 */
VspStatus vspsLPCToLSP_G729_16s(const Vsp16s* pLPC, const Vsp16s* pPrevLSP, Vsp16s* pLSP);

/**
 * LP filter to line spectral pairs, fast search (G.729 A.3.2.3): as vspsLPCToLSP_G729_16s with 50 intervals, bisected
 * twice.
 *
 * @param[in]  pLPC      11 coefficients, Q12
 * @param[in]  pPrevLSP  previous LSPs, 10
 * @param[out] pLSP      10 LSPs; may be pPrevLSP
 * @retval vspStsNullPtrErr  pLPC, pPrevLSP or pLSP is null
 */
VspStatus vspsLPCToLSP_G729A_16s(const Vsp16s* pLPC, const Vsp16s* pPrevLSP, Vsp16s* pLSP);

/**
 * LP filter to line spectral pairs in floating point (G.729 Annex C), as vspsLPCToLSP_G729_16s.
 *
 * @param[in]  pLPC      11 coefficients, the first one 1
 * @param[in]  pPrevLSP  previous LSPs, 10
 * @param[out] pLSP      10 LSPs; may be pPrevLSP
 * @retval vspStsNullPtrErr  pLPC, pPrevLSP or pLSP is null
 */
VspStatus vspsLPCToLSP_G729_32f(const Vsp32f* pLPC, const Vsp32f* pPrevLSP, Vsp32f* pLSP);

/**
 * LP filter to line spectral pairs in floating point, fast search (G.729 Annexes A and C), as vspsLPCToLSP_G729A_16s.
 *
 * @param[in]  pLPC      11 coefficients, the first one 1
 * @param[in]  pPrevLSP  previous LSPs, 10
 * @param[out] pLSP      10 LSPs; may be pPrevLSP
 * @retval vspStsNullPtrErr  pLPC, pPrevLSP or pLSP is null
 */
VspStatus vspsLPCToLSP_G729A_32f(const Vsp32f* pLPC, const Vsp32f* pPrevLSP, Vsp32f* pLSP);

/**
 * Line spectral pairs to LP filter (G.729 3.2.6, Lsp_Az).
 *
 * @param[in]  pLSP  10 LSPs
 * @param[out] pLPC  11 coefficients, Q12
 * @retval vspStsNullPtrErr  pLSP or pLPC is null
 */
VspStatus vspsLSPToLPC_G729_16s(const Vsp16s* pLSP, Vsp16s* pLPC);

/**
 * Line spectral pairs to LP filter in floating point (G.729 Annex C).
 *
 * @param[in]  pLSP  10 LSPs
 * @param[out] pLPC  11 coefficients, the first one 1
 * @retval vspStsNullPtrErr  pLSP or pLPC is null
 */
VspStatus vspsLSPToLPC_G729_32f(const Vsp32f* pLSP, Vsp32f* pLPC);

/**
 * Line spectral pairs to normalised frequencies by a table of 64 steps (G.729 Lsp_lsf). The steps are searched from the
 * last pair to the first and never rise.
 *
 * @param[in]  pLSP  10 LSPs
 * @param[out] pLSF  10 LSFs, 0 .. 0.5 of the sampling rate, Q15; may be pLSP
 * @retval vspStsNullPtrErr  pLSP or pLSF is null
 */
VspStatus vspsLSPToLSF_Norm_G729_16s(const Vsp16s* pLSP, Vsp16s* pLSF);

/**
 * Line spectral pairs to frequencies in radians by a table of 64 steps (G.729 Lsp_lsf2), searched as in
 * vspsLSPToLSF_Norm_G729_16s.
 *
 * @param[in]  pLSP  10 LSPs
 * @param[out] pLSF  10 LSFs, 0 .. pi, Q13; may be pLSP
 * @retval vspStsNullPtrErr  pLSP or pLSF is null
 */
VspStatus vspsLSPToLSF_G729_16s(const Vsp16s* pLSP, Vsp16s* pLSF);

/**
 * Line spectral frequencies in radians to pairs by a table of 64 steps (G.729 Lsf_lsp2). Frequencies below 0 are in the
 * first step, those above pi in the last.
 *
 * @param[in]  pLSF  10 LSFs, Q13
 * @param[out] pLSP  10 LSPs; may be pLSF
 * @retval vspStsNullPtrErr  pLSF or pLSP is null
 */
VspStatus vspsLSFToLSP_G729_16s(const Vsp16s* pLSF, Vsp16s* pLSP);

#ifdef __cplusplus
}
#endif

#endif
