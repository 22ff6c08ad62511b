/**
 * @file
 * GSM-AMR (narrow band): the adaptive codebook, its delay and its gain (3GPP TS 26.090, 5.6 and 6.1).
 *
 * The bit rates (mode): 0 = 4.75, 1 = 5.15, 3 = 5.90, 6 = 6.70, 7 = 7.40, 8 = 7.95, 11 = 10.2, 12 = 12.2 kbit/s. Bit-exact
 * with the fixed-point reference of the standard (3GPP TS 26.073).
 */
#ifndef VSPSC_GSMAMR_ADAPTIVE_CODEBOOK_H
#define VSPSC_GSMAMR_ADAPTIVE_CODEBOOK_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Closed-loop pitch search: the delay whose filtered past excitation is most like the target (`Pitch_fr`), and its code.
 *
 * Subframes 0 and 2 search around the open-loop lag, subframes 1 and 3, and at modes 0 and 1 also 2, around the lag of the
 * subframe before. The fraction is in thirds of a sample, -1..1, at mode 12 in sixths, -3..3.
 *
 * @param[in]     pTarget   40 samples
 * @param[in]     pImpulse  40 samples of the weighted synthesis filter's impulse response, Q12
 * @param[in]     pExc      excitation: 154 past samples before the pointer; the 40 from it on hold the LP residual
 * @param[in]     mode      bit rate
 * @param[in]     subframe  0..3
 * @param[in]     openLag   open-loop lag, 20..143, at mode 12 18..143; not used around the lag before
 * @param[in,out] pPrevLag  lag of the subframe before, becomes the lag of this one
 * @param[out]    pDelay    lag and fraction
 * @param[out]    pIndex    code of the delay
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsRangeErr    mode, subframe, openLag, or *pPrevLag (17..144) where it is read, outside its range
 */
VspStatus vspsAdaptiveCodebookSearch_GSMAMR_16s(const Vsp16s* pTarget, const Vsp16s* pImpulse, const Vsp16s* pExc,
                                                Vsp32s mode, Vsp32s subframe, Vsp16s openLag, Vsp16s* pPrevLag,
                                                Vsp16s* pDelay, Vsp16s* pIndex);

/**
 * Adaptive-codebook vector: the past excitation, delayed and interpolated (`Pred_lt_3or6`).
 *
 * @param[in]     pDelay   lag 17..144 and fraction -1..1 in thirds, at mode 12 -3..3 in sixths of a sample
 * @param[in]     mode     bit rate
 * @param[in,out] pSrcDst  154 past samples before the pointer, the 40 of the vector from it on
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsRangeErr    mode, lag or fraction outside its range
 */
VspStatus vspsDecodeAdaptiveVector_GSMAMR_16s_I(const Vsp16s* pDelay, Vsp32s mode, Vsp16s* pSrcDst);

/**
 * Gain of the adaptive-codebook vector: <target, y> / <y, y>, 0..1.2 (`G_pitch`).
 *
 * @param[in]  pTarget  40 samples
 * @param[in]  pY       40 samples of the filtered vector
 * @param[in]  mode     bit rate; at mode 12 the two lowest bits of the gain are 0
 * @param[out] pGain    Q14
 * @param[out] pCoeff   mantissa and exponent of <y, y> and of <target, y>, for the quantisation of the gains
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsRangeErr    mode outside its set
 */
VspStatus vspsAdaptiveCodebookGain_GSMAMR_16s(const Vsp16s* pTarget, const Vsp16s* pY, Vsp32s mode, Vsp16s* pGain,
                                              Vsp16s* pCoeff);

/**
 * Limits the pitch gain where a resonance lasts, before it is quantised.
 *
 * @param[in]     pHist      pitch gains of the seven subframes before, oldest first, each gain >> 3
 * @param[in]     mode       bit rate; at modes 0 and 1 the gain is at most 0.85
 * @param[in]     resonance  not 0 if vspsResonanceDetect_GSMAMR_16s found one
 * @param[in,out] pGain      Q14
 * @param[out]    pLimit     largest gain that the quantisation may choose: 15565, or 32767 for no limit
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsRangeErr    mode outside its set
 */
VspStatus vspsPitchGainLimit_GSMAMR_16s(const Vsp16s* pHist, Vsp32s mode, Vsp32s resonance, Vsp16s* pGain, Vsp16s* pLimit);

/**
 * Quantises the pitch gain at 12.2 kbit/s (`q_gain_pitch`).
 *
 * @param[in]     limit   largest gain to choose, Q14
 * @param[in,out] pGain   Q14; becomes the quantised gain, the two lowest bits 0
 * @param[out]    pIndex  0..15
 * @retval vspStsNullPtrErr  a pointer is null
 */
VspStatus vspsPitchGainQuant_GSMAMR_16s(Vsp16s limit, Vsp16s* pGain, Vsp16s* pIndex);

/**
 * Removes the adaptive codebook's contribution: dst[i] = x[i] - sat16(gain * y[i] >> 14), saturated.
 *
 * @param[in]  gain  pitch gain, Q14
 * @param[in]  pY    40 samples: the filtered vector for the target, the vector for the residual
 * @param[in]  pX    40 samples: target or residual
 * @param[out] pDst  40 samples; may be pX
 * @retval vspStsNullPtrErr  a pointer is null
 */
VspStatus vspsAdaptiveCodebookContribution_GSMAMR_16s(Vsp16s gain, const Vsp16s* pY, const Vsp16s* pX, Vsp16s* pDst);

/**
 * Memories of the filters of the target after a subframe: the last ten samples of speech - synthesis and of what the
 * codebooks leave of the target.
 *
 * @param[in]  pSpeech  40 samples
 * @param[in]  pSynth   40 samples of the synthesis
 * @param[in]  pTarget  40 samples of the target of the adaptive codebook
 * @param[in]  pY1      40 samples of the filtered adaptive-codebook vector
 * @param[in]  pY2      40 samples of the filtered code
 * @param[in]  pGain    quantised pitch gain, Q14, and code gain, Q1
 * @param[in]  mode     bit rate
 * @param[out] pMemErr  10 samples
 * @param[out] pMemW0   10 samples
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsRangeErr    mode outside its set
 */
VspStatus vspsWeightedErrorUpdate_GSMAMR_16s(const Vsp16s* pSpeech, const Vsp16s* pSynth, const Vsp16s* pTarget,
                                             const Vsp16s* pY1, const Vsp16s* pY2, const Vsp16s* pGain, Vsp32s mode,
                                             Vsp16s* pMemErr, Vsp16s* pMemW0);

/**
 * Decodes the delay of the adaptive codebook, or replaces that of a lost frame (`Dec_lag3`, `Dec_lag6`).
 *
 * @param[in]     mode            bit rate
 * @param[in]     subframe        0..3
 * @param[in]     index           code of the delay
 * @param[in]     bfi             not 0: the frame is lost
 * @param[in]     inNoise         not 0: background noise
 * @param[in]     voicedHangover  frames since the last voiced one
 * @param[in,out] pPrevLag        lag of the subframe before, reset 40. Changed by a lost frame below 12.2 kbit/s only: the
 *                                caller sets it to pDelay[0] at the end of the subframe
 * @param[in,out] pLagBuf         last lag received, reset 40
 * @param[out]    pDelay          lag and fraction, in thirds, at mode 12 in sixths of a sample
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsRangeErr    mode, subframe, index (more than its bits), or *pPrevLag (17..144) outside its range
 */
VspStatus vspsDelayDecode_GSMAMR_16s(Vsp32s mode, Vsp32s subframe, Vsp16s index, Vsp32s bfi, Vsp32s inNoise,
                                     Vsp32s voicedHangover, Vsp16s* pPrevLag, Vsp16s* pLagBuf, Vsp16s* pDelay);

#ifdef __cplusplus
}
#endif

#endif
