/**
 * @file
 * AMR-WB: sizes of the state objects; so far the library only answers how large they will be.
 */
#ifndef VSPSC_AMRWB_H
#define VSPSC_AMRWB_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Size of the state of the high-pass filter, 3GPP TS 26.190 5.1: 40 bytes.
 *
 * @param[in]  mode   2 or 3
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 * @retval vspStsRangeErr    mode is neither 2 nor 3
 */
VspStatus vspsHighPassFilterGetSize_AMRWB_16s(Vsp32s mode, Vsp32s* pSize);

/**
 * Size of the state of the adaptive-codebook decoder, 3GPP TS 26.190 6.1: 24 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsAdaptiveCodebookDecodeGetSize_AMRWB_16s(Vsp32s* pSize);

/**
 * Size of the state of the voice activity detector, 3GPP TS 26.194: 172 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsVADGetSize_AMRWB_16s(Vsp32s* pSize);

#ifdef __cplusplus
}
#endif

#endif
