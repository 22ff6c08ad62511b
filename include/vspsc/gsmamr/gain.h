/**
 * @file
 * GSM-AMR (narrow band): the gains of the codebooks (3GPP TS 26.090, 5.8 and 6.1).
 *
 * The bit rates (mode): 0 = 4.75, 1 = 5.15, 3 = 5.90, 6 = 6.70, 7 = 7.40, 8 = 7.95, 11 = 10.2, 12 = 12.2 kbit/s. Bit-exact
 * with the fixed-point reference of the standard (3GPP TS 26.073).
 */
#ifndef VSPSC_GSMAMR_GAIN_H
#define VSPSC_GSMAMR_GAIN_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Quantises the gains of a subframe (`gainQuant`).
 *
 * At mode 0 subframes 0 and 2 only prepare: pGain[1] becomes a gain that is not quantised, and subframes 1 and 3 quantise
 * the gains of both. At mode 12 pGain[0], which is quantised already, stays.
 *
 * @param[in]     pResidual  40 samples of the LP residual; mode 8 only
 * @param[in]     pExc       40 samples of the adaptive-codebook vector; mode 8 only
 * @param[in]     pCode      40 samples of the code
 * @param[in]     pTarget    40 samples of the target of the adaptive codebook; not at mode 12
 * @param[in]     pTarget2   40 samples of the target of the algebraic codebook; modes 0, 8 and 12 only
 * @param[in]     pY1        40 samples of the filtered adaptive-codebook vector; not at mode 12
 * @param[in]     pY2        40 samples of the filtered code
 * @param[in]     pCoeff     4 words of vspsAdaptiveCodebookGain_GSMAMR_16s; not at mode 12
 * @param[in]     mode       bit rate
 * @param[in]     subframe   0..3
 * @param[in]     limit      largest pitch gain to choose, Q14, 6556 or more
 * @param[in,out] pPred      8 words of the predictor: four corrections in decibels (reset -14336), four as logarithms
 * (reset -2381), Q10, newest first
 * @param[in,out] pMem       30 words, modes 0 and 8 only: a predictor that is not quantised[8], onset, weight of the
 * energy, code gain, long-term prediction gains[5], newest first, and 14 words from an even subframe to the next; reset:
 * the predictor's, 22 zeros
 * @param[in,out] pGain      pitch gain, Q14, and code gain, Q1
 * @param[out]    pGainPrev  the two gains of the subframe before; mode 0, subframes 1 and 3 only
 * @param[out]    pIndex     index of the gains; two at mode 8; at mode 0 in subframes 1 and 3 only
 * @retval vspStsNullPtrErr  pCode, pY2, pPred or pGain is null; after the checks below, another pointer is null where it is
 *                           used
 * @retval vspStsRangeErr    mode, subframe or limit outside its range
 */
VspStatus vspsGainQuant_GSMAMR_16s(const Vsp16s* pResidual, const Vsp16s* pExc, const Vsp16s* pCode, const Vsp16s* pTarget,
                                   const Vsp16s* pTarget2, const Vsp16s* pY1, const Vsp16s* pY2, const Vsp16s* pCoeff,
                                   Vsp32s mode, Vsp32s subframe, Vsp16s limit, Vsp16s* pPred, Vsp16s* pMem, Vsp16s* pGain,
                                   Vsp16s* pGainPrev, Vsp16s* pIndex);

/**
 * Pitch gain from its index, at the bit rates that code it on its own (`d_gain_pitch`).
 *
 * @param[in]  mode   8 or 12
 * @param[in]  index  0..15
 * @param[out] pGain  Q14
 * @retval vspStsNullPtrErr  pGain is null
 * @retval vspStsRangeErr    mode or index outside its range
 */
VspStatus vspsPitchGainDecode_GSMAMR_16s(Vsp32s mode, Vsp16s index, Vsp16s* pGain);

/**
 * Gains from their index (`Dec_gain`, `d_gain_code`).
 *
 * @param[in]     pCode     40 samples of the code
 * @param[in]     mode      bit rate
 * @param[in]     subframe  0..3; at mode 0 both subframes of a pair are decoded from the same index
 * @param[in]     index     code of the gains; at modes 8 and 12 of the code gain only
 * @param[in,out] pPred     8 words: the predictor's memory, newest first; four corrections in decibels (reset -14336), four
 *                          as logarithms (reset -2381), Q10
 * @param[in,out] pGain     pitch gain, Q14, which modes 8 and 12 leave alone, and code gain, Q1
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsRangeErr    mode, subframe or index outside its range
 */
VspStatus vspsGainDecode_GSMAMR_16s(const Vsp16s* pCode, Vsp32s mode, Vsp32s subframe, Vsp16s index, Vsp16s* pPred,
                                    Vsp16s* pGain);

/**
 * Smooths the code gain where the spectrum is steady, at up to 6.7 and at 10.2 kbit/s (`Cb_gain_average`).
 *
 * @param[in]     pLSF      10 values, interpolated
 * @param[in]     pLSFMean  10 values: their average
 * @param[in]     pFlags    6 words: frame bad, previous bad, degraded, previous degraded, in background noise, voiced
 * hangover
 * @param[in]     mode      bit rate; at the others the gain stays, and the memory is updated all the same
 * @param[in]     gain      code gain, Q1
 * @param[in,out] pMem      9 words, reset 0: seven gains, newest last; subframes of change; subframes since the last change
 * @param[out]    pMixed    smoothed gain
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsRangeErr    mode outside its set
 */
VspStatus vspsCodeGainSmooth_GSMAMR_16s(const Vsp16s* pLSF, const Vsp16s* pLSFMean, const Vsp16s* pFlags, Vsp32s mode,
                                        Vsp16s gain, Vsp16s* pMem, Vsp16s* pMixed);

#ifdef __cplusplus
}
#endif

#endif
