/**
 * @file
 * G.729 Annex B: voice activity detector, discontinuous transmission, comfort noise; also with the rates of Annexes D and
 * E.
 *
 * Frame types: 0 nothing is transmitted, 1 active speech, 2 silence descriptor. The indices of a silence descriptor are the
 * predictor (1 bit), first and second stage of the line spectral frequencies (5 and 4 bits) and the gain (5 bits).
 */
#ifndef VSPSC_G729_SILENCE_H
#define VSPSC_G729_SILENCE_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Size of the state of the voice activity detector, G.729 Annex B: 88 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsVADGetSize_G729B_16s(Vsp32s* pSize);

/**
 * Resets the voice activity detector.
 *
 * @param[out] pState  state
 * @retval vspStsNullPtrErr  pState is null
 */
VspStatus vspsVADInit_G729B_16s(void* pState);

/**
 * Voice activity detector (G.729 B.3, vad). To be called with every frame, whether transmission is discontinuous or not.
 *
 * Energy, energy of the low band, zero crossings and line spectral frequencies of the frame are compared with their means
 * over the background noise; fourteen lines in the plane of two of the differences each tell speech from noise. Then the
 * decision is smoothed by those of the frames before.
 *
 * @param[in]     pAutoCorr  autocorrelation after the lag window, 13 values, Q31
 * @param[in]     expR0      exponent of the autocorrelation: 1 less the norm that vspsAutoCorr_NormE_16s32s gives
 * @param[in]     rc1        second reflection coefficient, Q15
 * @param[in]     pLSF       line spectral frequencies, 10 values, Q15 of half the sampling rate doubled (0 .. 0.5)
 * @param[in]     pSpeech    speech window of the frame, 240 samples
 * @param[out]    pVad       1 for active speech, 0 for silence
 * @param[in,out] pState     state
 * @retval vspStsNullPtrErr  pAutoCorr, pLSF, pSpeech, pVad or pState is null
 */
VspStatus vspsVAD_G729B_16s(const Vsp32s* pAutoCorr, Vsp16s expR0, Vsp16s rc1, const Vsp16s* pLSF, const Vsp16s* pSpeech,
                            Vsp16s* pVad, void* pState);

/**
 * Replaces the last decision of the voice activity detector by one that was corrected afterwards.
 *
 * @param[in]     vad     decision, 0 or 1
 * @param[in,out] pState  state of the voice activity detector
 * @retval vspStsNullPtrErr  pState is null
 * @retval vspStsRangeErr    vad neither 0 nor 1
 */
VspStatus vspsVADUpdate_G729B_16s(Vsp16s vad, void* pState);

/**
 * Size of the state of the floating-point voice activity detector: 172 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsVADGetSize_G729B_32f(Vsp32s* pSize);

/**
 * Resets the floating-point voice activity detector.
 *
 * @param[out] pState  state
 * @retval vspStsNullPtrErr  pState is null
 */
VspStatus vspsVADInit_G729B_32f(void* pState);

/**
 * Voice activity detector in floating point (G.729 B.3 and Annex C+, vad).
 *
 * As vspsVAD_G729B_16s.
 *
 * @param[in]     pAutoCorr  autocorrelation after the lag window, 13 values, not normalised
 * @param[in]     rc1        second reflection coefficient
 * @param[in]     pLSF       line spectral frequencies, 10 values, radians
 * @param[in]     pSpeech    speech window of the frame, 240 samples
 * @param[out]    pVad       1 for active speech, 0 for silence
 * @param[in,out] pState     state
 * @retval vspStsNullPtrErr  pAutoCorr, pLSF, pSpeech, pVad or pState is null
 */
VspStatus vspsVAD_G729B_32f(const Vsp32f* pAutoCorr, Vsp32f rc1, const Vsp32f* pLSF, const Vsp32f* pSpeech, Vsp32s* pVad,
                            void* pState);

/**
 * Size of the state of the music detector, G.729 Annexes G and I: 40 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsMusicDetectGetStateSize_G729E_16s(Vsp32s* pSize);

/**
 * Resets the music detector.
 *
 * @param[out] pState  state
 * @retval vspStsNullPtrErr  pState is null
 */
VspStatus vspsMusicDetectInit_G729E_16s(void* pState);

/**
 * Music detector (G.729 Annexes G and I, musdetect). To be called with every frame where transmission is discontinuous.
 *
 * At 11.8 kbit/s it turns silence into active speech where the spectrum changes, the energy rises, or pitch or backward
 * prediction tell of music. At other rates it only keeps its memory. The decision goes back by vspsVADUpdate_G729B_16s.
 *
 * @param[in]     rate      0, 1, 2 for 6.4, 8, 11.8 kbit/s
 * @param[in]     r0        first value of the autocorrelation that the voice activity detector gets
 * @param[in]     expR0     its exponent
 * @param[in]     pRC       reflection coefficients, 10 values, Q15
 * @param[in]     pLag      open-loop lags of the last five active frames, each brought near the mean of those before
 * @param[in]     pGain     quantised gains of the adaptive codebook of the last five subframes, Q14
 * @param[in]     prevMode  mode of linear prediction of the last frame, 0 or 1
 * @param[in]     prevVad   final decision of the last frame, 0 or 1
 * @param[in,out] pVad      decision of the voice activity detector, 0 or 1; out: the final one
 * @param[in,out] pState    state
 * @retval vspStsNullPtrErr  pRC, pLag, pGain, pVad or pState is null
 * @retval vspStsRangeErr    rate outside 0 .. 2, prevMode, prevVad or the decision neither 0 nor 1
 */
VspStatus vspsMusicDetect_G729E_16s(Vsp16s rate, Vsp32s r0, Vsp16s expR0, const Vsp16s* pRC, const Vsp16s* pLag,
                                    const Vsp16s* pGain, Vsp16s prevMode, Vsp16s prevVad, Vsp16s* pVad, void* pState);

/**
 * Size of the state of discontinuous transmission, G.729 Annex B: 208 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsDTXGetStateSize_G729B_16s(Vsp32s* pSize);

/**
 * Resets discontinuous transmission (Init_Cod_cng).
 *
 * @param[out] pState  state
 * @retval vspStsNullPtrErr  pState is null
 */
VspStatus vspsDTXInit_G729B_16s(void* pState);

/**
 * Takes the autocorrelation of a frame, active or not (G.729 B.4.1, Update_cng). To be called with every frame.
 *
 * @param[in]     pAutoCorr  autocorrelation before the lag window, 11 values, Q31, of which the high halves are used
 * @param[in]     expR0      exponent of the autocorrelation: 1 less the norm that vspsAutoCorr_NormE_16s32s gives
 * @param[in]     vad        decision on the frame, 0 or 1
 * @param[in,out] pState     state
 * @retval vspStsNullPtrErr  pAutoCorr or pState is null
 * @retval vspStsRangeErr    vad neither 0 nor 1
 */
VspStatus vspsDTXUpdate_G729B_16s(const Vsp32s* pAutoCorr, Vsp16s expR0, Vsp16s vad, void* pState);

/**
 * Encodes a frame of silence (G.729 B.4.1 to B.4.4, Cod_cng).
 *
 * A first frame of silence sends a descriptor; later ones do where the filter or the level has changed, at least two frames
 * apart. The caller keeps the rest of its memories as the standard's main loop does.
 *
 * @param[in]     pastVad     decision of the frame before, 0 or 1
 * @param[in,out] pExc        excitation: the first of the 80 samples of the frame, which are written; 154 samples of
 * history before it
 * @param[in,out] pQLSP       quantised LSP of the last frame, 10 values, Q15; out: those of the noise
 * @param[in,out] pPrevFreq   memory of the LSP predictor, 40 values, Q13
 * @param[in,out] pSeed       seed of the excitation, 11111 after an active frame
 * @param[in,out] pLevMem     memory of vspsLevinsonDurbin_G729_32s16s, 13 values
 * @param[in,out] pExcErr     errors of vspsTamingUpdate_G729_16s, 4 values
 * @param[out]    pLPC        filters of both subframes, 2 x 11 values, Q12
 * @param[out]    pFrameType  0 or 2
 * @param[out]    pIndex      the four indices of a silence descriptor; written for frame type 2 only
 * @param[in,out] pState      state
 * @retval vspStsNullPtrErr  pExc, pQLSP, pPrevFreq, pSeed, pLevMem, pExcErr, pLPC, pFrameType, pIndex or pState is null
 * @retval vspStsRangeErr    pastVad neither 0 nor 1
 */
VspStatus vspsDTXEncode_G729B_16s(Vsp16s pastVad, Vsp16s* pExc, Vsp16s* pQLSP, Vsp16s* pPrevFreq, Vsp16s* pSeed,
                                  Vsp16s* pLevMem, Vsp32s* pExcErr, Vsp16s* pLPC, Vsp16s* pFrameType, Vsp16s* pIndex,
                                  void* pState);

/**
 * Encodes a frame of silence in the coder of Annex A: as vspsDTXEncode_G729B_16s with the root search of
 * vspsLPCToLSP_G729A_16s.
 *
 * A first frame of silence sends a descriptor; later ones do where the filter or the level has changed, at least two frames
 * apart. The caller keeps the rest of its memories as the standard's main loop does.
 *
 * @param[in]     pastVad     decision of the frame before, 0 or 1
 * @param[in,out] pExc        excitation: the first of the 80 samples of the frame, which are written; 154 samples of
 * history before it
 * @param[in,out] pQLSP       quantised LSP of the last frame, 10 values, Q15; out: those of the noise
 * @param[in,out] pPrevFreq   memory of the LSP predictor, 40 values, Q13
 * @param[in,out] pSeed       seed of the excitation, 11111 after an active frame
 * @param[in,out] pLevMem     memory of vspsLevinsonDurbin_G729_32s16s, 13 values
 * @param[in,out] pExcErr     errors of vspsTamingUpdate_G729_16s, 4 values
 * @param[out]    pLPC        filters of both subframes, 2 x 11 values, Q12
 * @param[out]    pFrameType  0 or 2
 * @param[out]    pIndex      the four indices of a silence descriptor; written for frame type 2 only
 * @param[in,out] pState      state
 * @retval vspStsNullPtrErr  pExc, pQLSP, pPrevFreq, pSeed, pLevMem, pExcErr, pLPC, pFrameType, pIndex or pState is null
 * @retval vspStsRangeErr    pastVad neither 0 nor 1
 */
VspStatus vspsDTXEncode_G729A_16s(Vsp16s pastVad, Vsp16s* pExc, Vsp16s* pQLSP, Vsp16s* pPrevFreq, Vsp16s* pSeed,
                                  Vsp16s* pLevMem, Vsp32s* pExcErr, Vsp16s* pLPC, Vsp16s* pFrameType, Vsp16s* pIndex,
                                  void* pState);

/**
 * Size of the state of comfort noise, G.729 Annex B: 24 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsCNGGetStateSize_G729B_16s(Vsp32s* pSize);

/**
 * Resets comfort noise (Init_Dec_cng).
 *
 * @param[out] pState  state
 * @retval vspStsNullPtrErr  pState is null
 */
VspStatus vspsCNGInit_G729B_16s(void* pState);

/**
 * Excitation and filters of a frame of comfort noise (G.729 B.4.5, Dec_cng).
 *
 * @param[in]     frameType      0 or 2
 * @param[in]     pIndex         the four indices of a silence descriptor; read for frame type 2 only
 * @param[in]     pastFrameType  type of the frame before, 0, 1 or 2
 * @param[in]     energy         energy of the last good frame's excitation (vspsCNGEnergy_G729B_16s)
 * @param[in]     shift          its shift
 * @param[in,out] pExc           excitation: the first of the 80 samples of the frame, which are written; 154 samples of
 *                               history before it
 * @param[in,out] pQLSP          LSP of the last frame, 10 values, Q15; out: those of the noise
 * @param[in,out] pPrevFreq      memory of the LSP predictor, 40 values, Q13
 * @param[in,out] pSeed          seed of the excitation, 11111 after an active frame
 * @param[out]    pLPC           filters of both subframes, 2 x 11 values, Q12
 * @param[in,out] pState         state
 * @retval vspStsNullPtrErr    pIndex, pExc, pQLSP, pPrevFreq, pSeed, pLPC or pState is null
 * @retval vspStsRangeErr      frameType neither 0 nor 2, or pastFrameType outside 0 .. 2
 * @retval vspStsCodeRangeErr  an index of a silence descriptor has more than 1, 5, 4 and 5 bits
 */
VspStatus vspsCNGDecode_G729B_16s(Vsp16s frameType, const Vsp16s* pIndex, Vsp16s pastFrameType, Vsp16s energy, Vsp16s shift,
                                  Vsp16s* pExc, Vsp16s* pQLSP, Vsp16s* pPrevFreq, Vsp16s* pSeed, Vsp16s* pLPC,
                                  void* pState);

/**
 * As vspsCNGDecode_G729B_16s, and the gains that the phase dispersion keeps (G.729 Annexes F and I, Dec_cng).
 *
 * @param[in]     frameType      0 or 2
 * @param[in]     pIndex         the four indices of a silence descriptor; read for frame type 2 only
 * @param[in]     pastFrameType  type of the frame before, 0, 1 or 2
 * @param[in]     energy         energy of the last good frame's excitation (vspsCNGEnergy_G729B_16s)
 * @param[in]     shift          its shift
 * @param[in,out] pExc           excitation: the first of the 80 samples of the frame, which are written; 154 samples of
 *                               history before it
 * @param[in,out] pQLSP          LSP of the last frame, 10 values, Q15; out: those of the noise
 * @param[in,out] pPrevFreq      memory of the LSP predictor, 40 values, Q13
 * @param[in,out] pSeed          seed of the excitation, 11111 after an active frame
 * @param[out]    pLPC           filters of both subframes, 2 x 11 values, Q12
 * @param[out]    pGain          gain of the adaptive codebook, Q14, and magnitude of that of the pulses, for each subframe
 * @param[in,out] pState         state
 * @retval vspStsNullPtrErr    pIndex, pExc, pQLSP, pPrevFreq, pSeed, pLPC, pGain or pState is null
 * @retval vspStsRangeErr      frameType neither 0 nor 2, or pastFrameType outside 0 .. 2
 * @retval vspStsCodeRangeErr  an index of a silence descriptor has more than 1, 5, 4 and 5 bits
 */
VspStatus vspsCNGDecode_G729D_16s(Vsp16s frameType, const Vsp16s* pIndex, Vsp16s pastFrameType, Vsp16s energy, Vsp16s shift,
                                  Vsp16s* pExc, Vsp16s* pQLSP, Vsp16s* pPrevFreq, Vsp16s* pSeed, Vsp16s* pLPC,
                                  Vsp16s* pGain, void* pState);

/**
 * Energy of the excitation of a good frame, for comfort noise after a descriptor that is lost (G.729 Annex B, Decod_ld8k).
 *
 * The doubled sum of the squares, saturated, is energy * 2^shift.
 *
 * @param[in]  pExc     excitation of the frame, 80 samples
 * @param[out] pEnergy  energy, normalised
 * @param[out] pShift   shift
 * @retval vspStsNullPtrErr  pExc, pEnergy or pShift is null
 */
VspStatus vspsCNGEnergy_G729B_16s(const Vsp16s* pExc, Vsp16s* pEnergy, Vsp16s* pShift);

#ifdef __cplusplus
}
#endif

#endif
