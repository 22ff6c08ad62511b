/**
 * @file
 * AMR-WB: voice activity detector (3GPP TS 26.194).
 *
 * Bit-exact with the fixed-point reference of the standard (3GPP TS 26.173).
 */
#ifndef VSPSC_AMRWB_VAD_H
#define VSPSC_AMRWB_VAD_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Size of the state of the voice activity detector: 172 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsVADGetSize_AMRWB_16s(Vsp32s* pSize);

/**
 * Resets the state of the voice activity detector.
 *
 * @param[out] pState  state
 * @retval vspStsNullPtrErr  pState is null
 */
VspStatus vspsVADInit_AMRWB_16s(void* pState);

/**
 * Whether a frame has speech (`wb_vad`): the levels of twelve bands over the noise estimated in them, against a threshold
 * that depends on the levels of noise and speech; with hangover.
 *
 * @param[in]     pSrc    256 samples at 12.8 kHz, pre-emphasised
 * @param[out]    pFlag   1 speech, 0 none
 * @param[in,out] pState  state
 * @retval vspStsNullPtrErr  a pointer is null
 */
VspStatus vspsVAD_AMRWB_16s(const Vsp16s* pSrc, Vsp16s* pFlag, void* pState);

/**
 * Tells the detector how periodic the signal is, after each open-loop pitch search (`wb_vad_tone_detection`). Five times in
 * a row above 0.65 is a tone, which is not learnt as noise.
 *
 * @param[in]     gain    normalised correlation at the open-loop lag, Q15
 * @param[in,out] pState  state
 * @retval vspStsNullPtrErr  pState is null
 */
VspStatus vspsVADTone_AMRWB_16s(Vsp16s gain, void* pState);

#ifdef __cplusplus
}
#endif

#endif
