/**
 * @file
 * GSM-AMR: the filters at the input of the encoder and the output of the decoder.
 */
#ifndef VSPSC_GSMAMR_PRE_POST_PROCESS_H
#define VSPSC_GSMAMR_PRE_POST_PROCESS_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Size of the state of the high-pass filter: 16 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsHighPassFilterGetSize_GSMAMR_16s(Vsp32s* pSize);

/**
 * Resets the state of a high-pass filter and chooses the filter.
 *
 * @param[in]  filter  0: encoder input, which is halved (cut-off 80 Hz); 1: decoder output, which is doubled (60 Hz)
 * @param[out] pState  state
 * @retval vspStsNullPtrErr  pState is null
 * @retval vspStsRangeErr    filter is neither 0 nor 1
 */
VspStatus vspsHighPassFilterInit_GSMAMR_16s(Vsp32s filter, void* pState);

/**
 * High-pass filter of second order (3GPP TS 26.090 5.1 and 6.2.2, Pre_Process and Post_Process).
 *
 * y[n] = a1 * y[n-1] + a2 * y[n-2] + b0 * x[n] + b1 * x[n-1] + b2 * x[n-2] in double precision, every step saturated;
 * rounded. Samples are not cut to 13 bits. A signal may be cut into calls anywhere.
 *
 * @param[in,out] pSrcDst  len samples
 * @param[in]     len      number of samples
 * @param[in,out] pState   state
 * @retval vspStsNullPtrErr  pSrcDst or pState is null
 * @retval vspStsSizeErr     len < 1
 */
VspStatus vspsHighPassFilter_GSMAMR_16s_I(Vsp16s* pSrcDst, Vsp32s len, void* pState);

#ifdef __cplusplus
}
#endif

#endif
