/**
 * @file
 * G.723.1: the fixed codebooks (2.15, 2.16 and 3.5).
 *
 * pIndex: gain, 0 .. 23; grid, 0 for the even and 1 for the odd places; train of pulses, 0 or 1 (0 at 5.3 kbit/s); signs.
 */
#ifndef VSPSC_G723_FIXED_CODEBOOK_H
#define VSPSC_G723_FIXED_CODEBOOK_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Searches the multipulse code of 6.3 kbit/s: 6 pulses in subframes 0 and 2, 5 in the others, and for lags below 58 also
 * trains of them that repeat with the lag (Find_Fcbk, Find_Best, Fcbk_Pack).
 *
 * @param[in]  pTarget   60 samples
 * @param[in]  pImpulse  60 samples of the impulse response, Q13
 * @param[in]  lag       of the pair, 18 .. 145
 * @param[in]  subframe  0 .. 3
 * @param[out] pCode     60 samples
 * @param[out] pPos      number of the positions, below 593775 or 142506
 * @param[out] pIndex    4 indices; the sign of the first pulse in the highest bit, 1 for negative
 * @retval vspStsNullPtrErr  pTarget, pImpulse, pCode, pPos or pIndex is null
 * @retval vspStsRangeErr    subframe or lag outside its range
 */
VspStatus vspsFixedCodebookSearch_MLQ_G723_16s(const Vsp16s* pTarget, const Vsp16s* pImpulse, Vsp16s lag, Vsp32s subframe,
                                               Vsp16s* pCode, Vsp32s* pPos, Vsp16s* pIndex);

/**
 * Searches the algebraic code of 5.3 kbit/s, four pulses with pitch sharpening (Find_Fcbk, search_T0, ACELP_LBC_code).
 *
 * @param[in]     pTarget    60 samples
 * @param[in]     pImpulse   60 samples of the impulse response, Q13
 * @param[in]     lag        exact lag of the subframe, 17 .. 144
 * @param[in]     gainIndex  entry of the adaptive gain codebook, 0 .. 169
 * @param[in,out] pExtra     visits of the last track besides 120; 120 at the start of a frame
 * @param[out]    pCode      60 samples
 * @param[out]    pPos       4 x 3 bits of places from the first track on
 * @param[out]    pIndex     4 indices; bit i of the signs is 1 for a positive pulse i
 * @retval vspStsNullPtrErr    pTarget, pImpulse, pExtra, pCode, pPos or pIndex is null
 * @retval vspStsRangeErr      lag outside 17 .. 144
 * @retval vspStsCodeRangeErr  gainIndex outside 0 .. 169
 */
VspStatus vspsFixedCodebookSearch_ACELP_G723_16s(const Vsp16s* pTarget, const Vsp16s* pImpulse, Vsp16s lag,
                                                 Vsp16s gainIndex, Vsp16s* pExtra, Vsp16s* pCode, Vsp32s* pPos,
                                                 Vsp16s* pIndex);

/**
 * Multipulse code of 6.3 kbit/s from its indices (Fcbk_Unpk).
 *
 * @param[in]  pIndex    4 indices as vspsFixedCodebookSearch_MLQ_G723_16s makes them; signs 0 .. 63
 * @param[in]  pos       number of the positions, 0 or more; one that no positions have gives no pulses
 * @param[in]  lag       of the pair, 18 .. 145
 * @param[in]  subframe  0 .. 3
 * @param[out] pDst      60 samples
 * @retval vspStsNullPtrErr    pIndex or pDst is null
 * @retval vspStsRangeErr      subframe or lag outside its range
 * @retval vspStsCodeRangeErr  an index outside its range, or pos negative
 */
VspStatus vspsFixedCodebookDecode_MLQ_G723_16s(const Vsp16s* pIndex, Vsp32s pos, Vsp16s lag, Vsp32s subframe, Vsp16s* pDst);

/**
 * Algebraic code of 5.3 kbit/s from its indices (Fcbk_Unpk).
 *
 * @param[in]  pIndex     4 indices as vspsFixedCodebookSearch_ACELP_G723_16s makes them; signs 0 .. 15; the third is not
 * used
 * @param[in]  pos        4 x 3 bits, 0 .. 4095; pulses on the places 60 .. 63 vanish
 * @param[in]  lag        exact lag of the subframe, 17 .. 144
 * @param[in]  gainIndex  entry of the adaptive gain codebook, 0 .. 169
 * @param[out] pDst       60 samples
 * @retval vspStsNullPtrErr    pIndex or pDst is null
 * @retval vspStsRangeErr      lag outside 17 .. 144
 * @retval vspStsCodeRangeErr  an index, pos or gainIndex outside its range
 */
VspStatus vspsFixedCodebookDecode_ACELP_G723_16s(const Vsp16s* pIndex, Vsp32s pos, Vsp16s lag, Vsp16s gainIndex,
                                                 Vsp16s* pDst);

#ifdef __cplusplus
}
#endif

#endif
