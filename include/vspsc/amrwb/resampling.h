/**
 * @file
 * AMR-WB: between 16 kHz and the core's 12.8 kHz.
 */
#ifndef VSPSC_AMRWB_RESAMPLING_H
#define VSPSC_AMRWB_RESAMPLING_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * From 16 kHz to 12.8 kHz (3GPP TS 26.190 5.1, `Decim_12k8`).
 *
 * Output j is the sum over 30 inputs from the integer part of 5 j / 4 on, with the low-pass filter of the fraction; every
 * partial sum saturates; rounded. A signal may be cut into calls anywhere.
 *
 * @param[in]     pSrc  len samples
 * @param[in]     len   number of samples, a multiple of 5 in 5 .. 320
 * @param[in,out] pMem  the last 30 inputs, the newest last; reset 0
 * @param[out]    pDst  len * 4 / 5 samples
 * @retval vspStsNullPtrErr  pSrc, pMem or pDst is null
 * @retval vspStsSizeErr     len outside its set
 */
VspStatus vspsDownsample_AMRWB_16s(const Vsp16s* pSrc, Vsp32s len, Vsp16s* pMem, Vsp16s* pDst);

/**
 * From 12.8 kHz to 16 kHz (3GPP TS 26.190 6.1, `Oversamp_16k`).
 *
 * Output j is the sum over 24 inputs from the integer part of 4 j / 5 on, with the low-pass filter of the fraction; every
 * partial sum saturates; rounded. A signal may be cut into calls anywhere.
 *
 * @param[in]     pSrc  len samples
 * @param[in]     len   number of samples, a multiple of 8 in 8 .. 256
 * @param[in,out] pMem  the last 24 inputs, the newest last; reset 0
 * @param[out]    pDst  len * 5 / 4 samples
 * @retval vspStsNullPtrErr  pSrc, pMem or pDst is null
 * @retval vspStsSizeErr     len outside its set
 */
VspStatus vspsUpsample_AMRWB_16s(const Vsp16s* pSrc, Vsp32s len, Vsp16s* pMem, Vsp16s* pDst);

#ifdef __cplusplus
}
#endif

#endif
