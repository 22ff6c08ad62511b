/**
 * @file
 * ITU-T G.722: 7 kHz audio at 64, 56 and 48 kbit/s, sub-band ADPCM.
 *
 * A coder is the quadrature mirror filter, which splits the 16 kHz signal into a low and a high band of 8 kHz, followed by
 * one ADPCM coder per band; a decoder is the two in reverse. Band signals are 15-bit values, -16384..16383, interleaved:
 * low, high, low, high. A code word has one band pair: bits 7-6 the high band, bits 5-0 the low band.
 *
 * All functions are bit-exact with the Recommendation, at any input. A signal in blocks of any lengths gives the same
 * result as in one block. States and delay lines are memory of the application; their layouts are private.
 */
#ifndef VSPSC_G722_H
#define VSPSC_G722_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Size of the state of the sub-band ADPCM encoder, G.722 3: 144 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsSBADPCMEncodeStateSize_G722_16s(Vsp32s* pSize);

/**
 * Size of the state of the sub-band ADPCM decoder, G.722 4: 144 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsSBADPCMDecodeStateSize_G722_16s(Vsp32s* pSize);

/**
 * Formats or resets the state of an encoder, G.722 3.
 *
 * @param[out] pState  memory of the size that vspsSBADPCMEncodeStateSize_G722_16s gives, aligned to 4 bytes
 * @retval vspStsNullPtrErr  pState is null
 */
VspStatus vspsSBADPCMEncodeInit_G722_16s(void* pState);

/**
 * Formats or resets the state of a decoder, G.722 4.
 *
 * @param[out] pState  memory of the size that vspsSBADPCMDecodeStateSize_G722_16s gives, aligned to 4 bytes
 * @retval vspStsNullPtrErr  pState is null
 */
VspStatus vspsSBADPCMDecodeInit_G722_16s(void* pState);

/**
 * Splits a 16 kHz signal into two bands with the 24-tap quadrature mirror filter, G.722 3.1.
 *
 * With x the samples up to the second one of a pair, newest first, A = sum of h[2*i] * x[2*i] and B = sum of h[2*i+1] *
 * x[2*i+1]: low = (A + B) >> 14 and high = (A - B) >> 14, each limited to -16384..16383.
 *
 * @param[in]     pSrc    len samples
 * @param[out]    pDst    len values: low and high band of each pair of samples; may be pSrc
 * @param[in]     len     number of samples, even
 * @param[in,out] pDelay  24 words of history, zero at the start
 * @retval vspStsNullPtrErr  pSrc, pDst or pDelay is null
 * @retval vspStsSizeErr     len < 2 or len is odd
 */
VspStatus vspsQMFAnalysis_G722_16s(const Vsp16s* pSrc, Vsp16s* pDst, Vsp32s len, Vsp16s* pDelay);

/**
 * Codes two bands, G.722 3.2 to 3.6.
 *
 * The encoder does not depend on the mode: 56 and 48 kbit/s come from leaving out bit 0 or bits 1-0 on the way.
 *
 * @param[in]     pSrc    len values: low and high band in turn
 * @param[out]    pDst    len / 2 code words, 0..255
 * @param[in]     len     number of values, even
 * @param[in,out] pState  initialised state
 * @retval vspStsNullPtrErr  pSrc, pDst or pState is null
 * @retval vspStsSizeErr     len < 2 or len is odd
 */
VspStatus vspsSBADPCMEncode_G722_16s(const Vsp16s* pSrc, Vsp16s* pDst, Vsp32s len, void* pState);

/**
 * Decodes two bands, G.722 4.2 to 4.4.
 *
 * The mode chooses the inverse quantiser of the low-band output and does not touch the adaptation, so it may change between
 * any two calls. The bits that it leaves out are ignored.
 *
 * @param[in]     pSrc    len code words; bits 7-0 count
 * @param[out]    pDst    2 * len values: low and high band in turn, each -16384..16383
 * @param[in]     len     number of code words
 * @param[in]     mode    1: 64 kbit/s; 2: 56 kbit/s, bit 0 left out; 3: 48 kbit/s, bits 1-0 left out
 * @param[in,out] pState  initialised state
 * @retval vspStsNullPtrErr  pSrc, pDst or pState is null
 * @retval vspStsSizeErr     len < 1
 * @retval vspStsRangeErr    mode is not 1, 2 or 3
 */
VspStatus vspsSBADPCMDecode_G722_16s(const Vsp16s* pSrc, Vsp16s* pDst, Vsp32s len, Vsp32s mode, void* pState);

/**
 * Puts two bands together with the 24-tap quadrature mirror filter, G.722 4.5.
 *
 * With x the sums (second of a pair) and differences (first) of low and high band, saturated, newest first: the samples are
 * the sums of h[2*i] * x[2*i] and of h[2*i+1] * x[2*i+1], shifted right by 11 and saturated.
 *
 * @param[in]     pSrc    len values: low and high band in turn
 * @param[out]    pDst    len samples at 16 kHz; may be pSrc
 * @param[in]     len     number of values, even
 * @param[in,out] pDelay  24 words of history, zero at the start
 * @retval vspStsNullPtrErr  pSrc, pDst or pDelay is null
 * @retval vspStsSizeErr     len < 2 or len is odd
 */
VspStatus vspsQMFSynthesis_G722_16s(const Vsp16s* pSrc, Vsp16s* pDst, Vsp32s len, Vsp16s* pDelay);

/**
 * Replaces the code words of lost frames by those of earlier ones (concealment in the index domain).
 *
 * A good frame is kept and stays as it is. The n-th lost frame in a row gets the code words of the n-th most recent good
 * frame for n = 1..4; from the fifth on, and before there was a good frame, all code words are 0xFF.
 *
 * @param[in,out] pSrcDst  len code words of a frame
 * @param[in]     len      code words per frame, the same in every call
 * @param[in]     lost     0 for a good frame, any other value for a lost one
 * @param[in,out] pHist    4 * len + 1 words: the number of losses in a row, 0 at the start; then four frames, newest first,
 *                         all 0xFF at the start
 * @retval vspStsNullPtrErr  pSrcDst or pHist is null
 * @retval vspStsSizeErr     len < 1
 */
VspStatus vspsConcealCodes_G722_16s_I(Vsp16s* pSrcDst, Vsp32s len, Vsp32s lost, Vsp16s* pHist);

#ifdef __cplusplus
}
#endif

#endif
