/**
 * @file
 * G.729 Annex E: the choice between forward and backward linear prediction, and what follows from it.
 *
 * Mode 0 is forward: a filter of order 10 is sent as line spectral pairs. Mode 1 is backward: a filter of order 30 comes
 * from the past synthesis. Filters are in Q12 and begin with 4096; those of order 10 are filled with zeros where 31 values
 * stand.
 */
#ifndef VSPSC_G729_LPC_MODE_H
#define VSPSC_G729_LPC_MODE_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Chooses the mode of a frame at 11.8 kbit/s (G.729 Annex E, set_lpc_mode).
 *
 * The prediction gains of the new backward filter, of the interpolated one (see vspsInterpolateLPC_G729E_16s) and of the
 * forward filters are compared; the more stationary the signal was, the more backward prediction is preferred.
 *
 * The memory: whether backward prediction dominates, interpolation factor (Q12), stationarity (0 .. 32000), backward frames
 * in a row, their value for the stationarity, counters of backward and of forward frames. 0, 4506, 10000, 0, 0, 0, 0 at the
 * start.
 *
 * @param[in]     pSpeech   speech: the first of the 80 samples of the frame; 30 samples of history before it
 * @param[in]     pLpcFwd   quantised forward filters of both subframes, 2 x 11 values
 * @param[in,out] pLpcBwd   backward filters of both subframes, 2 x 31 values; in: the new filter in the second half
 * @param[in]     pLSP      unquantised line spectral pairs, 10 values, Q15
 * @param[in]     pPrevLSP  those of the last frame
 * @param[in]     pPrevLPC  filter of the last subframe, 31 values
 * @param[in]     prevMode  mode of the last frame, 0 or 1
 * @param[in,out] pMem      memory, 7 values
 * @param[out]    pMode     mode, 0 or 1
 * @retval vspStsNullPtrErr  pSpeech, pLpcFwd, pLpcBwd, pLSP, pPrevLSP, pPrevLPC, pMem or pMode is null
 * @retval vspStsRangeErr    prevMode neither 0 nor 1
 */
VspStatus vspsLPCModeDecide_G729E_16s(const Vsp16s* pSpeech, const Vsp16s* pLpcFwd, Vsp16s* pLpcBwd, const Vsp16s* pLSP,
                                      const Vsp16s* pPrevLSP, const Vsp16s* pPrevLPC, Vsp16s prevMode, Vsp16s* pMem,
                                      Vsp16s* pMode);

/**
 * Moves the memory of the choice on over a frame of another rate or of noise (G.729 Annexes F, G and I, update_bwd).
 *
 * @param[in,out] pMem  memory of vspsLPCModeDecide_G729E_16s, 7 values
 * @retval vspStsNullPtrErr  pMem is null
 */
VspStatus vspsLPCModeUpdate_G729E_16s(Vsp16s* pMem);

/**
 * Finds out in the decoder whether backward prediction dominates (G.729 Annex E, tst_bwd_dominant).
 *
 * Frames whose energy is low do not count.
 *
 * @param[in]     pSyn  synthesis of the frame, 80 samples
 * @param[in]     mode  mode of the frame, 0 or 1
 * @param[in,out] pMem  1 if backward prediction dominates, counters of backward and of forward frames; 0 at the start
 * @retval vspStsNullPtrErr  pSyn or pMem is null
 * @retval vspStsRangeErr    mode neither 0 nor 1
 */
VspStatus vspsLPCModeTrack_G729E_16s(const Vsp16s* pSyn, Vsp16s mode, Vsp16s* pMem);

/**
 * Interpolates the backward filters of a frame (G.729 Annex E, Int_bwd).
 *
 * c = max(cInt - 410, 0). The second filter becomes (1 - c) * filter + c * previous, c in Q12, the first one half of that
 * and half of the previous one.
 *
 * @param[in]     pPrevLPC  filter of the last subframe, 31 values
 * @param[in,out] pLPC      filters of both subframes, 2 x 31 values; in: the new filter in the second half
 * @param[in,out] pCInt     in: cInt, 4506 after a forward frame; out: c
 * @retval vspStsNullPtrErr  pPrevLPC, pLPC or pCInt is null
 */
VspStatus vspsInterpolateLPC_G729E_16s(const Vsp16s* pPrevLPC, Vsp16s* pLPC, Vsp16s* pCInt);

#ifdef __cplusplus
}
#endif

#endif
