/**
 * @file
 * G.729: linear prediction from the speech. Autocorrelations come from vspsAutoCorr_NormE_16s32s and
 * vspsLagWindow_G729_32s_I in common.h.
 */
#ifndef VSPSC_G729_LP_ANALYSIS_H
#define VSPSC_G729_LP_ANALYSIS_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Analysis window (G.729 3.2.1): dst[n] = (src[n] * w[n] + 2^14) >> 15, saturated. 200 samples rise, 40 fall.
 *
 * @param[in]  pSrc  240 samples: 120 of the past, the frame, 40 of the next one
 * @param[out] pDst  240 samples; may be pSrc
 * @retval vspStsNullPtrErr  pSrc or pDst is null
 */
VspStatus vspsAnalysisWindow_G729_16s(const Vsp16s* pSrc, Vsp16s* pDst);

/**
 * LP filter from autocorrelations by the Levinson-Durbin recursion (G.729 3.2.2, Levinson).
 *
 * @param[in]     pAutoCorr  lags 0 .. 10 after the lag window, Q31, normalised; bit 0 does not count
 * @param[out]    pLPC       filter, 11 coefficients, Q12
 * @param[out]    pRC        10 reflection coefficients, Q15; with the warning only two are written
 * @param[out]    pErr       energy of the prediction error relative to that of the signal, in units of 2^-15 times that of
 *                           pAutoCorr; not written with the warning
 * @param[in,out] pMem       the last good filter (11 coefficients) and its first two reflection coefficients; reset to
 *                           4096, 0, ...
 * @retval vspStsNullPtrErr  pAutoCorr, pLPC, pRC, pErr or pMem is null
 * @retval vspStsOverflow    warning: a reflection coefficient of stages 2 .. 10 is above 32750 (Q15); the filter and two
 *                           reflection coefficients are those of pMem
 */
VspStatus vspsLevinsonDurbin_G729_32s16s(const Vsp32s* pAutoCorr, Vsp16s* pLPC, Vsp16s* pRC, Vsp16s* pErr, Vsp16s* pMem);

/**
 * LP filter from autocorrelations in floating point (G.729 Annex C).
 *
 * A prediction error that is not positive becomes 0.001.
 *
 * @param[in]  pAutoCorr  lags 0 .. 10 after the lag window
 * @param[out] pLPC       filter, 11 coefficients, the first one 1
 * @param[out] pRC        10 reflection coefficients
 * @param[out] pErr       energy of the prediction error
 * @retval vspStsNullPtrErr  pAutoCorr, pLPC, pRC or pErr is null
 */
VspStatus vspsLevinsonDurbin_G729_32f(const Vsp32f* pAutoCorr, Vsp32f* pLPC, Vsp32f* pRC, Vsp32f* pErr);

/**
 * Factors of the perceptual weighting filter of both subframes (G.729 3.3, perc_var).
 *
 * Flat spectra, told by two log area ratios, have gamma1 = 0.94 and gamma2 = 0.6. Others have gamma1 = 0.98 and a gamma2
 * of 0.4 .. 0.7 by the smallest distance of neighbouring frequencies.
 *
 * @param[in]     pLSFInt  10 LSFs of subframe 0, from vspsLSPToLSF_Norm_G729_16s
 * @param[in]     pLSFNew  10 LSFs of subframe 1
 * @param[in]     pRC      the first 2 reflection coefficients, Q15
 * @param[in,out] pMem     log area ratios of the frame before (2, Q11), flag of a flat spectrum; reset to 0, 0, 1
 * @param[out]    pGamma1  2 factors, Q15
 * @param[out]    pGamma2  2 factors, Q15
 * @retval vspStsNullPtrErr  pLSFInt, pLSFNew, pRC, pMem, pGamma1 or pGamma2 is null
 */
VspStatus vspsWeightingFactors_G729_16s(const Vsp16s* pLSFInt, const Vsp16s* pLSFNew, const Vsp16s* pRC, Vsp16s* pMem,
                                        Vsp16s* pGamma1, Vsp16s* pGamma2);

#ifdef __cplusplus
}
#endif

#endif
