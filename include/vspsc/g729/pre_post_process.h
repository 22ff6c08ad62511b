/**
 * @file
 * G.729: high-pass filters of the input and of the output.
 */
#ifndef VSPSC_G729_PRE_POST_PROCESS_H
#define VSPSC_G729_PRE_POST_PROCESS_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Size of the state of the high-pass filter, G.729 3.1: 24 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsHighPassFilterSize_G729(Vsp32s* pSize);

/**
 * Sets the coefficients of a high-pass filter and resets its memory.
 *
 * The input filter of the codec, which halves the signal: 1899, -3798, 1899, 4096, 7807, -3733, for a scale factor of 12.
 * The output filter: 7699, -15398, 7699, 8192, 15836, -7667, for 13.
 *
 * @param[in]  pCoeff  b0, b1, b2, a0, a1, a2 in Q(scaleFactor); a0 is not used
 * @param[out] pState  state
 * @retval vspStsNullPtrErr  pCoeff or pState is null
 */
VspStatus vspsHighPassFilterInit_G729(const Vsp16s* pCoeff, void* pState);

/**
 * High-pass filter of second order (G.729 3.1 and 4.2.5, Pre_Process and Post_Process).
 *
 * y[n] = a1 * y[n-1] + a2 * y[n-2] + b0 * x[n] + b1 * x[n-1] + b2 * x[n-2] in double precision, every step saturated; the
 * output is y rounded, with a scale factor of 13 2 * y. A signal may be cut into calls anywhere.
 *
 * @param[in,out] pSrcDst      len samples
 * @param[in]     len          number of samples
 * @param[in]     scaleFactor  12 or 13
 * @param[in,out] pState       state
 * @retval vspStsNullPtrErr     pSrcDst or pState is null
 * @retval vspStsSizeErr        len < 1
 * @retval vspStsScaleRangeErr  scaleFactor is neither 12 nor 13
 */
VspStatus vspsHighPassFilter_G729_16s_ISfs(Vsp16s* pSrcDst, Vsp32s len, Vsp32s scaleFactor, void* pState);

/**
 * Size of the state of the floating-point high-pass filter: 40 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsHighPassFilterSize_G729_32f(Vsp32s* pSize);

/**
 * Sets the coefficients of a floating-point high-pass filter and resets its memory.
 *
 * The input filter of Annex C, which halves the signal: 0.92727435, -1.8544941, 0.92727435, 1, 1.9059465, -0.9114024. The
 * output filter: 0.93980581, -1.8795834, 0.93980581, 1, 1.9330735, -0.93589199.
 *
 * @param[in]  pCoeff  b0, b1, b2, a0, a1, a2; a0 is not used
 * @param[out] pState  state
 * @retval vspStsNullPtrErr  pCoeff or pState is null
 */
VspStatus vspsHighPassFilterInit_G729_32f(const Vsp32f* pCoeff, void* pState);

/**
 * High-pass filter of second order in floating point (G.729 Annex C).
 *
 * y[n] = a1 * y[n-1] + a2 * y[n-2] + b0 * x[n] + b1 * x[n-1] + b2 * x[n-2].
 *
 * @param[in,out] pSrcDst  len samples
 * @param[in]     len      number of samples
 * @param[in,out] pState   state
 * @retval vspStsNullPtrErr  pSrcDst or pState is null
 * @retval vspStsSizeErr     len < 1
 */
VspStatus vspsHighPassFilter_G729_32f_I(Vsp32f* pSrcDst, Vsp32s len, void* pState);

#ifdef __cplusplus
}
#endif

#endif
