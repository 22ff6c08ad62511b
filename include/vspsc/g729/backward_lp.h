/**
 * @file
 * G.729 Annex E: linear prediction of order 30 from the past synthesis. The filters are in filters.h.
 */
#ifndef VSPSC_G729_BACKWARD_LP_H
#define VSPSC_G729_BACKWARD_LP_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Size of the state of the hybrid window, G.729 Annex E: 124 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsWinHybridGetStateSize_G729E_16s(Vsp32s* pSize);

/**
 * Resets the state of the hybrid window.
 *
 * @param[out] pState  state
 * @retval vspStsNullPtrErr  pState is null
 */
VspStatus vspsWinHybridInit_G729E_16s(void* pState);

/**
 * Autocorrelation of the past synthesis by the hybrid window (G.729 Annex E, autocorr_hyb_window).
 *
 * w[n] = src[n] * window[n] >> 15. Of each lag k the state keeps c[k] = 0.3164 * c[k] + half the doubled sum of w[n] *
 * w[n-k] over n = 30 .. 109; dst[k] adds to it the sum over n = 110 .. 144. Every product and every partial sum saturates.
 *
 * @param[in]     pSrc       145 samples, the newest last
 * @param[out]    pAutoCorr  autocorrelations of lags 0 .. 30
 * @param[in,out] pState     state
 * @retval vspStsNullPtrErr  pSrc, pAutoCorr or pState is null
 */
VspStatus vspsWinHybrid_G729E_16s32s(const Vsp16s* pSrc, Vsp32s* pAutoCorr, void* pState);

/**
 * Lag window of the backward analysis, and normalisation (G.729 Annex E, Lag_window_bwd).
 *
 * Lags 1 .. 30 are multiplied as in vspsLagWindow_G729_32s_I; 1 is added to all 31, they are shifted left as normalises the
 * first, with saturation, and bit 0 is cleared.
 *
 * @param[in,out] pSrcDst  31 autocorrelations; out: Q31
 * @retval vspStsNullPtrErr  pSrcDst is null
 */
VspStatus vspsLagWindow_G729E_32s_I(Vsp32s* pSrcDst);

/**
 * LP filter of order 30 by the Levinson-Durbin recursion (G.729 Annex E, Levinsoncp), as vspsLevinsonDurbin_G729_32s16s. A
 * numerator above its denominator counts as that.
 *
 * @param[in]     pAutoCorr  lags 0 .. 30, Q31, normalised; bit 0 does not count
 * @param[out]    pLPC       filter, 31 coefficients, Q12
 * @param[out]    pRC        30 reflection coefficients, Q15; with the warning only two are written
 * @param[out]    pErr       energy of the prediction error; not written with the warning
 * @param[in,out] pMem       the last good filter (31 coefficients) and its first two reflection coefficients; reset to
 *                           4096, 0, ...
 * @retval vspStsNullPtrErr  pAutoCorr, pLPC, pRC, pErr or pMem is null
 * @retval vspStsOverflow    warning: a reflection coefficient of stages 2 .. 30 is above 32750 (Q15); the filter and two
 *                           reflection coefficients are those of pMem
 */
VspStatus vspsLevinsonDurbin_G729E_32s16s(const Vsp32s* pAutoCorr, Vsp16s* pLPC, Vsp16s* pRC, Vsp16s* pErr, Vsp16s* pMem);

/**
 * Factors of the perceptual weighting filter in a frame with backward prediction (G.729 Annex E, perc_vare).
 *
 * @param[in]  dominant  1 if backward prediction has been used most of the time, else 0
 * @param[out] pGamma1   2 factors, Q15: 0.98 or 0.9
 * @param[out] pGamma2   2 factors, Q15: 0.4
 * @retval vspStsNullPtrErr  pGamma1 or pGamma2 is null
 * @retval vspStsRangeErr    dominant is neither 0 nor 1
 */
VspStatus vspsWeightingFactors_G729E_16s(Vsp16s dominant, Vsp16s* pGamma1, Vsp16s* pGamma2);

/**
 * Size of the state of the floating-point hybrid window, G.729 Annex E: 124 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsWinHybridGetStateSize_G729E_32f(Vsp32s* pSize);

/**
 * Resets the state of the floating-point hybrid window.
 *
 * @param[out] pState  state
 * @retval vspStsNullPtrErr  pState is null
 */
VspStatus vspsWinHybridInit_G729E_32f(void* pState);

/**
 * Autocorrelation of the past synthesis by the hybrid window in floating point (G.729 Annex C+), as
 * vspsWinHybrid_G729E_16s32s without its halvings and doublings. Sums run from the oldest sample to the newest.
 *
 * @param[in]     pSrc       145 samples, the newest last
 * @param[out]    pAutoCorr  autocorrelations of lags 0 .. 30
 * @param[in,out] pState     state
 * @retval vspStsNullPtrErr  pSrc, pAutoCorr or pState is null
 */
VspStatus vspsWinHybrid_G729E_32f(const Vsp32f* pSrc, Vsp32f* pAutoCorr, void* pState);

#ifdef __cplusplus
}
#endif

#endif
