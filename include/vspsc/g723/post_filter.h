/**
 * @file
 * G.723.1: synthesis and the post-filters (3.6 to 3.9).
 *
 * Rates: 2 = 5.3 kbit/s, 4 = 6.3 kbit/s. The excitation of a frame is 145 samples of the past and 240 of the frame.
 */
#ifndef VSPSC_G723_POST_FILTER_H
#define VSPSC_G723_POST_FILTER_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Delay and gains of the pitch post-filter of a subframe (Comp_Lpf).
 *
 * Backwards and forwards, as far as the frame reaches, the delay within 3 of lag with the largest correlation; of both the
 * one with the larger gain. The scale keeps the energy of the subframe.
 *
 * @param[in]  pExc      385 samples scaled to 13 bits
 * @param[in]  lag       of the pair, 18 .. 145, of which no more than 142 counts
 * @param[in]  subframe  0 .. 3
 * @param[in]  rate      2 or 4
 * @param[out] pDelay    negative for earlier samples; 0 if there is none
 * @param[out] pGain     of the delayed samples, Q15; 0 if the prediction gains too little
 * @param[out] pScale    of the subframe's own samples, Q15
 * @retval vspStsNullPtrErr  pExc, pDelay, pGain or pScale is null
 * @retval vspStsRangeErr    rate, subframe or lag outside its range
 */
VspStatus vspsPitchPostFilterSearch_G723_16s(const Vsp16s* pExc, Vsp16s lag, Vsp32s subframe, Vsp32s rate, Vsp16s* pDelay,
                                             Vsp16s* pGain, Vsp16s* pScale);

/**
 * Pitch post-filter of a subframe: scale * exc[n] + gain * exc[n + delay], rounded and saturated (Filt_Lpf).
 *
 * @param[in]  pExc      385 samples
 * @param[in]  delay     -145 .. 145, and no more than 180 - 60 * subframe
 * @param[in]  gain      Q15
 * @param[in]  scale     Q15
 * @param[in]  subframe  0 .. 3
 * @param[out] pDst      60 samples
 * @retval vspStsNullPtrErr  pExc or pDst is null
 * @retval vspStsRangeErr    subframe or delay outside its range
 */
VspStatus vspsPitchPostFilter_G723_16s(const Vsp16s* pExc, Vsp16s delay, Vsp16s gain, Vsp16s scale, Vsp32s subframe,
                                       Vsp16s* pDst);

/**
 * Synthesis filter 1 / A(z) (Synt). The output has half of the full scale, which the gain control doubles; without the
 * post-filter vspsMulC_NR_16s_ISfs does.
 *
 * dst[n] = (2^13 * src[n] + 2 * the sum of lpc[i - 1] * dst[n - i], i = 1 .. 10) * 4, saturated at every step and rounded
 * to the high half.
 *
 * @param[in]     pLPC  10 coefficients, Q13
 * @param[in]     pSrc  len samples
 * @param[out]    pDst  len samples
 * @param[in]     len   1 or more
 * @param[in,out] pMem  the last 10 outputs, the newest first; reset to 0
 * @retval vspStsNullPtrErr  pLPC, pSrc, pDst or pMem is null
 * @retval vspStsSizeErr     len below 1
 */
VspStatus vspsSynthesisFilter_G723_16s(const Vsp16s* pLPC, const Vsp16s* pSrc, Vsp16s* pDst, Vsp32s len, Vsp16s* pMem);

/**
 * Formant post-filter A(z/0.65) / A(z/0.75) with compensation of its tilt, of a subframe (Spf).
 *
 * @param[in]     pLPC     10 coefficients, Q13
 * @param[in,out] pSrcDst  60 samples
 * @param[in,out] pFIRMem  the last 10 inputs, the newest first; reset to 0
 * @param[in,out] pIIRMem  the last 10 outputs of the poles, the newest first; reset to 0
 * @param[in,out] pTilt    smoothed first reflection coefficient, Q15; reset to 0
 * @param[out]    pEnergy  energy of the input for the gain control
 * @retval vspStsNullPtrErr  pLPC, pSrcDst, pFIRMem, pIIRMem, pTilt or pEnergy is null
 */
VspStatus vspsFormantPostFilter_G723_16s_I(const Vsp16s* pLPC, Vsp16s* pSrcDst, Vsp16s* pFIRMem, Vsp16s* pIIRMem,
                                           Vsp16s* pTilt, Vsp32s* pEnergy);

/**
 * Brings a subframe to the energy that it had before the post-filter, with a gain that moves by a sixteenth of the way each
 * sample, and to the full scale (Scale).
 *
 * @param[in]     energy   what vspsFormantPostFilter_G723_16s_I gave, 0 or more
 * @param[in,out] pSrcDst  60 samples
 * @param[in,out] pGain    Q12; reset to 4096
 * @retval vspStsNullPtrErr  pSrcDst or pGain is null
 * @retval vspStsBadArgErr   energy is negative
 */
VspStatus vspsGainControl_G723_16s_I(Vsp32s energy, Vsp16s* pSrcDst, Vsp16s* pGain);

#ifdef __cplusplus
}
#endif

#endif
