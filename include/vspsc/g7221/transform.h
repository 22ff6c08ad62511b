/**
 * @file
 * G.722.1: modulated lapped transform.
 */
#ifndef VSPSC_G7221_TRANSFORM_H
#define VSPSC_G7221_TRANSFORM_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Type IV discrete cosine transform of the encoder.
 *
 * dst[k] = g * sum of src[n] * cos(pi * (2n + 1) * (2k + 1) / (4 * len)), g = 0.00625 for 320 samples and 0.00284 for 640,
 * in the fixed-point steps of the standard (`dct_type_iv_a`): levels of halved sums and differences, products with a 10 x
 * 10 matrix, levels of rotations, rounded after each. Before a transform of 320 samples a small fixed bias is added.
 *
 * @param[in]  pSrc  len samples
 * @param[out] pDst  len coefficients
 * @param[in]  len   320 (7 kHz) or 640 (14 kHz)
 * @retval vspStsNullPtrErr  pSrc or pDst is null
 * @retval vspStsSizeErr     len is neither
 *
 * ITU-T G.722.1 3.1, Annex C.
 */
VspStatus vspsDCTFwd_G722_16s(const Vsp16s* pSrc, Vsp16s* pDst, Vsp32s len);

/**
 * Type IV discrete cosine transform of the decoder.
 *
 * As vspsDCTFwd_G722_16s with g = 0.205 and 0.102, with saturated sums that are halved at the first level only, where a
 * dither bit is added, and with a bias that is added after a transform of 320 samples (`dct_type_iv_s`).
 *
 * @param[in]  pSrc  len coefficients
 * @param[out] pDst  len samples
 * @param[in]  len   320 (7 kHz) or 640 (14 kHz)
 * @retval vspStsNullPtrErr  pSrc or pDst is null
 * @retval vspStsSizeErr     len is neither
 *
 * ITU-T G.722.1 4.6, Annex C.
 */
VspStatus vspsDCTInv_G722_16s(const Vsp16s* pSrc, Vsp16s* pDst, Vsp32s len);

/**
 * Modulated lapped transform of a frame (`samples_to_rmlt_coefs`).
 *
 * The frame and the one before it are windowed and folded to len values, shifted left by as many bits as the transform
 * bears (right by one where the count is -1), and transformed by vspsDCTFwd_G722_16s.
 *
 * @param[in]     pSrc       len samples
 * @param[in]     len        320 (7 kHz) or 640 (14 kHz)
 * @param[in,out] pMem       the len samples of the last frame, zeros at the start; becomes pSrc
 * @param[out]    pDst       len coefficients, scaled by 2^magShift
 * @param[out]    pMagShift  -1 .. 9
 * @retval vspStsNullPtrErr  pSrc, pMem, pDst or pMagShift is null
 * @retval vspStsSizeErr     len is neither
 *
 * ITU-T G.722.1 3.1, Annex C.
 */
VspStatus vspsMLTAnalysis_G722_16s(const Vsp16s* pSrc, Vsp32s len, Vsp16s* pMem, Vsp16s* pDst, Vsp16s* pMagShift);

/**
 * Inverse of the modulated lapped transform (`rmlt_coefs_to_samples`).
 *
 * vspsDCTInv_G722_16s, a right shift by magShift (a saturated left shift for a negative one), and the sum of the windowed
 * result with what the last frame left, saturated.
 *
 * @param[in]     pSrc      len coefficients, scaled by 2^magShift
 * @param[in]     magShift  any number
 * @param[in]     len       320 (7 kHz) or 640 (14 kHz)
 * @param[in,out] pMem      len / 2 values of the last frame, zeros at the start
 * @param[out]    pDst      len samples; the standard's own program clears their two lowest bits
 * @retval vspStsNullPtrErr  pSrc, pMem or pDst is null
 * @retval vspStsSizeErr     len is neither
 *
 * ITU-T G.722.1 4.6, Annex C.
 */
VspStatus vspsMLTSynthesis_G722_16s(const Vsp16s* pSrc, Vsp32s magShift, Vsp32s len, Vsp16s* pMem, Vsp16s* pDst);

#ifdef __cplusplus
}
#endif

#endif
