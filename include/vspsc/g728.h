/**
 * @file
 * G.728: sizes of the state objects; so far the library only answers how large they will be.
 */
#ifndef VSPSC_G728_H
#define VSPSC_G728_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Size of the state of the combined synthesis and weighting filter, G.728: 208 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsCombinedFilterGetStateSize_G728_16s(Vsp32s* pSize);

/**
 * Size of the state of the IIR filter, G.728: 64 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsIIR16sGetStateSize_G728_16s(Vsp32s* pSize);

/**
 * Size of the state of the post-filter, G.728: 64 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsPostFilterGetStateSize_G728_16s(Vsp32s* pSize);

/**
 * Size of the state of the post-filter adapter, G.728: 176 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsPostFilterAdapterGetStateSize_G728(Vsp32s* pSize);

/**
 * Size of the state of the synthesis filter, G.728: 144 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsSynthesisFilterGetStateSize_G728_16s(Vsp32s* pSize);

#ifdef __cplusplus
}
#endif

#endif
