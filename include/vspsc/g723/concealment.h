/**
 * @file
 * G.723.1: concealment of erased frames (3.10).
 */
#ifndef VSPSC_G723_CONCEALMENT_H
#define VSPSC_G723_CONCEALMENT_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Gain of the noise that takes the place of unvoiced erased frames (Decod): that of the mean index of the last two
 * subframes of a good frame, three quarters of it after each erased one.
 *
 * @param[in]     index2  gain index of the fixed codebook in subframe 2, 0 .. 23; not used for an erased frame
 * @param[in]     index3  that in subframe 3
 * @param[in]     erased  1 for an erased frame, else 0
 * @param[in,out] pGain   reset to 0
 * @retval vspStsNullPtrErr    pGain is null
 * @retval vspStsRangeErr      erased is not 0 or 1
 * @retval vspStsCodeRangeErr  in a good frame, an index outside 0 .. 23
 */
VspStatus vspsErasureGain_G723_16s(Vsp16s index2, Vsp16s index3, Vsp32s erased, Vsp16s* pGain);

/**
 * Classifies the end of a good frame as voiced or not for erased ones after it (Comp_Info).
 *
 * @param[in]  pExc     385 samples of the excitation scaled to 13 bits: 145 of the past, 240 of the frame
 * @param[in]  lag      of the second pair of subframes, 18 .. 145
 * @param[out] pDelay   period within 3 of lag, of which no more than 142 counts; 0 for unvoiced
 * @param[out] pEnergy  energy of the last 120 samples
 * @retval vspStsNullPtrErr  pExc, pDelay or pEnergy is null
 * @retval vspStsRangeErr    lag outside 18 .. 145
 */
VspStatus vspsErasureClassify_G723_16s(const Vsp16s* pExc, Vsp16s lag, Vsp16s* pDelay, Vsp16s* pEnergy);

/**
 * Excitation of an erased frame (Regen): the period repeated and reduced to three quarters, or noise, after which the past
 * excitation is cleared; silence from the third frame on.
 *
 * @param[in]     delay     0 for noise, or 15 .. 145
 * @param[in]     gain      of the noise
 * @param[in]     count     erased frames in a row, 1 .. 3, 3 for more
 * @param[in,out] pPastExc  145 samples, the oldest first
 * @param[in,out] pSeed     of the noise; reset to 0; not used for periods and silence, and may then be null
 * @param[out]    pDst      240 samples
 * @retval vspStsNullPtrErr  pPastExc or pDst is null, or pSeed with delay 0 and count below 3
 * @retval vspStsRangeErr    delay or count outside its range
 */
VspStatus vspsErasureConceal_G723_16s(Vsp16s delay, Vsp16s gain, Vsp32s count, Vsp16s* pPastExc, Vsp16s* pSeed,
                                      Vsp16s* pDst);

#ifdef __cplusplus
}
#endif

#endif
