/**
 * @file
 * GSM-AMR (narrow band): lost and damaged frames (3GPP TS 26.091).
 *
 * The bit rates (mode): 0 = 4.75, 1 = 5.15, 3 = 5.90, 6 = 6.70, 7 = 7.40, 8 = 7.95, 11 = 10.2, 12 = 12.2 kbit/s. Bit-exact
 * with the fixed-point reference of the standard (3GPP TS 26.073).
 */
#ifndef VSPSC_GSMAMR_CONCEALMENT_H
#define VSPSC_GSMAMR_CONCEALMENT_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Pitch gain of a lost frame, or of one after it; called in every subframe (`ec_gain_pitch`).
 *
 * @param[in]     bfi      not 0: the frame is lost
 * @param[in]     prevBfi  not 0: the frame before was
 * @param[in]     bfState  state of the bad-frame handling, 0..6
 * @param[in,out] pMem     7 words: five gains, newest last; past gain, previous good gain; reset 1640 x 5, 0, 16384
 * @param[in,out] pGain    Q14; not read if the frame is lost
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsRangeErr    bfState outside its range
 */
VspStatus vspsPitchGainConceal_GSMAMR_16s(Vsp32s bfi, Vsp32s prevBfi, Vsp32s bfState, Vsp16s* pMem, Vsp16s* pGain);

/**
 * Code gain of a lost frame, or of one after it; called in every subframe (`ec_gain_code`).
 *
 * @param[in]     bfi      not 0: the frame is lost
 * @param[in]     prevBfi  not 0: the frame before was
 * @param[in]     bfState  state of the bad-frame handling, 0..6
 * @param[in,out] pMem     7 words as of vspsPitchGainConceal_GSMAMR_16s; reset 1 x 5, 0, 1
 * @param[in,out] pPred    8 words of the predictor, which a lost frame feeds with its averages
 * @param[in,out] pGain    Q1; not read if the frame is lost
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsRangeErr    bfState outside its range
 */
VspStatus vspsCodeGainConceal_GSMAMR_16s(Vsp32s bfi, Vsp32s prevBfi, Vsp32s bfState, Vsp16s* pMem, Vsp16s* pPred,
                                         Vsp16s* pGain);

/**
 * Random parameters for a frame of speech that did not arrive (`build_CN_param`).
 *
 * @param[in]     mode    bit rate
 * @param[in,out] pSeed   reset 21845
 * @param[out]    pParam  the parameters of a frame: 17, 19, 19, 19, 19, 23, 39 or 57 of them, from the lowest rate on
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsRangeErr    mode outside its set
 */
VspStatus vspsRandomParameters_GSMAMR_16s(Vsp32s mode, Vsp16s* pSeed, Vsp16s* pParam);

/**
 * Tells background noise from speech in the decoder (`Bgn_scd`).
 *
 * @param[in]     pPitchGain       pitch gains of nine subframes, newest last, Q14
 * @param[in]     pSrc             160 samples of the synthesis
 * @param[in,out] pMem             61 words, reset 0: energies of 60 frames, newest last; hangover
 * @param[in,out] pVoicedHangover  frames since the last voiced one, at most 10, reset 0
 * @param[out]    pInNoise         1 background noise, 0 speech
 * @retval vspStsNullPtrErr  a pointer is null
 */
VspStatus vspsBackgroundNoiseDetect_GSMAMR_16s(const Vsp16s* pPitchGain, const Vsp16s* pSrc, Vsp16s* pMem,
                                               Vsp16s* pVoicedHangover, Vsp16s* pInNoise);

#ifdef __cplusplus
}
#endif

#endif
