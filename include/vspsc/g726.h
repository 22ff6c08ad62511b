/**
 * @file
 * G.726: adaptive differential PCM at 16, 24, 32 and 40 kbit/s.
 *
 * A sample at 8 kHz becomes a code of 2, 3, 4 or 5 bits. The functions keep one code in a byte, in its low bits; packing
 * them into octets belongs to the application. The rates are numbered:
 *
 * | rate | kbit/s | bits of a code |
 * |------|--------|----------------|
 * | 17   | 16     | 2              |
 * | 22   | 24     | 3              |
 * | 23   | 32     | 4              |
 * | 24   | 40     | 5              |
 *
 * Samples are linear ones (G.726 Annex A) or octets of G.711 as transmitted: law 0 is A-law, its even bits inverted, law 1
 * is mu-law. Bit-exact with the Recommendation. How a signal is split into calls makes no difference; linear samples and
 * octets of either law may follow each other on one state, and the rate may change between calls.
 *
 * A state is memory of 4-byte alignment that the caller provides. An encoder and a decoder need one each.
 */
#ifndef VSPSC_G726_H
#define VSPSC_G726_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Size of the state of the encoder: 88 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsEncodeGetStateSize_G726_16s8u(Vsp32s* pSize);

/**
 * Size of the state of the decoder: 92 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsDecodeGetStateSize_G726_8u16s(Vsp32s* pSize);

/**
 * Resets an encoder (G.726 2).
 *
 * @param[out] pState  memory of the size that vspsEncodeGetStateSize_G726_16s8u gives
 * @param[in]  rate    17, 22, 23 or 24
 * @retval vspStsNullPtrErr  pState is null
 * @retval vspStsRangeErr    rate is none of these
 */
VspStatus vspsEncodeInit_G726_16s8u(void* pState, Vsp32s rate);

/**
 * Resets a decoder (G.726 3).
 *
 * @param[out] pState  memory of the size that vspsDecodeGetStateSize_G726_8u16s gives
 * @param[in]  rate    17, 22, 23 or 24
 * @retval vspStsNullPtrErr  pState is null
 * @retval vspStsRangeErr    rate is none of these
 */
VspStatus vspsDecodeInit_G726_8u16s(void* pState, Vsp32s rate);

/**
 * Changes the rate of an encoder, which keeps what it has adapted to. Its decoder must change at the same sample.
 *
 * @param[in,out] pState  initialised state
 * @param[in]     rate    17, 22, 23 or 24
 * @retval vspStsNullPtrErr  pState is null
 * @retval vspStsRangeErr    rate is none of these
 */
VspStatus vspsEncodeSetRate_G726_16s8u(void* pState, Vsp32s rate);

/**
 * Changes the rate of a decoder, which keeps what it has adapted to.
 *
 * @param[in,out] pState  initialised state
 * @param[in]     rate    17, 22, 23 or 24
 * @retval vspStsNullPtrErr  pState is null
 * @retval vspStsRangeErr    rate is none of these
 */
VspStatus vspsDecodeSetRate_G726_8u16s(void* pState, Vsp32s rate);

/**
 * Encodes linear samples (G.726 2, Annex A).
 *
 * @param[in]     pSrc    len samples, of which the upper 14 bits count
 * @param[out]    pDst    len codes, one in the low bits of each byte, the other bits 0
 * @param[in]     len     number of samples, 1 or more
 * @param[in,out] pState  initialised state of an encoder
 * @retval vspStsNullPtrErr  pSrc, pDst or pState is null
 * @retval vspStsSizeErr     len < 1
 */
VspStatus vspsEncode_G726_16s8u(const Vsp16s* pSrc, Vsp8u* pDst, Vsp32s len, void* pState);

/**
 * Decodes to linear samples (G.726 3, Annex A): the reconstructed signal, limited to 14 bits, times 4.
 *
 * @param[in]     pSrc    len codes, any; of each byte only the low bits count, as many as the rate has
 * @param[out]    pDst    len samples
 * @param[in]     len     number of samples, 1 or more
 * @param[in,out] pState  initialised state of a decoder
 * @retval vspStsNullPtrErr  pSrc, pDst or pState is null
 * @retval vspStsSizeErr     len < 1
 */
VspStatus vspsDecode_G726_8u16s(const Vsp8u* pSrc, Vsp16s* pDst, Vsp32s len, void* pState);

/**
 * Encodes octets of G.711 (G.726 2): the same as their 16-bit linear values through vspsEncode_G726_16s8u.
 *
 * @param[in]     pSrc    len octets
 * @param[out]    pDst    len codes, one in the low bits of each byte, the other bits 0; may be pSrc
 * @param[in]     len     number of samples, 1 or more
 * @param[in]     law     0 A-law, 1 mu-law
 * @param[in,out] pState  initialised state of an encoder
 * @retval vspStsNullPtrErr  pSrc, pDst or pState is null
 * @retval vspStsSizeErr     len < 1
 * @retval vspStsRangeErr    law is neither 0 nor 1
 */
VspStatus vspsEncodePCM_G726_8u(const Vsp8u* pSrc, Vsp8u* pDst, Vsp32s len, Vsp32s law, void* pState);

/**
 * Decodes to octets of G.711 (G.726 3) with the synchronous coding adjustment: coding and decoding an undisturbed signal
 * again loses nothing more.
 *
 * @param[in]     pSrc    len codes, any; of each byte only the low bits count, as many as the rate has
 * @param[out]    pDst    len octets; may be pSrc
 * @param[in]     len     number of samples, 1 or more
 * @param[in]     law     0 A-law, 1 mu-law
 * @param[in,out] pState  initialised state of a decoder
 * @retval vspStsNullPtrErr  pSrc, pDst or pState is null
 * @retval vspStsSizeErr     len < 1
 * @retval vspStsRangeErr    law is neither 0 nor 1
 */
VspStatus vspsDecodePCM_G726_8u(const Vsp8u* pSrc, Vsp8u* pDst, Vsp32s len, Vsp32s law, void* pState);

#ifdef __cplusplus
}
#endif

#endif
