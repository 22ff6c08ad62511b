/**
 * @file
 * G.729: taming of the adaptive-codebook gain, quantiser and decoder of the gains.
 *
 * A pair of gains is that of the adaptive codebook, Q14, then that of the fixed codebook, Q1; in floating point both are
 * factors. The memory of the gain predictor are the energies of the last four subframes, the newest first, Q10 in decibels;
 * each is -14336 (-14 dB) at the start.
 */
#ifndef VSPSC_G729_GAIN_H
#define VSPSC_G729_GAIN_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Tests whether a decoder's excitation could have grown too much after an error (G.729 taming procedure, test_err).
 *
 * The four errors belong to the last four times 40 samples of the excitation, the newest first. The flag is set if one of
 * those that the delay reads is above 983040000; the caller then takes 15564 at most for the adaptive-codebook gain.
 *
 * @param[in]  pDelay   delay pair, lag 18 .. 145
 * @param[in]  pExcErr  errors, 4 values, Q14; 16384 each at the start
 * @param[out] pFlag    0 or 1
 * @retval vspStsNullPtrErr    pDelay, pExcErr or pFlag is null
 * @retval vspStsCodeRangeErr  lag outside 18 .. 145, or fraction outside -1 .. 1
 */
VspStatus vspsTamingTest_G729_16s(const Vsp16s* pDelay, const Vsp32s* pExcErr, Vsp16s* pFlag);

/**
 * Moves the errors of the excitation on by a subframe (G.729 taming procedure, update_exc_err).
 *
 * The new error is the largest of 1 + gain * error over the errors that the lag reads; for lags below 40 that of the last
 * subframe, passed on once and twice.
 *
 * @param[in]     gainPitch  quantised gain of the adaptive codebook, Q14
 * @param[in]     lag        integer lag, 18 .. 145
 * @param[in,out] pExcErr    errors, 4 values, Q14
 * @retval vspStsNullPtrErr    pExcErr is null
 * @retval vspStsCodeRangeErr  lag outside 18 .. 145
 */
VspStatus vspsTamingUpdate_G729_16s(Vsp16s gainPitch, Vsp16s lag, Vsp32s* pExcErr);

/**
 * Memory of the weighting filter after a subframe (G.729 3.10): the last ten samples of the target less both contributions.
 *
 * @param[in]  pTarget            target before any contribution was taken off, 40 samples
 * @param[in]  pFilteredAdaptive  filtered adaptive-codebook vector, 40 samples
 * @param[in]  pFilteredFixed     filtered fixed-codebook vector, 40 samples, Q12
 * @param[in]  pGain              quantised gains, Q14 and Q1
 * @param[out] pMem               10 samples, the newest last
 * @retval vspStsNullPtrErr  pTarget, pFilteredAdaptive, pFilteredFixed, pGain or pMem is null
 */
VspStatus vspsWeightedErrorUpdate_G729_16s(const Vsp16s* pTarget, const Vsp16s* pFilteredAdaptive,
                                           const Vsp16s* pFilteredFixed, const Vsp16s* pGain, Vsp16s* pMem);

/**
 * Quantises both gains of a subframe (G.729 3.9.2, Qua_gain).
 *
 * The unquantised optimum preselects 4 of 8 and 8 of 16 entries of the two codebooks; of their pairs that with the smallest
 * weighted error wins, of equal ones the first. With taming only pairs with a gain of the adaptive codebook below 16383 do,
 * and the first of the preselected entries if there is none.
 *
 * @param[in]     pTarget            target before any contribution was taken off, 40 samples
 * @param[in]     pFilteredAdaptive  filtered adaptive-codebook vector, 40 samples
 * @param[in]     pFilteredFixed     filtered fixed-codebook vector, 40 samples, Q12
 * @param[in]     pCode              fixed-codebook vector, 40 samples, Q13
 * @param[in]     tameFlag           result of vspsTamingTest_G729_16s, 0 or 1
 * @param[in,out] pPastEnergy        memory of the predictor, 4 values, Q10
 * @param[out]    pGain              quantised gains, Q14 and Q1
 * @param[out]    pIndex             index, 3 + 4 bits
 * @retval vspStsNullPtrErr  pTarget, pFilteredAdaptive, pFilteredFixed, pCode, pPastEnergy, pGain or pIndex is null
 * @retval vspStsRangeErr    tameFlag neither 0 nor 1
 */
VspStatus vspsGainQuant_G729_16s(const Vsp16s* pTarget, const Vsp16s* pFilteredAdaptive, const Vsp16s* pFilteredFixed,
                                 const Vsp16s* pCode, Vsp16s tameFlag, Vsp16s* pPastEnergy, Vsp16s* pGain, Vsp16s* pIndex);

/**
 * Quantises both gains of a subframe at 6.4 kbit/s (G.729 Annex D, Qua_gain_6k).
 *
 * As vspsGainQuant_G729_16s with two codebooks of 8 entries, of which 6 each are preselected.
 *
 * @param[in]     pTarget            target before any contribution was taken off, 40 samples
 * @param[in]     pFilteredAdaptive  filtered adaptive-codebook vector, 40 samples
 * @param[in]     pFilteredFixed     filtered fixed-codebook vector, 40 samples, Q12
 * @param[in]     pCode              fixed-codebook vector, 40 samples, Q13
 * @param[in]     tameFlag           result of vspsTamingTest_G729_16s, 0 or 1
 * @param[in,out] pPastEnergy        memory of the predictor, 4 values, Q10
 * @param[out]    pGain              quantised gains, Q14 and Q1
 * @param[out]    pIndex             index, 3 + 3 bits
 * @retval vspStsNullPtrErr  pTarget, pFilteredAdaptive, pFilteredFixed, pCode, pPastEnergy, pGain or pIndex is null
 * @retval vspStsRangeErr    tameFlag neither 0 nor 1
 */
VspStatus vspsGainQuant_G729D_16s(const Vsp16s* pTarget, const Vsp16s* pFilteredAdaptive, const Vsp16s* pFilteredFixed,
                                  const Vsp16s* pCode, Vsp16s tameFlag, Vsp16s* pPastEnergy, Vsp16s* pGain, Vsp16s* pIndex);

/**
 * Quantises both gains of a subframe in floating point (G.729 3.9.2 and Annex C, qua_gain).
 *
 * As vspsGainQuant_G729_16s; sums run as in vspsDotProd_G729A_32f.
 *
 * @param[in]     pTarget            target before any contribution was taken off, 40 samples
 * @param[in]     pFilteredAdaptive  filtered adaptive-codebook vector, 40 samples
 * @param[in]     pFilteredFixed     filtered fixed-codebook vector, 40 samples
 * @param[in]     pCode              fixed-codebook vector, 40 samples
 * @param[in]     tameFlag           0 or 1
 * @param[in,out] pPastEnergy        memory of the predictor, 4 values, decibels; -14 each at the start
 * @param[out]    pGain              quantised gains
 * @param[out]    pIndex             index, 3 + 4 bits
 * @retval vspStsNullPtrErr  pTarget, pFilteredAdaptive, pFilteredFixed, pCode, pPastEnergy, pGain or pIndex is null
 * @retval vspStsRangeErr    tameFlag neither 0 nor 1
 */
VspStatus vspsGainQuant_G729_32f(const Vsp32f* pTarget, const Vsp32f* pFilteredAdaptive, const Vsp32f* pFilteredFixed,
                                 const Vsp32f* pCode, Vsp32s tameFlag, Vsp32f* pPastEnergy, Vsp32f* pGain, Vsp32s* pIndex);

/**
 * Decodes the gains of a subframe (G.729 4.1.5, Dec_gain).
 *
 * @param[in]     index        index, 0 .. 127
 * @param[in]     pCode        fixed-codebook vector, 40 samples, Q13
 * @param[in,out] pPastEnergy  memory of the predictor, 4 values, Q10
 * @param[out]    pGain        gains, Q14 and Q1
 * @retval vspStsNullPtrErr    pCode, pPastEnergy or pGain is null
 * @retval vspStsCodeRangeErr  index outside 0 .. 127
 */
VspStatus vspsGainDecode_G729_16s(Vsp16s index, const Vsp16s* pCode, Vsp16s* pPastEnergy, Vsp16s* pGain);

/**
 * Decodes the gains of a subframe at 6.4 kbit/s (G.729 Annex D, Dec_gain_6k).
 *
 * @param[in]     index        index, 0 .. 63
 * @param[in]     pCode        fixed-codebook vector, 40 samples, Q13
 * @param[in,out] pPastEnergy  memory of the predictor, 4 values, Q10
 * @param[out]    pGain        gains, Q14 and Q1
 * @retval vspStsNullPtrErr    pCode, pPastEnergy or pGain is null
 * @retval vspStsCodeRangeErr  index outside 0 .. 63
 */
VspStatus vspsGainDecode_G729D_16s(Vsp16s index, const Vsp16s* pCode, Vsp16s* pPastEnergy, Vsp16s* pGain);

/**
 * Gains of an erased subframe (G.729 4.4.2 and 4.4.3): 0.9 and 0.98 times the last ones, the former at most 29491 (1.8).
 *
 * The memory of the predictor takes its average less 4 dB, at least -14 dB.
 *
 * @param[in,out] pPastEnergy  memory of the predictor, 4 values, Q10
 * @param[in,out] pGain        gains of the last subframe in, attenuated ones out
 * @retval vspStsNullPtrErr  pPastEnergy or pGain is null
 */
VspStatus vspsGainDecodeErased_G729_16s(Vsp16s* pPastEnergy, Vsp16s* pGain);

/**
 * Gains of an erased subframe at 11.8 kbit/s (G.729 Annex E, Dec_gaine).
 *
 * In the first two erased subframes the gain of the adaptive codebook is 16384 where the signal is stationary and 15564
 * elsewhere. From the third on both gains are multiplied by a factor, which then falls: by 32604/32768 a subframe from the
 * twelfth on where the signal is stationary, at once by 32112/32768 elsewhere.
 *
 * @param[in]     count        erased subframes since the last good frame, before this one
 * @param[in]     stationary   0 or 1
 * @param[in,out] pMuting      the factor, Q15; 32767 after a good frame
 * @param[in,out] pPastEnergy  memory of the predictor as in vspsGainDecodeErased_G729_16s
 * @param[in,out] pGain        gains of the last subframe in, those of this one out
 * @retval vspStsNullPtrErr  pMuting, pPastEnergy or pGain is null
 * @retval vspStsRangeErr    count negative, or stationary neither 0 nor 1
 */
VspStatus vspsGainDecodeErased_G729E_16s(Vsp16s count, Vsp16s stationary, Vsp16s* pMuting, Vsp16s* pPastEnergy,
                                         Vsp16s* pGain);

#ifdef __cplusplus
}
#endif

#endif
