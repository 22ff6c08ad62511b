/**
 * @file
 * GSM-AMR: line spectral pairs (LSP: cosines, Q15) and frequencies (LSF: 0 .. 16384 for 0 .. 4 kHz).
 */
#ifndef VSPSC_GSMAMR_LSP_H
#define VSPSC_GSMAMR_LSP_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * LP filter to line spectral pairs (3GPP TS 26.090 5.2.3, Az_lsp).
 *
 * The sum and the difference polynomial are searched in turn for changes of sign on a grid of 60 intervals, which are
 * bisected four times and interpolated. Where fewer than ten roots are found, the result is pPrevLSP.
 *
 * @param[in]  pLPC      11 coefficients, Q12
 * @param[in]  pPrevLSP  previous LSPs, 10
 * @param[out] pLSP      10 LSPs; may be pPrevLSP
 * @retval vspStsNullPtrErr  pLPC, pPrevLSP or pLSP is null
 */
VspStatus vspsLPCToLSP_GSMAMR_16s(const Vsp16s* pLPC, const Vsp16s* pPrevLSP, Vsp16s* pLSP);

/**
 * Line spectral pairs to LP filter (3GPP TS 26.090 5.2.4, Lsp_Az).
 *
 * @param[in]  pLSP  10 LSPs
 * @param[out] pLPC  11 coefficients, Q12
 * @retval vspStsNullPtrErr  pLSP or pLPC is null
 */
VspStatus vspsLSPToLPC_GSMAMR_16s(const Vsp16s* pLSP, Vsp16s* pLPC);

/**
 * Line spectral pairs to frequencies by a table of 64 steps (Lsp_lsf). The steps are searched from the last pair to the
 * first and never rise.
 *
 * @param[in]  pLSP  10 LSPs
 * @param[out] pLSF  10 LSFs; may be pLSP
 * @retval vspStsNullPtrErr  pLSP or pLSF is null
 */
VspStatus vspsLSPToLSF_GSMAMR_16s(const Vsp16s* pLSP, Vsp16s* pLSF);

/**
 * Line spectral frequencies to pairs by a table of 64 steps (Lsf_lsp). Frequencies outside 0 .. 16383 are limited first.
 *
 * @param[in]  pLSF  10 LSFs
 * @param[out] pLSP  10 LSPs; may be pLSF
 * @retval vspStsNullPtrErr  pLSF or pLSP is null
 */
VspStatus vspsLSFToLSP_GSMAMR_16s(const Vsp16s* pLSF, Vsp16s* pLSP);

/**
 * Line spectral pairs, or frequencies, of the four subframes (3GPP TS 26.090 5.2.6).
 *
 * 12.2 kbit/s: mean of previous and middle, middle, mean of middle and new, new. Other rates: a quarter, a half, three
 * quarters and all of the new ones, the rest of the previous ones.
 *
 * @param[in]  pPrevLSP  10 LSPs of the last subframe of the previous frame
 * @param[in]  pMidLSP   at 12.2 kbit/s 10 LSPs of the second subframe, else not used
 * @param[in]  pNewLSP   10 LSPs of the fourth subframe
 * @param[in]  mode      rate: 0, 1, 3, 6, 7, 8, 11, 12 for 4.75, 5.15, 5.9, 6.7, 7.4, 7.95, 10.2 and 12.2 kbit/s
 * @param[out] pLSP      4 times 10 LSPs
 * @retval vspStsNullPtrErr  pPrevLSP, pNewLSP or pLSP is null; after the range: pMidLSP is null and used
 * @retval vspStsRangeErr    mode is not a rate
 */
VspStatus vspsInterpolateLSP_GSMAMR_16s(const Vsp16s* pPrevLSP, const Vsp16s* pMidLSP, const Vsp16s* pNewLSP, Vsp32s mode,
                                        Vsp16s* pLSP);

/**
 * Long-term mean of the line spectral frequencies in a decoder (lsp_avg): 0.84 times the mean and 0.16 times the new ones.
 *
 * @param[in]     pLSF   10 LSFs
 * @param[in,out] pMean  mean of 10 LSFs
 * @retval vspStsNullPtrErr  pLSF or pMean is null
 */
VspStatus vspsLSFAverage_GSMAMR_16s(const Vsp16s* pLSF, Vsp16s* pMean);

/**
 * Tells frames whose filter has a resonance, for which an encoder limits the pitch gain (check_lsp): for twelve frames some
 * neighbouring pairs have been close to each other.
 *
 * @param[in]     pLSP    10 LSPs
 * @param[in,out] pCount  such frames in a row, at most 12; reset to 0
 * @param[out]    pFlag   1 or 0
 * @retval vspStsNullPtrErr  pLSP, pCount or pFlag is null
 */
VspStatus vspsResonanceDetect_GSMAMR_16s(const Vsp16s* pLSP, Vsp16s* pCount, Vsp32s* pFlag);

#ifdef __cplusplus
}
#endif

#endif
