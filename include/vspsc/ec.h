/**
 * @file
 * Echo cancellation: sizes of the state objects.
 */
#ifndef VSPSC_EC_H
#define VSPSC_EC_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Size of the state of the fixed-point full-band step-size controller: 96 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsFullbandControllerGetSize_EC_16s(Vsp32s* pSize);

/**
 * Size of the state of the floating-point full-band step-size controller: 72 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsFullbandControllerGetSize_EC_32f(Vsp32s* pSize);

/**
 * Size of the state of the fixed-point 2100 Hz tone detector, G.168: 72 bytes.
 *
 * @param[in]  rate   sampling rate, 8000 or 16000 Hz
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 * @retval vspStsRangeErr    rate is neither 8000 nor 16000
 */
VspStatus vspsToneDetectGetStateSize_EC_16s(Vsp32s rate, Vsp32s* pSize);

/**
 * Size of the state of the floating-point 2100 Hz tone detector, G.168: 80 bytes.
 *
 * @param[in]  rate   sampling rate, 8000 or 16000 Hz
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 * @retval vspStsRangeErr    rate is neither 8000 nor 16000
 */
VspStatus vspsToneDetectGetStateSize_EC_32f(Vsp32s rate, Vsp32s* pSize);

#ifdef __cplusplus
}
#endif

#endif
