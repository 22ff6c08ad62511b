/**
 * @file
 * G.729: what is done with the excitation after the codebooks.
 */
#ifndef VSPSC_G729_EXCITATION_H
#define VSPSC_G729_EXCITATION_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Size of the state of the phase dispersion, G.729 Annex D: 20 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsPhaseDispersionGetStateSize_G729D_16s(Vsp32s* pSize);

#ifdef __cplusplus
}
#endif

#endif
