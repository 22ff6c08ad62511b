/**
 * @file
 * G.728: backward adaptation of filters and gain. A vector has 5 samples. Vectors are in block floating point: elements
 * times 2^-scale. Filters are a[0] = a1, a[1] = a2 ... without the leading 1, all arrays in the order of time.
 */
#ifndef VSPSC_G728_ADAPTATION_H
#define VSPSC_G728_ADAPTATION_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Size of the state of a hybrid window, G.728 §3.3, §3.7 and §3.9.
 *
 * There are three: 50, 35, 20 (synthesis filter, 384 bytes), 10, 30, 20 (weighting filter, 192) and 10, 20, 4
 * (logarithmic gain, 128).
 *
 * @param[in]  order   order of the filter that follows
 * @param[in]  nonRec  samples of the part that is not recursive
 * @param[in]  block   new samples of a call
 * @param[out] pSize   bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 * @retval vspStsSizeErr     nonRec or block is below 1
 * @retval vspStsRangeErr    none of the three
 */
VspStatus vspsWinHybridGetStateSize_G728_16s(Vsp32s order, Vsp32s nonRec, Vsp32s block, Vsp32s* pSize);

/**
 * Resets a hybrid window.
 *
 * @param[in]  order   as above
 * @param[in]  nonRec  as above
 * @param[in]  block   as above
 * @param[out] pState  its state
 * @retval vspStsNullPtrErr  pState is null
 * @retval vspStsSizeErr     nonRec or block is below 1
 * @retval vspStsRangeErr    none of the three windows
 */
VspStatus vspsWinHybridInit_G728_16s(Vsp32s order, Vsp32s nonRec, Vsp32s block, void* pState);

/**
 * Autocorrelation behind the windows of order 10, G.728 blocks 36 and 43.
 *
 * Normalised, with the white-noise correction of 257/256 in its first element.
 *
 * @param[in]     pSrc    block new samples
 * @param[out]    pDst    11 autocorrelations
 * @param[in,out] pState  initialised state of order 10
 * @retval vspStsNullPtrErr     a pointer is null
 * @retval vspStsWinHybridWarn  the last autocorrelation is 0 (warning): the filter is to stay as it is
 */
VspStatus vspsWinHybrid_G728_16s(const Vsp16s* pSrc, Vsp16s* pDst, void* pState);

/**
 * Autocorrelation behind the window of order 50, G.728 block 49.
 *
 * @param[in]     pSrc    20 new samples, four vectors
 * @param[in]     pScale  scales of the four
 * @param[out]    pDst    51 autocorrelations, normalised
 * @param[in,out] pState  initialised state of order 50
 * @retval vspStsNullPtrErr     a pointer is null
 * @retval vspStsWinHybridWarn  the last autocorrelation is 0 (warning)
 */
VspStatus vspsWinHybridBlock_G728_16s(const Vsp16s* pSrc, const Vsp16s* pScale, Vsp16s* pDst, void* pState);

/**
 * Levinson-Durbin recursion, in parts, G.728 blocks 37, 44 and 50.
 *
 * Goes on from the filter of order `from` to that of order `to`. A stage above 10 that fails leaves the filter of order
 * 10, or of `from` if that is higher, and the coefficients behind it as they were.
 *
 * @param[in]     r        to + 1 autocorrelations
 * @param[in]     from     order so far, 0 at the start
 * @param[in]     to       order, above from, at most 50
 * @param[in,out] pSrcDst  to coefficients, scale *pScale; the first `from` are read
 * @param[out]    pRC1     first reflection coefficient, Q15; written, and needed, with from 0 only
 * @param[in,out] pAlpha   energy of the prediction error; read if from is above 0
 * @param[in,out] pScale   13 to 15: the Q format; read if from is above 0
 * @retval vspStsNullPtrErr     r, pSrcDst, pAlpha or pScale is null, or pRC1 with from 0
 * @retval vspStsRangeErr       not 0 <= from < to <= 50
 * @retval vspStsScaleRangeErr  from is above 0 and *pScale not 13 to 15
 * @retval vspStsLevinsonErr    a stage up to order 10 failed; the outputs do not count
 * @retval vspStsOverflow       a stage above 10 failed (warning)
 */
VspStatus vspsLevinsonDurbin_G728_16s_ISfs(const Vsp16s* r, Vsp32s from, Vsp32s to, Vsp16s* pSrcDst, Vsp16s* pRC1,
                                           Vsp16s* pAlpha, Vsp16s* pScale);

/**
 * Bandwidth expansion, G.728 blocks 38, 45 and 51.
 *
 * Kinds and orders: 0 synthesis filter (50), 1 logarithmic gain (10), 2 and 3 poles and zeros of the weighting filter
 * (10), 4 and 5 poles and zeros of the post-filter (10), 6 synthesis filter during a loss (50).
 *
 * @param[in]  pSrc   coefficients of the kind's order
 * @param[in]  kind   0 to 6
 * @param[in]  scale  13 to 15: their Q format
 * @param[out] pDst   as many, Q14; may be pSrc
 * @param[out] pFlag  1 if a product did not fit, and pDst was not written; else 0
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsRangeErr    kind is not 0 to 6 or scale not 13 to 15
 */
VspStatus vspsBandwidthExpand_G728_16s(const Vsp16s* pSrc, Vsp32s kind, Vsp32s scale, Vsp16s* pDst, Vsp32s* pFlag);

/**
 * Predicts the gain of a vector, G.728 blocks 46 to 48.
 *
 * Logarithmic gains are dB above 32 dB, Q9.
 *
 * @param[in]  pCoeff   10 coefficients, Q14
 * @param[in]  pMem     the last 10 logarithmic gains, the oldest first
 * @param[in]  maxGain  most, -16384 to 14336 (which the standard has)
 * @param[out] pGainDB  logarithmic gain
 * @param[out] pGain    the gain: mantissa and scale
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsRangeErr    maxGain is out of range
 */
VspStatus vspsGainPredict_G728_16s(const Vsp16s* pCoeff, const Vsp16s* pMem, Vsp32s maxGain, Vsp16s* pGainDB,
                                   Vsp16s* pGain);

/**
 * Logarithmic gain of a coded vector, G.728 blocks 93 to 96.
 *
 * @param[in]  gainDB    what was predicted, -16384 to 14336
 * @param[in]  index     index of the vector, 0 to 1023
 * @param[out] pLogGain  logarithmic gain, the next that the prediction reads
 * @retval vspStsNullPtrErr  pLogGain is null
 * @retval vspStsRangeErr    gainDB or index is out of range
 */
VspStatus vspsGainUpdate_G728_16s(Vsp32s gainDB, Vsp32s index, Vsp16s* pLogGain);

#ifdef __cplusplus
}
#endif

#endif
