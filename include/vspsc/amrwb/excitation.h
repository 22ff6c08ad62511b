/**
 * @file
 * AMR-WB: excitation and its enhancement.
 */
#ifndef VSPSC_AMRWB_EXCITATION_H
#define VSPSC_AMRWB_EXCITATION_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * How voiced a subframe is (`voice_factor`), 3GPP TS 26.190 6.1: -1 for none to 1 for all of the energy in the adaptive
 * codebook.
 *
 * @param[in]  pExc       64 samples of the adaptive-codebook vector, scaled by 2^scale
 * @param[in]  scale      -15..15
 * @param[in]  gainPitch  Q14
 * @param[in]  pCode      64 samples of the code, Q9
 * @param[in]  gainCode   code gain, Q0
 * @param[out] pFactor    Q15
 * @retval vspStsNullPtrErr  pExc, pCode or pFactor is null
 * @retval vspStsRangeErr    scale outside its range
 */
VspStatus vspsVoicingFactor_AMRWB_16s(const Vsp16s* pExc, Vsp32s scale, Vsp16s gainPitch, const Vsp16s* pCode,
                                      Vsp16s gainCode, Vsp16s* pFactor);

/**
 * Total excitation of a subframe, 3GPP TS 26.190 5.10.
 *
 * exc[i] = gainPitch * exc[i] + gainCode * code[i], rounded and saturated
 *
 * @param[in]     pCode      64 samples of the code, Q9
 * @param[in]     gainPitch  Q14
 * @param[in]     gainCode   code gain in the scale of the excitation
 * @param[in,out] pExc       64 samples of the adaptive-codebook vector
 * @retval vspStsNullPtrErr  pCode or pExc is null
 */
VspStatus vspsExcitation_AMRWB_16s_I(const Vsp16s* pCode, Vsp16s gainPitch, Vsp16s gainCode, Vsp16s* pExc);

/**
 * Memory of the weighting filter after a subframe, 3GPP TS 26.190 5.10: the weighted error of its last sample.
 *
 * mem = target[63] - gainPitch * y1[63] - gainCode * y2[63], times 2^-shift.
 *
 * @param[in]  pTarget    64 samples of the target of the adaptive codebook; of this and the next two the last is read
 * @param[in]  pY1        64 samples of the filtered adaptive-codebook vector
 * @param[in]  pY2        64 samples of the filtered code, Q9
 * @param[in]  gainPitch  Q14
 * @param[in]  gainCode   code gain
 * @param[in]  shift      scale of target and y1, -15..15
 * @param[out] pMem       the memory
 * @retval vspStsNullPtrErr  pTarget, pY1, pY2 or pMem is null
 * @retval vspStsRangeErr    shift outside its range
 */
VspStatus vspsWeightedErrorUpdate_AMRWB_16s(const Vsp16s* pTarget, const Vsp16s* pY1, const Vsp16s* pY2, Vsp16s gainPitch,
                                            Vsp16s gainCode, Vsp32s shift, Vsp16s* pMem);

#ifdef __cplusplus
}
#endif

#endif
