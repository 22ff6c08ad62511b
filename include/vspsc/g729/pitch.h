/**
 * @file
 * G.729: pitch search and adaptive codebook of the main coder and its Annexes A, C and D.
 *
 * A frame has 80 samples, a subframe 40, lags run from 20 to 143 samples. The pitch functions keep no state: the caller
 * owns every buffer.
 *
 * Excitation buffer, 194 samples: elements 0 .. 153 are the past excitation, the oldest first, elements 154 .. 193 the
 * current subframe. After a subframe the caller moves it down by 40. The searches expect the LP residual of the subframe
 * in elements 154 .. 193, because lags below 40 read it; functions that build the adaptive-codebook vector overwrite it.
 *
 * Delay pair: the integer lag T, then the fraction f in thirds of a sample, -1, 0 or 1; together the delay T + f/3. A
 * search may end one lag outside its range with a fraction that leads back, so pairs run from (19, 1) to (144, -1).
 */
#ifndef VSPSC_G729_PITCH_H
#define VSPSC_G729_PITCH_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Open-loop pitch lag (G.729 3.4, Pitch_ol).
 *
 * The signal is shifted right by 3 if the doubled sum of its 223 squares leaves 32 bits, left by 3 if that sum is below
 * 2^20. In each of the lag ranges 80 .. 143, 40 .. 79 and 20 .. 39 the lag of the largest correlation over the frame is
 * found (of equal ones the shortest), and the correlation is divided by the square root of the delayed signal's energy. A
 * shorter range wins if that normalised value is above 0.85 times the one of the winner so far.
 *
 * @param[in]  pSrc  weighted speech: the first of the 80 samples of the frame; 143 samples of history before it
 * @param[out] pLag  lag, 20 .. 143
 * @retval vspStsNullPtrErr  pSrc or pLag is null
 */
VspStatus vspsOpenLoopPitchSearch_G729_16s(const Vsp16s* pSrc, Vsp16s* pLag);

/**
 * Open-loop pitch lag, fast search (G.729 A.3.4, Pitch_ol_fast).
 *
 * Only every second sample of the frame enters the correlations and energies. The signal is scaled as in
 * vspsOpenLoopPitchSearch_G729_16s, by the energy of every second of its 223 samples. The ranges are 20 .. 39, 40 .. 79 and
 * 80 .. 142; of the last one every second lag is tried, then the two neighbours of the best. Of equal correlations the
 * shortest lag wins; one that saturates ends the search of its range. A range whose lag divides that of the next longer
 * range gains a part of its normalised correlation; the largest wins, of equal ones that of the shorter lags.
 *
 * @param[in]  pSrc  weighted speech: the first of the 80 samples of the frame; 143 samples of history before it
 * @param[out] pLag  lag, 20 .. 143
 * @retval vspStsNullPtrErr  pSrc or pLag is null
 */
VspStatus vspsOpenLoopPitchSearch_G729A_16s(const Vsp16s* pSrc, Vsp16s* pLag);

/**
 * Open-loop pitch lag, fast search in floating point (G.729 A.3.4 and Annex C).
 *
 * As vspsOpenLoopPitchSearch_G729A_16s without its scaling; 0.01 is added to each energy.
 *
 * @param[in]  pSrc  weighted speech in the range of 16-bit samples: the first of the 80 samples of the frame; 143 samples
 *                   of history before it
 * @param[out] pLag  lag, 20 .. 143
 * @retval vspStsNullPtrErr  pSrc or pLag is null
 */
VspStatus vspsOpenLoopPitchSearch_G729A_32f(const Vsp32f* pSrc, Vsp32s* pLag);

/**
 * Closed-loop pitch search and the adaptive-codebook vector (G.729 3.7, Pitch_fr3).
 *
 * Subframe 0 searches t_min = lag - 3 .. t_min + 6, subframe 1 t_min = lag - 5 .. t_min + 9, shifted into 20 .. 143. The
 * integer lag has the largest normalised correlation of the target with the filtered past excitation, of equal ones the
 * longest. Unless it is above 84 in subframe 0, the interpolated correlation decides among the fractions -2 .. 2 thirds, of
 * equal ones the first; -2 is stored as (lag - 1, 1) and 2 as (lag + 1, -1). Then the vector is built as
 * vspsDecodeAdaptiveVector_G729_16s does.
 *
 * @param[in]     lag          open-loop lag in subframe 0, integer lag of subframe 0 in subframe 1; 18 .. 145
 * @param[in]     pTarget      target, 40 samples
 * @param[in]     pImpulse     impulse response of the weighted synthesis filter, 40 samples, Q12
 * @param[in,out] pExcitation  excitation buffer, 194 samples; out: the vector in elements 154 .. 193
 * @param[out]    pDelay       delay pair
 * @param[out]    pVector      adaptive-codebook vector, 40 samples
 * @param[in]     subframe     0 or 1
 * @retval vspStsNullPtrErr  pTarget, pImpulse, pExcitation, pDelay or pVector is null
 * @retval vspStsRangeErr    lag outside 18 .. 145, or subframe neither 0 nor 1
 */
VspStatus vspsAdaptiveCodebookSearch_G729_16s(Vsp16s lag, const Vsp16s* pTarget, const Vsp16s* pImpulse,
                                              Vsp16s* pExcitation, Vsp16s* pDelay, Vsp16s* pVector, Vsp16s subframe);

/**
 * Closed-loop pitch search, fast, and the adaptive-codebook vector (G.729 A.3.7, Pitch_fr3_fast).
 *
 * The target is correlated with the impulse response once (vspsCrossCorr_NormM_16s). The integer lag has the largest
 * product of the result with the past excitation, doubled and saturated to 32 bits; of equal ones the shortest. Unless it
 * is above 84 in subframe 0, the vectors at the fractions 0, -1 and 1 are compared in this order by the same product,
 * saturated but not doubled. Ranges as in vspsAdaptiveCodebookSearch_G729_16s.
 *
 * @param[in]     lag          open-loop lag in subframe 0, integer lag of subframe 0 in subframe 1; 18 .. 145
 * @param[in]     pTarget      target, 40 samples
 * @param[in]     pImpulse     impulse response of the weighted synthesis filter, 40 samples, Q12
 * @param[in,out] pExcitation  excitation buffer, 194 samples; out: the vector in elements 154 .. 193
 * @param[out]    pDelay       delay pair
 * @param[out]    pVector      adaptive-codebook vector, 40 samples
 * @param[in]     subframe     0 or 1
 * @retval vspStsNullPtrErr  pTarget, pImpulse, pExcitation, pDelay or pVector is null
 * @retval vspStsRangeErr    lag outside 18 .. 145, or subframe neither 0 nor 1
 */
VspStatus vspsAdaptiveCodebookSearch_G729A_16s(Vsp16s lag, const Vsp16s* pTarget, const Vsp16s* pImpulse,
                                               Vsp16s* pExcitation, Vsp16s* pDelay, Vsp16s* pVector, Vsp16s subframe);

/**
 * Closed-loop pitch search of the 6.4 kbit/s coder (G.729 Annex D).
 *
 * As vspsAdaptiveCodebookSearch_G729_16s, but no vector is built, and subframe 1 has fractions only near the middle of its
 * range: with d = lag - (t_max - 4), -2 .. 2 for d = -1 and 0, 0 .. 2 for d = -2, -2 .. 0 for d = 1, none otherwise.
 *
 * @param[in]  lag          open-loop lag in subframe 0, integer lag of subframe 0 in subframe 1; 18 .. 145
 * @param[in]  pTarget      target, 40 samples
 * @param[in]  pImpulse     impulse response of the weighted synthesis filter, 40 samples, Q12
 * @param[in]  pExcitation  excitation buffer, 194 samples
 * @param[in]  subframe     0 or 1
 * @param[out] pDelay       delay pair
 * @retval vspStsNullPtrErr  pTarget, pImpulse, pExcitation or pDelay is null
 * @retval vspStsRangeErr    lag outside 18 .. 145, or subframe neither 0 nor 1
 */
VspStatus vspsAdaptiveCodebookSearch_G729D_16s(Vsp16s lag, const Vsp16s* pTarget, const Vsp16s* pImpulse,
                                               const Vsp16s* pExcitation, Vsp16s subframe, Vsp16s* pDelay);

/**
 * Builds the adaptive-codebook vector (G.729 3.7.1, Pred_lt_3).
 *
 * Sample n is interpolated from the ten samples at each side of n - T - f/3, with saturating sums of doubled Q15 products,
 * i = 0 .. 9, rounded. Samples are written in order: for lags below 50 later ones read earlier ones.
 *
 * @param[in]     pDelay   delay pair, lag 18 .. 144
 * @param[in,out] pSrcDst  excitation buffer, 194 samples; out: the vector in elements 154 .. 193
 * @param[out]    pDst     adaptive-codebook vector, 40 samples
 * @retval vspStsNullPtrErr    pDelay, pSrcDst or pDst is null
 * @retval vspStsCodeRangeErr  lag outside 18 .. 144, or fraction outside -1 .. 1
 */
VspStatus vspsDecodeAdaptiveVector_G729_16s(const Vsp16s* pDelay, Vsp16s* pSrcDst, Vsp16s* pDst);

/**
 * Builds the adaptive-codebook vector in the excitation buffer only, as vspsDecodeAdaptiveVector_G729_16s.
 *
 * @param[in]     pDelay   delay pair, lag 18 .. 144
 * @param[in,out] pSrcDst  excitation buffer, 194 samples; out: the vector in elements 154 .. 193
 * @retval vspStsNullPtrErr    pDelay or pSrcDst is null
 * @retval vspStsCodeRangeErr  lag outside 18 .. 144, or fraction outside -1 .. 1
 */
VspStatus vspsDecodeAdaptiveVector_G729_16s_I(const Vsp16s* pDelay, Vsp16s* pSrcDst);

/**
 * Builds the adaptive-codebook vector in floating point, in place (G.729 3.7.1 and Annex C).
 *
 * @param[in]     pDelay   delay pair, lag 18 .. 145
 * @param[in,out] pSrcDst  excitation: the first of the 40 samples of the current subframe, which are written; 155 samples
 *                         of history before it
 * @retval vspStsNullPtrErr    pDelay or pSrcDst is null
 * @retval vspStsCodeRangeErr  lag outside 18 .. 145, or fraction outside -1 .. 1
 */
VspStatus vspsDecodeAdaptiveVector_G729_32f_I(const Vsp32s* pDelay, Vsp32f* pSrcDst);

/**
 * Adaptive-codebook gain (G.729 3.7.3, Convolve and G_pitch).
 *
 * y = v convolved with h (vspsConvPartial_16s_Sfs, scale factor 12). The gain is <x,y> / <y,y> from sums normalised and
 * rounded to 16 bits, 0 if it would be negative and at most 19661 (1.2).
 *
 * @param[in]  pTarget    target x, 40 samples
 * @param[in]  pImpulse   impulse response h of the weighted synthesis filter, 40 samples, Q12
 * @param[in]  pVector    adaptive-codebook vector v, 40 samples
 * @param[out] pFiltered  filtered vector y, 40 samples
 * @param[out] pGain      gain, Q14, 0 .. 19661
 * @retval vspStsNullPtrErr  pTarget, pImpulse, pVector, pFiltered or pGain is null
 */
VspStatus vspsAdaptiveCodebookGain_G729_16s(const Vsp16s* pTarget, const Vsp16s* pImpulse, const Vsp16s* pVector,
                                            Vsp16s* pFiltered, Vsp16s* pGain);

/**
 * Adaptive-codebook gain, the vector filtered by 1/A(z) (G.729 A.3.7, Syn_filt and G_pitch).
 *
 * y = v through 1/A(z) from a zero history (vspsSynthesisFilter_NR_16s_Sfs, scale factor 12; that a step saturated is not
 * reported). The gain is formed as in vspsAdaptiveCodebookGain_G729_16s.
 *
 * @param[in]  pTarget    target x, 40 samples
 * @param[in]  pLPC       coefficients of the weighted synthesis filter, 11 values, Q12
 * @param[in]  pVector    adaptive-codebook vector v, 40 samples
 * @param[out] pFiltered  filtered vector y, 40 samples
 * @param[out] pGain      gain, Q14, 0 .. 19661
 * @retval vspStsNullPtrErr  pTarget, pLPC, pVector, pFiltered or pGain is null
 */
VspStatus vspsAdaptiveCodebookGain_G729A_16s(const Vsp16s* pTarget, const Vsp16s* pLPC, const Vsp16s* pVector,
                                             Vsp16s* pFiltered, Vsp16s* pGain);

/**
 * Removes the adaptive-codebook contribution from the target (G.729 3.8).
 *
 * dst[n] = target[n] - ((filtered[n] * gain) >> 14), in 16 bits: the product keeps its low 16 bits after the shift, and the
 * difference wraps.
 *
 * @param[in]  gain       gain, Q14
 * @param[in]  pFiltered  filtered vector, 40 samples
 * @param[in]  pTarget    target, 40 samples
 * @param[out] pDst       new target, 40 samples; may be pFiltered or pTarget
 * @retval vspStsNullPtrErr  pFiltered, pTarget or pDst is null
 */
VspStatus vspsAdaptiveCodebookContribution_G729_16s(Vsp16s gain, const Vsp16s* pFiltered, const Vsp16s* pTarget,
                                                    Vsp16s* pDst);

/**
 * Removes the adaptive-codebook contribution from the target in floating point (G.729 3.8 and Annex C).
 *
 * dst[n] = target[n] + (-gain) * filtered[n], product and sum rounded each.
 *
 * @param[in]  pFiltered  filtered vector, 40 samples
 * @param[in]  pTarget    target, 40 samples
 * @param[out] pDst       new target, 40 samples; may be pFiltered or pTarget
 * @param[in]  gain       gain
 * @retval vspStsNullPtrErr  pFiltered, pTarget or pDst is null
 */
VspStatus vspsAdaptiveCodebookContribution_G729_32f(const Vsp32f* pFiltered, const Vsp32f* pTarget, Vsp32f* pDst,
                                                    Vsp32f gain);

/**
 * Moves the filtered past excitation on by one lag, in place (G.729 3.7, Norm_Corr in Annex C).
 *
 * y[n] = y[n - 1] + excitation * h[n] for n = 1 .. len-1, from the values before the call; then y[0] = excitation: the
 * impulse response is taken to begin with 1.
 *
 * @param[in]     pImpulse    impulse response h, len samples; the first is not used
 * @param[in,out] pFiltered   filtered excitation y, len samples
 * @param[in]     len         number of samples
 * @param[in]     excitation  the excitation sample that the next lag brings in
 * @retval vspStsNullPtrErr  pImpulse or pFiltered is null
 * @retval vspStsSizeErr     len < 1
 */
VspStatus vspsFilteredExcitation_G729_32f(const Vsp32f* pImpulse, Vsp32f* pFiltered, Vsp32s len, Vsp32f excitation);

/**
 * Dot product in floating point.
 *
 * Sixteen partial sums, each of every sixteenth product from zero on, are added as a tree: those eight apart, then four,
 * two and one apart. The result is the same on every processor.
 *
 * @param[in]  pSrc1    len samples
 * @param[in]  pSrc2    len samples; may be pSrc1
 * @param[in]  len      number of samples
 * @param[out] pResult  the sum
 * @retval vspStsNullPtrErr  pSrc1, pSrc2 or pResult is null
 * @retval vspStsSizeErr     len < 1
 */
VspStatus vspsDotProd_G729A_32f(const Vsp32f* pSrc1, const Vsp32f* pSrc2, Vsp32s len, Vsp32f* pResult);

/**
 * Weighted sum of two vectors in floating point.
 *
 * dst[n] = src1[n] * weight1 + src2[n] * weight2, products and sum rounded each.
 *
 * @param[in]  pSrc1    len samples
 * @param[in]  pSrc2    len samples
 * @param[out] pDst     len samples; may be pSrc1 or pSrc2
 * @param[in]  len      number of samples
 * @param[in]  weight1  weight of pSrc1
 * @param[in]  weight2  weight of pSrc2
 * @retval vspStsNullPtrErr  pSrc1, pSrc2 or pDst is null
 * @retval vspStsSizeErr     len < 1
 */
VspStatus vspsInterpolateC_G729_32f(const Vsp32f* pSrc1, const Vsp32f* pSrc2, Vsp32f* pDst, Vsp32s len, Vsp32f weight1,
                                    Vsp32f weight2);

#ifdef __cplusplus
}
#endif

#endif
