/**
 * @file
 * AMR-WB: the band above 6.4 kHz (3GPP TS 26.190, 5.9 and 6.3).
 *
 * Bit-exact with the fixed-point reference of the standard (3GPP TS 26.173).
 */
#ifndef VSPSC_AMRWB_HIGH_BAND_H
#define VSPSC_AMRWB_HIGH_BAND_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * White noise at the energy of the excitation, for the high band.
 *
 * @param[in]     pExc   64 samples of the excitation at 12.8 kHz
 * @param[in]     scale  the excitation is scaled by 2^scale, 0..8
 * @param[in,out] pSeed  of the generator, reset 21845
 * @param[out]    pDst   80 samples at 16 kHz
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsRangeErr    scale outside 0..8
 */
VspStatus vspsHighBandNoise_AMRWB_16s(const Vsp16s* pExc, Vsp32s scale, Vsp16s* pSeed, Vsp16s* pDst);

/**
 * Gain of the high band from the tilt of the low band: 1 less the normalised correlation of neighbouring samples, in noise
 * 1.25 times that; 0.1 or more.
 *
 * @param[in]  pSrc     64 samples of the synthesis after the 400 Hz high-pass filter
 * @param[in]  vadHist  frames since the last one with speech; noise if greater than 0
 * @param[out] pGain    Q15
 * @retval vspStsNullPtrErr  a pointer is null
 */
VspStatus vspsHighBandGain_AMRWB_16s(const Vsp16s* pSrc, Vsp16s vadHist, Vsp16s* pGain);

/**
 * Applies the gain to the noise of the high band.
 *
 * @param[in]     gain     Q15, used with index -1
 * @param[in]     index    -1, or 0..15: gain number index of 23.85 kbit/s
 * @param[in,out] pSrcDst  80 samples
 * @retval vspStsNullPtrErr  pSrcDst is null
 * @retval vspStsRangeErr    index outside -1..15
 */
VspStatus vspsHighBandScale_AMRWB_16s_I(Vsp16s gain, Vsp16s index, Vsp16s* pSrcDst);

/**
 * Gain index of the high band of 23.85 kbit/s. Out of speech the measured gain fades to the estimated one.
 *
 * @param[in]     pSpeech   80 samples of the input at 16 kHz, after the band-pass filter
 * @param[in]     pNoise    80 samples of the synthesised band, after the same
 * @param[in]     gain      estimate from the tilt, Q15
 * @param[in]     hangover  hangover counter of discontinuous transmission, 0..7; 7 without
 * @param[in,out] pAlpha    share of the measured gain, Q15, reset 32767
 * @param[out]    pIndex    0..15
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsRangeErr    hangover outside 0..7
 */
VspStatus vspsHighBandGainQuant_AMRWB_16s(const Vsp16s* pSpeech, const Vsp16s* pNoise, Vsp16s gain, Vsp16s hangover,
                                          Vsp16s* pAlpha, Vsp16s* pIndex);

#ifdef __cplusplus
}
#endif

#endif
