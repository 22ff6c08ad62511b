/**
 * @file
 * G.729: quantiser and decoder of the line spectral pairs.
 *
 * Line spectral frequencies (LSF) are in Q13 radians, 0 .. 25681; line spectral pairs (LSP) are their cosines in Q15. The
 * floating-point functions take and give radians and cosines.
 *
 * The memory of the moving-average predictor are the coded vectors of the last four frames, the newest first, 40 values. At
 * the start each of the four is 2339, 4679, 7018, 9358, 11698, 14037, 16377, 18717, 21056, 23396; in floating point
 * i pi / 11, i = 1 .. 10.
 */
#ifndef VSPSC_G729_LSP_QUANT_H
#define VSPSC_G729_LSP_QUANT_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Quantises the line spectral pairs of a frame (G.729 3.2.4, Qua_lsp).
 *
 * For each of the two predictors the entry of the first stage (128) with the smallest squared error is found, then those of
 * the second stage (32 each) for the lower and the upper half with the smallest weighted one; of equal ones the first. The
 * predictor with the smaller weighted error of all ten frequencies is taken, of equal ones the first.
 *
 * @param[in]     pLSP       LSP, 10 values, Q15
 * @param[in,out] pPrevFreq  memory of the predictor, 40 values, Q13
 * @param[out]    pQLSP      quantised LSP, 10 values, Q15
 * @param[out]    pIndex     predictor and first stage, 1 + 7 bits; second stage, 5 + 5 bits
 * @retval vspStsNullPtrErr  pLSP, pPrevFreq, pQLSP or pIndex is null
 */
VspStatus vspsLSPQuant_G729_16s(const Vsp16s* pLSP, Vsp16s* pPrevFreq, Vsp16s* pQLSP, Vsp16s* pIndex);

/**
 * Decodes the line spectral frequencies of a frame (G.729 3.2.4 and 4.1.1, Lsp_iqua_cs).
 *
 * @param[in]     pIndex     predictor and first stage, of which the low 8 bits are used; second stage, the low 10 bits
 * @param[in,out] pPrevFreq  memory of the predictor, 40 values, Q13
 * @param[out]    pLSF       LSF, 10 values, Q13
 * @retval vspStsNullPtrErr  pIndex, pPrevFreq or pLSF is null
 */
VspStatus vspsLSFDecode_G729_16s(const Vsp16s* pIndex, Vsp16s* pPrevFreq, Vsp16s* pLSF);

/**
 * Moves the memory of the LSF predictor on over an erased frame (G.729 4.4.1, Lsp_iqua_cs).
 *
 * The frame repeats the LSF of the last one; the memory takes what would have been coded for them.
 *
 * @param[in]     mode       predictor of the last good frame, 0 or 1
 * @param[in]     pPrevLSF   LSF of the last frame, 10 values, Q13
 * @param[in,out] pPrevFreq  memory of the predictor, 40 values, Q13
 * @retval vspStsNullPtrErr    pPrevLSF or pPrevFreq is null
 * @retval vspStsCodeRangeErr  mode neither 0 nor 1
 */
VspStatus vspsLSFDecodeErased_G729_16s(Vsp16s mode, const Vsp16s* pPrevLSF, Vsp16s* pPrevFreq);

/**
 * Quantises the line spectral pairs of a frame in floating point (G.729 3.2.4 and Annex C, qua_lsp).
 *
 * As vspsLSPQuant_G729_16s; sums run from the
 * first frequency to the last.
 *
 * @param[in]     pLSP       LSP, 10 values
 * @param[in,out] pPrevFreq  memory of the predictor, 40 values
 * @param[out]    pQLSP      quantised LSP, 10 values
 * @param[out]    pIndex     predictor and first stage, 1 + 7 bits; second stage, 5 + 5 bits
 * @retval vspStsNullPtrErr  pLSP, pPrevFreq, pQLSP or pIndex is null
 */
VspStatus vspsLSPQuant_G729_32f(const Vsp32f* pLSP, Vsp32f* pPrevFreq, Vsp32f* pQLSP, Vsp32s* pIndex);

/**
 * Decodes the line spectral frequencies of a frame in floating point (G.729 3.2.4 and Annex C, lsp_iqua_cs).
 *
 * @param[in]     pIndex     predictor and first stage, of which the low 8 bits are used; second stage, the low 10 bits
 * @param[in,out] pPrevFreq  memory of the predictor, 40 values
 * @param[out]    pLSF       LSF, 10 values, radians
 * @retval vspStsNullPtrErr  pIndex, pPrevFreq or pLSF is null
 */
VspStatus vspsLSFDecode_G729_32f(const Vsp32s* pIndex, Vsp32f* pPrevFreq, Vsp32f* pLSF);

/**
 * Moves the memory of the floating-point LSF predictor on over an erased frame (G.729 4.4.1 and Annex C, lsp_iqua_cs).
 *
 * @param[in]     mode       predictor of the last good frame, 0 or 1
 * @param[in]     pPrevLSF   LSF of the last frame, 10 values, radians
 * @param[in,out] pPrevFreq  memory of the predictor, 40 values
 * @retval vspStsNullPtrErr    pPrevLSF or pPrevFreq is null
 * @retval vspStsCodeRangeErr  mode neither 0 nor 1
 */
VspStatus vspsLSFDecodeErased_G729_32f(Vsp32s mode, const Vsp32f* pPrevLSF, Vsp32f* pPrevFreq);

#ifdef __cplusplus
}
#endif

#endif
