/**
 * @file
 * G.723.1: the high-pass filter and linear prediction from the speech (2.3 and 2.4).
 *
 * LP filters are predictors: A(z) = 1 - the sum of lpc[i - 1] * z^-i, i = 1 .. 10, Q13.
 */
#ifndef VSPSC_G723_LP_ANALYSIS_H
#define VSPSC_G723_LP_ANALYSIS_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * High-pass filter before the encoder, in place (Rem_Dc). It halves the signal.
 *
 * y[n] = (x[n] - x[n-1]) * 2^15 + y[n-1] * 127 / 128 with saturation; the output is y rounded to the high half.
 *
 * @param[in,out] pSrcDst  len samples
 * @param[in]     len      1 or more
 * @param[in,out] pMem     the last input, of which the low 16 bits count, and the last y; reset to 0
 * @retval vspStsNullPtrErr  pSrcDst or pMem is null
 * @retval vspStsSizeErr     len below 1
 */
VspStatus vspsHighPassFilter_G723_16s_I(Vsp16s* pSrcDst, Vsp32s len, Vsp32s* pMem);

/**
 * Autocorrelation of the samples around a subframe under a Hamming window, normalised (Comp_Lpc up to the recursion).
 *
 * The samples are scaled to 13 bits. A 1024th is added to the correlation of lag 0; the others are multiplied by the lag
 * window.
 *
 * @param[in]  pSrc    180 samples: the subframe and 60 on either side
 * @param[out] pDst    lags 0 .. 10, the first 0x4000 .. 0x7FFF; all 0 for silence
 * @param[out] pShift  scale: the left shift of the correlations, that of the samples counted twice; 40 for silence
 * @retval vspStsNullPtrErr  pSrc, pDst or pShift is null
 */
VspStatus vspsAutoCorr_G723_16s(const Vsp16s* pSrc, Vsp16s* pDst, Vsp16s* pShift);

/**
 * LP filter from autocorrelations by the Levinson-Durbin recursion (Durbin).
 *
 * Where the prediction error would not remain positive the recursion stops with the coefficients so far, the others are 0,
 * and the second reflection coefficient is 32767; so for silence.
 *
 * @param[in]  pAutoCorr  lags 0 .. 10
 * @param[out] pLPC       10 coefficients, Q13
 * @param[out] pErr       energy of the prediction error, in the scale of the autocorrelations
 * @param[out] pRC2       second reflection coefficient, Q15
 * @retval vspStsNullPtrErr  pAutoCorr, pLPC, pErr or pRC2 is null
 */
VspStatus vspsLevinsonDurbin_G723_16s(const Vsp16s* pAutoCorr, Vsp16s* pLPC, Vsp16s* pErr, Vsp16s* pRC2);

/**
 * Sine detector (Comp_Lpc): a sine is there when at least 14 of the last 15 subframes have a second reflection coefficient
 * above 0.95. Silence counts as one.
 *
 * @param[in]     pRC2    second reflection coefficients of the 4 subframes of a frame, Q15
 * @param[in,out] pState  one bit for each of the last 15 subframes; negative while there is a sine; reset to 0
 * @retval vspStsNullPtrErr  pRC2 or pState is null
 */
VspStatus vspsSineDetect_G723_16s(const Vsp16s* pRC2, Vsp16s* pState);

#ifdef __cplusplus
}
#endif

#endif
