/**
 * @file
 * G.729: the transmitted index of the pitch delay. For delay pairs see pitch.h.
 */
#ifndef VSPSC_G729_DELAY_H
#define VSPSC_G729_DELAY_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Codes the pitch delay (G.729 3.7.2, Enc_lag3).
 *
 * Subframe 0, 8 bits: 3 T - 58 + f for T up to 85, T + 112 above. Subframe 1, 5 bits: 3 (T - t_min) + 2 + f, where t_min is
 * lag - 5, at least 20 and at most 134.
 *
 * @param[in]  pDelay    delay pair that the closed-loop search gave
 * @param[in]  lag       lag argument of that search: the open-loop lag in subframe 0, the integer lag of subframe 0 in
 *                       subframe 1; 18 .. 145
 * @param[in]  subframe  0 or 1
 * @param[out] pIndex    index
 * @retval vspStsNullPtrErr  pDelay or pIndex is null
 * @retval vspStsRangeErr    lag outside 18 .. 145, or subframe neither 0 nor 1
 */
VspStatus vspsDelayEncode_G729_16s(const Vsp16s* pDelay, Vsp16s lag, Vsp16s subframe, Vsp16s* pIndex);

/**
 * Codes the pitch delay at 6.4 kbit/s (G.729 Annex D, Enc_lag3D).
 *
 * Subframe 0 as vspsDelayEncode_G729_16s. Subframe 1, 4 bits, with t = T - t_min: t for t < 3, 3 (t - 3) + f + 3 for t < 7,
 * t + 6 above.
 *
 * @param[in]  pDelay    delay pair that the closed-loop search gave
 * @param[in]  lag       lag argument of that search, 18 .. 145
 * @param[in]  subframe  0 or 1
 * @param[out] pIndex    index
 * @retval vspStsNullPtrErr  pDelay or pIndex is null
 * @retval vspStsRangeErr    lag outside 18 .. 145, or subframe neither 0 nor 1
 */
VspStatus vspsDelayEncode_G729D_16s(const Vsp16s* pDelay, Vsp16s lag, Vsp16s subframe, Vsp16s* pIndex);

/**
 * Parity bit of the delay index of subframe 0 (G.729 3.7.2, Parity_Pitch): 1 plus bits 2 .. 7, modulo 2.
 *
 * A receiver compares it with the bit that came.
 *
 * @param[in]  index    index; other bits than 2 .. 7 do not count
 * @param[out] pParity  0 or 1
 * @retval vspStsNullPtrErr  pParity is null
 */
VspStatus vspsDelayParity_G729_16s(Vsp16s index, Vsp16s* pParity);

/**
 * Decodes the pitch delay (G.729 4.1.3, Dec_lag3).
 *
 * @param[in]  index     index, 0 .. 255 in subframe 0, 0 .. 31 in subframe 1
 * @param[in]  lag       integer lag of subframe 0; used in subframe 1 only
 * @param[in]  subframe  0 or 1
 * @param[out] pDelay    delay pair
 * @retval vspStsNullPtrErr    pDelay is null
 * @retval vspStsRangeErr      subframe neither 0 nor 1
 * @retval vspStsCodeRangeErr  index outside its range
 */
VspStatus vspsDelayDecode_G729_16s(Vsp16s index, Vsp16s lag, Vsp16s subframe, Vsp16s* pDelay);

/**
 * Decodes the pitch delay at 6.4 kbit/s (G.729 Annex D, Dec_lag3D).
 *
 * @param[in]  index     index, 0 .. 255 in subframe 0, 0 .. 15 in subframe 1
 * @param[in]  lag       integer lag of subframe 0; used in subframe 1 only
 * @param[in]  subframe  0 or 1
 * @param[out] pDelay    delay pair
 * @retval vspStsNullPtrErr    pDelay is null
 * @retval vspStsRangeErr      subframe neither 0 nor 1
 * @retval vspStsCodeRangeErr  index outside its range
 */
VspStatus vspsDelayDecode_G729D_16s(Vsp16s index, Vsp16s lag, Vsp16s subframe, Vsp16s* pDelay);

/**
 * Smooths the delay that erased frames at 11.8 kbit/s take (G.729 Annex E, track_pit).
 *
 * A delay near the last one is believed and stored. One whose ratio to the last one is near 2, 3 or 4 gives way to the
 * stored one for as many subframes as there were near ones before, at most 7. Any other one is stored.
 *
 * @param[in,out] pDelay  delay pair of the subframe, lag 18 .. 145
 * @param[in,out] pMem    last lag, number of near ones, stored delay pair; 30, 0, 0, 0 at the start
 * @retval vspStsNullPtrErr    pDelay or pMem is null
 * @retval vspStsCodeRangeErr  lag outside 18 .. 145, or fraction outside -1 .. 1
 */
VspStatus vspsPitchTrack_G729E_16s(Vsp16s* pDelay, Vsp16s* pMem);

#ifdef __cplusplus
}
#endif

#endif
