/**
 * @file
 * AMR-WB: adaptive codebook.
 *
 * The bit rates (mode): 5 = 6.60, 9 = 8.85, 13 = 12.65, 15 = 14.25, 16 = 15.85, 18 = 18.25, 19 = 19.85, 20 = 23.05, 21 =
 * 23.85 kbit/s. Bit-exact with the fixed-point reference of the standard (3GPP TS 26.173).
 */
#ifndef VSPSC_AMRWB_ADAPTIVE_CODEBOOK_H
#define VSPSC_AMRWB_ADAPTIVE_CODEBOOK_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Impulse response of the weighted synthesis filter, 3GPP TS 26.190 5.5.
 *
 * dst = the response of A(z/0.92) / (Aq(z) * (1 - 0.68 z^-1)).
 *
 * @param[in]  pLpcW  17 coefficients of A(z/0.92), Q12
 * @param[in]  pLpcQ  17 quantised coefficients, Q12; the first is not read
 * @param[out] pDst   64 samples, Q14; may be a source
 * @retval vspStsNullPtrErr  pLpcW, pLpcQ or pDst is null
 */
VspStatus vspsImpulseResponse_AMRWB_16s(const Vsp16s* pLpcW, const Vsp16s* pLpcQ, Vsp16s* pDst);

/**
 * Closed-loop search of the lag (`Pitch_fr4`), 3GPP TS 26.190 5.7.
 *
 * Takes the lag of lagMin .. lagMin + 15 whose filtered excitation has the largest normalised correlation with the target,
 * and refines it to a fraction of -3/4 to 3/4, in quarters or halves, by interpolating the correlations. In an absolute
 * subframe lags from 128 on (6.60 and 8.85 kbit/s: from 34 on, and in relative subframes) have halves, from 160 on (92)
 * no fractions.
 *
 * @param[in]  pTarget   64 samples
 * @param[in]  pImpulse  64 samples of the impulse response
 * @param[in]  pExc      64 samples of the excitation, the LP residual for now, with 235 samples of history
 * @param[in]  lagMin    34..216
 * @param[in]  relative  1 if the lag is coded relative to that of the subframe before, else 0
 * @param[in]  mode      bit rate
 * @param[out] pDelay    2 words: lag, and fraction in quarters, 0..3
 * @retval vspStsNullPtrErr  pTarget, pImpulse, pExc or pDelay is null
 * @retval vspStsRangeErr    lagMin, relative or mode outside its range
 */
VspStatus vspsAdaptiveCodebookSearch_AMRWB_16s(const Vsp16s* pTarget, const Vsp16s* pImpulse, const Vsp16s* pExc,
                                               Vsp16s lagMin, Vsp16s relative, Vsp32s mode, Vsp16s* pDelay);

/**
 * Index of a lag, 3GPP TS 26.190 5.7: 9 bits, relative 6; at 6.60 and 8.85 kbit/s 8, relative 5.
 *
 * @param[in]  pDelay    2 words: lag 34..231, and fraction in quarters, 0..3
 * @param[in]  lagMin    first lag of the relative range, 34..216
 * @param[in]  relative  1 in relative subframes, whose lag must be in lagMin .. lagMin + 15, else 0
 * @param[in]  mode      bit rate
 * @param[out] pIndex    the index
 * @retval vspStsNullPtrErr  pDelay or pIndex is null
 * @retval vspStsRangeErr    lagMin, relative, mode, lag or fraction outside its range
 */
VspStatus vspsDelayEncode_AMRWB_16s(const Vsp16s* pDelay, Vsp16s lagMin, Vsp16s relative, Vsp32s mode, Vsp16s* pIndex);

/**
 * Adaptive-codebook vector: the past excitation at a fractional lag (`Pred_lt4`), 3GPP TS 26.190 5.7.
 *
 * @param[in]     pDelay  2 words: lag 34..231, and fraction in quarters, 0..3
 * @param[in,out] pExc    excitation: 248 samples of history; writes 65 samples, of which a short lag reads the first
 * @retval vspStsNullPtrErr  pDelay or pExc is null
 * @retval vspStsRangeErr    lag or fraction outside its range
 */
VspStatus vspsDecodeAdaptiveVector_AMRWB_16s_I(const Vsp16s* pDelay, Vsp16s* pExc);

/**
 * Gain of the adaptive codebook, 3GPP TS 26.190 5.7 (`Convolve`, `G_pitch`, `Updt_tar`).
 *
 * The gain that brings the filtered vector nearest to the target, at most 1.2; above 8.85 kbit/s for the vector as it is
 * and after a low-pass filter (0.18, 0.64, 0.18), of which the one is taken that leaves less of the target.
 *
 * @param[in]     pTarget   64 samples
 * @param[in]     pImpulse  64 samples of the impulse response
 * @param[in]     mode      bit rate; at 6.60 and 8.85 kbit/s the low-pass filtered vector is always taken
 * @param[in]     clip      1 limits the gain to 0.95, else 0
 * @param[in,out] pExc      64 samples of the vector, and one before and behind them that are read; becomes the chosen
 * vector
 * @param[out]    pY        64 samples of the chosen vector, filtered by the impulse response
 * @param[out]    pTarget2  64 samples: the target without the contribution of the chosen vector
 * @param[out]    pCoeff    4 words: energy of pY and its exponent, correlation with the target and its exponent
 * @param[out]    pGain     Q14
 * @param[out]    pSelect   1 if the vector is taken as it is, else 0
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsRangeErr    mode or clip outside its range
 */
VspStatus vspsAdaptiveCodebookGain_AMRWB_16s(const Vsp16s* pTarget, const Vsp16s* pImpulse, Vsp32s mode, Vsp16s clip,
                                             Vsp16s* pExc, Vsp16s* pY, Vsp16s* pTarget2, Vsp16s* pCoeff, Vsp16s* pGain,
                                             Vsp16s* pSelect);

/**
 * Removes the contribution of the adaptive codebook from a target (`Updt_tar`).
 *
 * dst[i] = target[i] - gain * y[i]
 *
 * @param[in]  gain     Q14
 * @param[in]  pY       64 samples of the filtered vector
 * @param[in]  pTarget  64 samples
 * @param[out] pDst     64 samples; may be a source
 * @retval vspStsNullPtrErr  pY, pTarget or pDst is null
 */
VspStatus vspsAdaptiveCodebookContribution_AMRWB_16s(Vsp16s gain, const Vsp16s* pY, const Vsp16s* pTarget, Vsp16s* pDst);

/**
 * Pitch sharpening (`Pit_shrp`), 3GPP TS 26.190 5.8.
 *
 * srcDst[i] += sharp * srcDst[i - lag], rounded and saturated, for i = lag .. len-1 ascending.
 *
 * @param[in]     lag      1 or more
 * @param[in]     sharp    Q15; the codec has 27853
 * @param[in,out] pSrcDst  len samples
 * @param[in]     len      number of samples
 * @retval vspStsNullPtrErr  pSrcDst is null
 * @retval vspStsSizeErr     len < 1
 * @retval vspStsRangeErr    lag < 1
 */
VspStatus vspsPitchSharpen_AMRWB_16s_I(Vsp16s lag, Vsp16s sharp, Vsp16s* pSrcDst, Vsp32s len);

#ifdef __cplusplus
}
#endif

#endif
