/**
 * @file
 * G.729: fixed (algebraic) codebooks of the main coder and its Annexes A, C, D and E.
 *
 * A code vector has 40 samples, Q13, with pulses of magnitude 1 (Annex E: 1/2) on five tracks: position p lies on track
 * p mod 5. For lags below 40 it is sharpened: code[n] += code[n - lag] * sharp, n ascending, sums saturated. The searches
 * sharpen the impulse response in the same way on a copy. Of equally good candidates the first wins.
 */
#ifndef VSPSC_G729_FIXED_CODEBOOK_H
#define VSPSC_G729_FIXED_CODEBOOK_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Search of the four-pulse codebook, 17 bits (G.729 3.8, ACELP_Codebook).
 *
 * Pulses 0, 1 and 2 lie on tracks 0, 1 and 2, pulse 3 on track 3 or 4. The largest squared correlation with the target over
 * the energy wins. The last pulse is tried where the sum of the first three exceeds a threshold, as often as the allowance
 * for the subframe admits: 75 visits, and those that subframe 0, which has 30 more, left over.
 *
 * @param[in]     pTarget    target without the adaptive-codebook part, 40 samples
 * @param[in]     pImpulse   impulse response of the weighted synthesis filter, 40 samples, Q12
 * @param[in]     lag        integer lag, 18 .. 145
 * @param[in]     sharp      sharpening gain, Q14
 * @param[in]     subframe   0 or 1
 * @param[in,out] pExtra     visits left over; read in subframe 1 only
 * @param[out]    pCode      sharpened code vector, 40 samples, Q13
 * @param[out]    pFiltered  code vector filtered by the impulse response, 40 samples, Q12
 * @param[out]    pIndex     positions, 13 bits, and signs, 4 bits (1 for +, pulse 0 in the lowest bit)
 * @retval vspStsNullPtrErr  pTarget, pImpulse, pExtra, pCode, pFiltered or pIndex is null
 * @retval vspStsRangeErr    lag outside 18 .. 145, or subframe neither 0 nor 1
 */
VspStatus vspsFixedCodebookSearch_G729_16s(const Vsp16s* pTarget, const Vsp16s* pImpulse, Vsp16s lag, Vsp16s sharp,
                                           Vsp16s subframe, Vsp16s* pExtra, Vsp16s* pCode, Vsp16s* pFiltered,
                                           Vsp16s* pIndex);

/**
 * Search of the four-pulse codebook, depth first (G.729 A.3.8.1, ACELP_Code_A).
 *
 * The codebook of vspsFixedCodebookSearch_G729_16s. With the last pulse on track 3, then on track 4, two starts: pulse 2 at
 * one of the two largest places of its track and the last pulse anywhere, then pulses 0 and 1; or the last pulse at one of
 * the two largest places and pulse 0 anywhere, then pulses 1 and 2.
 *
 * @param[in]  pTarget    target without the adaptive-codebook part, 40 samples
 * @param[in]  pImpulse   impulse response of the weighted synthesis filter, 40 samples, Q12
 * @param[in]  lag        integer lag, 18 .. 145
 * @param[in]  sharp      sharpening gain, Q14
 * @param[out] pCode      sharpened code vector, 40 samples, Q13
 * @param[out] pFiltered  code vector filtered by the impulse response, 40 samples, Q12
 * @param[out] pIndex     positions, 13 bits, and signs, 4 bits
 * @retval vspStsNullPtrErr  pTarget, pImpulse, pCode, pFiltered or pIndex is null
 * @retval vspStsRangeErr    lag outside 18 .. 145
 */
VspStatus vspsFixedCodebookSearch_G729A_16s(const Vsp16s* pTarget, const Vsp16s* pImpulse, Vsp16s lag, Vsp16s sharp,
                                            Vsp16s* pCode, Vsp16s* pFiltered, Vsp16s* pIndex);

/**
 * Search of the two-pulse codebook of the 6.4 kbit/s coder, 11 bits (G.729 Annex D, ACELP_CodebookD).
 *
 * Pulse 0 lies on track 1 or 3, pulse 1 on track 0, 1, 2 or 4. All pairs on tracks that the order 0-1, 1-1, 0-3, 3-4, 1-2,
 * 1-3, 1-4, 2-3 lists are tried. Both pulses may fall on one sample. The places are Gray coded.
 *
 * @param[in]  pTarget    target without the adaptive-codebook part, 40 samples
 * @param[in]  pImpulse   impulse response of the weighted synthesis filter, 40 samples, Q12
 * @param[in]  lag        integer lag, 18 .. 145
 * @param[in]  sharp      sharpening gain, Q14
 * @param[out] pCode      sharpened code vector, 40 samples, Q13
 * @param[out] pFiltered  code vector filtered by the impulse response, 40 samples, Q12
 * @param[out] pIndex     positions, 9 bits, and signs, 2 bits
 * @retval vspStsNullPtrErr  pTarget, pImpulse, pCode, pFiltered or pIndex is null
 * @retval vspStsRangeErr    lag outside 18 .. 145
 */
VspStatus vspsFixedCodebookSearch_G729D_16s(const Vsp16s* pTarget, const Vsp16s* pImpulse, Vsp16s lag, Vsp16s sharp,
                                            Vsp16s* pCode, Vsp16s* pFiltered, Vsp16s* pIndex);

/**
 * Search of the codebooks of the 11.8 kbit/s coder: ten pulses, 35 bits, with forward prediction, twelve pulses, 44 bits,
 * with backward prediction (G.729 Annex E, ACELP_10i40_35bits and ACELP_12i40_44bits).
 *
 * The signs of the pulses are those of a mean of the residual and the backward-filtered target. From each of three starts,
 * two pulses at the largest places of neighbouring tracks, the others are found pair by pair on the tracks that follow. The
 * impulse response is halved before the filtered code vector is formed.
 *
 * @param[in]  mode       0 forward, 1 backward prediction
 * @param[in]  pTarget    target without the adaptive-codebook part, 40 samples
 * @param[in]  pResidual  LP residual without the adaptive-codebook part, 40 samples
 * @param[in]  pImpulse   impulse response of the weighted synthesis filter, 40 samples, Q12
 * @param[in]  lag        integer lag, 18 .. 145
 * @param[in]  sharp      sharpening gain, Q14
 * @param[out] pCode      sharpened code vector, 40 samples, Q13
 * @param[out] pFiltered  code vector filtered by the impulse response, 40 samples, Q12
 * @param[out] pIndex     5 indices: 7 bits each in mode 0; 13, 10, 7, 7 and 7 bits in mode 1
 * @retval vspStsNullPtrErr  pTarget, pResidual, pImpulse, pCode, pFiltered or pIndex is null
 * @retval vspStsRangeErr    mode neither 0 nor 1, or lag outside 18 .. 145
 */
VspStatus vspsFixedCodebookSearch_G729E_16s(Vsp16s mode, const Vsp16s* pTarget, const Vsp16s* pResidual,
                                            const Vsp16s* pImpulse, Vsp16s lag, Vsp16s sharp, Vsp16s* pCode,
                                            Vsp16s* pFiltered, Vsp16s* pIndex);

/**
 * Search of the four-pulse codebook in floating point (G.729 Annex C, ACELP_codebook), as
 * vspsFixedCodebookSearch_G729_16s with real values: pulses of 1 and -1, a sharpening gain as a factor.
 *
 * @param[in]     pTarget    target without the adaptive-codebook part, 40 samples
 * @param[in]     pImpulse   impulse response of the weighted synthesis filter, 40 samples
 * @param[in]     lag        integer lag, 18 .. 145
 * @param[in]     sharp      sharpening gain
 * @param[in]     subframe   0 or 1
 * @param[in,out] pExtra     visits left over; read in subframe 1 only
 * @param[out]    pCode      sharpened code vector, 40 samples
 * @param[out]    pFiltered  code vector filtered by the impulse response, 40 samples
 * @param[out]    pIndex     positions, 13 bits, and signs, 4 bits
 * @retval vspStsNullPtrErr  pTarget, pImpulse, pExtra, pCode, pFiltered or pIndex is null
 * @retval vspStsRangeErr    lag outside 18 .. 145, or subframe neither 0 nor 1
 */
VspStatus vspsFixedCodebookSearch_G729_32f(const Vsp32f* pTarget, const Vsp32f* pImpulse, Vsp32s lag, Vsp32f sharp,
                                           Vsp32s subframe, Vsp32s* pExtra, Vsp32f* pCode, Vsp32f* pFiltered,
                                           Vsp32s* pIndex);

/**
 * Search of the four-pulse codebook, depth first, in floating point (G.729 Annex C, ACELP_code_A), as
 * vspsFixedCodebookSearch_G729A_16s with real values.
 *
 * @param[in]  pTarget    target without the adaptive-codebook part, 40 samples
 * @param[in]  pImpulse   impulse response of the weighted synthesis filter, 40 samples
 * @param[in]  lag        integer lag, 18 .. 145
 * @param[in]  sharp      sharpening gain
 * @param[out] pCode      sharpened code vector, 40 samples
 * @param[out] pFiltered  code vector filtered by the impulse response, 40 samples
 * @param[out] pIndex     positions, 13 bits, and signs, 4 bits
 * @retval vspStsNullPtrErr  pTarget, pImpulse, pCode, pFiltered or pIndex is null
 * @retval vspStsRangeErr    lag outside 18 .. 145
 */
VspStatus vspsFixedCodebookSearch_G729A_32f(const Vsp32f* pTarget, const Vsp32f* pImpulse, Vsp32s lag, Vsp32f sharp,
                                            Vsp32f* pCode, Vsp32f* pFiltered, Vsp32s* pIndex);

/**
 * Code vector of the four-pulse codebook with its sharpening (G.729 4.1.4, Decod_ACELP).
 *
 * @param[in]  pIndex  positions and signs, of which the low 13 and 4 bits are used
 * @param[in]  lag     integer lag, 18 .. 145
 * @param[in]  sharp   sharpening gain, Q14
 * @param[out] pCode   code vector, 40 samples, Q13
 * @retval vspStsNullPtrErr  pIndex or pCode is null
 * @retval vspStsRangeErr    lag outside 18 .. 145
 */
VspStatus vspsFixedCodebookDecode_G729_16s(const Vsp16s* pIndex, Vsp16s lag, Vsp16s sharp, Vsp16s* pCode);

/**
 * Code vector of the two-pulse codebook with its sharpening (G.729 Annex D, Decod_ACELP64).
 *
 * @param[in]  pIndex  positions and signs, of which the low 9 and 2 bits are used
 * @param[in]  lag     integer lag, 18 .. 145
 * @param[in]  sharp   sharpening gain, Q14
 * @param[out] pCode   code vector, 40 samples, Q13
 * @retval vspStsNullPtrErr  pIndex or pCode is null
 * @retval vspStsRangeErr    lag outside 18 .. 145
 */
VspStatus vspsFixedCodebookDecode_G729D_16s(const Vsp16s* pIndex, Vsp16s lag, Vsp16s sharp, Vsp16s* pCode);

/**
 * Code vector of the 11.8 kbit/s coder with its sharpening (G.729 Annex E, Dec_ACELP_10i40_35bits and
 * Dec_ACELP_12i40_44bits).
 *
 * @param[in]  mode    0 forward, 1 backward prediction
 * @param[in]  pIndex  5 indices, of which the low bits are used: 7 each in mode 0; 13, 10, 7, 7 and 7 in mode 1, where a
 *                     track above 4 in the first counts as 4
 * @param[in]  lag     integer lag, 18 .. 145
 * @param[in]  sharp   sharpening gain, Q14
 * @param[out] pCode   code vector, 40 samples, Q13
 * @retval vspStsNullPtrErr  pIndex or pCode is null
 * @retval vspStsRangeErr    mode neither 0 nor 1, or lag outside 18 .. 145
 */
VspStatus vspsFixedCodebookDecode_G729E_16s(Vsp16s mode, const Vsp16s* pIndex, Vsp16s lag, Vsp16s sharp, Vsp16s* pCode);

/**
 * Codes in place of those of an erased subframe (G.729 4.4.4, Random): two draws of seed = seed * 31821 + 13849 modulo
 * 2^16, of which the low 13 and 4 bits are kept.
 *
 * @param[in,out] pSeed   seed, which is the value of the last draw
 * @param[out]    pIndex  positions and signs
 * @retval vspStsNullPtrErr  pSeed or pIndex is null
 */
VspStatus vspsFixedCodebookRandom_G729_16s(Vsp16s* pSeed, Vsp16s* pIndex);

/**
 * Codes of the 6.4 kbit/s coder in place of those of an erased subframe (G.729 Annex D), as
 * vspsFixedCodebookRandom_G729_16s with the low 9 and 2 bits.
 *
 * @param[in,out] pSeed   seed, which is the value of the last draw
 * @param[out]    pIndex  positions and signs
 * @retval vspStsNullPtrErr  pSeed or pIndex is null
 */
VspStatus vspsFixedCodebookRandom_G729D_16s(Vsp16s* pSeed, Vsp16s* pIndex);

/**
 * Codes of the 11.8 kbit/s coder in place of those of an erased subframe (G.729 Annex E), as
 * vspsFixedCodebookRandom_G729_16s with five draws, of which the low 13, 10, 7, 7 and 7 bits are kept.
 *
 * @param[in,out] pSeed   seed, which is the value of the last draw
 * @param[out]    pIndex  5 indices
 * @retval vspStsNullPtrErr  pSeed or pIndex is null
 */
VspStatus vspsFixedCodebookRandom_G729E_16s(Vsp16s* pSeed, Vsp16s* pIndex);

#ifdef __cplusplus
}
#endif

#endif
