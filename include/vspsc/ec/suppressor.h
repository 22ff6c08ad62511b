/**
 * @file
 * Residual echo suppressor of a sub-band echo canceller: takes what the linear filters leave of the echo from the error,
 * and puts comfort noise in its place, a little quieter than the near end's own noise.
 *
 * What is left, because it has not been learned, is longer than the filters, or because the loudspeaker distorts, is
 * estimated in each band from what the controller expects (pResidual of vspsSubbandControllerUpdate_EC_32f) and from the
 * share of the echo estimate that has been left of late while the far end was alone. Where the near end talks, a band keeps
 * what is above that; where it does not, the band is brought down to the noise. Without an echo estimate the error passes
 * unchanged.
 *
 * Samples are on the scale of 16 bits. Computed in single precision, with the same bits at every level of the library.
 */
#ifndef VSPSC_EC_SUPPRESSOR_H
#define VSPSC_EC_SUPPRESSOR_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** State of the floating-point residual echo suppressor. */
typedef struct VspSubbandSuppressorState_EC_32f VspSubbandSuppressorState_EC_32f;
/** State of the fixed-point residual echo suppressor. */
typedef struct VspSubbandSuppressorState_EC_16s VspSubbandSuppressorState_EC_16s;

/**
 * Size of the state of the floating-point suppressor.
 *
 * @param[in]  numSubbands  number of bands, 1 to 4097
 * @param[in]  frameSize    samples of a frame, 1 to rate
 * @param[in]  rate         sampling rate, 8000 or 16000 Hz
 * @param[out] pSize        bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 * @retval vspStsBadArgErr   numSubbands, frameSize or rate is outside its range
 */
VspStatus vspsSubbandSuppressorGetSize_EC_32f(Vsp32s numSubbands, Vsp32s frameSize, Vsp32s rate, Vsp32s* pSize);

/**
 * Size of the state of the fixed-point suppressor.
 *
 * @param[in]  numSubbands  number of bands, 1 to 4097
 * @param[in]  frameSize    samples of a frame, 1 to rate
 * @param[in]  rate         sampling rate, 8000 or 16000 Hz
 * @param[out] pSize        bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 * @retval vspStsBadArgErr   numSubbands, frameSize or rate is outside its range
 */
VspStatus vspsSubbandSuppressorGetSize_EC_16s(Vsp32s numSubbands, Vsp32s frameSize, Vsp32s rate, Vsp32s* pSize);

/**
 * Formats or resets a state of the floating-point suppressor: noise and echo are unknown.
 *
 * @param[out] pState       memory of the size that vspsSubbandSuppressorGetSize_EC_32f gives
 * @param[in]  numSubbands  number of bands, 1 to 4097
 * @param[in]  frameSize    samples of a frame, 1 to rate
 * @param[in]  rate         sampling rate, 8000 or 16000 Hz
 * @retval vspStsNullPtrErr  pState is null
 * @retval vspStsBadArgErr   numSubbands, frameSize or rate is outside its range
 */
VspStatus vspsSubbandSuppressorInit_EC_32f(VspSubbandSuppressorState_EC_32f* pState, Vsp32s numSubbands, Vsp32s frameSize,
                                           Vsp32s rate);

/**
 * Formats or resets a state of the fixed-point suppressor: noise and echo are unknown.
 *
 * @param[out] pState       memory of the size that vspsSubbandSuppressorGetSize_EC_16s gives
 * @param[in]  numSubbands  number of bands, 1 to 4097
 * @param[in]  frameSize    samples of a frame, 1 to rate
 * @param[in]  rate         sampling rate, 8000 or 16000 Hz
 * @param[in]  bandScale    the scale factor that the analysis of the bands was given, -31 to 31
 * @retval vspStsNullPtrErr  pState is null
 * @retval vspStsBadArgErr   numSubbands, frameSize, rate or bandScale is outside its range
 */
VspStatus vspsSubbandSuppressorInit_EC_16s(VspSubbandSuppressorState_EC_16s* pState, Vsp32s numSubbands, Vsp32s frameSize,
                                           Vsp32s rate, Vsp32s bandScale);

/**
 * Suppresses the residual echo in a frame: dst = gain * src + comfort noise in each band. Bands in which a power is not
 * finite, or larger than signals can be, give comfort noise alone.
 *
 * @param[in]     pEst        the echo that the filters estimated, numSubbands
 * @param[in]     pResidual   echo power that is expected in the error, numSubbands, as the controller tells it
 * @param[in]     doubleTalk  not 0: the near end talks, as the controller tells it; the suppressor does not learn then
 * @param[in,out] pSrcDst     what the filters left of the near end, numSubbands; its first and last band become real
 * @param[in,out] pState      initialised state
 * @retval vspStsNullPtrErr  a pointer is null
 */
VspStatus vspsSubbandSuppressor_EC_32fc_I(const Vsp32fc* pEst, const Vsp32f* pResidual, Vsp32s doubleTalk, Vsp32fc* pSrcDst,
                                          VspSubbandSuppressorState_EC_32f* pState);

/**
 * Suppresses the residual echo in a frame of fixed-point bands: dst = gain * src + comfort noise, saturated.
 *
 * @param[in]     pEst        the echo that the filters estimated, numSubbands
 * @param[in]     pResidual   echo power that is expected in the error, numSubbands, as the controller tells it
 * @param[in]     doubleTalk  not 0: the near end talks, as the controller tells it; the suppressor does not learn then
 * @param[in,out] pSrcDst     what the filters left of the near end, numSubbands; its first and last band become real
 * @param[in,out] pState      initialised state
 * @retval vspStsNullPtrErr  a pointer is null
 */
VspStatus vspsSubbandSuppressor_EC_32sc_I(const Vsp32sc* pEst, const Vsp32f* pResidual, Vsp32s doubleTalk, Vsp32sc* pSrcDst,
                                          VspSubbandSuppressorState_EC_16s* pState);

#ifdef __cplusplus
}
#endif

#endif
