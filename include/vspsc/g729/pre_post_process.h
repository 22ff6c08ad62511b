/**
 * @file
 * G.729: high-pass filters of the input and of the output.
 */
#ifndef VSPSC_G729_PRE_POST_PROCESS_H
#define VSPSC_G729_PRE_POST_PROCESS_H

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

#ifdef __cplusplus
}
#endif

#endif
