/**
 * @file
 * G.729 Annex E: linear prediction from the past synthesis.
 */
#ifndef VSPSC_G729_BACKWARD_LP_H
#define VSPSC_G729_BACKWARD_LP_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

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
