/**
 * @file
 * GSM-AMR (narrow band): comfort noise in the decoder (3GPP TS 26.092, 26.093).
 *
 * The bit rates (mode): 0 = 4.75, 1 = 5.15, 3 = 5.90, 6 = 6.70, 7 = 7.40, 8 = 7.95, 11 = 10.2, 12 = 12.2 kbit/s, 25 =
 * silence descriptor. Bit-exact with the fixed-point reference of the standard (3GPP TS 26.073).
 */
#ifndef VSPSC_GSMAMR_CNG_H
#define VSPSC_GSMAMR_CNG_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Size of the state of the comfort noise: 408 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsCNGGetStateSize_GSMAMR_16s(Vsp32s* pSize);

/**
 * Resets the state of the comfort noise.
 *
 * @param[out] pState  state
 * @retval vspStsNullPtrErr  pState is null
 */
VspStatus vspsCNGInit_GSMAMR_16s(void* pState);

/**
 * What the decoder makes of a frame (`rx_dtx_handler`).
 *
 * @param[in]     frameType  0 good, 1 degraded, 2 onset, 3 bad, 4 first silence descriptor, 5 update, 6 bad descriptor, 7
 * no data
 * @param[in]     prevState  of the frame before: 0 speech, 1 comfort noise, 2 muted
 * @param[out]    pNewState  of this frame
 * @param[in,out] pState     state
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsRangeErr    frameType or prevState outside its range
 */
VspStatus vspsCNGHandler_GSMAMR_16s(Vsp32s frameType, Vsp32s prevState, Vsp32s* pNewState, void* pState);

/**
 * A frame of comfort noise (`dtx_dec`).
 *
 * @param[in]     pIndex     5 indices of a silence descriptor; read only if the handler was given an update
 * @param[in]     mode       bit rate or 25
 * @param[in]     prevState  of the frame before, 0..2
 * @param[in]     newState   of this frame, 1 or 2
 * @param[in,out] pMemSyn    10 samples: memory of the synthesis filter
 * @param[in,out] pPred      8 words of the predictor of the code gain, set with a silence descriptor
 * @param[out]    pLSF       10 LSFs
 * @param[out]    pDst       160 samples
 * @param[out]    pLPC       44 words: four times the filter, Q12
 * @param[in,out] pState     state
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsRangeErr    mode, prevState or newState outside its range, or an index that is read of more than its bits
 */
VspStatus vspsCNGDecode_GSMAMR_16s(const Vsp16s* pIndex, Vsp32s mode, Vsp32s prevState, Vsp32s newState, Vsp16s* pMemSyn,
                                   Vsp16s* pPred, Vsp16s* pLSF, Vsp16s* pDst, Vsp16s* pLPC, void* pState);

/**
 * Remembers the spectrum and the level of a frame of speech (`dtx_dec_activity_update`).
 *
 * @param[in]     pLSF    10 LSFs
 * @param[in]     pSrc    160 samples of the synthesis, before the post-filter
 * @param[in,out] pState  state
 * @retval vspStsNullPtrErr  a pointer is null
 */
VspStatus vspsCNGUpdate_GSMAMR_16s(const Vsp16s* pLSF, const Vsp16s* pSrc, void* pState);

#ifdef __cplusplus
}
#endif

#endif
