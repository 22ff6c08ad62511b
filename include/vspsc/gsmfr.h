/**
 * @file
 * GSM full rate (GSM 06.10): the steps of the 13 kbit/s RPE-LTP speech coder.
 *
 * A frame is 160 samples at 8 kHz and has four sub-frames of 40. An encoder calls, per frame, vspsPreprocess_GSMFR_16s,
 * vspsAutoCorr_GSMFR_16s32s, vspsSchur_GSMFR_32s16s, vspsLARQuantEncode_GSMFR_16s, vspsLARQuantDecode_GSMFR_16s and
 * vspsShortTermAnalysisFilter_GSMFR_16s_I; then, per sub-frame, vspsLongTermPredict_GSMFR_16s,
 * vspsWeightingFilter_GSMFR_16s, vspsRPEGridSelect_GSMFR_16s, vspsRPEQuantEncode_GSMFR_16s, and what a decoder does with
 * the result: vspsRPEScaleDecode_GSMFR_16s, vspsRPEQuantDecode_GSMFR_16s, vspsRPEGridPosition_GSMFR_16s and
 * vspsLongTermSynthesis_GSMFR_16s. A decoder finishes the frame with vspsLARQuantDecode_GSMFR_16s,
 * vspsShortTermSynthesisFilter_GSMFR_16s and vspsPostprocess_GSMFR_16s_I.
 *
 * All functions are bit-exact with the standard's arithmetic at any input. Of a coded parameter the bits count that a frame
 * has of it. Memories begin as zeros, but for the previous lag, which begins as 40; the application keeps them.
 */
#ifndef VSPSC_GSMFR_H
#define VSPSC_GSMFR_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Removes the offset of a frame and pre-emphasises it, GSM 06.10 5.2.1 to 5.2.3.
 *
 * @param[in]     pSrc  160 samples, of which the 13 top bits count
 * @param[out]    pDst  160 pre-emphasised samples
 * @param[in,out] pMem  3 words: last input, offset filter (Q15), last input of the pre-emphasis
 * @retval vspStsNullPtrErr  pSrc, pDst or pMem is null
 */
VspStatus vspsPreprocess_GSMFR_16s(const Vsp16s* pSrc, Vsp16s* pDst, Vsp32s* pMem);

/**
 * Autocorrelation of a frame at lags 0 to 8, GSM 06.10 5.2.4.
 *
 * dst[k] = 2 * sum of s[i] * s[i-k], with the frame scaled down so that it fits 32 bits. The frame is scaled back up and
 * has lost its low bits then, as the standard's has; the short-term analysis filter takes it so.
 *
 * @param[in,out] pSrcDst  160 pre-emphasised samples
 * @param[out]    pDst     9 correlations
 * @retval vspStsNullPtrErr  pSrcDst or pDst is null
 */
VspStatus vspsAutoCorr_GSMFR_16s32s(Vsp16s* pSrcDst, Vsp32s* pDst);

/**
 * Reflection coefficients from the autocorrelation by the Schur recursion, GSM 06.10 5.2.5.
 *
 * @param[in]  pSrc  9 correlations; without energy, or where they are of no signal, the coefficients are 0 from there on
 * @param[out] pDst  8 reflection coefficients, Q15
 * @retval vspStsNullPtrErr  pSrc or pDst is null
 */
VspStatus vspsSchur_GSMFR_32s16s(const Vsp32s* pSrc, Vsp16s* pDst);

/**
 * Reflection coefficients to coded log-area ratios, GSM 06.10 5.2.6 and 5.2.7.
 *
 * @param[in]  pSrc  8 reflection coefficients, Q15
 * @param[out] pDst  8 codes of 6, 6, 5, 5, 4, 4, 3 and 3 bits
 * @retval vspStsNullPtrErr  pSrc or pDst is null
 */
VspStatus vspsLARQuantEncode_GSMFR_16s(const Vsp16s* pSrc, Vsp16s* pDst);

/**
 * Decodes log-area ratios, GSM 06.10 5.2.8.
 *
 * @param[in]  pSrc  8 codes, of which the low 6, 6, 5, 5, 4, 4, 3 and 3 bits count
 * @param[out] pDst  8 log-area ratios, Q14
 * @retval vspStsNullPtrErr  pSrc or pDst is null
 */
VspStatus vspsLARQuantDecode_GSMFR_16s(const Vsp16s* pSrc, Vsp16s* pDst);

/**
 * Short-term analysis: filters a frame with the lattice of the interpolated log-area ratios, GSM 06.10 5.2.9 and 5.2.10.
 *
 * The ratios are those of the previous and this frame in the parts 3/4 + 1/4 (samples 0..12), 1/2 + 1/2 (13..26), 1/4 + 3/4
 * (27..39) and 0 + 1 (40..159).
 *
 * @param[in]     pPrevLAR  8 log-area ratios of the previous frame, Q14
 * @param[in]     pLAR      8 log-area ratios of this frame, Q14
 * @param[in,out] pSrcDst   160 samples; the residual
 * @param[in,out] pMem      8 words of the filter
 * @retval vspStsNullPtrErr  pPrevLAR, pLAR, pSrcDst or pMem is null
 */
VspStatus vspsShortTermAnalysisFilter_GSMFR_16s_I(const Vsp16s* pPrevLAR, const Vsp16s* pLAR, Vsp16s* pSrcDst,
                                                  Vsp16s* pMem);

/**
 * Long-term prediction of a sub-frame: lag, gain and what the prediction leaves, GSM 06.10 5.2.11 and 5.2.12.
 *
 * @param[in]  pSrc   40 samples of the residual
 * @param[in]  pPast  the 120 reconstructed samples of the residual before it, oldest first
 * @param[out] pDst   40 samples, the residual minus its prediction
 * @param[out] pLag   lag, 40..120
 * @param[out] pGain  code of the gain, 0..3
 * @retval vspStsNullPtrErr  pSrc, pPast, pDst, pLag or pGain is null
 */
VspStatus vspsLongTermPredict_GSMFR_16s(const Vsp16s* pSrc, const Vsp16s* pPast, Vsp16s* pDst, Vsp16s* pLag, Vsp16s* pGain);

/**
 * Weighting filter of the regular-pulse excitation, 11 taps, GSM 06.10 5.2.13.
 *
 * @param[in]  pSrc  40 samples, zeros before and after
 * @param[out] pDst  40 samples
 * @retval vspStsNullPtrErr  pSrc or pDst is null
 */
VspStatus vspsWeightingFilter_GSMFR_16s(const Vsp16s* pSrc, Vsp16s* pDst);

/**
 * Chooses the grid that keeps most energy of every third sample, GSM 06.10 5.2.14.
 *
 * @param[in]  pSrc   40 weighted samples
 * @param[out] pDst   13 samples, pSrc[grid + 3*i]
 * @param[out] pGrid  grid, 0..3; the first one of equal ones
 * @retval vspStsNullPtrErr  pSrc, pDst or pGrid is null
 */
VspStatus vspsRPEGridSelect_GSMFR_16s(const Vsp16s* pSrc, Vsp16s* pDst, Vsp16s* pGrid);

/**
 * Codes the pulses of a grid by block-adaptive PCM, GSM 06.10 5.2.15.
 *
 * @param[in]  pSrc  13 samples
 * @param[out] pDst  13 codes, 0..7
 * @param[out] pMax  code of the largest magnitude, 0..63
 * @retval vspStsNullPtrErr  pSrc, pDst or pMax is null
 */
VspStatus vspsRPEQuantEncode_GSMFR_16s(const Vsp16s* pSrc, Vsp16s* pDst, Vsp16s* pMax);

/**
 * Mantissa and exponent of the coded maximum, as the decoding of the pulses takes them, GSM 06.10 5.2.15 and 5.2.16.
 *
 * @param[in]  max      code of the largest magnitude, of which the low 6 bits count
 * @param[out] pFactor  the standard's FAC at the mantissa
 * @param[out] pScale   6 - exponent, 0..10
 * @retval vspStsNullPtrErr  pFactor or pScale is null
 */
VspStatus vspsRPEScaleDecode_GSMFR_16s(Vsp16s max, Vsp16s* pFactor, Vsp16s* pScale);

/**
 * Decodes the pulses of a grid, GSM 06.10 5.2.16.
 *
 * @param[in]  pSrc         13 codes, of which the low 3 bits count
 * @param[out] pDst         13 samples
 * @param[in]  factor       from vspsRPEScaleDecode_GSMFR_16s
 * @param[in]  scaleFactor  from vspsRPEScaleDecode_GSMFR_16s
 * @retval vspStsNullPtrErr     pSrc or pDst is null
 * @retval vspStsScaleRangeErr  scaleFactor is outside 0..10
 */
VspStatus vspsRPEQuantDecode_GSMFR_16s(const Vsp16s* pSrc, Vsp16s* pDst, Vsp16s factor, Vsp16s scaleFactor);

/**
 * Puts pulses at the places of their grid, zeros elsewhere, GSM 06.10 5.2.17.
 *
 * @param[in]  pSrc  13 samples
 * @param[out] pDst  40 samples
 * @param[in]  grid  grid, of which the low 2 bits count
 * @retval vspStsNullPtrErr  pSrc or pDst is null
 */
VspStatus vspsRPEGridPosition_GSMFR_16s(const Vsp16s* pSrc, Vsp16s* pDst, Vsp16s grid);

/**
 * Long-term synthesis of a sub-frame: adds the prediction to the decoded pulses, GSM 06.10 5.2.18 and 5.3.2.
 *
 * @param[in]     pSrc      40 decoded samples
 * @param[in,out] pPast     120 reconstructed samples of the residual, oldest first; the new ones are shifted in
 * @param[out]    pDst      40 reconstructed samples of the residual
 * @param[in]     lag       lag; outside 40..120 the previous one is taken
 * @param[in]     gain      code of the gain, of which the low 2 bits count
 * @param[in,out] pPrevLag  previous lag, which becomes this one if it is within 40..120; 40 at the start, and any value
 * outside that range counts as 40
 * @retval vspStsNullPtrErr  pSrc, pPast, pDst or pPrevLag is null
 */
VspStatus vspsLongTermSynthesis_GSMFR_16s(const Vsp16s* pSrc, Vsp16s* pPast, Vsp16s* pDst, Vsp16s lag, Vsp16s gain,
                                          Vsp16s* pPrevLag);

/**
 * Short-term synthesis: the inverse of the lattice of vspsShortTermAnalysisFilter_GSMFR_16s_I, GSM 06.10 5.3.3 and 5.3.4.
 *
 * @param[in]     pPrevLAR  8 log-area ratios of the previous frame, Q14
 * @param[in]     pLAR      8 log-area ratios of this frame, Q14
 * @param[in]     pSrc      160 samples of the residual
 * @param[out]    pDst      160 samples
 * @param[in,out] pMem      8 words of the filter
 * @retval vspStsNullPtrErr  pPrevLAR, pLAR, pSrc, pDst or pMem is null
 */
VspStatus vspsShortTermSynthesisFilter_GSMFR_16s(const Vsp16s* pPrevLAR, const Vsp16s* pLAR, const Vsp16s* pSrc,
                                                 Vsp16s* pDst, Vsp16s* pMem);

/**
 * De-emphasises a decoded frame, scales it up and keeps 13 bits, GSM 06.10 5.3.5 to 5.3.7.
 *
 * @param[in,out] pSrcDst  160 samples
 * @param[in,out] pMem     1 word of the filter
 * @retval vspStsNullPtrErr  pSrcDst or pMem is null
 */
VspStatus vspsPostprocess_GSMFR_16s_I(Vsp16s* pSrcDst, Vsp16s* pMem);

#ifdef __cplusplus
}
#endif

#endif
