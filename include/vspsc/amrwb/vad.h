/**
 * @file
 * AMR-WB: voice activity detector.
 */
#ifndef VSPSC_AMRWB_VAD_H
#define VSPSC_AMRWB_VAD_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

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
