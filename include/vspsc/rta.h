/**
 * @file
 * RTA: sizes of the state objects; so far the library only answers how large they will be.
 */
#ifndef VSPSC_RTA_H
#define VSPSC_RTA_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Size of the state of the post-filter: 32 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsPostFilterGetStateSize_RTA_32f(Vsp32s* pSize);

/**
 * Size of the state of the quadrature mirror filter: 208 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsQMFGetStateSize_RTA_32f(Vsp32s* pSize);

#ifdef __cplusplus
}
#endif

#endif
