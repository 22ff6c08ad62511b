/**
 * @file
 * AMR-WB: adaptive codebook in the decoder (3GPP TS 26.190, 6.1, TS 26.191).
 *
 * The bit rates (mode): 5 = 6.60, 9 = 8.85, 13 = 12.65, 15 = 14.25, 16 = 15.85, 18 = 18.25, 19 = 19.85, 20 = 23.05, 21
 * = 23.85 kbit/s. Bit-exact with the fixed-point reference of the standard (3GPP TS 26.173).
 */
#ifndef VSPSC_AMRWB_ADAPTIVE_CODEBOOK_DECODE_H
#define VSPSC_AMRWB_ADAPTIVE_CODEBOOK_DECODE_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Size of the state of the adaptive-codebook decoder: 24 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsAdaptiveCodebookDecodeGetSize_AMRWB_16s(Vsp32s* pSize);

/**
 * Resets the state of the adaptive-codebook decoder.
 *
 * @param[out] pState  state
 * @retval vspStsNullPtrErr  pState is null
 */
VspStatus vspsAdaptiveCodebookDecodeInit_AMRWB_16s(void* pState);

/**
 * What changes after comfort noise: the last good lag becomes 64. The history of the lags stays.
 *
 * @param[in,out] pState  state
 * @retval vspStsNullPtrErr  pState is null
 */
VspStatus vspsAdaptiveCodebookDecodeReset_AMRWB_16s(void* pState);

/**
 * Lag and adaptive-codebook vector of a subframe. In a bad frame the lag is kept only if it agrees with those before, else
 * it is one of them or near them (`lagconc`); its fraction is 0.
 *
 * The vector is low-pass filtered if filter is 0, always at modes 5 and 9, and not if nothing of the frame is usable.
 *
 * @param[in]     index     of the lag: 8 bits in absolute subframes (0, and at other modes than 5 also 2) at modes 5 and 9,
 *                          else 9 bits; 5 or 6 bits in the others
 * @param[in]     filter    1: not filtered, 0: filtered
 * @param[in]     subframe  0..3
 * @param[in]     mode      bit rate
 * @param[in]     bfi       0 good frame, 1 bad frame with usable lags, 2 unusable
 * @param[in]     pGains    five pitch gains of good subframes, newest last: pMem + 17 of vspsGainDecode_AMRWB_16s
 * @param[in,out] pExc      248 samples of past excitation before the pointer; pExc[0..64] are written, the last one to be
 *                          overwritten
 * @param[out]    pDelay    lag 34..231 and fraction in quarters
 * @param[in,out] pState    state
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsRangeErr    filter, subframe, mode or bfi outside its range, or an index of more than its bits
 */
VspStatus vspsAdaptiveCodebookDecode_AMRWB_16s(Vsp16s index, Vsp16s filter, Vsp16s subframe, Vsp32s mode, Vsp16s bfi,
                                               const Vsp16s* pGains, Vsp16s* pExc, Vsp16s* pDelay, void* pState);

#ifdef __cplusplus
}
#endif

#endif
