/**
 * @file
 * G.723.1: line spectral frequencies (2.4 to 2.6 and 3.2).
 *
 * 32767 stands for 4000 Hz. At the start of a stream the vector is 3131 4721 7690 10806 13872 16495 19752 22260 25484
 * 27718, the mean.
 */
#ifndef VSPSC_G723_LSF_H
#define VSPSC_G723_LSF_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Line spectral frequencies of an LP filter (AtoLsp). The roots are found by the signs of the polynomials at 256
 * frequencies.
 *
 * @param[in]  pLPC      10 coefficients, Q13
 * @param[in]  pPrevLSF  10 frequencies, taken if fewer than ten are found
 * @param[out] pLSF      10 frequencies; may be pPrevLSF
 * @retval vspStsNullPtrErr  pLPC, pPrevLSF or pLSF is null
 */
VspStatus vspsLPCToLSF_G723_16s(const Vsp16s* pLPC, const Vsp16s* pPrevLSF, Vsp16s* pLSF);

/**
 * Quantises line spectral frequencies with prediction from the frame before: bands of 3, 3 and 4, the first of 256 entries
 * with the smallest weighted distance each (Lsp_Qnt, Lsp_Svq).
 *
 * @param[in]  pLSF      10 frequencies
 * @param[in]  pPrevLSF  10 decoded frequencies of the frame before
 * @param[out] pIndex    3 indices of the bands from the lowest on, 0 .. 255
 * @retval vspStsNullPtrErr  pLSF, pPrevLSF or pIndex is null
 */
VspStatus vspsLSFQuant_G723_16s(const Vsp16s* pLSF, const Vsp16s* pPrevLSF, Vsp16s* pIndex);

/**
 * Decodes line spectral frequencies and keeps them apart (Lsp_Inq). For an erased frame they move towards the mean.
 *
 * @param[in]  pIndex    3 indices, of which the low 8 bits count; not used for an erased frame, and may then be null
 * @param[in]  pPrevLSF  10 decoded frequencies of the frame before
 * @param[in]  erased    1 for an erased frame, else 0
 * @param[out] pLSF      10 frequencies; may be pPrevLSF
 * @retval vspStsNullPtrErr   pPrevLSF or pLSF is null, or pIndex unless erased is 1
 * @retval vspStsRangeErr     erased is not 0 or 1
 * @retval vspStsUnstableLSF  warning: not ordered after ten passes; those of the frame before were taken
 */
VspStatus vspsLSFDecode_G723_16s(const Vsp16s* pIndex, const Vsp16s* pPrevLSF, Vsp32s erased, Vsp16s* pLSF);

/**
 * Line spectral frequencies of the four subframes: a quarter, half, three quarters and all of the way from those of the
 * frame before to those of this one (Lsp_Int).
 *
 * @param[in]  pPrevLSF  10 frequencies of the frame before
 * @param[in]  pLSF      10 frequencies of this frame
 * @param[out] pDst      4 x 10 frequencies
 * @retval vspStsNullPtrErr  pPrevLSF, pLSF or pDst is null
 */
VspStatus vspsLSFInterpolate_G723_16s(const Vsp16s* pPrevLSF, const Vsp16s* pLSF, Vsp16s* pDst);

/**
 * LP filter from line spectral frequencies (LsptoA).
 *
 * @param[in]  pLSF  10 frequencies; the period of the cosine, 65536, is taken off others
 * @param[out] pLPC  10 coefficients, Q13
 * @retval vspStsNullPtrErr  pLSF or pLPC is null
 */
VspStatus vspsLSFToLPC_G723_16s(const Vsp16s* pLSF, Vsp16s* pLPC);

#ifdef __cplusplus
}
#endif

#endif
