/**
 * @file
 * Echo cancellation: sub-band filter bank, adaptive filters in sub-bands and over the full band, the 2100 Hz tone detector
 * of ITU-T G.168; the step-size controllers are in ec/controllers.h, the residual echo suppressor in ec/suppressor.h, the
 * noise filter in ec/noise_filter.h.
 *
 * A full-band canceller filters and adapts sample by sample (vspsNLMS_EC_32f). A sub-band canceller splits the far-end
 * reference and the near-end signal with vspsSubbandAnalysis_32f32fc, estimates the echo in each band with a short complex
 * filter (vspsFIRSubband_EC_32fc), adapts the filters by the error (vspsFIRSubbandCoeffUpdate_EC_32fc_I) and rebuilds the
 * error as a signal with vspsSubbandSynthesis_32fc32f. Each has a fixed-point twin.
 *
 * Delay lines and coefficients of the sub-band filters are arrays of pointers, which the application rotates from frame to
 * frame: ppSrc[t] points at the bands of the reference t frames ago, ppCoef[t] at the coefficients of tap t. Sub-bands are
 * in CCS packing, bins 0 to N/2 of a transform of N = 2^order. Coefficients, delay lines and step sizes belong to the
 * application.
 */
#ifndef VSPSC_EC_H
#define VSPSC_EC_H

#include "vspsc/ec/controllers.h"
#include "vspsc/ec/noise_filter.h"
#include "vspsc/ec/suppressor.h"
#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** State of the floating-point filter bank for one signal; points into itself, so it must not be moved. */
typedef struct VspSubbandProcessState_32f VspSubbandProcessState_32f;
/** State of the fixed-point filter bank for one signal; points into itself, so it must not be moved. */
typedef struct VspSubbandProcessState_16s VspSubbandProcessState_16s;
/** State of the floating-point tone detector. */
typedef struct VspToneDetectState_EC_32f VspToneDetectState_EC_32f;
/** State of the fixed-point tone detector. */
typedef struct VspToneDetectState_EC_16s VspToneDetectState_EC_16s;

/**
 * Sizes for the floating-point filter bank. Any address will do: the functions align the memory themselves.
 *
 * @param[in]  order         N = 2^order is the length of the transform, order 1 to 17
 * @param[in]  windowLen     length L of the prototype window, a multiple of N
 * @param[out] pStateSize    bytes of the state
 * @param[out] pInitBufSize  bytes that vspsSubbandProcessInit_32f needs while it runs; may be 0
 * @param[out] pBufSize      bytes of scratch that analysis and synthesis need while they run
 * @retval vspStsBadArgErr   order < 1 or windowLen < 1; after the pointers: windowLen is not a multiple of N, the order is
 *                           not supported or a size exceeds 32 bits
 * @retval vspStsNullPtrErr  an output pointer is null
 */
VspStatus vspsSubbandProcessGetSize_32f(Vsp32s order, Vsp32s windowLen, Vsp32s* pStateSize, Vsp32s* pInitBufSize,
                                        Vsp32s* pBufSize);

/**
 * Sizes for the fixed-point filter bank. Any address will do: the functions align the memory themselves.
 *
 * @param[in]  order         N = 2^order is the length of the transform, order 1 to 17
 * @param[in]  windowLen     length L of the prototype window, a multiple of N
 * @param[out] pStateSize    bytes of the state
 * @param[out] pInitBufSize  bytes that vspsSubbandProcessInit_16s needs while it runs; may be 0
 * @param[out] pBufSize      bytes of scratch that analysis and synthesis need while they run
 * @retval vspStsBadArgErr   order < 1 or windowLen < 1; after the pointers: windowLen is not a multiple of N, the order is
 *                           not supported or a size exceeds 32 bits
 * @retval vspStsNullPtrErr  an output pointer is null
 */
VspStatus vspsSubbandProcessGetSize_16s(Vsp32s order, Vsp32s windowLen, Vsp32s* pStateSize, Vsp32s* pInitBufSize,
                                        Vsp32s* pBufSize);

/**
 * Formats a floating-point filter-bank state: copies the window and clears the delay line. Each signal that is split or
 * joined needs a state of its own.
 *
 * @param[out] pState     memory of the size that vspsSubbandProcessGetSize_32f gives
 * @param[in]  order      as given to vspsSubbandProcessGetSize_32f
 * @param[in]  frameSize  F, samples per frame, 1 to 2^order
 * @param[in]  windowLen  L, as given to vspsSubbandProcessGetSize_32f
 * @param[in]  pWindow    prototype low-pass window, L values; null selects a built-in one: order 5, F 24, L 128 or
 *                        order 6, F 44, L 256
 * @param[in]  pInitBuf   memory for the time of the call; may be null if its size is 0
 * @retval vspStsBadArgErr     order < 1, frameSize outside 1..2^order or windowLen < 1; after pState: windowLen is not a
 *                             multiple of 2^order, or pWindow is null and there is no built-in window
 * @retval vspStsNullPtrErr    pState is null
 * @retval vspStsTransformErr  order is not supported
 */
VspStatus vspsSubbandProcessInit_32f(VspSubbandProcessState_32f* pState, Vsp32s order, Vsp32s frameSize, Vsp32s windowLen,
                                     const Vsp32f* pWindow, Vsp8u* pInitBuf);

/**
 * Formats a fixed-point filter-bank state: copies the window and clears the delay line. Each signal that is split or
 * joined needs a state of its own.
 *
 * @param[out] pState     memory of the size that vspsSubbandProcessGetSize_16s gives
 * @param[in]  order      as given to vspsSubbandProcessGetSize_16s
 * @param[in]  frameSize  F, samples per frame, 1 to 2^order
 * @param[in]  windowLen  L, as given to vspsSubbandProcessGetSize_16s
 * @param[in]  pWindow    prototype low-pass window, L values in Q13; null selects a built-in one: order 5, F 24, L 128 or
 *                        order 6, F 44, L 256
 * @param[in]  pInitBuf   memory for the time of the call; may be null if its size is 0
 * @retval vspStsBadArgErr     order < 1, frameSize outside 1..2^order or windowLen < 1; after pState: windowLen is not a
 *                             multiple of 2^order, or pWindow is null and there is no built-in window
 * @retval vspStsNullPtrErr    pState is null
 * @retval vspStsTransformErr  order is not supported
 */
VspStatus vspsSubbandProcessInit_16s(VspSubbandProcessState_16s* pState, Vsp32s order, Vsp32s frameSize, Vsp32s windowLen,
                                     const Vsp16s* pWindow, Vsp8u* pInitBuf);

/**
 * Splits a frame into sub-bands: the newest L samples are windowed and folded to N values, whose Fourier transform is the
 * result. u[i] = sum over b of line[bN+i] * window[bN+i] in single precision, b increasing; dst = DFT(u), unscaled.
 *
 * @param[in]     pSrc    F samples
 * @param[out]    pDst    N/2+1 bands; bands 0 and N/2 are real
 * @param[in,out] pState  initialised state
 * @param[out]    pBuf    scratch of the size that vspsSubbandProcessGetSize_32f gives; keeps nothing between calls
 * @retval vspStsNullPtrErr    a pointer is null
 * @retval vspStsTransformErr  the transform failed; the delay line has moved on
 */
VspStatus vspsSubbandAnalysis_32f32fc(const Vsp32f* pSrc, Vsp32fc* pDst, VspSubbandProcessState_32f* pState, Vsp8u* pBuf);

/**
 * Splits a frame into sub-bands, fixed point: u[i] is the saturated sum of (line[bN+i] * window[bN+i] + 2^12) >> 13 over b
 * increasing; dst = DFT(u) / 2^scaleFactor, rounded and saturated.
 *
 * @param[in]     pSrc         F samples
 * @param[out]    pDst         N/2+1 bands; bands 0 and N/2 are real
 * @param[in,out] pState       initialised state
 * @param[in]     scaleFactor  any value; a negative one multiplies
 * @param[out]    pBuf         scratch of the size that vspsSubbandProcessGetSize_16s gives; keeps nothing between calls
 * @retval vspStsNullPtrErr    a pointer is null
 * @retval vspStsTransformErr  the transform failed; the delay line has moved on
 */
VspStatus vspsSubbandAnalysis_16s32sc_Sfs(const Vsp16s* pSrc, Vsp32sc* pDst, VspSubbandProcessState_16s* pState,
                                          Vsp32s scaleFactor, Vsp8u* pBuf);

/**
 * Joins sub-bands into a frame: the inverse transform y of the bands, repeated every N samples and windowed, is added to
 * the overlap line, line[i] += y[i mod N] * window[L-1-i] after F zeros have moved in; the result is the oldest F values.
 *
 * @param[in]     pSrc    N/2+1 bands; the imaginary parts of bands 0 and N/2 are ignored
 * @param[out]    pDst    F samples
 * @param[in,out] pState  initialised state
 * @param[out]    pBuf    scratch of the size that vspsSubbandProcessGetSize_32f gives; keeps nothing between calls
 * @retval vspStsNullPtrErr    a pointer is null
 * @retval vspStsTransformErr  the transform failed
 */
VspStatus vspsSubbandSynthesis_32fc32f(const Vsp32fc* pSrc, Vsp32f* pDst, VspSubbandProcessState_32f* pState, Vsp8u* pBuf);

/**
 * Joins sub-bands into a frame, fixed point: y = IDFT(src) / 2^scaleFactor, rounded and saturated;
 * line[i] = sat16(line[i] + ((y[i mod N] * window[L-1-i] + 2^12) >> 13)).
 *
 * @param[in]     pSrc         N/2+1 bands; the imaginary parts of bands 0 and N/2 are ignored
 * @param[out]    pDst         F samples
 * @param[in,out] pState       initialised state
 * @param[in]     scaleFactor  any value; a negative one multiplies
 * @param[out]    pBuf         scratch of the size that vspsSubbandProcessGetSize_16s gives; keeps nothing between calls
 * @retval vspStsNullPtrErr    a pointer is null
 * @retval vspStsTransformErr  the transform failed
 */
VspStatus vspsSubbandSynthesis_32sc16s_Sfs(const Vsp32sc* pSrc, Vsp16s* pDst, VspSubbandProcessState_16s* pState,
                                           Vsp32s scaleFactor, Vsp8u* pBuf);

/**
 * Filters each sub-band: dst[k] = sum over t of src[t][k] * coef[t][k], complex. Products are formed in double precision
 * and rounded to single, the sum is in single precision, t increasing.
 *
 * @param[in]  ppSrc        len pointers to numSubbands values each
 * @param[in]  ppCoef       len pointers to numSubbands coefficients each
 * @param[out] pDst         numSubbands values
 * @param[in]  len          taps, 1 to 255
 * @param[in]  numSubbands  1 to 4097
 * @retval vspStsNullPtrErr     a pointer is null
 * @retval vspStsCountRangeErr  numSubbands is outside 1..4097
 * @retval vspStsRangeErr       len is outside 1..255
 */
VspStatus vspsFIRSubband_EC_32fc(const Vsp32fc* const* ppSrc, const Vsp32fc* const* ppCoef, Vsp32fc* pDst, Vsp32s len,
                                 Vsp32s numSubbands);

/**
 * Filters each sub-band in single precision: dst[k] = (a.re - b.im, a.im + b.re), where a is the sum of src[t][k] *
 * coef[t][k].re over t, b that of src[t][k] * coef[t][k].im, every product and sum rounded, t increasing. Two to three
 * times as fast as vspsFIRSubband_EC_32fc.
 *
 * @param[in]  ppSrc        len pointers to numSubbands values each
 * @param[in]  ppCoef       len pointers to numSubbands coefficients each
 * @param[out] pDst         numSubbands values
 * @param[in]  len          taps, 1 to 255
 * @param[in]  numSubbands  1 to 4097
 * @retval vspStsNullPtrErr     a pointer is null
 * @retval vspStsCountRangeErr  numSubbands is outside 1..4097
 * @retval vspStsRangeErr       len is outside 1..255
 */
VspStatus vspsFIRSubbandFast_EC_32fc(const Vsp32fc* const* ppSrc, const Vsp32fc* const* ppCoef, Vsp32fc* pDst, Vsp32s len,
                                     Vsp32s numSubbands);

/**
 * Filters each sub-band, fixed point: the 64-bit sums saturate, are divided by 2^scaleFactor, rounded towards zero, and
 * saturate to 32 bits.
 *
 * @param[in]  ppSrc        len pointers to numSubbands values each
 * @param[in]  ppCoef       len pointers to numSubbands coefficients each
 * @param[out] pDst         numSubbands values
 * @param[in]  len          taps, 1 to 255
 * @param[in]  numSubbands  1 to 4097
 * @param[in]  scaleFactor  -31 to 31; a negative one multiplies
 * @retval vspStsNullPtrErr     a pointer is null
 * @retval vspStsCountRangeErr  numSubbands is outside 1..4097
 * @retval vspStsRangeErr       len is outside 1..255 or scaleFactor outside -31..31
 */
VspStatus vspsFIRSubband_EC_32sc_Sfs(const Vsp32sc* const* ppSrc, const Vsp32sc* const* ppCoef, Vsp32sc* pDst, Vsp32s len,
                                     Vsp32s numSubbands, Vsp32s scaleFactor);

/**
 * Filters each sub-band, fixed point, in single precision: values and coefficients are rounded to it, products and sums are
 * those of vspsFIRSubbandFast_EC_32fc. A sum is divided by 2^scaleFactor, rounded to the nearest, halves to even, and
 * saturates to -2^31 .. 2^31 - 128.
 *
 * @param[in]  ppSrc        len pointers to numSubbands values each
 * @param[in]  ppCoef       len pointers to numSubbands coefficients each
 * @param[out] pDst         numSubbands values
 * @param[in]  len          taps, 1 to 255
 * @param[in]  numSubbands  1 to 4097
 * @param[in]  scaleFactor  -31 to 31
 * @retval vspStsNullPtrErr     a pointer is null
 * @retval vspStsCountRangeErr  numSubbands is outside 1..4097
 * @retval vspStsRangeErr       len is outside 1..255, or scaleFactor outside -31..31
 */
VspStatus vspsFIRSubbandFast_EC_32sc_Sfs(const Vsp32sc* const* ppSrc, const Vsp32sc* const* ppCoef, Vsp32sc* pDst,
                                         Vsp32s len, Vsp32s numSubbands, Vsp32s scaleFactor);

/**
 * Filters sub-bands whose levels are known to be small: 64-bit sums that wrap, shifted right by scaleFactor without
 * rounding, of which the low 32 bits are stored.
 *
 * @param[in]  ppSrc        len pointers to numSubbands values each
 * @param[in]  ppCoef       len pointers to numSubbands coefficients each
 * @param[in]  len          taps, 1 to 255
 * @param[out] pDst         numSubbands values, of which those before firstBand stay as they are
 * @param[in]  firstBand    first band to filter, 0 to numSubbands
 * @param[in]  numSubbands  1 to 4097
 * @param[in]  scaleFactor  0 to 31
 * @retval vspStsNullPtrErr     a pointer is null
 * @retval vspStsRangeErr       len is outside 1..255 or firstBand outside 0..numSubbands; after numSubbands: scaleFactor is
 *                              outside 0..31
 * @retval vspStsCountRangeErr  numSubbands is outside 1..4097
 */
VspStatus vspsFIRSubbandLow_EC_32sc_Sfs(const Vsp32sc* const* ppSrc, const Vsp32sc* const* ppCoef, Vsp32s len,
                                        Vsp32sc* pDst, Vsp32s firstBand, Vsp32s numSubbands, Vsp32s scaleFactor);

/**
 * Adapts the sub-band filters by NLMS: coef[t][k] += stepSize[k] * err[k] * conj(src[t][k]), the update in double precision
 * and rounded to single before it is added.
 *
 * @param[in]     pStepSize    numSubbands step sizes, 0 or more
 * @param[in]     ppSrc        len pointers to numSubbands values each
 * @param[in]     pErr         numSubbands errors
 * @param[in,out] ppCoef       len pointers to numSubbands coefficients each
 * @param[in]     len          taps, 1 to 255
 * @param[in]     numSubbands  1 to 4097
 * @retval vspStsNullPtrErr     a pointer is null
 * @retval vspStsCountRangeErr  numSubbands is outside 1..4097
 * @retval vspStsRangeErr       len is outside 1..255
 * @retval vspStsSizeErr        a step size is negative
 */
VspStatus vspsFIRSubbandCoeffUpdate_EC_32fc_I(const Vsp64f* pStepSize, const Vsp32fc* const* ppSrc, const Vsp32fc* pErr,
                                              Vsp32fc* const* ppCoef, Vsp32s len, Vsp32s numSubbands);

/**
 * Adapts the sub-band filters by NLMS in single precision: with m = err[k] * (stepSize[k] rounded to single precision),
 * coef[t][k].re += m.re * src[t][k].re + m.im * src[t][k].im and coef[t][k].im += m.im * src[t][k].re + (0 - m.re) *
 * src[t][k].im, every product and sum rounded.
 *
 * @param[in]     pStepSize    numSubbands step sizes, 0 or more
 * @param[in]     ppSrc        len pointers to numSubbands values each
 * @param[in]     pErr         numSubbands errors
 * @param[in,out] ppCoef       len pointers to numSubbands coefficients each
 * @param[in]     len          taps, 1 to 255
 * @param[in]     numSubbands  1 to 4097
 * @retval vspStsNullPtrErr     a pointer is null
 * @retval vspStsCountRangeErr  numSubbands is outside 1..4097
 * @retval vspStsRangeErr       len is outside 1..255
 * @retval vspStsSizeErr        a step size is negative
 */
VspStatus vspsFIRSubbandFastCoeffUpdate_EC_32fc_I(const Vsp64f* pStepSize, const Vsp32fc* const* ppSrc, const Vsp32fc* pErr,
                                                  Vsp32fc* const* ppCoef, Vsp32s len, Vsp32s numSubbands);

/**
 * Adapts the sub-band filters by NLMS, fixed point. A step size is a mantissa m (re, Q31, 0 or more) and an exponent x
 * (im): with m * err rounded to Q31, the 64-bit product with conj(src) is shifted right by s - 31, s = x - scaleFactor
 * (rounded, but not for a shift by one), or left with saturation if s < 31, and added to the coefficient with saturation.
 *
 * @param[in]     pStepSize    numSubbands pairs of mantissa and exponent
 * @param[in]     ppSrc        len pointers to numSubbands values each
 * @param[in]     pErr         numSubbands errors
 * @param[in,out] ppCoef       len pointers to numSubbands coefficients each
 * @param[in]     len          taps, 1 to 255
 * @param[in]     numSubbands  1 to 4097
 * @param[in]     scaleFactor  0 to 31
 * @retval vspStsNullPtrErr     a pointer is null
 * @retval vspStsCountRangeErr  numSubbands is outside 1..4097
 * @retval vspStsRangeErr       len is outside 1..255 or scaleFactor outside 0..31
 * @retval vspStsSizeErr        a mantissa is negative
 */
VspStatus vspsFIRSubbandCoeffUpdate_EC_32sc_I(const Vsp32sc* pStepSize, const Vsp32sc* const* ppSrc, const Vsp32sc* pErr,
                                              Vsp32sc* const* ppCoef, Vsp32s len, Vsp32s numSubbands, Vsp32s scaleFactor);

/**
 * Adapts the sub-band filters by NLMS, fixed point, in single precision: with mantissa m (re) and exponent x (im) of a step
 * size, errors and values rounded to it, m * 2^(scaleFactor - x) * err * conj(src) in the order of
 * vspsFIRSubbandFastCoeffUpdate_EC_32fc_I; x - scaleFactor counts as -30 below that and as 126 above. A change is rounded
 * to the nearest, halves to even, saturates to -2^31 .. 2^31 - 128, and is added with 32-bit saturation.
 *
 * @param[in]     pStepSize    numSubbands step sizes
 * @param[in]     ppSrc        len pointers to numSubbands values each
 * @param[in]     pErr         numSubbands errors
 * @param[in,out] ppCoef       len pointers to numSubbands coefficients each
 * @param[in]     len          taps, 1 to 255
 * @param[in]     numSubbands  1 to 4097
 * @param[in]     scaleFactor  0 to 31
 * @retval vspStsNullPtrErr     a pointer is null
 * @retval vspStsCountRangeErr  numSubbands is outside 1..4097
 * @retval vspStsRangeErr       len is outside 1..255, or scaleFactor outside 0..31
 * @retval vspStsSizeErr        a mantissa is negative
 */
VspStatus vspsFIRSubbandFastCoeffUpdate_EC_32sc_I(const Vsp32sc* pStepSize, const Vsp32sc* const* ppSrc,
                                                  const Vsp32sc* pErr, Vsp32sc* const* ppCoef, Vsp32s len,
                                                  Vsp32s numSubbands, Vsp32s scaleFactor);

/**
 * Adapts sub-band filters whose levels are known to be small. As vspsFIRSubbandCoeffUpdate_EC_32sc_I but for these points:
 * mantissas of either sign, the rounded m * err is left in the scratch array, -(-2^31) stays -2^31 in conj(src), and where
 * the update is shifted right the sum with the coefficient wraps.
 *
 * @param[in]     ppSrc        len pointers to numSubbands values each
 * @param[in]     pErr         numSubbands errors
 * @param[in,out] ppCoef       len pointers to numSubbands coefficients each
 * @param[in]     len          taps, 1 to 255
 * @param[out]    pScratch     numSubbands values, of which those before firstBand stay as they are
 * @param[in]     pStepSize    numSubbands pairs of mantissa and exponent
 * @param[in]     firstBand    first band to adapt, 0 to numSubbands
 * @param[in]     numSubbands  1 to 4097
 * @param[in]     scaleFactor  0 to 31
 * @retval vspStsNullPtrErr     a pointer is null
 * @retval vspStsRangeErr       len is outside 1..255 or firstBand outside 0..numSubbands; after numSubbands: scaleFactor is
 *                              outside 0..31
 * @retval vspStsCountRangeErr  numSubbands is outside 1..4097
 */
VspStatus vspsFIRSubbandLowCoeffUpdate_EC_32sc_I(const Vsp32sc* const* ppSrc, const Vsp32sc* pErr, Vsp32sc* const* ppCoef,
                                                 Vsp32s len, Vsp32sc* pScratch, const Vsp32sc* pStepSize, Vsp32s firstBand,
                                                 Vsp32s numSubbands, Vsp32s scaleFactor);

/**
 * Adapts the sub-band filters by affine projection of order P: coef[t][k] += (1/P) * sum over j of
 * stepSize[j][k] * err[j][k] * conj(src[t+j][k]), the sum in double precision, j increasing.
 *
 * @param[in]     ppStepSize   P pointers to numSubbands step sizes each
 * @param[in]     ppSrc        len + P - 1 pointers to numSubbands values each
 * @param[in]     ppErr        P pointers to numSubbands errors each
 * @param[in,out] ppCoef       len pointers to numSubbands coefficients each
 * @param[in]     len          taps, 1 to 255
 * @param[in]     numSubbands  1 to 4097
 * @param[in]     order        projection order P, 1 or more
 * @retval vspStsNullPtrErr     a pointer is null
 * @retval vspStsCountRangeErr  numSubbands is outside 1..4097
 * @retval vspStsRangeErr       len is outside 1..255 or order is 0
 */
VspStatus vspsFIRSubbandAPCoeffUpdate_EC_32fc_I(const Vsp64f* const* ppStepSize, const Vsp32fc* const* ppSrc,
                                                const Vsp32fc* const* ppErr, Vsp32fc* const* ppCoef, Vsp32u len,
                                                Vsp32u numSubbands, Vsp32u order);

/**
 * Subtracts an echo estimate: dst[n] = near[n] - sum over k of ref[n-k] * taps[k], in single precision, k increasing.
 *
 * @param[in]  pRef     len values of the reference, and numTaps-1 before the pointer
 * @param[in]  pNear    len values of the near-end signal
 * @param[out] pDst     len values; may be pNear
 * @param[in]  len      number of samples
 * @param[in]  pTaps    numTaps coefficients
 * @param[in]  numTaps  number of coefficients
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsBadArgErr   len < 1 or numTaps < 1
 */
VspStatus vspsFIR_EC_32f(const Vsp32f* pRef, const Vsp32f* pNear, Vsp32f* pDst, Vsp32s len, const Vsp32f* pTaps,
                         Vsp32s numTaps);

/**
 * Subtracts an echo estimate, fixed point: dst[n] = sat16(near[n] - y), y the sum of (ref[n-k] * taps[k] + 2^14) >> 15 over
 * k increasing, each addition saturated to 32 bits; near[n] - y wraps.
 *
 * @param[in]  pRef     len samples of the reference, and numTaps-1 before the pointer
 * @param[in]  pNear    len samples of the near-end signal
 * @param[out] pDst     len samples; may be pNear
 * @param[in]  len      number of samples
 * @param[in]  pTaps    numTaps coefficients, Q15
 * @param[in]  numTaps  number of coefficients
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsBadArgErr   len < 1 or numTaps < 1
 */
VspStatus vspsFIR_EC_16s(const Vsp16s* pRef, const Vsp16s* pNear, Vsp16s* pDst, Vsp32s len, const Vsp16s* pTaps,
                         Vsp32s numTaps);

/**
 * Full-band NLMS: for each sample, taps[k] += w * ref[n-k-1] and y += ref[n-k] * taps[k] for k increasing, then
 * dst[n] = near[n] - y and w = dst[n] * stepSize[n]. All in single precision.
 *
 * @param[in]     pRef        len values of the reference, and numTaps before the pointer
 * @param[in]     pNear       len values of the near-end signal
 * @param[in]     pStepSize   len step sizes
 * @param[out]    pDst        len values; may be pNear
 * @param[in]     len         number of samples
 * @param[in,out] pTaps       numTaps coefficients
 * @param[in]     numTaps     number of coefficients
 * @param[in,out] pScaledErr  w; 0 at the start
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsBadArgErr   len < 1 or numTaps < 1
 */
VspStatus vspsNLMS_EC_32f(const Vsp32f* pRef, const Vsp32f* pNear, const Vsp32f* pStepSize, Vsp32f* pDst, Vsp32s len,
                          Vsp32f* pTaps, Vsp32s numTaps, Vsp32f* pScaledErr);

/**
 * Full-band NLMS, fixed point: for each sample, taps[k] = sat16(taps[k] + ((ref[n-k-1] * w + 2^12) >> 13)) and
 * y = sat32(y + ((taps[k] * ref[n-k] + 2^14) >> 15)) for k increasing, then e = near[n] - y, dst[n] = sat16(e) and
 * w = (dst[n] * stepSize[n] + 2^10) >> 11. Products, sums and e wrap at 32 bits where nothing else is said. w has 32 bits
 * within a call and is clamped to 16 when the call returns, so how a signal is split into calls may matter.
 *
 * @param[in]     pRef        len samples of the reference, and numTaps before the pointer
 * @param[in]     pNear       len samples of the near-end signal
 * @param[in]     pStepSize   len step sizes
 * @param[out]    pDst        len samples; may be pNear
 * @param[in]     len         number of samples
 * @param[in,out] pTaps       numTaps coefficients, Q15
 * @param[in]     numTaps     number of coefficients
 * @param[in,out] pScaledErr  w; 0 at the start
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsBadArgErr   len < 1 or numTaps < 1
 */
VspStatus vspsNLMS_EC_16s(const Vsp16s* pRef, const Vsp16s* pNear, const Vsp32s* pStepSize, Vsp16s* pDst, Vsp32s len,
                          Vsp16s* pTaps, Vsp32s numTaps, Vsp16s* pScaledErr);

/**
 * Size of the state of the floating-point 2100 Hz tone detector, G.168: 80 bytes, at any address.
 *
 * @param[in]  rate   sampling rate, 8000 or 16000 Hz
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 * @retval vspStsRangeErr    rate is neither 8000 nor 16000
 */
VspStatus vspsToneDetectGetStateSize_EC_32f(Vsp32s rate, Vsp32s* pSize);

/**
 * Formats a state of the floating-point tone detector: nothing heard yet.
 *
 * @param[out] pState  memory of the size that vspsToneDetectGetStateSize_EC_32f gives
 * @param[in]  rate    sampling rate, 8000 or 16000 Hz
 * @retval vspStsNullPtrErr  pState is null
 * @retval vspStsRangeErr    rate is neither 8000 nor 16000
 */
VspStatus vspsToneDetectInit_EC_32f(VspToneDetectState_EC_32f* pState, Vsp32s rate);

/**
 * Looks for the 2100 Hz answer tone with phase reversals that disables echo cancellers (ITU-T G.168, V.25).
 *
 * A tone is there while the power at 2100 Hz is above 0.8 of the whole power; a reversal is a dip of it after
 * 413 to 466 ms of tone. A dip of more than 20 ms starts the count anew. Digital silence after a tone counts as tone,
 * since both powers end at the same few units of the last denormal place (denormal numbers must be on); initialise the
 * state to hear a new tone after it.
 * The flag marks calls in which the second or a later reversal came; it does not latch. How a signal is split into calls
 * makes no other difference.
 *
 * @param[in]     pSrc    len samples
 * @param[in]     len     number of samples
 * @param[out]    pFlag   1 if the second or a later reversal came during this call, else 0
 * @param[in,out] pState  initialised state
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsBadArgErr   len < 1
 */
VspStatus vspsToneDetect_EC_32f(const Vsp32f* pSrc, Vsp32s len, Vsp32s* pFlag, VspToneDetectState_EC_32f* pState);

/**
 * Size of the state of the fixed-point 2100 Hz tone detector, G.168: 72 bytes, at any address.
 *
 * @param[in]  rate   sampling rate, 8000 or 16000 Hz
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 * @retval vspStsRangeErr    rate is neither 8000 nor 16000
 */
VspStatus vspsToneDetectGetStateSize_EC_16s(Vsp32s rate, Vsp32s* pSize);

/**
 * Formats a state of the fixed-point tone detector: nothing heard yet.
 *
 * @param[out] pState  memory of the size that vspsToneDetectGetStateSize_EC_16s gives
 * @param[in]  rate    sampling rate, 8000 or 16000 Hz
 * @retval vspStsNullPtrErr  pState is null
 * @retval vspStsRangeErr    rate is neither 8000 nor 16000
 */
VspStatus vspsToneDetectInit_EC_16s(VspToneDetectState_EC_16s* pState, Vsp32s rate);

/**
 * Looks for the 2100 Hz answer tone with phase reversals that disables echo cancellers (ITU-T G.168, V.25).
 *
 * A tone is there while the power at 2100 Hz is above 0.8 of the whole power; a reversal is a dip of it after
 * 413 to 466 ms of tone. A dip of more than 20 ms, silence included, starts the count anew.
 * The flag marks calls in which the second or a later reversal came; it does not latch. How a signal is split into calls
 * makes no other difference.
 *
 * @param[in]     pSrc    len samples
 * @param[in]     len     number of samples
 * @param[out]    pFlag   1 if the second or a later reversal came during this call, else 0
 * @param[in,out] pState  initialised state
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsBadArgErr   len < 1
 */
VspStatus vspsToneDetect_EC_16s(const Vsp16s* pSrc, Vsp32s len, Vsp32s* pFlag, VspToneDetectState_EC_16s* pState);

#ifdef __cplusplus
}
#endif

#endif
