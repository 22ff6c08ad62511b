/**
 * @file
 * AMR-WB: open-loop pitch.
 */
#ifndef VSPSC_AMRWB_OPEN_LOOP_PITCH_H
#define VSPSC_AMRWB_OPEN_LOOP_PITCH_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Scale of the weighted speech for the open-loop search: how far it must be shifted so that 3 bits of headroom are left.
 *
 * @param[in]     pSrc    len samples of the weighted speech
 * @param[in]     len     number of samples
 * @param[in,out] pMax    1 word: largest magnitude of the frame before, becomes that of this one; reset 0
 * @param[out]    pScale  0..-3
 * @retval vspStsNullPtrErr  pSrc, pMax or pScale is null
 * @retval vspStsSizeErr     len < 1
 */
VspStatus vspsOpenLoopScale_AMRWB_16s(const Vsp16s* pSrc, Vsp32s len, Vsp16s* pMax, Vsp32s* pScale);

/**
 * Open-loop pitch search (`Pitch_med_ol`), 3GPP TS 26.190 5.4: the lag of 18 .. 115 with the largest correlation, weighted
 * in favour of short lags and, where the speech is voiced, of lags close to their median.
 *
 * @param[in]     pWsp    len samples of the weighted speech at 6.4 kHz, with 115 samples of history
 * @param[in]     len     64, or 128 at 6.60 kbit/s
 * @param[in]     median  17..115, of vspsOpenLoopPitchTrack_AMRWB_16s
 * @param[in]     weight  1 to weight by the median, else 0
 * @param[in,out] pHist   the last 115 samples of the weighted speech after the high-pass filter; reset 0
 * @param[out]    pLag    the lag
 * @param[out]    pGain   normalised correlation of the high-pass filtered speech at this lag, Q15
 * @param[in,out] pState  state of vspsHighPassFilter_AMRWB_16s_I, of order 3
 * @retval vspStsNullPtrErr  pWsp, pHist, pLag, pGain or pState is null
 * @retval vspStsSizeErr     len neither 64 nor 128
 * @retval vspStsRangeErr    median or weight outside its range
 */
VspStatus vspsOpenLoopPitchSearch_AMRWB_16s(const Vsp16s* pWsp, Vsp32s len, Vsp16s median, Vsp16s weight, Vsp16s* pHist,
                                            Vsp16s* pLag, Vsp16s* pGain, void* pState);

/**
 * Takes the result of an open-loop search into the track of the pitch (`Med_olag`), 3GPP TS 26.190 5.4.
 *
 * With a gain above 0.6 the lag joins the last five, of which the median is formed, and the weight becomes 1; else the
 * weight is multiplied by 0.9. The next search uses the median while the weight is at least 0.8.
 *
 * @param[in]     lag   lag found
 * @param[in]     gain  its gain, Q15
 * @param[in,out] pMem  8 words: five lags, newest first; their median; the weight, Q15; whether it is to be used. Reset
 * 40, 40, 40, 40, 40, 40, 0, 0
 * @retval vspStsNullPtrErr  pMem is null
 */
VspStatus vspsOpenLoopPitchTrack_AMRWB_16s(Vsp16s lag, Vsp16s gain, Vsp16s* pMem);

#ifdef __cplusplus
}
#endif

#endif
