/**
 * @file
 * AMR-WB: gains and their limits.
 *
 * The bit rates (mode): 5 = 6.60, 9 = 8.85, 13 = 12.65, 15 = 14.25, 16 = 15.85, 18 = 18.25, 19 = 19.85, 20 = 23.05, 21 =
 * 23.85 kbit/s. Bit-exact with the fixed-point reference of the standard (3GPP TS 26.173).
 */
#ifndef VSPSC_AMRWB_GAIN_H
#define VSPSC_AMRWB_GAIN_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Whether the pitch gain has to be limited (`Gp_clip`): it has been high for long, and at rates above 8.85 kbit/s two ISF
 * have been close.
 *
 * @param[in]  mode   bit rate
 * @param[in]  pMem   2 words: mean distance of the closest ISF, mean pitch gain; reset 307, 9830
 * @param[out] pClip  1 if so, else 0
 * @retval vspStsNullPtrErr  pMem or pClip is null
 * @retval vspStsRangeErr    mode outside its range
 */
VspStatus vspsPitchGainClip_AMRWB_16s(Vsp32s mode, const Vsp16s* pMem, Vsp16s* pClip);

/**
 * Takes the ISF of a frame into the memory of vspsPitchGainClip_AMRWB_16s (`Gp_clip_test_isf`).
 *
 * @param[in]     pIsf  16 ISF
 * @param[in]     mode  bit rate, or 25 (silence descriptor)
 * @param[in,out] pMem  2 words, of which the first is written
 * @retval vspStsNullPtrErr  pIsf or pMem is null
 * @retval vspStsRangeErr    mode outside its range
 */
VspStatus vspsPitchGainClipISF_AMRWB_16s(const Vsp16s* pIsf, Vsp32s mode, Vsp16s* pMem);

/**
 * Takes the quantised pitch gain of a subframe into the memory of vspsPitchGainClip_AMRWB_16s (`Gp_clip_test_gain_pit`).
 *
 * @param[in]     gain  Q14
 * @param[in]     mode  bit rate
 * @param[in,out] pMem  2 words, of which the second is written
 * @retval vspStsNullPtrErr  pMem is null
 * @retval vspStsRangeErr    mode outside its range
 */
VspStatus vspsPitchGainClipGain_AMRWB_16s(Vsp16s gain, Vsp32s mode, Vsp16s* pMem);

/**
 * Quantises both gains of a subframe together (`Q_gain2`), 3GPP TS 26.190 5.8: the entry with the smallest error of the
 * filtered excitation, of 64 in 6 bits at 6.60 and 8.85 kbit/s, else of the 64 of 128 around the pitch gain.
 *
 * @param[in]     pTarget     64 samples of the target of the adaptive codebook
 * @param[in]     pY1         64 samples of the filtered adaptive-codebook vector
 * @param[in]     pY2         64 samples of the filtered code, Q9
 * @param[in]     pCode       64 samples of the code, Q9
 * @param[in]     pCoeff      4 words of vspsAdaptiveCodebookGain_AMRWB_16s
 * @param[in]     scale       exponent of the signals' scale, -15..15
 * @param[in]     mode        bit rate
 * @param[in]     clip        1 leaves out large pitch gains, else 0
 * @param[in,out] pPast       4 words: energies of the predictor, newest first, Q10; reset -14336
 * @param[in,out] pGainPitch  pitch gain, Q14, before and after quantisation
 * @param[out]    pGainCode   code gain, Q16
 * @param[out]    pIndex      index of 6 or 7 bits
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsRangeErr    scale, mode or clip outside its range
 */
VspStatus vspsGainQuant_AMRWB_16s(const Vsp16s* pTarget, const Vsp16s* pY1, const Vsp16s* pY2, const Vsp16s* pCode,
                                  const Vsp16s* pCoeff, Vsp32s scale, Vsp32s mode, Vsp16s clip, Vsp16s* pPast,
                                  Vsp16s* pGainPitch, Vsp32s* pGainCode, Vsp16s* pIndex);

#ifdef __cplusplus
}
#endif

#endif
