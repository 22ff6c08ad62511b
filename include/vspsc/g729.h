/**
 * @file
 * G.729: sizes of the state objects.
 */
#ifndef VSPSC_G729_H
#define VSPSC_G729_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Size of the state of the high-pass filter, G.729 3.1: 24 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsHighPassFilterSize_G729(Vsp32s* pSize);

/**
 * Size of the state of the phase dispersion, G.729 Annex D: 20 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsPhaseDispersionGetStateSize_G729D_16s(Vsp32s* pSize);

/**
 * Size of the state of the hybrid window, G.729 Annex E: 124 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsWinHybridGetStateSize_G729E_16s(Vsp32s* pSize);

/**
 * Size of the state of the floating-point hybrid window, G.729 Annex E: 124 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsWinHybridGetStateSize_G729E_32f(Vsp32s* pSize);

#ifdef __cplusplus
}
#endif

#endif
