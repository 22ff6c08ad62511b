/**
 * @file
 * G.728: synthesis of the decoder and concealment of losses.
 */
#ifndef VSPSC_G728_DECODER_H
#define VSPSC_G728_DECODER_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Size of the state of the synthesis filter, G.728 block 32: 144 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsSynthesisFilterGetStateSize_G728_16s(Vsp32s* pSize);

/**
 * Resets the synthesis filter, G.728 block 32.
 *
 * @param[out] pState  its state
 * @retval vspStsNullPtrErr  pState is null
 */
VspStatus vspsSynthesisFilterInit_G728_16s(void* pState);

/**
 * Synthesis filter, G.728 block 32.
 *
 * @param[in]     pSrc       excitation, 5 elements
 * @param[in]     scale      its scale
 * @param[in]     pLPC       50 coefficients, Q14
 * @param[in]     maxScale   the output's scale is at most that, as Annex I has it for lost vectors (16); 32767 for no
 *                           limit
 * @param[out]    pDst       5 samples, 14 bits
 * @param[out]    pDstScale  their scale
 * @param[in,out] pState     initialised state
 * @retval vspStsNullPtrErr  a pointer is null
 */
VspStatus vspsSynthesisFilter_G728_16s(const Vsp16s* pSrc, Vsp32s scale, const Vsp16s* pLPC, Vsp32s maxScale, Vsp16s* pDst,
                                       Vsp16s* pDstScale, void* pState);

/**
 * Speech in block floating point as samples, rounded and saturated, G.728 block 28.
 *
 * @param[in]  pSrc      len elements
 * @param[in]  srcScale  their scale
 * @param[in]  dstScale  2 for the post-filter, 3 for 16-bit samples
 * @param[out] pDst      len samples; may be pSrc
 * @param[in]  len       number of samples
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsSizeErr     len is below 1
 * @retval vspStsRangeErr    dstScale is neither 2 nor 3
 */
VspStatus vspsSpeechConvert_G728_16s(const Vsp16s* pSrc, Vsp32s srcScale, Vsp32s dstScale, Vsp16s* pDst, Vsp32s len);

/**
 * Size of the state of the concealment, G.728 Annex I: 384 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsConcealGetStateSize_G728_16s(Vsp32s* pSize);

/**
 * Resets the concealment, G.728 Annex I.
 *
 * @param[out] pState  its state
 * @retval vspStsNullPtrErr  pState is null
 */
VspStatus vspsConcealInit_G728_16s(void* pState);

/**
 * Sets up the concealment of the next 10 ms, G.728 Annex I.
 *
 * @param[in]     pitch   lag of the post-filter, 20 to 140
 * @param[in]     tap     its tap, Q14: whether speech is voiced
 * @param[in]     count   blocks of 10 ms since the loss began; 0 decides what is repeated
 * @param[in,out] pState  initialised state
 * @retval vspStsNullPtrErr  pState is null
 * @retval vspStsRangeErr    pitch is out of range or count negative
 */
VspStatus vspsConcealSetup_G728_16s(Vsp32s pitch, Vsp32s tap, Vsp32s count, void* pState);

/**
 * Excitation in place of a lost vector, G.728 Annex I.
 *
 * @param[out]    pDst     5 elements
 * @param[out]    pScale   their scale
 * @param[out]    pGainDB  their logarithmic gain, dB above 32 dB, Q9
 * @param[in,out] pState   state behind vspsConcealSetup_G728_16s
 * @retval vspStsNullPtrErr  a pointer is null
 */
VspStatus vspsConcealExcitation_G728_16s(Vsp16s* pDst, Vsp16s* pScale, Vsp16s* pGainDB, void* pState);

/**
 * Keeps the excitation of a vector that has arrived, G.728 Annex I.
 *
 * @param[in]     pSrc    5 elements
 * @param[in]     scale   their scale
 * @param[in,out] pState  initialised state
 * @retval vspStsNullPtrErr  pSrc or pState is null
 */
VspStatus vspsConcealUpdate_G728_16s(const Vsp16s* pSrc, Vsp32s scale, void* pState);

#ifdef __cplusplus
}
#endif

#endif
