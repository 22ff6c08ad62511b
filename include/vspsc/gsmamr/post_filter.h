/**
 * @file
 * GSM-AMR (narrow band): the adaptive post-filter (3GPP TS 26.090, 6.2.1).
 *
 * The bit rates (mode): 0 = 4.75, 1 = 5.15, 3 = 5.90, 6 = 6.70, 7 = 7.40, 8 = 7.95, 11 = 10.2, 12 = 12.2 kbit/s, 25 =
 * silence descriptor. Bit-exact with the fixed-point reference of the standard (3GPP TS 26.073).
 */
#ifndef VSPSC_GSMAMR_POST_FILTER_H
#define VSPSC_GSMAMR_POST_FILTER_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Size of the state of the post-filter: 44 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsPostFilterGetStateSize_GSMAMR_16s(Vsp32s* pSize);

/**
 * Resets the state of the post-filter.
 *
 * @param[out] pState  state
 * @retval vspStsNullPtrErr  pState is null
 */
VspStatus vspsPostFilterInit_GSMAMR_16s(void* pState);

/**
 * Post-filters a frame (`Post_Filter`): formants, tilt, and the gain brought back.
 *
 * @param[in]     pSrc    160 samples of the synthesis
 * @param[in]     pLPC    44 words: the filters of the four subframes, Q12
 * @param[in]     mode    bit rate
 * @param[out]    pDst    160 samples; may be pSrc
 * @param[in,out] pState  state
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsRangeErr    mode outside its set
 */
VspStatus vspsPostFilter_GSMAMR_16s(const Vsp16s* pSrc, const Vsp16s* pLPC, Vsp32s mode, Vsp16s* pDst, void* pState);

#ifdef __cplusplus
}
#endif

#endif
