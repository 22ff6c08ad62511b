/**
 * @file
 * G.722.1: region powers.
 */
#ifndef VSPSC_G7221_REGION_POWER_H
#define VSPSC_G7221_REGION_POWER_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Powers of the regions of a frame, coded (`compute_region_powers`).
 *
 * A region has 20 coefficients. Its index counts steps of 3 dB of the root mean square, less those of 2^magShift: -6 .. 24
 * for the first region, -15 .. 24 for others. Indices rise where the region above is more than 11 steps stronger, and where
 * one is more than 12 steps below the one before it.
 *
 * @param[in]  pCoef     20 * regions coefficients, scaled by 2^magShift
 * @param[in]  magShift  any number
 * @param[in]  regions   14 (7 kHz) or 28 (14 kHz)
 * @param[out] pIndex    regions indices
 * @param[out] pLength   regions lengths of codes; the first is 5
 * @param[out] pCode     regions codes, right-justified
 * @param[out] pBits     the sum of the lengths
 * @retval vspStsNullPtrErr  pCoef, pIndex, pLength, pCode or pBits is null
 * @retval vspStsSizeErr     regions is neither
 *
 * ITU-T G.722.1 3.2, Annex C.
 */
VspStatus vspsRegionPower_G722_16s(const Vsp16s* pCoef, Vsp32s magShift, Vsp32s regions, Vsp16s* pIndex, Vsp16s* pLength,
                                   Vsp16u* pCode, Vsp16s* pBits);

/**
 * Prepares coefficients for vspsVectorQuantize_G722_16s32u (`adjust_abs_region_power_index`).
 *
 * index += 24 + 2 * magShift. Where that is above 40, the coefficients of the region are shifted right by
 * n = (index - 39) >> 1, and the index becomes index - 2 * n.
 *
 * @param[in]     magShift  any number
 * @param[in]     regions   14 (7 kHz) or 28 (14 kHz)
 * @param[in,out] pCoef     20 * regions coefficients
 * @param[in,out] pIndex    regions indices
 * @retval vspStsNullPtrErr  pCoef or pIndex is null
 * @retval vspStsSizeErr     regions is neither
 *
 * ITU-T G.722.1 3.4, Annex C.
 */
VspStatus vspsRegionPowerAdjust_G722_16s_I(Vsp32s magShift, Vsp32s regions, Vsp16s* pCoef, Vsp16s* pIndex);

/**
 * Powers of the regions from a frame (`decode_envelope`).
 *
 * Also finds the shift of the coefficients that the transform bears, and the deviation of each region,
 * 2^((index + 2 * magShift) / 2), from a table whose ends stand for what lies outside.
 *
 * @param[in]  pSrc        bits / 16 words, the first bit on top
 * @param[in]  bits        a multiple of 16 in 320 .. 960
 * @param[in]  regions     14 (7 kHz) or 28 (14 kHz)
 * @param[out] pIndex      regions indices; those of a corrupt frame may have any number from -331 to 332
 * @param[out] pDeviation  regions deviations, scaled by 2^magShift
 * @param[out] pMagShift   -1 .. 9
 * @param[out] pPos        the number of bits read, at most bits
 * @retval vspStsNullPtrErr  pSrc, pIndex, pDeviation, pMagShift or pPos is null
 * @retval vspStsSizeErr     bits or regions is none of these
 *
 * ITU-T G.722.1 4.2, Annex C.
 */
VspStatus vspsRegionPowerDecode_G722_16s(const Vsp16s* pSrc, Vsp32s bits, Vsp32s regions, Vsp16s* pIndex,
                                         Vsp16s* pDeviation, Vsp16s* pMagShift, Vsp32s* pPos);

#ifdef __cplusplus
}
#endif

#endif
