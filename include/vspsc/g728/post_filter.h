/**
 * @file
 * G.728: adaptive post-filter. Speech is Q2 and, where it is kept, Q0.
 */
#ifndef VSPSC_G728_POST_FILTER_H
#define VSPSC_G728_POST_FILTER_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Size of the state of what the post-filter follows, G.728 blocks 81 and 82: 176 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsPostFilterAdapterGetStateSize_G728(Vsp32s* pSize);

/**
 * Resets what the post-filter follows, G.728 blocks 81 and 82.
 *
 * @param[out] pState  its state
 * @retval vspStsNullPtrErr  pState is null
 */
VspStatus vspsPostFilterAdapterInit_G728(void* pState);

/**
 * Residual of the tenth-order prediction, G.728 block 81.
 *
 * @param[in]     pSrc      5 samples, Q2
 * @param[in]     pCoeff    10 coefficients, Q13
 * @param[out]    pDst      5 samples, Q1; may be pSrc
 * @param[in,out] pAdapter  initialised state
 * @retval vspStsNullPtrErr  a pointer is null
 */
VspStatus vspsLPCInverseFilter_G728_16s(const Vsp16s* pSrc, const Vsp16s* pCoeff, Vsp16s* pDst, void* pAdapter);

/**
 * Pitch of the decoded speech, G.728 block 82: once every 20 samples.
 *
 * @param[in]     pResidual  the last 240 samples of the residual, Q1, the newest at the end
 * @param[in,out] pPitch     lag of the frame before, then of this one, 20 to 140
 * @param[in,out] pAdapter   initialised state
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsRangeErr    *pPitch is out of range
 */
VspStatus vspsPitchExtract_G728_16s(const Vsp16s* pResidual, Vsp16s* pPitch, void* pAdapter);

/**
 * Tap and gains of the long-term post-filter, G.728 blocks 83 and 84.
 *
 * @param[in]  pPast  the last 240 samples, Q0, the newest at the end
 * @param[in]  pitch  lag, 20 to 140
 * @param[out] pTap   prediction tap, Q14, 0 to 1
 * @param[out] pGain  gain of the sample, Q14, and of that of a lag before, Q16
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsRangeErr    pitch is out of range
 */
VspStatus vspsPitchTap_G728_16s(const Vsp16s* pPast, Vsp32s pitch, Vsp16s* pTap, Vsp16s* pGain);

/**
 * Coefficients of the short-term post-filter, G.728 block 85.
 *
 * If a pole does not fit into Q14, pZero, pPole and pTilt stay as they are.
 *
 * @param[in]  pLPC      10 coefficients of the prediction
 * @param[in]  scale     13 to 15: their Q format
 * @param[in]  rc1       first reflection coefficient, Q15
 * @param[out] pZero     10 coefficients of the zeros, Q14
 * @param[out] pPole     10 of the poles, Q14
 * @param[out] pTilt     spectral tilt compensation, Q14
 * @param[out] pInverse  10 coefficients of vspsLPCInverseFilter_G728_16s, Q13
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsRangeErr    scale is not 13 to 15 or rc1 not a 16-bit number
 */
VspStatus vspsPostFilterCoeff_G728_16s(const Vsp16s* pLPC, Vsp32s scale, Vsp32s rc1, Vsp16s* pZero, Vsp16s* pPole,
                                       Vsp16s* pTilt, Vsp16s* pInverse);

/**
 * Size of the state of the post-filter, G.728 blocks 71 to 77: 64 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsPostFilterGetStateSize_G728_16s(Vsp32s* pSize);

/**
 * Resets the post-filter, G.728 blocks 71 to 77.
 *
 * @param[out] pState  its state
 * @retval vspStsNullPtrErr  pState is null
 */
VspStatus vspsPostFilterInit_G728_16s(void* pState);

/**
 * Post-filter, G.728 blocks 71 to 77.
 *
 * @param[in]     pSrc    5 samples, Q2
 * @param[in]     pPast   the 140 samples before them, Q0
 * @param[in]     pitch   lag, 20 to 140
 * @param[in]     pGain   gains of vspsPitchTap_G728_16s
 * @param[in]     pZero   10 coefficients of the zeros, Q14
 * @param[in]     pPole   10 coefficients of the poles, Q14
 * @param[in]     tilt    spectral tilt compensation, Q14
 * @param[out]    pDst    5 samples, Q2; may be pSrc
 * @param[in,out] pState  initialised state
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsRangeErr    pitch is out of range
 */
VspStatus vspsPostFilter_G728_16s(const Vsp16s* pSrc, const Vsp16s* pPast, Vsp32s pitch, const Vsp16s* pGain,
                                  const Vsp16s* pZero, const Vsp16s* pPole, Vsp32s tilt, Vsp16s* pDst, void* pState);

#ifdef __cplusplus
}
#endif

#endif
