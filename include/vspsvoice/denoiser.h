/**
 * @file
 * A denoiser: attenuates the noise in speech and leaves what remains of it without musical tones.
 *
 * It learns the noise from the signal itself, within about a second. One object works on one signal.
 */
#ifndef VSPSVOICE_DENOISER_H
#define VSPSVOICE_DENOISER_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** How much noise is attenuated at most. */
enum {
    vspvDenoiserOff = 0,    /**< not at all; the signal is only delayed */
    vspvDenoiserLow = 1,    /**< by 10 dB */
    vspvDenoiserNormal = 2, /**< by 14 dB */
    vspvDenoiserHigh = 3,   /**< by 18 dB */
    vspvDenoiserAuto = 4    /**< by 18 dB where it is steady, by less where it is not, as a babble of voices */
};

/** What a denoiser is to be. */
typedef struct {
    Vsp32s samplingRate; /**< Hz: 8000, 16000, 22050 or 32000 */
    Vsp32s mode;         /**< vspvDenoiserOff to vspvDenoiserAuto */
} VspvDenoiserSettings;

/** Object of a denoiser; the memory must be aligned to 8 bytes. Its layout depends on the address: it must not be moved. */
typedef struct VspvDenoiser VspvDenoiser;

/**
 * Size of a denoiser.
 *
 * @param[in]  pSettings  what it is to be
 * @param[out] pSize      bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSettings or pSize is null
 * @retval vspStsRangeErr    samplingRate is none of these
 * @retval vspStsBadArgErr   mode is none of its values
 */
VspStatus vspvDenoiserGetSize(const VspvDenoiserSettings* pSettings, Vsp32s* pSize);

/**
 * Formats or resets a denoiser.
 *
 * @param[out] pDenoiser  memory of the size that vspvDenoiserGetSize gives for these settings
 * @param[in]  pSettings  what it is to be
 * @retval vspStsNullPtrErr  pDenoiser or pSettings is null
 * @retval vspStsRangeErr    samplingRate is none of these
 * @retval vspStsBadArgErr   mode is none of its values
 */
VspStatus vspvDenoiserInit(VspvDenoiser* pDenoiser, const VspvDenoiserSettings* pSettings);

/**
 * Changes the mode. What has been learned of the noise stays.
 *
 * @param[in,out] pDenoiser  initialised denoiser
 * @param[in]     mode       vspvDenoiserOff to vspvDenoiserAuto
 * @retval vspStsNullPtrErr  pDenoiser is null
 * @retval vspStsBadArgErr   mode is none of its values
 */
VspStatus vspvDenoiserSetMode(VspvDenoiser* pDenoiser, Vsp32s mode);

/**
 * Attenuates the noise in a block of 16-bit samples. How a signal is split into blocks makes no difference.
 *
 * @param[in,out] pDenoiser  initialised denoiser
 * @param[in]     pSrc       len samples
 * @param[out]    pDst       len samples, late by the latency; may be pSrc
 * @param[in]     len        number of samples, 1 or more
 * @retval vspStsNullPtrErr  pDenoiser, pSrc or pDst is null
 * @retval vspStsSizeErr     len < 1
 */
VspStatus vspvDenoiserProcess_16s(VspvDenoiser* pDenoiser, const Vsp16s* pSrc, Vsp16s* pDst, Vsp32s len);

/**
 * Attenuates the noise in a block of floating-point samples on the scale of 16-bit ones: full scale is 32768. Samples may
 * exceed it; NaN counts as silence. Blocks of either type may follow each other.
 *
 * @param[in,out] pDenoiser  initialised denoiser
 * @param[in]     pSrc       len samples
 * @param[out]    pDst       len samples, late by the latency; may be pSrc
 * @param[in]     len        number of samples, 1 or more
 * @retval vspStsNullPtrErr  pDenoiser, pSrc or pDst is null
 * @retval vspStsSizeErr     len < 1
 */
VspStatus vspvDenoiserProcess_32f(VspvDenoiser* pDenoiser, const Vsp32f* pSrc, Vsp32f* pDst, Vsp32s len);

/**
 * By how much the result is later than the signal.
 *
 * @param[in]  pDenoiser  initialised denoiser
 * @param[out] pLatency   number of samples: 256, 512, 512 and 1024 at 8000, 16000, 22050 and 32000 Hz
 * @retval vspStsNullPtrErr  pDenoiser or pLatency is null
 */
VspStatus vspvDenoiserLatency(const VspvDenoiser* pDenoiser, Vsp32s* pLatency);

/**
 * How much speech there is in the window of the latency's length that ends with the last complete 10 ms of the signal. The
 * mode makes no difference.
 *
 * @param[in]  pDenoiser  initialised denoiser
 * @param[out] pPresence  the share of the frequencies from 200 to 3500 Hz with speech: near 0 for noise or silence, up to
 * 1; 0 before the first 10 ms are complete
 * @retval vspStsNullPtrErr  pDenoiser or pPresence is null
 */
VspStatus vspvDenoiserPresence(const VspvDenoiser* pDenoiser, Vsp32f* pPresence);

#ifdef __cplusplus
}
#endif

#endif
