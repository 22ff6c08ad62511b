/**
 * @file
 * G.729.1: sizes of the state objects; so far the library only answers how large they will be.
 */
#ifndef VSPSC_G7291_H
#define VSPSC_G7291_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Size of the state of the high-pass filter, G.729.1: 24 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsFilterHighpassGetStateSize_G7291_16s(Vsp32s* pSize);

/**
 * Size of the state of the excitation generator of the bandwidth extension, G.729.1: 128 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsGenerateExcitationGetStateSize_G7291_16s(Vsp32s* pSize);

/**
 * Size of the state of the quadrature mirror filter, G.729.1: 128 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsQMFGetStateSize_G7291_16s(Vsp32s* pSize);

#ifdef __cplusplus
}
#endif

#endif
