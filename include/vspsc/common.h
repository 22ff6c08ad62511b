/**
 * @file
 * Fixed-point kernels that the speech codecs share: scaling, rounded products, interpolation, dot products, correlation,
 * convolution, LP synthesis.
 *
 * In the formulas sat16 and sat32 clamp to 16 and 32 bits, >> is an arithmetic shift (rounding towards minus infinity)
 * and products of two 16-bit values are 32-bit values.
 */
#ifndef VSPSC_COMMON_H
#define VSPSC_COMMON_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Multiplies a vector by a constant, rounded and saturated.
 *
 * dst[i] = sat16((src[i] * val + r) >> scaleFactor), r = 2^(scaleFactor-1), or 0 if scaleFactor is 0. The shift count and
 * the exponent of r are taken modulo 32, and the sum wraps at 32 bits.
 *
 * @param[in]  pSrc         len samples
 * @param[in]  val          factor; Q15 with scaleFactor 15
 * @param[out] pDst         len samples; may be pSrc
 * @param[in]  len          number of samples
 * @param[in]  scaleFactor  0 or more
 * @retval vspStsNullPtrErr     pSrc or pDst is null
 * @retval vspStsSizeErr        len < 1
 * @retval vspStsScaleRangeErr  scaleFactor < 0
 */
VspStatus vspsMulC_NR_16s_Sfs(const Vsp16s* pSrc, Vsp16s val, Vsp16s* pDst, Vsp32s len, Vsp32s scaleFactor);

/**
 * Multiplies a vector by a constant in place, rounded and saturated.
 *
 * srcDst[i] = sat16((srcDst[i] * val + r) >> scaleFactor), r as in vspsMulC_NR_16s_Sfs.
 *
 * @param[in]     val          factor; Q15 with scaleFactor 15
 * @param[in,out] pSrcDst      len samples
 * @param[in]     len          number of samples
 * @param[in]     scaleFactor  0 or more
 * @retval vspStsNullPtrErr     pSrcDst is null
 * @retval vspStsSizeErr        len < 1
 * @retval vspStsScaleRangeErr  scaleFactor < 0
 */
VspStatus vspsMulC_NR_16s_ISfs(Vsp16s val, Vsp16s* pSrcDst, Vsp32s len, Vsp32s scaleFactor);

/**
 * Multiplies two vectors element by element, rounded and saturated.
 *
 * dst[i] = sat16((src1[i] * src2[i] + r) >> scaleFactor), r as in vspsMulC_NR_16s_Sfs.
 *
 * @param[in]  pSrc1        len samples
 * @param[in]  pSrc2        len samples
 * @param[out] pDst         len samples; may be pSrc1 or pSrc2
 * @param[in]  len          number of samples
 * @param[in]  scaleFactor  0 or more
 * @retval vspStsNullPtrErr     pSrc1, pSrc2 or pDst is null
 * @retval vspStsSizeErr        len < 1
 * @retval vspStsScaleRangeErr  scaleFactor < 0
 */
VspStatus vspsMul_NR_16s_Sfs(const Vsp16s* pSrc1, const Vsp16s* pSrc2, Vsp16s* pDst, Vsp32s len, Vsp32s scaleFactor);

/**
 * Multiplies a vector by another one in place, rounded and saturated.
 *
 * srcDst[i] = sat16((src[i] * srcDst[i] + r) >> scaleFactor), r as in vspsMulC_NR_16s_Sfs.
 *
 * @param[in]     pSrc         len samples; may be pSrcDst
 * @param[in,out] pSrcDst      len samples
 * @param[in]     len          number of samples
 * @param[in]     scaleFactor  0 or more
 * @retval vspStsNullPtrErr     pSrc or pSrcDst is null
 * @retval vspStsSizeErr        len < 1
 * @retval vspStsScaleRangeErr  scaleFactor < 0
 */
VspStatus vspsMul_NR_16s_ISfs(const Vsp16s* pSrc, Vsp16s* pSrcDst, Vsp32s len, Vsp32s scaleFactor);

/**
 * Multiplies element i by the i-th power of a constant: the bandwidth expansion of LP coefficients (G.729 3.3, Weight_Az).
 *
 * dst[0] = src[0]; with p = val, for i = 1 .. len-1: dst[i] = (src[i] * p + r) >> scaleFactor, then
 * p = (p * val + r) >> scaleFactor, r as in vspsMulC_NR_16s_Sfs. Products and power keep their low 16 bits and do not
 * saturate: -32768 times -32768 at scaleFactor 15 gives -32768.
 *
 * @param[in]  pSrc         len samples
 * @param[in]  val          factor; Q15 with scaleFactor 15
 * @param[out] pDst         len samples; may be pSrc
 * @param[in]  len          number of samples
 * @param[in]  scaleFactor  0 or more
 * @retval vspStsNullPtrErr     pSrc or pDst is null
 * @retval vspStsScaleRangeErr  scaleFactor < 0
 * @retval vspStsSizeErr        len < 1
 */
VspStatus vspsMulPowerC_NR_16s_Sfs(const Vsp16s* pSrc, Vsp16s val, Vsp16s* pDst, Vsp32s len, Vsp32s scaleFactor);

/**
 * Averages two vectors (G.729 3.2.5, interpolation of LSP vectors).
 *
 * dst[i] = (src1[i] >> 1) + (src2[i] >> 1): each input is halved, not the sum, so 1 and 1 give 0.
 *
 * @param[in]  pSrc1  len samples
 * @param[in]  pSrc2  len samples
 * @param[out] pDst   len samples; may be pSrc1 or pSrc2
 * @param[in]  len    number of samples
 * @retval vspStsNullPtrErr  pSrc1, pSrc2 or pDst is null
 * @retval vspStsSizeErr     len < 1
 */
VspStatus vspsInterpolate_G729_16s(const Vsp16s* pSrc1, const Vsp16s* pSrc2, Vsp16s* pDst, Vsp32s len);

/**
 * Weighted sum of two vectors, each product shifted on its own and truncated.
 *
 * dst[i] = sat16(((src1[i] * weight1) >> sf) + ((src2[i] * weight2) >> sf)), sf = min(scaleFactor, 31). The sum wraps at
 * 32 bits: four values of -32768 with scaleFactor 0 give -32768.
 *
 * @param[in]  pSrc1        len samples
 * @param[in]  weight1      weight of pSrc1; Q15 with scaleFactor 15
 * @param[in]  pSrc2        len samples
 * @param[in]  weight2      weight of pSrc2, in the format of weight1
 * @param[out] pDst         len samples; may be pSrc1 or pSrc2
 * @param[in]  len          number of samples
 * @param[in]  scaleFactor  0 or more
 * @retval vspStsNullPtrErr     pSrc1, pSrc2 or pDst is null
 * @retval vspStsScaleRangeErr  scaleFactor < 0
 * @retval vspStsSizeErr        len < 1
 */
VspStatus vspsInterpolateC_G729_16s_Sfs(const Vsp16s* pSrc1, Vsp16s weight1, const Vsp16s* pSrc2, Vsp16s weight2,
                                        Vsp16s* pDst, Vsp32s len, Vsp32s scaleFactor);

/**
 * Weighted sum of two vectors, rounded once.
 *
 * dst[i] = sat16((src1[i] * weight1 + src2[i] * weight2 + r) >> scaleFactor), r = 2^(scaleFactor-1), or 0 if scaleFactor
 * is 0. The sum wraps at 32 bits; the shift count and the exponent of r are taken modulo 32.
 *
 * @param[in]  pSrc1        len samples
 * @param[in]  weight1      weight of pSrc1; Q15 with scaleFactor 15
 * @param[in]  pSrc2        len samples
 * @param[in]  weight2      weight of pSrc2, in the format of weight1
 * @param[out] pDst         len samples; may be pSrc1 or pSrc2
 * @param[in]  len          number of samples
 * @param[in]  scaleFactor  0 or more
 * @retval vspStsNullPtrErr     pSrc1, pSrc2 or pDst is null
 * @retval vspStsScaleRangeErr  scaleFactor < 0
 * @retval vspStsSizeErr        len < 1
 */
VspStatus vspsInterpolateC_NR_G729_16s_Sfs(const Vsp16s* pSrc1, Vsp16s weight1, const Vsp16s* pSrc2, Vsp16s weight2,
                                           Vsp16s* pDst, Vsp32s len, Vsp32s scaleFactor);

/**
 * Weighted sum of two vectors, scaled by the smaller of two factors; the product with the larger one gets less weight.
 *
 * With m the smaller factor and d the difference, the product with the larger factor is shifted right by d, and
 * dst[i] = sat16((product1 + product2 + 2^(15-m)) >> (16-m)). For m of 16 and more nothing is rounded and the sum is
 * shifted left by m-16 with saturation. The sum is exact. So a product counts 2^m/65536 times with the smaller factor and
 * 2^(m-d)/65536 times with the larger one.
 *
 * @param[in]  pSrc1         len samples
 * @param[in]  val1          weight of pSrc1; Q15 if both factors are 1
 * @param[in]  scaleFactor1  0 or more
 * @param[in]  pSrc2         len samples
 * @param[in]  val2          weight of pSrc2; Q15 if both factors are 1
 * @param[in]  scaleFactor2  0 or more
 * @param[out] pDst          len samples; may be pSrc1 or pSrc2
 * @param[in]  len           number of samples
 * @retval vspStsNullPtrErr     pSrc1, pSrc2 or pDst is null
 * @retval vspStsSizeErr        len < 1
 * @retval vspStsScaleRangeErr  scaleFactor1 or scaleFactor2 < 0
 */
VspStatus vspsInterpolateC_NR_16s(const Vsp16s* pSrc1, Vsp16s val1, Vsp32s scaleFactor1, const Vsp16s* pSrc2, Vsp16s val2,
                                  Vsp32s scaleFactor2, Vsp16s* pDst, Vsp32s len);

/**
 * Scales a vector to a requested headroom.
 *
 * With n the number of left shifts that bring the largest magnitude (-32768 counts as 32767) to 16384 or above, every
 * element is shifted left by n - scale; a negative count shifts right, by at most 15, without rounding. A vector of zeros
 * is copied, and the scale becomes 16 - scale.
 *
 * @param[in]     pSrc    len samples
 * @param[out]    pDst    len samples; may be pSrc
 * @param[in]     len     number of samples
 * @param[in,out] pScale  in: spare high-order bits wanted, 0 or more; out: the left shift n - scale
 * @retval vspStsNullPtrErr     pSrc, pDst or pScale is null
 * @retval vspStsSizeErr        len < 1
 * @retval vspStsScaleRangeErr  *pScale < 0
 */
VspStatus vspsAutoScale_16s(const Vsp16s* pSrc, Vsp16s* pDst, Vsp32s len, Vsp32s* pScale);

/**
 * Scales a vector to a requested headroom in place, as vspsAutoScale_16s.
 *
 * @param[in,out] pSrcDst  len samples
 * @param[in]     len      number of samples
 * @param[in,out] pScale   in: spare high-order bits wanted, 0 or more; out: the left shift applied
 * @retval vspStsNullPtrErr     pSrcDst or pScale is null
 * @retval vspStsSizeErr        len < 1
 * @retval vspStsScaleRangeErr  *pScale < 0
 */
VspStatus vspsAutoScale_16s_I(Vsp16s* pSrcDst, Vsp32s len, Vsp32s* pScale);

/**
 * Twice the dot product of two vectors, saturated once at the end.
 *
 * result = sat32(2 * sum of src1[i] * src2[i]), the sum exact in 64 bits.
 *
 * @param[in]  pSrc1    len samples
 * @param[in]  pSrc2    len samples; may be pSrc1
 * @param[in]  len      number of samples
 * @param[out] pResult  the result
 * @retval vspStsNullPtrErr  pSrc1, pSrc2 or pResult is null
 * @retval vspStsSizeErr     len < 1
 * @retval vspStsOverflow    warning: the result saturated
 */
VspStatus vspsDotProd_G729A_16s32s(const Vsp16s* pSrc1, const Vsp16s* pSrc2, Vsp32s len, Vsp32s* pResult);

/**
 * Dot product that shifts its inputs down until it fits 32 bits.
 *
 * result = p[0] + 2 * (p[1] + ... + p[len-1]), p[i] = (src1[i] >> s1) * (src2[i] >> s2); the first product is not doubled.
 * s1 and s2 start at 0 and grow by one alternately, s2 first, until the exact sum fits.
 *
 * @param[in]  pSrc1    len samples
 * @param[in]  pSrc2    len samples; may be pSrc1
 * @param[in]  len      number of samples
 * @param[out] pResult  the result
 * @param[out] pScale   s1 + s2
 * @retval vspStsNullPtrErr  pSrc1, pSrc2, pResult or pScale is null
 * @retval vspStsSizeErr     len < 1
 */
VspStatus vspsDotProdAutoScale_16s32s_Sfs(const Vsp16s* pSrc1, const Vsp16s* pSrc2, Vsp32s len, Vsp32s* pResult,
                                          Vsp32s* pScale);

/**
 * Replaces each element x by 1 / sqrt(x) in Q30, x taken as an integer (G.729 Inv_sqrt).
 *
 * Table of 49 points and linear interpolation, as the standard. An element of 0 or below becomes 0x3FFFFFFF.
 *
 * @param[in,out] pSrcDst  len elements; in: integers, out: Q30
 * @param[in]     len      number of elements
 * @retval vspStsNullPtrErr  pSrcDst is null
 * @retval vspStsSizeErr     len < 1
 */
VspStatus vspsInvSqrt_32s_I(Vsp32s* pSrcDst, Vsp32s len);

/**
 * Multiplies autocorrelation lags 1 .. len by the lag window in place (G.729 3.2.1, Lag_window: 60 Hz bandwidth expansion
 * and white-noise correction).
 *
 * The product is the standard's split 32 x 32 product: hi = v >> 16, lo = (v >> 1) & 0x7FFF,
 * 2 * (hi1 * hi2 + ((hi1 * lo2) >> 15) + ((lo1 * hi2) >> 15)).
 *
 * @param[in,out] pSrcDst  len autocorrelations, the first one that of lag 1
 * @param[in]     len      number of lags, 1 .. 12
 * @retval vspStsNullPtrErr  pSrcDst is null
 * @retval vspStsSizeErr     len < 1
 * @retval vspStsRangeErr    len > 12
 */
VspStatus vspsLagWindow_G729_32s_I(Vsp32s* pSrcDst, Vsp32s len);

/**
 * Gaussian-like random excitation for comfort noise (G.729 Annex B, B.4.4).
 *
 * Each element is the sum of the next twelve values of the generator seed = seed * 31821 + 13849 (modulo 2^16, signed),
 * shifted right by 7.
 *
 * @param[in,out] pSeed  in: seed; out: the last generator value
 * @param[out]    pDst   len samples
 * @param[in]     len    number of samples
 * @retval vspStsNullPtrErr  pSeed or pDst is null
 * @retval vspStsSizeErr     len < 1
 */
VspStatus vspsRandomNoiseExcitation_G729B_16s(Vsp16s* pSeed, Vsp16s* pDst, Vsp32s len);

/**
 * Finds the lag of the largest correlation of a signal with its own past (G.729 3.4, Lag_max).
 *
 * For each lag k from lagMax down to lagMin: c[k] = sum over n of 2 * src[n] * src[n - k], every product and every partial
 * sum saturated to 32 bits, n ascending. The result is the largest c[k]; of equal ones the shortest lag.
 *
 * @param[in]  pSrc    the first of len current samples; lagMax samples of history before it
 * @param[in]  len     number of current samples
 * @param[in]  lagMin  shortest lag, 1 or more
 * @param[in]  lagMax  longest lag, lagMin or more
 * @param[out] pMax    largest correlation
 * @param[out] pLag    its lag
 * @retval vspStsNullPtrErr  pSrc, pMax or pLag is null
 * @retval vspStsSizeErr     len < 1
 * @retval vspStsRangeErr    lagMin < 1 or lagMax < lagMin
 */
VspStatus vspsAutoCorrLagMax_Inv_16s(const Vsp16s* pSrc, Vsp32s len, Vsp32s lagMin, Vsp32s lagMax, Vsp32s* pMax,
                                     Vsp32s* pLag);

/**
 * Correlates a target with an impulse response, normalised to 13 bits (G.729 3.8.1, Cor_h_X).
 *
 * y[n] = sum over j = n .. len-1 of 2 * src1[j] * src2[j - n], every product and every partial sum saturated to 32 bits,
 * j ascending. With m the number of left shifts that bring the largest |y| to 0x40000000 or above (0 if all are 0, at most
 * 16), dst[n] = y[n] >> (18 - m).
 *
 * @param[in]  pSrc1  target, len samples
 * @param[in]  pSrc2  impulse response, len samples
 * @param[in]  len    number of samples
 * @param[out] pDst   len samples; may be pSrc1
 * @retval vspStsNullPtrErr  pSrc1, pSrc2 or pDst is null
 * @retval vspStsSizeErr     len < 1
 */
VspStatus vspsCrossCorr_NormM_16s(const Vsp16s* pSrc1, const Vsp16s* pSrc2, Vsp32s len, Vsp16s* pDst);

/**
 * The first len samples of a convolution (G.729 Convolve with a scale factor of 12).
 *
 * s = sum over i = 0 .. n of 2 * src1[i] * src2[n - i], every product and every partial sum saturated to 32 bits, i
 * ascending; dst[n] = sat16(s >> (scaleFactor + 1)).
 *
 * @param[in]  pSrc1        len samples
 * @param[in]  pSrc2        len samples; Q12 with a scale factor of 12 keeps the format of pSrc1
 * @param[out] pDst         len samples; may be pSrc1 or pSrc2
 * @param[in]  len          number of samples
 * @param[in]  scaleFactor  0 or more
 * @retval vspStsNullPtrErr  pSrc1, pSrc2 or pDst is null
 * @retval vspStsBadArgErr   scaleFactor < 0
 * @retval vspStsSizeErr     len < 1
 */
VspStatus vspsConvPartial_16s_Sfs(const Vsp16s* pSrc1, const Vsp16s* pSrc2, Vsp16s* pDst, Vsp32s len, Vsp32s scaleFactor);

/**
 * LP synthesis filter 1/A(z) of order 10 (G.729 Syn_filt with a scale factor of 12).
 *
 * s = 2 * src[n] * lpc[0] - sum over j = 1 .. 10 of 2 * lpc[j] * dst[n - j], j ascending; then s * 2^(15 - scaleFactor),
 * plus 0x8000; dst[n] is the high half of that. Every product and every one of these steps saturates to 32 bits. The
 * filter memory is only read: before the next call the caller moves the last ten outputs there.
 *
 * @param[in]  pLPC         11 coefficients in Q(scaleFactor)
 * @param[in]  pSrc         len samples
 * @param[out] pDst         len samples; may be pSrc
 * @param[in]  len          number of samples
 * @param[in]  scaleFactor  0 .. 15
 * @param[in]  pMem         the 10 outputs before dst[0], the newest last
 * @retval vspStsNullPtrErr     pLPC, pSrc, pDst or pMem is null
 * @retval vspStsSizeErr        len < 1
 * @retval vspStsScaleRangeErr  scaleFactor outside 0 .. 15
 * @retval vspStsOverflow       warning: some step saturated; all outputs are written
 */
VspStatus vspsSynthesisFilter_NR_16s_Sfs(const Vsp16s* pLPC, const Vsp16s* pSrc, Vsp16s* pDst, Vsp32s len,
                                         Vsp32s scaleFactor, const Vsp16s* pMem);

/**
 * LP synthesis filter 1/A(z) of order 10 in place, as vspsSynthesisFilter_NR_16s_Sfs.
 *
 * @param[in]     pLPC         11 coefficients in Q(scaleFactor)
 * @param[in,out] pSrcDst      len samples
 * @param[in]     len          number of samples
 * @param[in]     scaleFactor  0 .. 15
 * @param[in]     pMem         the 10 outputs before the first one, the newest last
 * @retval vspStsNullPtrErr     pLPC, pSrcDst or pMem is null
 * @retval vspStsSizeErr        len < 1
 * @retval vspStsScaleRangeErr  scaleFactor outside 0 .. 15
 * @retval vspStsOverflow       warning: some step saturated; all outputs are written
 */
VspStatus vspsSynthesisFilter_NR_16s_ISfs(const Vsp16s* pLPC, Vsp16s* pSrcDst, Vsp32s len, Vsp32s scaleFactor,
                                          const Vsp16s* pMem);

/**
 * Autocorrelation of a windowed signal, normalised (G.729 3.2.1, Autocorr).
 *
 * While 2 * sum of y[n]^2 + 1 leaves 32 bits, all samples y of a copy are divided by 4 (>> 2). Then dst[k] = (2 * sum of
 * y[n] * y[n-k]) << m, 1 added to the sum of k = 0, which m normalises; bit 0 is cleared.
 *
 * @param[in]  pSrc    windowed signal, len samples
 * @param[in]  len     number of samples
 * @param[out] pDst    autocorrelations of lags 0 .. lenDst-1, Q31
 * @param[in]  lenDst  number of lags
 * @param[out] pNorm   m - 4 times the number of divisions
 * @retval vspStsNullPtrErr  pSrc, pDst or pNorm is null
 * @retval vspStsSizeErr     len < 1, lenDst < 1 or lenDst > len
 * @retval vspStsOverflow    warning: the copy was divided by 4
 */
VspStatus vspsAutoCorr_NormE_16s32s(const Vsp16s* pSrc, Vsp32s len, Vsp32s* pDst, Vsp32s lenDst, Vsp32s* pNorm);

#ifdef __cplusplus
}
#endif

#endif
