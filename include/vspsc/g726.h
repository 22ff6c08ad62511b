/**
 * @file
 * G.726: sizes of the state objects; so far the library only answers how large they will be.
 */
#ifndef VSPSC_G726_H
#define VSPSC_G726_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Size of the state of the ADPCM encoder, G.726 2: 88 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsEncodeGetStateSize_G726_16s8u(Vsp32s* pSize);

/**
 * Size of the state of the ADPCM decoder, G.726 3: 92 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsDecodeGetStateSize_G726_8u16s(Vsp32s* pSize);

#ifdef __cplusplus
}
#endif

#endif
