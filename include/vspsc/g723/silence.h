/**
 * @file
 * G.723.1 Annex A: voice activity detector, discontinuous transmission, gains and excitation of comfort noise.
 *
 * A frame is of type 1 (active), 2 (silence descriptor) or 0 (nothing is sent). LPCs are 10 predictor coefficients in Q13,
 * LSFs 0 .. 32767 for 0 .. 4000 Hz. Bit-exact with the fixed-point code of the Recommendation (Release 2).
 */
#ifndef VSPSC_G723_SILENCE_H
#define VSPSC_G723_SILENCE_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Size of the state of the voice activity detector: 40 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsVADGetSize_G723_16s(Vsp32s* pSize);

/**
 * Resets the state of the voice activity detector (`Init_Vad`).
 *
 * @param[out] pState  state
 * @retval vspStsNullPtrErr  pState is null
 */
VspStatus vspsVADInit_G723_16s(void* pState);

/**
 * Voice activity decision (`Comp_Vad`; A.2): the energy that the filter of the noise leaves of the last 180 samples,
 * against a threshold above the level of the noise, which is followed while there are neither tones nor voiced sounds.
 *
 * @param[in]     pSrc    240 high-passed samples
 * @param[in]     pLag    4 open-loop lags of the last two frames, the oldest first; 1, 1, 60, 60 at the start
 * @param[in]     sine    word of the sine detector, negative for a sine
 * @param[out]    pVad    1 for speech, 0 for silence
 * @param[in,out] pState  state
 * @retval vspStsNullPtrErr  a pointer is null
 */
VspStatus vspsVAD_G723_16s(const Vsp16s* pSrc, const Vsp16s* pLag, Vsp16s sine, Vsp16s* pVad, void* pState);

/**
 * Makes the mean filter of a silence descriptor the filter of the noise, if the detector follows the noise (`Cod_Cng`).
 *
 * @param[in]     pLPC    10 coefficients, as vspsDTXEncode_G723_16s gives them
 * @param[in,out] pState  state of the detector
 * @retval vspStsNullPtrErr  a pointer is null
 */
VspStatus vspsVADUpdate_G723_16s(const Vsp16s* pLPC, void* pState);

/**
 * Size of the state of the discontinuous transmission: 176 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsDTXGetStateSize_G723_16s(Vsp32s* pSize);

/**
 * Resets the state of the discontinuous transmission (`Init_Cod_Cng`).
 *
 * @param[out] pState  state
 * @retval vspStsNullPtrErr  pState is null
 */
VspStatus vspsDTXInit_G723_16s(void* pState);

/**
 * Remembers the spectrum of a frame, active or not; called in every frame (`Update_Acf`).
 *
 * @param[in]     pAutoCorr  4 autocorrelations of 11 values, one of each subframe, as vspsAutoCorr_G723_16s gives them
 * @param[in]     pShift     4 scales of these: what is meant is value * 2^-scale
 * @param[in,out] pState     state
 * @retval vspStsNullPtrErr  a pointer is null
 */
VspStatus vspsDTXUpdate_G723_16s(const Vsp16s* pAutoCorr, const Vsp16s* pShift, void* pState);

/**
 * Describes an inactive frame, or finds that the last description still holds (`Cod_Cng` up to the excitation; A.3).
 *
 * @param[in]     pPrevLSF  10 decoded LSFs of the frame before
 * @param[in]     pastType  type of the frame before
 * @param[out]    pType     2: a silence descriptor is to be sent; 0: nothing
 * @param[out]    pIndex    3 indices of the LSFs, index of the gain; for type 2 only
 * @param[out]    pLSF      10 LSFs of the last descriptor
 * @param[out]    pGain     gain of this frame's comfort noise
 * @param[out]    pLPC      10 coefficients of the mean filter, for vspsVADUpdate_G723_16s; for type 2 only
 * @param[in,out] pState    state
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsRangeErr    pastType outside 0 .. 2
 */
VspStatus vspsDTXEncode_G723_16s(const Vsp16s* pPrevLSF, Vsp32s pastType, Vsp16s* pType, Vsp16s* pIndex, Vsp16s* pLSF,
                                 Vsp16s* pGain, Vsp16s* pLPC, void* pState);

/**
 * Index of the gain for the energy of a residual (`Qua_SidGain`): three segments of uniform steps of 2, 4 and 8.
 *
 * @param[in]  pEnergy  max(n, 1) energies
 * @param[in]  pShift   max(n, 1) scales of these: what is meant is value * 2^-scale
 * @param[in]  n        number of energies to average; 0: the energy is that of a decoder's last active frame, and the scale
 *                      is that of its excitation
 * @param[out] pIndex   0 .. 63
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsSizeErr     n outside 0 .. 3
 */
VspStatus vspsSIDGainQuant_G723_16s(const Vsp16s* pEnergy, const Vsp16s* pShift, Vsp32s n, Vsp16s* pIndex);

/**
 * Gain for an index (`Dec_SidGain`).
 *
 * @param[in]  index  index of the gain
 * @param[out] pGain  gain, Q5
 * @retval vspStsNullPtrErr    pGain is null
 * @retval vspStsCodeRangeErr  index outside 0 .. 63
 */
VspStatus vspsSIDGainDecode_G723_16s(Vsp16s index, Vsp16s* pGain);

/**
 * Gain of a frame of comfort noise (`Dec_Cng`): that of the descriptor after an active frame, then 7/8 of the gain before
 * and 1/8 of the descriptor's.
 *
 * @param[in]     sidGain   gain of the last descriptor, Q5
 * @param[in]     pastType  type of the frame before
 * @param[in,out] pGain     gain, Q5
 * @retval vspStsNullPtrErr  pGain is null
 * @retval vspStsRangeErr    pastType outside 0 .. 2
 */
VspStatus vspsCNGGain_G723_16s(Vsp16s sidGain, Vsp32s pastType, Vsp16s* pGain);

/**
 * Excitation of a frame of comfort noise, with random codes (`Calc_Exc_Rand`; A.4.3).
 *
 * @param[in]     gain      gain, Q5
 * @param[in,out] pSeed     generator; 12345 at the start and after each active frame
 * @param[in,out] pPastExc  145 samples of past excitation, the oldest first; moves on by the frame
 * @param[out]    pDst      240 samples
 * @param[out]    pLag      2 lags, of the pairs of subframes
 * @param[out]    pOffset   4 offsets: a subframe's delay is lag - 1 + offset
 * @param[out]    pIndex    4 indices of the adaptive codebook's gains
 * @retval vspStsNullPtrErr  a pointer is null
 */
VspStatus vspsRandomNoiseExcitation_G723_16s(Vsp16s gain, Vsp16s* pSeed, Vsp16s* pPastExc, Vsp16s* pDst, Vsp16s* pLag,
                                             Vsp16s* pOffset, Vsp16s* pIndex);

#ifdef __cplusplus
}
#endif

#endif
