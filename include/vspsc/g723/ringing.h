/**
 * @file
 * G.723.1: impulse response and ringing of the combined filter (2.12, 2.13 and 2.19).
 *
 * The combined filter is the synthesis filter followed by the formant and the harmonic weighting filter. pWeight is what
 * vspsWeightLPC_G723_16s makes of the unquantised filter.
 */
#ifndef VSPSC_G723_RINGING_H
#define VSPSC_G723_RINGING_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Impulse response of the combined filter (Comp_Ir).
 *
 * @param[in]  pLPC     10 coefficients of the quantised filter, Q13
 * @param[in]  pWeight  20 coefficients, Q13
 * @param[in]  delay    of the harmonic filter, 15 .. 145
 * @param[in]  gain     of the harmonic filter, Q15
 * @param[out] pDst     60 samples, Q13
 * @retval vspStsNullPtrErr  pLPC, pWeight or pDst is null
 * @retval vspStsRangeErr    delay outside 15 .. 145
 */
VspStatus vspsImpulseResponse_G723_16s(const Vsp16s* pLPC, const Vsp16s* pWeight, Vsp16s delay, Vsp16s gain, Vsp16s* pDst);

/**
 * Subtracts the ringing of the combined filter, its output without input, from the target (Sub_Ring).
 *
 * @param[in]     pLPC     10 coefficients of the quantised filter, Q13
 * @param[in]     pWeight  20 coefficients, Q13
 * @param[in]     pErr     the last 145 outputs of the formant weighting filter, the oldest first; reset to 0
 * @param[in]     pFIRMem  the last 10 outputs of the synthesis filter, the newest first; reset to 0
 * @param[in]     pIIRMem  the last 10 outputs of the formant weighting filter, the newest first; reset to 0
 * @param[in]     delay    of the harmonic filter, 15 .. 145
 * @param[in]     gain     of the harmonic filter, Q15
 * @param[in,out] pSrcDst  60 samples
 * @retval vspStsNullPtrErr  pLPC, pWeight, pErr, pFIRMem, pIIRMem or pSrcDst is null
 * @retval vspStsRangeErr    delay outside 15 .. 145
 */
VspStatus vspsSubtractRinging_G723_16s_I(const Vsp16s* pLPC, const Vsp16s* pWeight, const Vsp16s* pErr,
                                         const Vsp16s* pFIRMem, const Vsp16s* pIIRMem, Vsp16s delay, Vsp16s gain,
                                         Vsp16s* pSrcDst);

/**
 * Runs the excitation of a subframe through the combined filter, whose memories it brings up to date (Upd_Ring).
 *
 * @param[in]     pLPC     10 coefficients of the quantised filter, Q13
 * @param[in]     pWeight  20 coefficients, Q13
 * @param[in,out] pSrcDst  60 samples: excitation in, synthesised speech at full scale out
 * @param[in,out] pErr     as vspsSubtractRinging_G723_16s_I has it
 * @param[in,out] pFIRMem  as vspsSubtractRinging_G723_16s_I has it
 * @param[in,out] pIIRMem  as vspsSubtractRinging_G723_16s_I has it
 * @retval vspStsNullPtrErr  pLPC, pWeight, pSrcDst, pErr, pFIRMem or pIIRMem is null
 */
VspStatus vspsUpdateRinging_G723_16s_I(const Vsp16s* pLPC, const Vsp16s* pWeight, Vsp16s* pSrcDst, Vsp16s* pErr,
                                       Vsp16s* pFIRMem, Vsp16s* pIIRMem);

#ifdef __cplusplus
}
#endif

#endif
