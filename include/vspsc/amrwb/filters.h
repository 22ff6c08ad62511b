/**
 * @file
 * AMR-WB: high-pass, pre-emphasis, residual, synthesis and band filters.
 */
#ifndef VSPSC_AMRWB_FILTERS_H
#define VSPSC_AMRWB_FILTERS_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Size of the state of the high-pass filter, 3GPP TS 26.190 5.1: 40 bytes.
 *
 * @param[in]  mode   2 or 3
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 * @retval vspStsRangeErr    mode is neither 2 nor 3
 */
VspStatus vspsHighPassFilterGetSize_AMRWB_16s(Vsp32s mode, Vsp32s* pSize);

#ifdef __cplusplus
}
#endif

#endif
