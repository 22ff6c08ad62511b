/**
 * @file
 * AMR-WB: adaptive codebook.
 */
#ifndef VSPSC_AMRWB_ADAPTIVE_CODEBOOK_H
#define VSPSC_AMRWB_ADAPTIVE_CODEBOOK_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Size of the state of the adaptive-codebook decoder, 3GPP TS 26.190 6.1: 24 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsAdaptiveCodebookDecodeGetSize_AMRWB_16s(Vsp32s* pSize);

#ifdef __cplusplus
}
#endif

#endif
