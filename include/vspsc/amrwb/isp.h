/**
 * @file
 * AMR-WB: immittance spectral pairs and frequencies.
 */
#ifndef VSPSC_AMRWB_ISP_H
#define VSPSC_AMRWB_ISP_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Immittance spectral pairs of an LP filter (3GPP TS 26.190 5.2.3, `Az_isp`).
 *
 * The roots of the sum and the difference polynomial on a grid of 100 steps of frequency, refined by two bisections and an
 * interpolation; the last one is the last coefficient of the filter. Where fewer than 15 roots are found, the previous
 * vector.
 *
 * @param[in]  pLPC      filter, 17 coefficients, Q12
 * @param[in]  pPrevISP  16 values of the frame before
 * @param[out] pISP      16 values, Q15; may be pPrevISP
 * @retval vspStsNullPtrErr  pLPC, pPrevISP or pISP is null
 */
VspStatus vspsLPCToISP_AMRWB_16s(const Vsp16s* pLPC, const Vsp16s* pPrevISP, Vsp16s* pISP);

/**
 * LP filter of immittance spectral pairs (3GPP TS 26.190 5.2.4, `Isp_Az`).
 *
 * @param[in]  pISP      order values, Q15
 * @param[in]  order     16, or 20 for the high band at 6.60 kbit/s
 * @param[in]  adaptive  1: where coefficients leave 16 bits all are divided by a power of two, in comfort noise; 0: not
 * @param[out] pLPC      order + 1 coefficients, Q12; the first is 4096 or, with adaptive, less
 * @retval vspStsNullPtrErr  pISP or pLPC is null
 * @retval vspStsRangeErr    order is neither 16 nor 20, or adaptive neither 0 nor 1
 */
VspStatus vspsISPToLPC_AMRWB_16s(const Vsp16s* pISP, Vsp32s order, Vsp32s adaptive, Vsp16s* pLPC);

/**
 * Immittance spectral frequencies of the pairs (3GPP TS 26.190 5.2.5, `Isp_isf`): the arc cosine by a table of 128 steps,
 * of the last one a half.
 *
 * @param[in]  pISP  16 values, Q15, the first 15 falling
 * @param[out] pISF  16 values, 16384 for 6400 Hz; may be pISP
 * @retval vspStsNullPtrErr  pISP or pISF is null
 */
VspStatus vspsISPToISF_AMRWB_16s(const Vsp16s* pISP, Vsp16s* pISF);

/**
 * Immittance spectral pairs of the frequencies (3GPP TS 26.190 5.2.5, `Isf_isp`): the cosine by a table of 128 steps.
 * Frequencies outside 0 .. 16384 count as the nearer bound.
 *
 * @param[in]  pISF   order values, 16384 for 6400 Hz; the last one is a half
 * @param[in]  order  16, or 20 for the high band at 6.60 kbit/s
 * @param[out] pISP   order values, Q15; may be pISF
 * @retval vspStsNullPtrErr  pISF or pISP is null
 * @retval vspStsRangeErr    order is neither 16 nor 20
 */
VspStatus vspsISFToISP_AMRWB_16s(const Vsp16s* pISF, Vsp32s order, Vsp16s* pISP);

/**
 * LP filters of the four subframes (3GPP TS 26.190 5.2.6, `Int_isp`): of pairs that are interpolated with 0.45, 0.8, 0.96
 * and 1 of the new ones.
 *
 * @param[in]  pPrevISP  16 values at the end of the frame before, Q15
 * @param[in]  pISP      16 values at the end of this one
 * @param[out] pLPC      four filters of 17 coefficients, Q12
 * @retval vspStsNullPtrErr  pPrevISP, pISP or pLPC is null
 */
VspStatus vspsInterpolateISP_AMRWB_16s(const Vsp16s* pPrevISP, const Vsp16s* pISP, Vsp16s* pLPC);

/**
 * How stable the frequencies are: 1 where they are those of the frame before, down to 0 (3GPP TS 26.190 6.1).
 *
 * factor = 1.25 - S / 2621440, limited to 0 .. 1, where S is the sum of the squared differences of the first 15.
 *
 * @param[in]  pISF      16 values
 * @param[in]  pPrevISF  16 values of the frame before
 * @param[out] pFactor   Q15
 * @retval vspStsNullPtrErr  pISF, pPrevISF or pFactor is null
 */
VspStatus vspsISFStability_AMRWB_16s(const Vsp16s* pISF, const Vsp16s* pPrevISF, Vsp16s* pFactor);

/**
 * Pairs of order 20 for the filter of the high band at 6.60 kbit/s (3GPP TS 26.190 6.3.2.1, `Isf_Extrapolation`).
 *
 * Four frequencies continue the pattern of the first 15 at the distance, 2, 3 or 4, at which their differences correlate
 * most; all are rescaled to 8 kHz.
 *
 * @param[in]  pISF  16 values, 16384 for 6400 Hz
 * @param[out] pISP  20 values, Q15
 * @retval vspStsNullPtrErr  pISF or pISP is null
 */
VspStatus vspsISFExtrapolate_AMRWB_16s(const Vsp16s* pISF, Vsp16s* pISP);

#ifdef __cplusplus
}
#endif

#endif
