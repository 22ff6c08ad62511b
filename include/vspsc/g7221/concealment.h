/**
 * @file
 * G.722.1: frames in error.
 */
#ifndef VSPSC_G7221_CONCEALMENT_H
#define VSPSC_G7221_CONCEALMENT_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Looks for errors in a frame (`test_4_frame_errors`).
 *
 * 1: a bit that should fill the frame is not 1. 2: the bits ran out although control had a categorisation with fewer. 4: an
 * index of a power is outside -15 .. 24. The flag is the sum of those that hold, 0 for a good frame.
 *
 * @param[in]  pSrc     bits / 16 words, the first bit on top
 * @param[in]  bits     a multiple of 16 in 320 .. 960
 * @param[in]  pIndex   regions indices, of vspsRegionPowerDecode_G722_16s
 * @param[in]  pos      the bits read
 * @param[in]  left     the bits left, -1 if they ran out; both of vspsVectorDecode_G722_16s
 * @param[in]  control  0 .. 15 for 14 regions, 0 .. 31 for 28
 * @param[in]  regions  14 (7 kHz) or 28 (14 kHz)
 * @param[out] pFlag    0, or the sum
 * @retval vspStsNullPtrErr  pSrc, pIndex or pFlag is null
 * @retval vspStsSizeErr     bits or regions is none of these; pos < 0, left < -1 or pos + left > bits; control is out of
 *                           range
 *
 * ITU-T G.722.1 4.7, Annex C.
 */
VspStatus vspsFrameCheck_G722_16s(const Vsp16s* pSrc, Vsp32s bits, const Vsp16s* pIndex, Vsp32s pos, Vsp32s left,
                                  Vsp32s control, Vsp32s regions, Vsp16s* pFlag);

/**
 * Coefficients of frames in error (`error_handling`).
 *
 * A bad or lost frame repeats the coefficients and the shift of the last good one once; the next is silent. In every frame
 * the upper eighth of the coefficients becomes 0.
 *
 * @param[in]     flag          0 for a good frame
 * @param[in]     regions       14 (7 kHz) or 28 (14 kHz)
 * @param[in,out] pCoef         320 coefficients for 14 regions, 640 for 28
 * @param[in,out] pOld          the 20 * regions coefficients of the last frame, zeros at the start
 * @param[in,out] pMagShift     their shift
 * @param[in,out] pOldMagShift  the shift of the last frame, 0 at the start
 * @retval vspStsNullPtrErr  pCoef, pOld, pMagShift or pOldMagShift is null
 * @retval vspStsSizeErr     regions is neither
 *
 * ITU-T G.722.1 4.7, Annex C.
 */
VspStatus vspsConcealCoefs_G722_16s_I(Vsp32s flag, Vsp32s regions, Vsp16s* pCoef, Vsp16s* pOld, Vsp16s* pMagShift,
                                      Vsp16s* pOldMagShift);

#ifdef __cplusplus
}
#endif

#endif
