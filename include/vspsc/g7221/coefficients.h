/**
 * @file
 * G.722.1: coefficients and frames.
 */
#ifndef VSPSC_G7221_COEFFICIENTS_H
#define VSPSC_G7221_COEFFICIENTS_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Quantises and codes the coefficients of a region (`vector_huffman`).
 *
 * Vectors of 2, 4 or 5 magnitudes, as the category has it, are one Huffman code each, followed by the signs of what is not
 * zero: 1 for positive.
 *
 * @param[in]  category  0 .. 6
 * @param[in]  index     0 .. 63, of the power, from vspsRegionPowerAdjust_G722_16s_I
 * @param[in]  pCoef     20 coefficients
 * @param[out] pDst      6 words with the bits from the top; the rest is 0
 * @param[out] pBits     the number of bits
 * @retval vspStsNullPtrErr     pCoef, pDst or pBits is null
 * @retval vspStsScaleRangeErr  category or index is out of range
 *
 * ITU-T G.722.1 3.4 and 3.5.
 */
VspStatus vspsHuffmanEncode_G722_16s32u(Vsp32s category, Vsp32s index, const Vsp16s* pCoef, Vsp32u* pDst, Vsp16s* pBits);

/**
 * Codes the coefficients of a frame with the categorisation that fills it (`vector_quantize_mlts`).
 *
 * From the middle one of the categorisations of vspsCategorize_G722_16s on, others are tried while bits are left, and then
 * while there are too many.
 *
 * @param[in]     pCoef      20 * regions coefficients
 * @param[in]     pIndex     regions indices, both from vspsRegionPowerAdjust_G722_16s_I
 * @param[in]     bits       what the frame has for coefficients
 * @param[in]     regions    14 (7 kHz) or 28 (14 kHz)
 * @param[in]     pBalance   15 or 31 regions, as vspsCategorize_G722_16s has it
 * @param[in,out] pCategory  regions categories, those with control 0; becomes those that are used
 * @param[out]    pControl   the control that stands for them
 * @param[out]    pCount     regions numbers of bits
 * @param[out]    pWords     4 words for each region with its bits from the top, 128 at most; the rest is 0
 * @retval vspStsNullPtrErr  pCoef, pIndex, pBalance, pCategory, pControl, pCount or pWords is null
 * @retval vspStsSizeErr     regions is neither
 *
 * ITU-T G.722.1 3.6, Annex C.
 */
VspStatus vspsVectorQuantize_G722_16s32u(const Vsp16s* pCoef, const Vsp16s* pIndex, Vsp32s bits, Vsp32s regions,
                                         const Vsp16s* pBalance, Vsp16s* pCategory, Vsp16s* pControl, Vsp16s* pCount,
                                         Vsp32u* pWords);

/**
 * Puts a frame together (`bits_to_words`): codes of powers, control (4 or 5 bits), coefficients. What is left is ones, what
 * is too much is cut off.
 *
 * @param[in]  pLength  regions lengths of codes, of which 0 .. 16 bits are taken
 * @param[in]  pCode    regions codes, right-justified
 * @param[in]  control  0 .. 15 for 14 regions, 0 .. 31 for 28
 * @param[in]  pCount   regions numbers of bits of coefficients, of which 0 .. 128 are taken
 * @param[in]  pWords   4 words for each region with its bits from the top
 * @param[in]  bits     of the frame: a multiple of 16 in 320 .. 960
 * @param[in]  regions  14 (7 kHz) or 28 (14 kHz)
 * @param[out] pDst     bits / 16 words, the first bit on top
 * @retval vspStsNullPtrErr  pLength, pCode, pCount, pWords or pDst is null
 * @retval vspStsSizeErr     bits or regions is none of these, or control is out of range
 *
 * ITU-T G.722.1 3.7, Annex C.
 */
VspStatus vspsPackFrame_G722_32u16s(const Vsp16s* pLength, const Vsp16u* pCode, Vsp32s control, const Vsp16s* pCount,
                                    const Vsp32u* pWords, Vsp32s bits, Vsp32s regions, Vsp16s* pDst);

/**
 * Coefficients from a frame (`decode_vector_quantized_mlt_indices`).
 *
 * The region where the bits run out is decoded as one of category 7, and all behind it get this category. In categories 5
 * and 6 noise stands for coefficients that are zero, in category 7 for all. A region with a category outside 0 .. 7 gets
 * zeros.
 *
 * @param[in]     pSrc        bits / 16 words, the first bit on top
 * @param[in]     bits        a multiple of 16 in 320 .. 960
 * @param[in]     pDeviation  regions deviations
 * @param[in]     regions     14 (7 kHz) or 28 (14 kHz)
 * @param[in,out] pPos        the bits before those of the coefficients; becomes those before what is left
 * @param[in,out] pLeft       the bits for coefficients; becomes what is left, less 1 where the bits ran out
 * @param[in,out] pCategory   regions categories
 * @param[in,out] pSeed       4 words of the noise generator, 1, 1, 1, 1 at the start
 * @param[out]    pDst        20 * regions coefficients
 * @retval vspStsNullPtrErr  pSrc, pDeviation, pPos, pLeft, pCategory, pSeed or pDst is null
 * @retval vspStsSizeErr     bits or regions is none of these; *pPos or *pLeft is negative, or their sum is above bits
 *
 * ITU-T G.722.1 4.4 and 4.5, Annex C.
 */
VspStatus vspsVectorDecode_G722_16s(const Vsp16s* pSrc, Vsp32s bits, const Vsp16s* pDeviation, Vsp32s regions, Vsp32s* pPos,
                                    Vsp32s* pLeft, Vsp16s* pCategory, Vsp16s* pSeed, Vsp16s* pDst);

#ifdef __cplusplus
}
#endif

#endif
