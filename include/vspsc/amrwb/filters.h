/**
 * @file
 * AMR-WB: high-pass, pre-emphasis, residual, synthesis and band filters.
 */
#ifndef VSPSC_AMRWB_FILTERS_H
#define VSPSC_AMRWB_FILTERS_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Size of the state of the high-pass filter, 3GPP TS 26.190 5.1: 40 bytes.
 *
 * @param[in]  mode   2 or 3
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 * @retval vspStsRangeErr    mode is neither 2 nor 3
 */
VspStatus vspsHighPassFilterGetSize_AMRWB_16s(Vsp32s mode, Vsp32s* pSize);

/**
 * Sets the coefficients of a high-pass filter and clears its memories.
 *
 * Those of the codec, a and b: 50 Hz (8192, 16211, -8021), (4053, -8106, 4053); 400 Hz (16384, 29280, -14160), (915, -1830,
 * 915), which divides by 16; weighted speech (8192, 21663, -19258, 5734), (-3432, 10280, -10280, 3432).
 *
 * @param[in]  pA      mode + 1 coefficients of the outputs, all in the Q format of the first one, which is 1
 * @param[in]  pB      mode + 1 coefficients of the inputs
 * @param[in]  mode    order of the filter, 2 or 3
 * @param[out] pState  state
 * @retval vspStsNullPtrErr  pA, pB or pState is null
 * @retval vspStsRangeErr    mode is neither 2 nor 3, or pA[0] is neither 8192 nor 16384
 */
VspStatus vspsHighPassFilterInit_AMRWB_16s(const Vsp16s* pA, const Vsp16s* pB, Vsp32s mode, void* pState);

/**
 * High-pass filter (3GPP TS 26.190 5.1, 5.4 and 6.1; `HP50_12k8`, `HP400_12k8`, `Hp_wsp`).
 *
 * y[n] = a1 * y[n-1] + a2 * y[n-2] (+ a3 * y[n-3]) + b0 * x[n] + b1 * x[n-1] + ..., with the outputs in double precision
 * and every step saturated. Result: y[n], doubled if a0 is 8192, saturated and rounded. A signal may be cut into calls
 * anywhere.
 *
 * @param[in,out] pSrcDst  len samples
 * @param[in]     len      number of samples
 * @param[in,out] pState   state
 * @retval vspStsNullPtrErr  pSrcDst or pState is null
 * @retval vspStsSizeErr     len < 1
 */
VspStatus vspsHighPassFilter_AMRWB_16s_I(Vsp16s* pSrcDst, Vsp32s len, void* pState);

/**
 * Multiplies the memories of a high-pass filter by 2^shift, saturated, those of the inputs rounded (`scale_mem_Hp_wsp`).
 *
 * @param[in]     shift   -31 .. 31
 * @param[in,out] pState  state
 * @retval vspStsNullPtrErr  pState is null
 * @retval vspStsRangeErr    shift outside its range
 */
VspStatus vspsHighPassFilterScale_AMRWB_16s(Vsp32s shift, void* pState);

/**
 * Pre-emphasis 1 - mu * z^-1, scaled (3GPP TS 26.190 5.1, `Preemph`, `Preemph2`).
 *
 * y[n] = (x[n] - mu * x[n-1]) * 2^-scaleFactor, exact, rounded and saturated.
 *
 * @param[in]     mu           Q15
 * @param[in,out] pSrcDst      len samples
 * @param[in]     len          number of samples
 * @param[in]     scaleFactor  -8 .. 1
 * @param[in,out] pMem         the sample before, becomes the last of these
 * @retval vspStsNullPtrErr     pSrcDst or pMem is null
 * @retval vspStsSizeErr        len < 1
 * @retval vspStsScaleRangeErr  scaleFactor outside its range
 */
VspStatus vspsPreemphasize_AMRWB_16s_ISfs(Vsp16s mu, Vsp16s* pSrcDst, Vsp32s len, Vsp32s scaleFactor, Vsp16s* pMem);

/**
 * The power of two by which the encoder multiplies the pre-emphasised speech.
 *
 * Of the largest magnitude of src[n] - mu * src[n-1]: the left shifts less one that it allows, 0 .. 8, but not more than at
 * the two calls before.
 *
 * @param[in]     pSrc    len samples
 * @param[in]     len     number of samples
 * @param[in]     mu      Q15
 * @param[in]     mem     the sample before
 * @param[in,out] pHist   what the two calls before allowed, the newest first; reset 15, 15
 * @param[out]    pScale  exponent
 * @retval vspStsNullPtrErr  pSrc, pHist or pScale is null
 * @retval vspStsSizeErr     len < 1
 */
VspStatus vspsPreemphasizeScale_AMRWB_16s(const Vsp16s* pSrc, Vsp32s len, Vsp16s mu, Vsp16s mem, Vsp16s* pHist,
                                          Vsp16s* pScale);

/**
 * De-emphasis 1 / (1 - mu * z^-1) (3GPP TS 26.190 5.3, `Deemph`, `Deemph2`).
 *
 * y[n] = x[n] * 2^-scaleFactor + mu * y[n-1], saturated and rounded.
 *
 * @param[in]     mu           Q15
 * @param[in,out] pSrcDst      len samples
 * @param[in]     len          number of samples
 * @param[in]     scaleFactor  0 or 1
 * @param[in,out] pMem         the output before, becomes the last of these
 * @retval vspStsNullPtrErr  pSrcDst or pMem is null
 * @retval vspStsSizeErr     len < 1
 * @retval vspStsRangeErr    scaleFactor is neither 0 nor 1
 */
VspStatus vspsDeemphasize_AMRWB_16s_ISfs(Vsp16s mu, Vsp16s* pSrcDst, Vsp32s len, Vsp32s scaleFactor, Vsp16s* pMem);

/**
 * De-emphasis of a synthesis in double precision (3GPP TS 26.190 6.1, `Deemph_32`).
 *
 * y[n] = src[n] * 2^4 + mu * y[n-1], saturated and rounded, where src is in units of 2^-16; the lowest bit of mu does not
 * count.
 *
 * @param[in]     pSrc  len samples (vspsSynthesisFilter_AMRWB_16s32s); the low 4 bits do not count
 * @param[in]     mu    Q15
 * @param[in]     len   number of samples
 * @param[in,out] pMem  the output before, becomes the last of these
 * @param[out]    pDst  len samples
 * @retval vspStsNullPtrErr  pSrc, pMem or pDst is null
 * @retval vspStsSizeErr     len < 1
 */
VspStatus vspsDeemphasize_AMRWB_32s16s(const Vsp32s* pSrc, Vsp16s mu, Vsp32s len, Vsp16s* pMem, Vsp16s* pDst);

/**
 * LP analysis filter A(z) of order 16 (3GPP TS 26.190 5.5, `Residu`).
 *
 * dst[n] = sum over j of lpc[j] * src[n-j] * 2^-scaleFactor; every step saturates; rounded. The codec has Q12 coefficients
 * and the factor 11: the residual of speech that was halved.
 *
 * @param[in]  pLPC         17 coefficients
 * @param[in]  pSrc         len samples; 16 samples of history before them
 * @param[out] pDst         len samples, which do not overlap the source
 * @param[in]  len          number of samples
 * @param[in]  scaleFactor  0 .. 15
 * @retval vspStsNullPtrErr     pLPC, pSrc or pDst is null
 * @retval vspStsSizeErr        len < 1
 * @retval vspStsScaleRangeErr  scaleFactor outside its range
 */
VspStatus vspsResidualFilter_AMRWB_16s_Sfs(const Vsp16s* pLPC, const Vsp16s* pSrc, Vsp16s* pDst, Vsp32s len,
                                           Vsp32s scaleFactor);

/**
 * LP synthesis filter 1 / A(z) with halved inputs (3GPP TS 26.190 5.5, 6.3.2.2; `Syn_filt` without update).
 *
 * dst[n] = (lpc[0] / 2 * src[n] - sum over j = 1 .. order of lpc[j] * dst[n-j]) * 2^e, every step saturated, rounded; 2^e
 * normalises lpc[0] to Q14.
 *
 * @param[in]  pLPC   order + 1 coefficients; the first is 4096 but in comfort noise
 * @param[in]  order  16 or 20
 * @param[in]  pSrc   len samples
 * @param[out] pDst   len samples; may be pSrc
 * @param[in]  len    number of samples, 1 .. 80
 * @param[in]  pMem   the outputs before, order samples, the newest last
 * @retval vspStsNullPtrErr  pLPC, pSrc, pDst or pMem is null
 * @retval vspStsSizeErr     len outside its range
 * @retval vspStsRangeErr    order is neither 16 nor 20
 */
VspStatus vspsSynthesisFilter_AMRWB_16s(const Vsp16s* pLPC, Vsp32s order, const Vsp16s* pSrc, Vsp16s* pDst, Vsp32s len,
                                        const Vsp16s* pMem);

/**
 * LP synthesis filter 1 / A(z) of order 16 with outputs of 28 bits (3GPP TS 26.190 6.1, `Syn_filt_32`).
 *
 * As vspsSynthesisFilter_AMRWB_16s, of samples divided by 2^(4 + scale); the outputs keep 12 bits below the integer.
 *
 * @param[in]     pLPC   17 coefficients; the first is 4096 but in comfort noise
 * @param[in]     pSrc   len samples
 * @param[in]     scale  exponent by which the samples were scaled up, 0 .. 8
 * @param[in]     len    number of samples, 1 .. 64
 * @param[in,out] pMem   the last 16 outputs, the newest last; reset 0
 * @param[out]    pDst   len outputs in units of 2^-16; the low 4 bits are 0
 * @retval vspStsNullPtrErr  pLPC, pSrc, pMem or pDst is null
 * @retval vspStsSizeErr     len outside its range
 * @retval vspStsRangeErr    scale outside its range
 */
VspStatus vspsSynthesisFilter_AMRWB_16s32s(const Vsp16s* pLPC, const Vsp16s* pSrc, Vsp32s scale, Vsp32s len, Vsp32s* pMem,
                                           Vsp32s* pDst);

/**
 * Low-pass filter of five taps and decimation by two (3GPP TS 26.190 5.4, `LP_Decim2`).
 *
 * dst[j] = 0.13 x[2j-3] + 0.23 x[2j-2] + 0.28 x[2j-1] + 0.23 x[2j] + 0.13 x[2j+1], rounded.
 *
 * @param[in]     pSrc  len samples
 * @param[in]     len   number of samples, even, 4 .. 256
 * @param[in,out] pMem  the last 3 inputs, the newest last; reset 0
 * @param[out]    pDst  len / 2 samples
 * @retval vspStsNullPtrErr  pSrc, pMem or pDst is null
 * @retval vspStsSizeErr     len outside its set
 */
VspStatus vspsLowPassDecimate_AMRWB_16s(const Vsp16s* pSrc, Vsp32s len, Vsp16s* pMem, Vsp16s* pDst);

/**
 * Band-pass filter of the high band, 6 to 7 kHz, 31 taps (3GPP TS 26.190 6.3.3, `Filt_6k_7k`).
 *
 * Filters the samples divided by 4, with taps four times as large; every partial sum saturates; rounded.
 *
 * @param[in,out] pSrcDst  len samples
 * @param[in]     len      number of samples, 1 .. 80
 * @param[in,out] pMem     the last 30 inputs divided by 4, the newest last; reset 0
 * @retval vspStsNullPtrErr  pSrcDst or pMem is null
 * @retval vspStsSizeErr     len outside its range
 */
VspStatus vspsBandPassFilter_AMRWB_16s_I(Vsp16s* pSrcDst, Vsp32s len, Vsp16s* pMem);

/**
 * Low-pass filter of the high band, 7 kHz, 31 taps (3GPP TS 26.190 6.3.3, `Filt_7k`); every partial sum saturates; rounded.
 *
 * @param[in,out] pSrcDst  len samples
 * @param[in]     len      number of samples, 1 .. 80
 * @param[in,out] pMem     the last 30 inputs, the newest last; reset 0
 * @retval vspStsNullPtrErr  pSrcDst or pMem is null
 * @retval vspStsSizeErr     len outside its range
 */
VspStatus vspsLowPassFilter_AMRWB_16s_I(Vsp16s* pSrcDst, Vsp32s len, Vsp16s* pMem);

#ifdef __cplusplus
}
#endif

#endif
