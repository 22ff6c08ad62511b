/**
 * @file
 * GSM-AMR: linear prediction from the speech, and the weighted speech.
 *
 * Rates (mode): 0, 1, 3, 6, 7, 8, 11, 12 for 4.75, 5.15, 5.9, 6.7, 7.4, 7.95, 10.2 and 12.2 kbit/s.
 */
#ifndef VSPSC_GSMAMR_LP_ANALYSIS_H
#define VSPSC_GSMAMR_LP_ANALYSIS_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Autocorrelation of the windowed speech (3GPP TS 26.090 5.2.1, Autocorr).
 *
 * y[n] = (src[n] * w[n] + 2^14) >> 15, saturated. While 2 * sum of y[n]^2 leaves 32 bits, all y are divided by 4 (>> 2).
 * dst[k] = (2 * sum of y[n] * y[n-k]) << m, 1 added to the sum of k = 0, which m normalises; bit 0 is cleared.
 *
 * @param[in]  pSrc    240 samples; at 12.2 kbit/s they end with the frame, at the others 40 samples after it
 * @param[in]  window  0: 200 samples rise and 40 fall, all rates but 12.2; 1: 160 and 80, first analysis at 12.2; 2: 232
 * and 8, second analysis
 * @param[out] pDst    autocorrelations of lags 0 .. 10, Q31
 * @param[out] pNorm   m - 4 times the number of divisions
 * @retval vspStsNullPtrErr  pSrc, pDst or pNorm is null
 * @retval vspStsRangeErr    window outside 0 .. 2
 */
VspStatus vspsAutoCorr_GSMAMR_16s32s(const Vsp16s* pSrc, Vsp32s window, Vsp32s* pDst, Vsp32s* pNorm);

/**
 * LP filter from autocorrelations by the Levinson-Durbin recursion (3GPP TS 26.090 5.2.2, Levinson).
 *
 * Where a reflection coefficient of stages 2 .. 10 is above 32750 (Q15) the filter is the last good one and the reflection
 * coefficients are 0.
 *
 * @param[in]     pAutoCorr  lags 0 .. 10 after the lag window (vspsLagWindow_G729_32s_I), normalised; bit 0 does not count
 * @param[in,out] pMem       last good filter, 11 coefficients; reset to 4096, 0, ...
 * @param[out]    pLPC       filter, 11 coefficients, Q12
 * @param[out]    pRC        the first 4 reflection coefficients, Q15
 * @retval vspStsNullPtrErr  pAutoCorr, pMem, pLPC or pRC is null
 */
VspStatus vspsLevinsonDurbin_GSMAMR_32s16s(const Vsp32s* pAutoCorr, Vsp16s* pMem, Vsp16s* pLPC, Vsp16s* pRC);

/**
 * Perceptually weighted speech of a frame, for the open-loop pitch search (3GPP TS 26.090 5.3, pre_big).
 *
 * Per subframe A(z/g1) / A(z/g2) with g1 = 0.9 at 10.2 and 12.2 kbit/s and 0.94 below, g2 = 0.6; every step of the filters
 * saturates.
 *
 * @param[in]     pSrc  the first of the 160 samples of the frame; 10 samples of history before it
 * @param[in]     pLPC  unquantised filters of the four subframes, 11 coefficients each, Q12
 * @param[in]     mode  rate
 * @param[in,out] pMem  the last 10 weighted samples, the newest last
 * @param[out]    pDst  160 samples
 * @retval vspStsNullPtrErr  pSrc, pLPC, pMem or pDst is null
 * @retval vspStsRangeErr    mode is not a rate
 */
VspStatus vspsWeightedSpeech_GSMAMR_16s(const Vsp16s* pSrc, const Vsp16s* pLPC, Vsp32s mode, Vsp16s* pMem, Vsp16s* pDst);

/**
 * Impulse response, target and residual of a subframe, on which its codebook searches work (3GPP TS 26.090 5.4 and 5.5,
 * subframePreProc).
 *
 * With W(z) = A(z/g1) / A(z/g2) of the unquantised filter as in vspsWeightedSpeech_GSMAMR_16s: the impulse response of W(z)
 * / Aq(z); the residual of the speech by Aq(z); and the target, the residual through W(z) / Aq(z) with the memories.
 *
 * @param[in]  pSrc       the first of the 40 samples of the subframe; 10 samples of history before it
 * @param[in]  pLPC       unquantised filter, 11 coefficients, Q12
 * @param[in]  pQuantLPC  quantised filter Aq, 11 coefficients, Q12
 * @param[in]  pMemErr    the last 10 samples of the error of the synthesis, the newest last
 * @param[in]  pMemW0     the last 10 samples of the weighted error, the newest last
 * @param[in]  mode       rate
 * @param[out] pImpulse   40 samples, Q12
 * @param[out] pTarget    40 samples
 * @param[out] pResidual  40 samples
 * @retval vspStsNullPtrErr  pSrc, pLPC, pQuantLPC, pMemErr, pMemW0, pImpulse, pTarget or pResidual is null
 * @retval vspStsRangeErr    mode is not a rate
 */
VspStatus vspsPitchTarget_GSMAMR_16s(const Vsp16s* pSrc, const Vsp16s* pLPC, const Vsp16s* pQuantLPC, const Vsp16s* pMemErr,
                                     const Vsp16s* pMemW0, Vsp32s mode, Vsp16s* pImpulse, Vsp16s* pTarget,
                                     Vsp16s* pResidual);

#ifdef __cplusplus
}
#endif

#endif
