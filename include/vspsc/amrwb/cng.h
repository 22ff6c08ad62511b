/**
 * @file
 * AMR-WB: comfort noise and frame types, the decoder's side (3GPP TS 26.192, 26.193).
 *
 * Bit-exact with the fixed-point reference of the standard (3GPP TS 26.173).
 */
#ifndef VSPSC_AMRWB_CNG_H
#define VSPSC_AMRWB_CNG_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Size of the state of the comfort noise: 400 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsCNGGetSize_AMRWB_16s(Vsp32s* pSize);

/**
 * Resets the state of the comfort noise (`dtx_dec_reset`).
 *
 * @param[out] pState  state
 * @retval vspStsNullPtrErr  pState is null
 */
VspStatus vspsCNGInit_AMRWB_16s(void* pState);

/**
 * What the decoder makes of a frame (`rx_dtx_handler`).
 *
 * @param[in]     frameType  0 good, 1 degraded, 2 lost, 3 bad, 4 first silence descriptor, 5 update, 6 bad descriptor, 7 no
 * data
 * @param[out]    pNewState  0 speech, 1 comfort noise, 2 muted noise
 * @param[in,out] pState     state
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsRangeErr    frameType outside 0..7
 */
VspStatus vspsCNGHandler_AMRWB_16s(Vsp16s frameType, Vsp16s* pNewState, void* pState);

/**
 * Spectrum and excitation of a frame of comfort noise (`dtx_dec`), between the last two descriptors or from the speech
 * before the first one.
 *
 * @param[in]     pIndex    7 indices as of vspsDTXEncode_AMRWB_16s; they count if the handler was given an update
 * @param[in]     newState  of this frame, 1 or 2
 * @param[out]    pISF      16 ISFs
 * @param[out]    pExc      256 samples
 * @param[in,out] pState    state
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsRangeErr    an index of more than its bits, or newState neither 1 nor 2
 */
VspStatus vspsCNGDecode_AMRWB_16s(const Vsp16s* pIndex, Vsp16s newState, Vsp16s* pISF, Vsp16s* pExc, void* pState);

/**
 * Remembers the spectrum and the level of a frame of speech (`dtx_dec_activity_update`).
 *
 * @param[in]     pISF    16 ISFs
 * @param[in]     pExc    256 samples of the excitation, unscaled
 * @param[in,out] pState  state
 * @retval vspStsNullPtrErr  a pointer is null
 */
VspStatus vspsCNGUpdate_AMRWB_16s(const Vsp16s* pISF, const Vsp16s* pExc, void* pState);

/**
 * Tells the state at the end of every frame what the frame was.
 *
 * @param[in]     newState  0..2, as of vspsCNGHandler_AMRWB_16s
 * @param[in]     vad       flag of a speech frame, 0 or 1
 * @param[in]     bfi       1 if the frame was bad, else 0
 * @param[in,out] pState    state
 * @retval vspStsNullPtrErr  pState is null
 * @retval vspStsRangeErr    newState outside 0..2, or vad or bfi neither 0 nor 1
 */
VspStatus vspsCNGSetState_AMRWB_16s(Vsp16s newState, Vsp16s vad, Vsp16s bfi, void* pState);

#ifdef __cplusplus
}
#endif

#endif
