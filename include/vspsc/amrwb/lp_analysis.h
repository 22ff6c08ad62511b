/**
 * @file
 * AMR-WB: LP analysis.
 */
#ifndef VSPSC_AMRWB_LP_ANALYSIS_H
#define VSPSC_AMRWB_LP_ANALYSIS_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Autocorrelation of the windowed speech (3GPP TS 26.190 5.2.1, `Autocorr`).
 *
 * y[n] = src[n] * w[n], rounded, then divided by a power of two, rounded, so that the energy fits. dst[k] = (2 * sum of
 * y[n] * y[n-k]) << m, 1 added to the sum of k = 0, which m normalises; bit 0 is cleared.
 *
 * @param[in]  pSrc  384 samples: 64 before the frame, its 256, and 64 after it
 * @param[out] pDst  autocorrelations of lags 0 .. 16, Q31
 * @retval vspStsNullPtrErr  pSrc or pDst is null
 */
VspStatus vspsAutoCorr_AMRWB_16s32s(const Vsp16s* pSrc, Vsp32s* pDst);

/**
 * Multiplies autocorrelations by the lag window of 60 Hz, which also adds a noise floor (3GPP TS 26.190 5.2.1,
 * `Lag_window`).
 *
 * @param[in,out] pSrcDst  autocorrelations of lags 1 .. len; bit 0 does not count and becomes 0
 * @param[in]     len      number of lags
 * @retval vspStsNullPtrErr  pSrcDst is null
 * @retval vspStsSizeErr     len < 1
 * @retval vspStsRangeErr    len > 16
 */
VspStatus vspsLagWindow_AMRWB_32s_I(Vsp32s* pSrcDst, Vsp32s len);

/**
 * LP filter from autocorrelations by the Levinson-Durbin recursion (3GPP TS 26.190 5.2.2, `Levinson`).
 *
 * Where a reflection coefficient of stages 2 .. 16 is above 32750 (Q15) the filter is the last stable one.
 *
 * @param[in]     pAutoCorr  lags 0 .. 16 after the lag window, normalised; bit 0 does not count
 * @param[in,out] pMem       coefficients 1 .. 16 of the last stable filter; reset 0
 * @param[out]    pLPC       filter, 17 coefficients, Q12
 * @retval vspStsNullPtrErr  pAutoCorr, pMem or pLPC is null
 */
VspStatus vspsLevinsonDurbin_AMRWB_32s16s(const Vsp32s* pAutoCorr, Vsp16s* pMem, Vsp16s* pLPC);

#ifdef __cplusplus
}
#endif

#endif
