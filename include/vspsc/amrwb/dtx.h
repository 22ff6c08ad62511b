/**
 * @file
 * AMR-WB: discontinuous transmission, the encoder's side (3GPP TS 26.192, 26.193).
 *
 * The bit rates (mode): 5 = 6.60, 9 = 8.85, 13 = 12.65, 15 = 14.25, 16 = 15.85, 18 = 18.25, 19 = 19.85, 20 = 23.05, 21
 * = 23.85 kbit/s, 25 = silence descriptor. Bit-exact with the fixed-point reference of the standard (3GPP TS 26.173).
 */
#ifndef VSPSC_AMRWB_DTX_H
#define VSPSC_AMRWB_DTX_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Size of the state of the discontinuous transmission: 432 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsDTXGetSize_AMRWB_16s(Vsp32s* pSize);

/**
 * Resets the state of the discontinuous transmission (`dtx_enc_reset`).
 *
 * @param[out] pState  state
 * @retval vspStsNullPtrErr  pState is null
 */
VspStatus vspsDTXInit_AMRWB_16s(void* pState);

/**
 * Decides whether a frame is sent as speech or described as noise (`tx_dtx_handler`): noise comes after seven frames of
 * hangover, or at once if noise was described in the last 30 frames.
 *
 * @param[in]     vad        1: speech was detected, else 0
 * @param[in,out] pMode      bit rate; becomes 25 if the frame is noise
 * @param[out]    pHangover  frames of hangover that are left, 0..7
 * @param[in,out] pState     state
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsRangeErr    vad is neither 0 nor 1, or *pMode no bit rate
 */
VspStatus vspsDTXHandler_AMRWB_16s(Vsp16s vad, Vsp32s* pMode, Vsp16s* pHangover, void* pState);

/**
 * Remembers the spectrum and the level of a frame without speech (`dtx_buffer`).
 *
 * @param[in]     pISF    16 ISFs
 * @param[in]     pExc    256 samples of the LP residual, scaled by 2^scale
 * @param[in]     scale   0..8
 * @param[in]     mode    bit rate of speech
 * @param[in,out] pState  state
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsRangeErr    scale outside 0..8, or mode outside its set
 */
VspStatus vspsDTXBuffer_AMRWB_16s(const Vsp16s* pISF, const Vsp16s* pExc, Vsp32s scale, Vsp32s mode, void* pState);

/**
 * Describes the noise of the last eight frames (`dtx_enc`); of their spectra the two that differ most from the others are
 * left out where they differ much.
 *
 * @param[out]    pISF    16 ISFs as the decoder will have them
 * @param[out]    pExc    256 samples of noise at the level that the decoder will have
 * @param[out]    pIndex  7 indices: ISFs (6, 6, 6, 5, 5 bits), level (6 bits), whether the decoder is to vary the noise (1
 * bit)
 * @param[in,out] pState  state
 * @retval vspStsNullPtrErr  a pointer is null
 */
VspStatus vspsDTXEncode_AMRWB_16s(Vsp16s* pISF, Vsp16s* pExc, Vsp16s* pIndex, void* pState);

#ifdef __cplusplus
}
#endif

#endif
