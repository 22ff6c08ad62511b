/**
 * @file
 * AMR-WB: enhancement of the decoded excitation (3GPP TS 26.190, 6.1).
 *
 * The bit rates (mode): 5 = 6.60, 9 = 8.85, 13 = 12.65, 15 = 14.25, 16 = 15.85, 18 = 18.25, 19 = 19.85, 20 = 23.05, 21
 * = 23.85 kbit/s. Bit-exact with the fixed-point reference of the standard (3GPP TS 26.173).
 */
#ifndef VSPSC_AMRWB_ENHANCEMENT_H
#define VSPSC_AMRWB_ENHANCEMENT_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Smooths the code gain of stationary, unvoiced sounds (noise enhancer).
 *
 * A gain below the threshold rises by 1.5 dB, but not above it; another falls by 1.5 dB, but not below. This becomes the
 * threshold, and the gain moves towards it by the share stability * (1 - voicing) / 2.
 *
 * @param[in]     voicing     voicing factor, Q15
 * @param[in]     stability   stability of the ISFs, Q15
 * @param[in,out] pThreshold  the gain approached last, Q16, reset 0
 * @param[in,out] pGain       code gain, Q16
 * @retval vspStsNullPtrErr  a pointer is null
 */
VspStatus vspsNoiseEnhance_AMRWB_32s_I(Vsp16s voicing, Vsp16s stability, Vsp32s* pThreshold, Vsp32s* pGain);

/**
 * Takes low frequencies out of the code of voiced sounds (pitch enhancer).
 *
 * dst[n] = code[n] - c * (code[n+1] + code[n-1]), rounded, c = voicing / 8 + 1/8; zeros around the code.
 *
 * @param[in]  pCode    64 samples
 * @param[in]  voicing  voicing factor, Q15
 * @param[out] pDst     64 samples; may be pCode
 * @retval vspStsNullPtrErr  a pointer is null
 */
VspStatus vspsPitchEnhance_AMRWB_16s(const Vsp16s* pCode, Vsp16s voicing, Vsp16s* pDst);

/**
 * Spreads the pulses of the code where the pitch gain is low (`Phase_dispersion`).
 *
 * @param[in]     gainPitch  Q14
 * @param[in]     gainCode   high word of the code gain in Q16
 * @param[in]     mode       bit rate; a code is changed at modes 5 and 9 only
 * @param[in,out] pCode      64 samples
 * @param[in,out] pMem       8 words, reset 0: state, code gain, six pitch gains, newest first
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsRangeErr    mode outside its set
 */
VspStatus vspsPhaseDispersion_AMRWB_16s_I(Vsp16s gainPitch, Vsp16s gainCode, Vsp32s mode, Vsp16s* pCode, Vsp16s* pMem);

/**
 * Adds the adaptive-codebook vector to the excitation once more, where the pitch gain is above 0.5, at the energy that the
 * excitation had (long-term post-processing of modes 5 and 9, with `agc2`).
 *
 * @param[in]     pVector    64 samples of the adaptive-codebook vector
 * @param[in]     gainPitch  Q14
 * @param[in,out] pExc       64 samples
 * @retval vspStsNullPtrErr  a pointer is null
 */
VspStatus vspsPitchPostProcess_AMRWB_16s_I(const Vsp16s* pVector, Vsp16s gainPitch, Vsp16s* pExc);

#ifdef __cplusplus
}
#endif

#endif
