/**
 * @file
 * G.722: sizes of the state objects; so far the library only answers how large they will be.
 */
#ifndef VSPSC_G722_H
#define VSPSC_G722_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Size of the state of the sub-band ADPCM encoder, G.722 3: 144 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsSBADPCMEncodeStateSize_G722_16s(Vsp32s* pSize);

/**
 * Size of the state of the sub-band ADPCM decoder, G.722 4: 144 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsSBADPCMDecodeStateSize_G722_16s(Vsp32s* pSize);

#ifdef __cplusplus
}
#endif

#endif
