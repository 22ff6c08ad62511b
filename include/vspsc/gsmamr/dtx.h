/**
 * @file
 * GSM-AMR (narrow band): discontinuous transmission in the encoder (3GPP TS 26.092, 26.093).
 *
 * The bit rates (mode): 0 = 4.75, 1 = 5.15, 3 = 5.90, 6 = 6.70, 7 = 7.40, 8 = 7.95, 11 = 10.2, 12 = 12.2 kbit/s, 25 =
 * silence descriptor. Bit-exact with the fixed-point reference of the standard (3GPP TS 26.073).
 */
#ifndef VSPSC_GSMAMR_DTX_H
#define VSPSC_GSMAMR_DTX_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Size of the state of the discontinuous transmission: 192 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsDTXGetStateSize_GSMAMR_16s(Vsp32s* pSize);

/**
 * Resets the state of the discontinuous transmission.
 *
 * @param[out] pState  state
 * @retval vspStsNullPtrErr  pState is null
 */
VspStatus vspsDTXInit_GSMAMR_16s(void* pState);

/**
 * Decides whether a frame is sent as speech or described as silence (`tx_dtx_handler`).
 *
 * @param[in]     vadFlag      not 0: speech was detected
 * @param[in,out] pMode        bit rate; becomes 25 if the frame is silence
 * @param[out]    pComputeSID  1 if a new silence descriptor is to be made, else 0
 * @param[in,out] pState       state
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsRangeErr    *pMode is no bit rate
 */
VspStatus vspsDTXHandler_GSMAMR_16s(Vsp32s vadFlag, Vsp32s* pMode, Vsp32s* pComputeSID, void* pState);

/**
 * Remembers the spectrum and the level of a frame, speech or silence; called in every frame (`dtx_buffer`).
 *
 * @param[in]     pLSP    10 unquantised LSPs, Q15
 * @param[in]     pSrc    160 samples that came in with the frame, filtered
 * @param[in,out] pState  state
 * @retval vspStsNullPtrErr  a pointer is null
 */
VspStatus vspsDTXBuffer_GSMAMR_16s(const Vsp16s* pLSP, const Vsp16s* pSrc, void* pState);

/**
 * Indices of a silence descriptor (`dtx_enc`).
 *
 * @param[in]     computeSID  not 0: a new one; else the last one again, if there was one
 * @param[in,out] pPred       8 words of the predictor of the code gain, set with a new descriptor
 * @param[out]    pIndex      prediction (3 bits), LSFs (8, 9, 9 bits), level (6 bits)
 * @param[in,out] pState      state
 * @retval vspStsNullPtrErr  a pointer is null
 */
VspStatus vspsDTXEncode_GSMAMR_16s(Vsp32s computeSID, Vsp16s* pPred, Vsp16s* pIndex, void* pState);

/**
 * Which kind of frame is sent (`sid_sync`).
 *
 * @param[in]     mode        bit rate, or 25 for silence
 * @param[in,out] pMem        2 words: frames to the next descriptor, previous type; reset 3, 0
 * @param[out]    pFrameType  0 speech, 1 first silence descriptor, 2 update, 3 nothing
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsRangeErr    mode outside its set
 */
VspStatus vspsSIDSync_GSMAMR_16s(Vsp32s mode, Vsp16s* pMem, Vsp32s* pFrameType);

#ifdef __cplusplus
}
#endif

#endif
