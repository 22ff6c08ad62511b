/**
 * @file
 * Suppression of noise in speech.
 */
#ifndef VSPSC_EC_NOISE_FILTER_H
#define VSPSC_EC_NOISE_FILTER_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** State of the noise filter; at any address, but it must stay there. */
typedef struct VspFilterNoiseState_EC_32f VspFilterNoiseState_EC_32f;

/** How much the noise filter attenuates noise at most. */
enum {
    vspFilterNoiseOff = 0,    /**< not at all; the signal is only delayed */
    vspFilterNoiseLow = 1,    /**< by 10 dB */
    vspFilterNoiseNormal = 2, /**< by 14 dB */
    vspFilterNoiseHigh = 3,   /**< by 18 dB */
    vspFilterNoiseAuto = 4    /**< by 18 dB where it is steady, by less where it is not, as a babble of voices */
};

/**
 * Size of the state of the noise filter. Depends on order only; the other arguments are checked.
 *
 * @param[in]  samplingRate  8000, 16000, 22050 or 32000 Hz
 * @param[in]  frameLen      samples per frame, 1 to 2^(order - 1); usually 10 ms
 * @param[in]  order         N = 2^order is the length of the transform, order 5 to 12; usually 32 ms
 * @param[out] pSize         bytes that the caller must provide, at any address
 * @retval vspStsNullPtrErr  pSize is null
 * @retval vspStsBadArgErr   samplingRate is none of these, order is outside 5..12 or frameLen outside 1..2^(order - 1)
 */
VspStatus vspsFilterNoiseGetStateSize_EC_32f(Vsp32s samplingRate, Vsp32s frameLen, Vsp32s order, Vsp32s* pSize);

/**
 * Formats or resets the noise filter, in mode vspFilterNoiseNormal.
 *
 * @param[out] pState        memory of the size that vspsFilterNoiseGetStateSize_EC_32f gives
 * @param[in]  samplingRate  as given to vspsFilterNoiseGetStateSize_EC_32f
 * @param[in]  frameLen      as given to vspsFilterNoiseGetStateSize_EC_32f
 * @param[in]  order         as given to vspsFilterNoiseGetStateSize_EC_32f
 * @retval vspStsNullPtrErr  pState is null
 * @retval vspStsBadArgErr   samplingRate, frameLen or order is not supported
 */
VspStatus vspsFilterNoiseInit_EC_32f(VspFilterNoiseState_EC_32f* pState, Vsp32s samplingRate, Vsp32s frameLen,
                                     Vsp32s order);

/**
 * Chooses how much the noise filter attenuates noise, from the next frame on. What it has learned of the noise stays.
 *
 * @param[in,out] pState  initialised state
 * @param[in]     mode    vspFilterNoiseOff to vspFilterNoiseAuto
 * @retval vspStsNullPtrErr  pState is null
 * @retval vspStsBadArgErr   mode is none of these
 */
VspStatus vspsFilterNoiseSetMode_EC_32f(VspFilterNoiseState_EC_32f* pState, Vsp32s mode);

/**
 * Attenuates noise in a frame of speech, in place: each band of the spectrum is multiplied by the gain of the log-spectral
 * amplitude estimator (Y. Ephraim and D. Malah, IEEE Trans. ASSP 33, 1985), with the decision-directed a-priori ratio of
 * speech to noise and noise from minima-controlled recursive averaging (I. Cohen, IEEE Trans. SAP 11, 2003), raised to the
 * probability of speech; without speech the gain is the same in all bands, so that what is left of noise sounds as it did.
 *
 * The result is late by N - frameLen samples. Samples are on the scale of 16-bit ones; what exceeds 2^24 is clipped and
 * NaN counts as zero, so the state stays usable after any input.
 *
 * @param[in,out] pSrcDst    frameLen samples, replaced by as many of the result
 * @param[in,out] pState     initialised state
 * @param[out]    pPresence  the share of the frequencies from 200 to 3500 Hz with speech: 0 none to 1
 * @retval vspStsNullPtrErr  a pointer is null
 */
VspStatus vspsFilterNoise_EC_32f_I(Vsp32f* pSrcDst, VspFilterNoiseState_EC_32f* pState, Vsp32f* pPresence);

#ifdef __cplusplus
}
#endif

#endif
