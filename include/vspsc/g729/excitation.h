/**
 * @file
 * G.729: what is done with the excitation after the codebooks.
 */
#ifndef VSPSC_G729_EXCITATION_H
#define VSPSC_G729_EXCITATION_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** State of the phase dispersion. */
typedef struct VspPhaseDispersionState_G729D_16s VspPhaseDispersionState_G729D_16s;

/**
 * Size of the state of the phase dispersion, G.729 Annex D: 20 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsPhaseDispersionGetStateSize_G729D_16s(Vsp32s* pSize);

/**
 * Initialises or resets the phase dispersion: everything 0.
 *
 * @param[out] pState  state
 * @retval vspStsNullPtrErr  pState is null
 */
VspStatus vspsPhaseDispersionInit_G729D_16s(VspPhaseDispersionState_G729D_16s* pState);

/**
 * Takes note of a subframe without dispersion, of the 8 or 11.8 kbit/s coder or of comfort noise (G.729 Annex D, Update64).
 *
 * @param[in]     pGain   pitch gain, Q14, and code gain, Q1; those of the gain memory in an erased frame
 * @param[in,out] pState  state
 * @retval vspStsNullPtrErr  pGain or pState is null
 */
VspStatus vspsPhaseDispersionUpdate_G729D_16s(const Vsp16s* pGain, VspPhaseDispersionState_G729D_16s* pState);

/**
 * Phase dispersion of the excitation at 6.4 kbit/s (G.729 Annex D.4).
 *
 * The code's part of the excitation is replaced by itself convolved, circularly, with one of three responses: strong,
 * medium or almost none, the less the larger the pitch gain and where the code gain rises. Only the synthesis filter gets
 * the result; the excitation of the past stays as it is.
 *
 * @param[in]     pExcitation  excitation, 40 samples
 * @param[in]     pGain        pitch gain, Q14, and code gain, Q1; those of the gain memory in an erased frame
 * @param[in]     pCode        sharpened code vector, 40 samples, Q13
 * @param[out]    pDst         dispersed excitation, 40 samples; may be pExcitation
 * @param[in,out] pState       state
 * @retval vspStsNullPtrErr  pExcitation, pGain, pCode, pDst or pState is null
 */
VspStatus vspsPhaseDispersion_G729D_16s(const Vsp16s* pExcitation, const Vsp16s* pGain, const Vsp16s* pCode, Vsp16s* pDst,
                                        VspPhaseDispersionState_G729D_16s* pState);

#ifdef __cplusplus
}
#endif

#endif
