/**
 * @file
 * GSM-AMR (narrow band): what the decoder does with the excitation (3GPP TS 26.090, 6.1).
 *
 * The bit rates (mode): 0 = 4.75, 1 = 5.15, 3 = 5.90, 6 = 6.70, 7 = 7.40, 8 = 7.95, 11 = 10.2, 12 = 12.2 kbit/s. Bit-exact
 * with the fixed-point reference of the standard (3GPP TS 26.073).
 */
#ifndef VSPSC_GSMAMR_EXCITATION_H
#define VSPSC_GSMAMR_EXCITATION_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Spreads the pulses of the code where the pitch gain is low, and forms the excitation (`ph_disp`).
 *
 * @param[in]     gainPitch  Q14
 * @param[in]     gainCode   Q1
 * @param[in]     mode       bit rate; nothing is spread at modes 7, 11 and 12
 * @param[in]     lock       not 0: spread most
 * @param[in,out] pExc       40 samples: adaptive-codebook vector, becomes the excitation
 * @param[in,out] pCode      40 samples
 * @param[in,out] pMem       8 words, reset 0: five pitch gains, newest first; previous filter, previous code gain, onset
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsRangeErr    mode outside its set
 */
VspStatus vspsPhaseDispersion_GSMAMR_16s(Vsp16s gainPitch, Vsp16s gainCode, Vsp32s mode, Vsp32s lock, Vsp16s* pExc,
                                         Vsp16s* pCode, Vsp16s* pMem);

/**
 * Keeps the excitation of bad or degraded frames in background noise at the level of those before (`Ex_ctrl`).
 *
 * @param[in]     pFlags   6 words as of vspsCodeGainSmooth_GSMAMR_16s
 * @param[in]     mode     bit rate; only modes 0, 1 and 3 change the excitation
 * @param[in]     bfState  state of the bad-frame handling, 0..6
 * @param[in,out] pExc     40 samples
 * @param[in,out] pHist    levels of nine subframes, newest last, reset 0
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsRangeErr    mode or bfState outside its range
 */
VspStatus vspsExcitationControl_GSMAMR_16s(const Vsp16s* pFlags, Vsp32s mode, Vsp32s bfState, Vsp16s* pExc, Vsp16s* pHist);

/**
 * Emphasises the pitch in the excitation, whose energy stays (with `agc2`).
 *
 * @param[in]  pVector  40 samples of the adaptive-codebook vector
 * @param[in]  pExc     40 samples
 * @param[in]  mode     bit rate
 * @param[in]  sharp    Q14; up to 8192 the excitation stays
 * @param[in]  gain     pitch gain, Q14
 * @param[out] pDst     40 samples
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsRangeErr    mode outside its set
 */
VspStatus vspsExcitationEmphasis_GSMAMR_16s(const Vsp16s* pVector, const Vsp16s* pExc, Vsp32s mode, Vsp16s sharp,
                                            Vsp16s gain, Vsp16s* pDst);

#ifdef __cplusplus
}
#endif

#endif
