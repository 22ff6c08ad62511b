/**
 * @file
 * G.728: filters and codebook search of the encoder. Speech is Q2: 16-bit samples shifted right by one.
 */
#ifndef VSPSC_G728_ENCODER_H
#define VSPSC_G728_ENCODER_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Size of the state of the weighting filter of the input, G.728 block 4: 64 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsIIR16sGetStateSize_G728_16s(Vsp32s* pSize);

/**
 * Resets the weighting filter of the input, G.728 block 4.
 *
 * @param[out] pState  its state
 * @retval vspStsNullPtrErr  pState is null
 */
VspStatus vspsIIR16sInit_G728_16s(void* pState);

/**
 * Perceptual weighting filter of the input, G.728 block 4.
 *
 * A signal in parts of any length gives the same as in one.
 *
 * @param[in]     pSrc    len samples
 * @param[in]     pZero   10 coefficients of the zeros, Q14
 * @param[in]     pPole   10 coefficients of the poles, Q14
 * @param[out]    pDst    len samples; may be pSrc
 * @param[in]     len     number of samples
 * @param[in,out] pState  initialised state
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsSizeErr     len is below 1
 */
VspStatus vspsIIR16s_G728_16s(const Vsp16s* pSrc, const Vsp16s* pZero, const Vsp16s* pPole, Vsp16s* pDst, Vsp32s len,
                              void* pState);

/**
 * Size of the state of the combined synthesis and weighting filter, G.728 blocks 9 and 10: 208 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsCombinedFilterGetStateSize_G728_16s(Vsp32s* pSize);

/**
 * Resets the combined synthesis and weighting filter, G.728 blocks 9 and 10.
 *
 * @param[out] pState  its state
 * @retval vspStsNullPtrErr  pState is null
 */
VspStatus vspsCombinedFilterInit_G728_16s(void* pState);

/**
 * Response of the combined filter to its past, G.728 blocks 9 and 10.
 *
 * The response of the synthesis filter stays in the state until vspsCombinedFilterUpdate_G728_16s adds the response to
 * the excitation.
 *
 * @param[in]     pLPC    50 coefficients of the synthesis filter, Q14
 * @param[in]     pZero   10 coefficients of the zeros, Q14
 * @param[in]     pPole   10 coefficients of the poles, Q14
 * @param[out]    pDst    5 samples, Q2
 * @param[in,out] pState  initialised state
 * @retval vspStsNullPtrErr  a pointer is null
 */
VspStatus vspsCombinedFilterZeroInput_G728_16s(const Vsp16s* pLPC, const Vsp16s* pZero, const Vsp16s* pPole, Vsp16s* pDst,
                                               void* pState);

/**
 * Updates the combined filter with an excitation; gives the quantised speech, G.728 §3.11 and §5.14.
 *
 * @param[in]     pSrc       excitation, 5 elements
 * @param[in]     scale      its scale
 * @param[in]     pLPC       50 coefficients of the synthesis filter, Q14
 * @param[in]     pZero      10 coefficients of the zeros, Q14
 * @param[in]     pPole      10 coefficients of the poles, Q14
 * @param[out]    pDst       5 samples, 14 bits
 * @param[out]    pDstScale  their scale
 * @param[in,out] pState     state behind vspsCombinedFilterZeroInput_G728_16s
 * @retval vspStsNullPtrErr  a pointer is null
 */
VspStatus vspsCombinedFilterUpdate_G728_16s(const Vsp16s* pSrc, Vsp32s scale, const Vsp16s* pLPC, const Vsp16s* pZero,
                                            const Vsp16s* pPole, Vsp16s* pDst, Vsp16s* pDstScale, void* pState);

/**
 * Target of the codebook search, divided by the gain, G.728 blocks 11 and 16.
 *
 * @param[in]  pWeighted   weighted input, 5 samples, Q2
 * @param[in]  pZeroInput  response to the past, 5 samples, Q2
 * @param[in]  pGain       gain: mantissa and scale
 * @param[out] pDst        5 elements
 * @param[out] pScale      their scale
 * @retval vspStsNullPtrErr  a pointer is null
 */
VspStatus vspsTargetNormalize_G728_16s(const Vsp16s* pWeighted, const Vsp16s* pZeroInput, const Vsp16s* pGain, Vsp16s* pDst,
                                       Vsp16s* pScale);

/**
 * Impulse response of the combined filter, G.728 block 12.
 *
 * @param[in]  pLPC   coefficients of the synthesis filter, Q14; the first 4 are read
 * @param[in]  pZero  the first 4 of the zeros, Q14
 * @param[in]  pPole  the first 4 of the poles, Q14
 * @param[out] pH     5 samples, Q13
 * @retval vspStsNullPtrErr  a pointer is null
 */
VspStatus vspsImpulseResponse_G728_16s(const Vsp16s* pLPC, const Vsp16s* pZero, const Vsp16s* pPole, Vsp16s* pH);

/**
 * Energies of the filtered shapes, G.728 blocks 14 and 15.
 *
 * @param[in]  pH       impulse response, 5 samples, Q13
 * @param[out] pEnergy  128 energies, Q5
 * @retval vspStsNullPtrErr  a pointer is null
 */
VspStatus vspsCodebookEnergy_G728_16s(const Vsp16s* pH, Vsp16s* pEnergy);

/**
 * Codebook search, G.728 blocks 13, 17 and 18.
 *
 * All 128 shapes, each with the best of 8 gains; of equal ones the first shape.
 *
 * @param[in]  pTarget  target, 5 elements
 * @param[in]  scale    its scale, -6 or more
 * @param[in]  pH       impulse response, 5 samples, Q13
 * @param[in]  pEnergy  128 energies, Q5
 * @param[out] pIndex   8 shape + gain: the 10 bits to send
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsRangeErr    scale is below -6
 */
VspStatus vspsCodebookSearch_G728_16s(const Vsp16s* pTarget, Vsp32s scale, const Vsp16s* pH, const Vsp16s* pEnergy,
                                      Vsp16s* pIndex);

/**
 * Excitation of an index, G.728 blocks 19, 21 and 29 to 31.
 *
 * @param[in]  index   0 to 1023
 * @param[in]  pGain   gain: mantissa and scale
 * @param[out] pDst    5 elements
 * @param[out] pScale  their scale
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsRangeErr    index is out of range
 */
VspStatus vspsExcitation_G728_16s(Vsp32s index, const Vsp16s* pGain, Vsp16s* pDst, Vsp16s* pScale);

#ifdef __cplusplus
}
#endif

#endif
