/**
 * @file
 * G.723.1: weighting, open-loop pitch and harmonic noise shaping (2.8 to 2.11).
 */
#ifndef VSPSC_G723_OPEN_LOOP_PITCH_H
#define VSPSC_G723_OPEN_LOOP_PITCH_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Coefficients of the formant weighting filter A(z/0.9) / A(z/0.5) (Wght_Lpc).
 *
 * @param[in]  pLPC  10 coefficients, Q13
 * @param[out] pDst  10 coefficients of the zeros, then 10 of the poles, Q13
 * @retval vspStsNullPtrErr  pLPC or pDst is null
 */
VspStatus vspsWeightLPC_G723_16s(const Vsp16s* pLPC, Vsp16s* pDst);

/**
 * Zeros of the weighting filter (first part of Error_Wght).
 *
 * dst[n] = 2 * (2^13 * src[n] - the sum of coeff[i - 1] * src[n - i], i = 1 .. 10), saturated at every step.
 *
 * @param[in]     pCoeff  10 coefficients, Q13
 * @param[in]     pSrc    len samples
 * @param[out]    pDst    len values, Q14
 * @param[in]     len     1 or more
 * @param[in,out] pMem    the last 10 inputs, the newest first; reset to 0
 * @retval vspStsNullPtrErr  pCoeff, pSrc, pDst or pMem is null
 * @retval vspStsSizeErr     len below 1
 */
VspStatus vspsFIR16s_G723_16s32s(const Vsp16s* pCoeff, const Vsp16s* pSrc, Vsp32s* pDst, Vsp32s len, Vsp16s* pMem);

/**
 * Poles of the weighting filter (second part of Error_Wght, with scaleFactor 13).
 *
 * dst[n] = (src[n] + 2 * the sum of coeff[i - 1] * dst[n - i], i = 1 .. 10) * 2^(15 - scaleFactor), saturated at every step
 * and rounded to the high half.
 *
 * @param[in]     pCoeff       10 coefficients, Q(scaleFactor)
 * @param[in]     pSrc         len values, Q(scaleFactor + 1)
 * @param[out]    pDst         len samples
 * @param[in]     len          1 or more
 * @param[in]     scaleFactor  0 .. 15
 * @param[in,out] pMem         the last 10 outputs, the newest first; reset to 0
 * @retval vspStsNullPtrErr     pCoeff, pSrc, pDst or pMem is null
 * @retval vspStsSizeErr        len below 1
 * @retval vspStsScaleRangeErr  scaleFactor outside 0 .. 15
 */
VspStatus vspsIIR16s_G723_32s16s_Sfs(const Vsp16s* pCoeff, const Vsp32s* pSrc, Vsp16s* pDst, Vsp32s len, Vsp32s scaleFactor,
                                     Vsp16s* pMem);

/**
 * Open-loop pitch of two subframes: the lag with the largest squared correlation over energy among those with a positive
 * correlation, where one that is longer than the best so far by 18 or more must exceed it by a third (Estim_Pitch).
 *
 * @param[in]  pSrc  the first of 120 weighted samples; 142 samples of history before it. All scaled to 13 bits
 * @param[out] pLag  18 .. 142
 * @retval vspStsNullPtrErr  pSrc or pLag is null
 */
VspStatus vspsOpenLoopPitchSearch_G723_16s(const Vsp16s* pSrc, Vsp16s* pLag);

/**
 * Delay and gain of the harmonic noise shaping filter of a subframe (Comp_Pw).
 *
 * @param[in]  pSrc    the first of 60 weighted samples; lag + 3 samples of history before it. All scaled to 13 bits
 * @param[in]  lag     open-loop lag of the subframe, 18 .. 142
 * @param[out] pDelay  within 3 of lag
 * @param[out] pGain   Q15, at most 10240; 0 if the prediction gains less than the standard asks
 * @retval vspStsNullPtrErr  pSrc, pDelay or pGain is null
 * @retval vspStsRangeErr    lag outside 18 .. 142
 */
VspStatus vspsHarmonicSearch_G723_16s(const Vsp16s* pSrc, Vsp16s lag, Vsp16s* pDelay, Vsp16s* pGain);

/**
 * Harmonic noise shaping filter of a subframe: dst[n] = src[n] - gain * src[n - delay], rounded and saturated (Filt_Pw).
 *
 * @param[in]  pSrc   the first of 60 weighted samples; delay samples of history before it
 * @param[in]  delay  15 .. 145
 * @param[in]  gain   Q15
 * @param[out] pDst   60 samples
 * @retval vspStsNullPtrErr  pSrc or pDst is null
 * @retval vspStsRangeErr    delay outside 15 .. 145
 */
VspStatus vspsHarmonicFilter_G723_16s(const Vsp16s* pSrc, Vsp16s delay, Vsp16s gain, Vsp16s* pDst);

#ifdef __cplusplus
}
#endif

#endif
