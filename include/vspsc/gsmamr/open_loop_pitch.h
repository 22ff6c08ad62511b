/**
 * @file
 * GSM-AMR: the open-loop pitch search of the encoder.
 */
#ifndef VSPSC_GSMAMR_OPEN_LOOP_PITCH_H
#define VSPSC_GSMAMR_OPEN_LOOP_PITCH_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Open-loop pitch lags of a frame (3GPP TS 26.090 5.3), and what the voice activity detector of the next frame is told of
 * the search (26.094).
 *
 * Searches each half of the frame; at 4.75 and 5.15 kbit/s the whole frame once, which gives both lags. Lags run from 20,
 * at 12.2 kbit/s from 18, to 143. The signal with its past is shifted right by 3 if the doubled sum of its squares leaves
 * 32 bits, left by 3 if that sum is below 2^20. Sums are doubled and saturate:
 *
 * - c[k] = 2 * sum of s[n] * s[n - k], e[k] = 2 * sum of s[n - k]^2 over the samples of the search.
 * - Of each of the sections 143 .. 4 * shortest, down to 2 * shortest, down to the shortest lag, the lag of the largest c
 *   (of equal ones the shortest) is a candidate with c / sqrt(e). A section of shorter lags wins if that is above 0.85
 *   times the one of the winner so far.
 * - At 10.2 kbit/s the largest weighted c wins instead. The weights prefer short lags, and lags near pMem[7] while pMem[9]
 *   is set. If c - 0.4 e is positive, the lag becomes one of the old lags and pMem[7] their median; otherwise pMem[7] is
 * the lag and pMem[8], which decides about pMem[9], fades.
 *
 * For detector option 1 each search shifts into the tone flags whether a candidate has c > 0.65 e, the last search finds
 * the best normalised correlation of the high-pass filtered signal, and the pitch flags get the flag of a lag that hardly
 * changes. For option 2 the flag of long-term prediction tells that the c of the frame are above 0.65 (at 4.75 and 5.15
 * kbit/s 0.55, at 10.2 kbit/s 0.6) times the e.
 *
 * @param[in]     pSrc         weighted speech: the first of the 160 samples of the frame; 143 samples of history before it
 * @param[in]     mode         bit rate: 0, 1, 3, 6, 7, 8, 11, 12 for 4.75, 5.15, 5.9, 6.7, 7.4, 7.95, 10.2, 12.2 kbit/s
 * @param[in]     vad          detector option that is in use, or 0 for none
 * @param[in,out] pMem         10 words: old lags[5], the newest first, gain flags[2] of the halves of the frame (above 10.2
 *                             kbit/s and below it 0), median lag, weight (Q15), weight flag; reset to 40, 40, 40, 40, 40,
 *                             0, 0, 40, 0, 0. Below and above 10.2 kbit/s only the gain flags change
 * @param[in,out] pVadMem      with detector 1 or 2, otherwise not used: 5 words, tone flags (newest in bit 14), best
 *                             high-pass correlation (Q15), old lag, old lag count, flag of long-term prediction; reset to
 *                             0, 13106, 0, 0, 0. Detector 1 changes the first four, 2 the last
 * @param[in,out] pPitchFlags  with detector 1, otherwise not used: pitch flags, newest in bit 14, of the detector's record
 * @param[out]    pLag         the two lags
 * @retval vspStsNullPtrErr  pSrc, pMem or pLag is null; after the ranges: pVadMem or pPitchFlags is null and used
 * @retval vspStsRangeErr    mode or vad is none of these; at 10.2 kbit/s: the median lag is not 17 .. 144
 */
VspStatus vspsOpenLoopPitchSearch_GSMAMR_16s(const Vsp16s* pSrc, Vsp32s mode, Vsp32s vad, Vsp16s* pMem, Vsp16s* pVadMem,
                                             Vsp16s* pPitchFlags, Vsp16s* pLag);

#ifdef __cplusplus
}
#endif

#endif
