/**
 * @file
 * Step-size controllers of the echo canceller's adaptive filters: how fast they may learn in each frame, so that they
 * follow the echo path and hold still while the near end talks.
 *
 * Each coefficient is taken for a random value that drifts slowly, and the mean square of what is still unknown of it is
 * tracked as a Kalman filter with a diagonal covariance does (Enzner and Vary, Signal Processing 86, 2006). The step
 * follows from the share of the error that this explains: near-end speech makes the error larger and the step small, in the
 * very frame in which it begins. What error and echo estimate have in common tells that the path has changed (Valin, IEEE
 * Transactions on Audio, Speech and Language Processing 15, 2007).
 *
 * Samples are on the scale of 16 bits. The rule itself is computed in single precision in the fixed-point controllers, too,
 * with the same bits at every level of the library.
 *
 * In a frame of a sub-band canceller with filters of len taps:
 *
 * @code
 * vspsFIRSubband_EC_32fc(ppSrc, ppCoef, pEst, len, numSubbands);                  pErr = near end - pEst
 * vspsSubbandControllerUpdate_EC_32f(ppSrc, pErr, pEst, ppCoef, ..., ppStepSize, pAdapt, ...);
 * for (g = 0; 4 * g < len; g++)
 *     if (pAdapt[g])
 *         vspsFIRSubbandCoeffUpdate_EC_32fc_I(ppStepSize[g], ppSrc + 4 * g, pErr, ppCoef + 4 * g,
 *                                             len - 4 * g < 4 ? len - 4 * g : 4, numSubbands);
 * @endcode
 */
#ifndef VSPSC_EC_CONTROLLERS_H
#define VSPSC_EC_CONTROLLERS_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** State of the floating-point sub-band controller. */
typedef struct VspSubbandControllerState_EC_32f VspSubbandControllerState_EC_32f;
/** State of the fixed-point sub-band controller. */
typedef struct VspSubbandControllerState_EC_16s VspSubbandControllerState_EC_16s;
/** State of the fixed-point sub-band controller that tells double talk. */
typedef struct VspSubbandControllerDTState_EC_16s VspSubbandControllerDTState_EC_16s;
/** State of the floating-point full-band controller. */
typedef struct VspFullbandControllerState_EC_32f VspFullbandControllerState_EC_32f;
/** State of the fixed-point full-band controller. */
typedef struct VspFullbandControllerState_EC_16s VspFullbandControllerState_EC_16s;

/**
 * Size of the state of the floating-point sub-band controller.
 *
 * @param[in]  len          taps of the filters, 1 to 255
 * @param[in]  numSubbands  number of bands, 1 to 4097
 * @param[in]  frameSize    samples of a frame, 1 to rate
 * @param[in]  rate         sampling rate, 8000 or 16000 Hz
 * @param[out] pSize        bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 * @retval vspStsBadArgErr   len, numSubbands, frameSize or rate is outside its range
 */
VspStatus vspsSubbandControllerGetSize_EC_32f(Vsp32s len, Vsp32s numSubbands, Vsp32s frameSize, Vsp32s rate, Vsp32s* pSize);

/**
 * Formats a state of the floating-point sub-band controller: nothing is known of the echo path yet.
 *
 * @param[out] pState       memory of the size that vspsSubbandControllerGetSize_EC_32f gives
 * @param[in]  len          taps of the filters, 1 to 255
 * @param[in]  numSubbands  number of bands, 1 to 4097
 * @param[in]  frameSize    samples of a frame, 1 to rate
 * @param[in]  rate         sampling rate, 8000 or 16000 Hz
 * @retval vspStsNullPtrErr  pState is null
 * @retval vspStsBadArgErr   len, numSubbands, frameSize or rate is outside its range
 */
VspStatus vspsSubbandControllerInit_EC_32f(VspSubbandControllerState_EC_32f* pState, Vsp32s len, Vsp32s numSubbands,
                                           Vsp32s frameSize, Vsp32s rate);

/**
 * Tells that the taps have moved, because the bulk delay before the filters has changed: tap t is now what tap t + shift
 * was, and nothing is known of those that were none. With shift >= len nothing is known any more.
 *
 * @param[in,out] pState  initialised state of the floating-point sub-band controller
 * @param[in]     shift   number of taps, of either sign
 * @retval vspStsNullPtrErr  pState is null
 */
VspStatus vspsSubbandControllerReset_EC_32f(VspSubbandControllerState_EC_32f* pState, Vsp32s shift);

/**
 * Gives the step sizes of a frame of the floating-point sub-band controller. The taps are in groups of four, the last one
 * perhaps smaller, G = (len + 3) / 4, which have a step size in common for each band. Groups that have nothing to learn are
 * left out most of the time. Tells double talk as well.
 *
 * A frame in which errors, estimates or powers are not finite, or larger than signals can be, teaches nothing: no group
 * adapts, and the state stays as it is.
 *
 * @param[in]     ppSrc        len vectors of the reference, numSubbands each, as the filters had them
 * @param[in]     pErr         what the filters left of the near end, numSubbands
 * @param[in]     pEst         the echo that they estimated, numSubbands
 * @param[in]     ppCoef       len vectors of coefficients, numSubbands each
 * @param[in]     cancelling   not 0: the canceller has been seen to remove echo; double talk is then told by what it leaves
 * @param[out]    ppStepSize   G vectors of step sizes for vspsFIRSubbandCoeffUpdate_EC_32fc_I,
 *                             numSubbands each; written for the groups that adapt
 * @param[out]    pAdapt       G flags: 1 if the group adapts in this frame, else 0
 * @param[out]    pResidual    power of the error in each band as far as it is echo that has not been learned yet
 * @param[out]    pLearning    the share of the whole error's power that is still to be learned, 0 to 1
 * @param[out]    pDoubleTalk  1 while somebody talks at the near end, else 0
 * @param[in,out] pState       initialised state
 * @retval vspStsNullPtrErr  a pointer is null
 */
VspStatus vspsSubbandControllerUpdate_EC_32f(const Vsp32fc* const* ppSrc, const Vsp32fc* pErr, const Vsp32fc* pEst,
                                             const Vsp32fc* const* ppCoef, Vsp32s cancelling, Vsp64f* const* ppStepSize,
                                             Vsp32s* pAdapt, Vsp32f* pResidual, Vsp32f* pLearning, Vsp32s* pDoubleTalk,
                                             VspSubbandControllerState_EC_32f* pState);

/**
 * Size of the state of the fixed-point sub-band controller.
 *
 * @param[in]  len          taps of the filters, 1 to 255
 * @param[in]  numSubbands  number of bands, 1 to 4097
 * @param[in]  frameSize    samples of a frame, 1 to rate
 * @param[in]  rate         sampling rate, 8000 or 16000 Hz
 * @param[out] pSize        bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 * @retval vspStsBadArgErr   len, numSubbands, frameSize or rate is outside its range
 */
VspStatus vspsSubbandControllerGetSize_EC_16s(Vsp32s len, Vsp32s numSubbands, Vsp32s frameSize, Vsp32s rate, Vsp32s* pSize);

/**
 * Formats a state of the fixed-point sub-band controller: nothing is known of the echo path yet.
 *
 * @param[out] pState       memory of the size that vspsSubbandControllerGetSize_EC_16s gives
 * @param[in]  len          taps of the filters, 1 to 255
 * @param[in]  numSubbands  number of bands, 1 to 4097
 * @param[in]  frameSize    samples of a frame, 1 to rate
 * @param[in]  rate         sampling rate, 8000 or 16000 Hz
 * @param[in]  bandScale    the scale factor that the analysis of the bands was given, -31 to 31
 * @param[in]  coefScale    the scale factor that the filters are given, 0 to 31: coefficients are in Q(coefScale)
 * @retval vspStsNullPtrErr  pState is null
 * @retval vspStsBadArgErr   len, numSubbands, frameSize, rate, bandScale or coefScale is outside its range
 */
VspStatus vspsSubbandControllerInit_EC_16s(VspSubbandControllerState_EC_16s* pState, Vsp32s len, Vsp32s numSubbands,
                                           Vsp32s frameSize, Vsp32s rate, Vsp32s bandScale, Vsp32s coefScale);

/**
 * Tells that the taps have moved, because the bulk delay before the filters has changed: tap t is now what tap t + shift
 * was, and nothing is known of those that were none. With shift >= len nothing is known any more.
 *
 * @param[in,out] pState  initialised state of the fixed-point sub-band controller
 * @param[in]     shift   number of taps, of either sign
 * @retval vspStsNullPtrErr  pState is null
 */
VspStatus vspsSubbandControllerReset_EC_16s(VspSubbandControllerState_EC_16s* pState, Vsp32s shift);

/**
 * Gives the step sizes of a frame of the fixed-point sub-band controller. The taps are in groups of four, the last one
 * perhaps smaller, G = (len + 3) / 4, which have a step size in common for each band. Groups that have nothing to learn are
 * left out most of the time.
 *
 * @param[in]     ppSrc        len vectors of the reference, numSubbands each, as the filters had them
 * @param[in]     pErr         what the filters left of the near end, numSubbands
 * @param[in]     pEst         the echo that they estimated, numSubbands
 * @param[in]     ppCoef       len vectors of coefficients, numSubbands each
 * @param[out]    ppStepSize   G vectors of step sizes for vspsFIRSubbandCoeffUpdate_EC_32sc_I with scale factor 0
 * (mantissa, exponent), numSubbands each; written for the groups that adapt
 * @param[out]    pAdapt       G flags: 1 if the group adapts in this frame, else 0
 * @param[out]    pResidual    power of the error in each band as far as it is echo that has not been learned yet
 * @param[out]    pLearning    the share of the whole error's power that is still to be learned, 0 to 1
 * @param[in,out] pState       initialised state
 * @retval vspStsNullPtrErr  a pointer is null
 */
VspStatus vspsSubbandControllerUpdate_EC_16s(const Vsp32sc* const* ppSrc, const Vsp32sc* pErr, const Vsp32sc* pEst,
                                             const Vsp32sc* const* ppCoef, Vsp32sc* const* ppStepSize, Vsp32s* pAdapt,
                                             Vsp32f* pResidual, Vsp32f* pLearning,
                                             VspSubbandControllerState_EC_16s* pState);

/**
 * Size of the state of the fixed-point sub-band controller that tells double talk.
 *
 * @param[in]  len          taps of the filters, 1 to 255
 * @param[in]  numSubbands  number of bands, 1 to 4097
 * @param[in]  frameSize    samples of a frame, 1 to rate
 * @param[in]  rate         sampling rate, 8000 or 16000 Hz
 * @param[out] pSize        bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 * @retval vspStsBadArgErr   len, numSubbands, frameSize or rate is outside its range
 */
VspStatus vspsSubbandControllerDTGetSize_EC_16s(Vsp32s len, Vsp32s numSubbands, Vsp32s frameSize, Vsp32s rate,
                                                Vsp32s* pSize);

/**
 * Formats a state of the fixed-point sub-band controller that tells double talk: nothing is known of the echo path yet.
 *
 * @param[out] pState       memory of the size that vspsSubbandControllerDTGetSize_EC_16s gives
 * @param[in]  len          taps of the filters, 1 to 255
 * @param[in]  numSubbands  number of bands, 1 to 4097
 * @param[in]  frameSize    samples of a frame, 1 to rate
 * @param[in]  rate         sampling rate, 8000 or 16000 Hz
 * @param[in]  bandScale    the scale factor that the analysis of the bands was given, -31 to 31
 * @param[in]  coefScale    the scale factor that the filters are given, 0 to 31: coefficients are in Q(coefScale)
 * @retval vspStsNullPtrErr  pState is null
 * @retval vspStsBadArgErr   len, numSubbands, frameSize, rate, bandScale or coefScale is outside its range
 */
VspStatus vspsSubbandControllerDTInit_EC_16s(VspSubbandControllerDTState_EC_16s* pState, Vsp32s len, Vsp32s numSubbands,
                                             Vsp32s frameSize, Vsp32s rate, Vsp32s bandScale, Vsp32s coefScale);

/**
 * Tells that the taps have moved, because the bulk delay before the filters has changed: tap t is now what tap t + shift
 * was, and nothing is known of those that were none. With shift >= len nothing is known any more.
 *
 * @param[in,out] pState  initialised state of the fixed-point sub-band controller that tells double talk
 * @param[in]     shift   number of taps, of either sign
 * @retval vspStsNullPtrErr  pState is null
 */
VspStatus vspsSubbandControllerDTReset_EC_16s(VspSubbandControllerDTState_EC_16s* pState, Vsp32s shift);

/**
 * Gives the step sizes of a frame of the fixed-point sub-band controller that tells double talk. The taps are in groups of
 * four, the last one perhaps smaller, G = (len + 3) / 4, which have a step size in common for each band. Groups that have
 * nothing to learn are left out most of the time. Tells double talk as well.
 *
 * @param[in]     ppSrc        len vectors of the reference, numSubbands each, as the filters had them
 * @param[in]     pErr         what the filters left of the near end, numSubbands
 * @param[in]     pEst         the echo that they estimated, numSubbands
 * @param[in]     ppCoef       len vectors of coefficients, numSubbands each
 * @param[in]     cancelling   not 0: the canceller has been seen to remove echo; double talk is then told by what it leaves
 * @param[out]    ppStepSize   G vectors of step sizes for vspsFIRSubbandCoeffUpdate_EC_32sc_I with scale factor 0
 * (mantissa, exponent), numSubbands each; written for the groups that adapt
 * @param[out]    pAdapt       G flags: 1 if the group adapts in this frame, else 0
 * @param[out]    pResidual    power of the error in each band as far as it is echo that has not been learned yet
 * @param[out]    pLearning    the share of the whole error's power that is still to be learned, 0 to 1
 * @param[out]    pDoubleTalk  1 while somebody talks at the near end, else 0
 * @param[in,out] pState       initialised state
 * @retval vspStsNullPtrErr  a pointer is null
 */
VspStatus vspsSubbandControllerDTUpdate_EC_16s(const Vsp32sc* const* ppSrc, const Vsp32sc* pErr, const Vsp32sc* pEst,
                                               const Vsp32sc* const* ppCoef, Vsp32s cancelling, Vsp32sc* const* ppStepSize,
                                               Vsp32s* pAdapt, Vsp32f* pResidual, Vsp32f* pLearning, Vsp32s* pDoubleTalk,
                                               VspSubbandControllerDTState_EC_16s* pState);

/**
 * Size of the state of the floating-point full-band controller: 72 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsFullbandControllerGetSize_EC_32f(Vsp32s* pSize);

/**
 * Formats a state of the floating-point full-band controller: nothing is known of the echo path yet.
 *
 * @param[out] pState     memory of the size that vspsFullbandControllerGetSize_EC_32f gives
 * @param[in]  numTaps    taps of the filter, 1 or more
 * @param[in]  frameSize  samples of a block, 1 to rate
 * @param[in]  rate       sampling rate, 8000 or 16000 Hz
 * @retval vspStsNullPtrErr  pState is null
 * @retval vspStsBadArgErr   numTaps, frameSize or rate is outside its range
 */
VspStatus vspsFullbandControllerInit_EC_32f(VspFullbandControllerState_EC_32f* pState, Vsp32s numTaps, Vsp32s frameSize,
                                            Vsp32s rate);

/**
 * Tells that the taps have moved, because the bulk delay before the filter has changed: a share of them is unknown again.
 * With shift >= the number of taps nothing is known any more.
 *
 * @param[in,out] pState  initialised state of the floating-point full-band controller
 * @param[in]     shift   number of taps, of either sign
 * @retval vspStsNullPtrErr  pState is null
 */
VspStatus vspsFullbandControllerReset_EC_32f(VspFullbandControllerState_EC_32f* pState, Vsp32s shift);

/**
 * Gives the step sizes of a block for vspsNLMS_EC_32f, from what vspsFIR_EC_32f leaves of it with the taps as they are.
 *
 * A block whose powers are not finite teaches nothing: its steps are 0, and the state stays as it is.
 *
 * @param[in]     pRef         len samples of the reference with numTaps samples of history, as the filters take them
 * @param[in]     pNear        len samples of the near end
 * @param[in]     pErr         what vspsFIR_EC_32f left of them
 * @param[in]     len          number of samples; frameSize, for the time constants to hold
 * @param[in]     pTaps        taps of the filter
 * @param[in]     cancelling   not 0: the canceller has been seen to remove echo; double talk is then told by what it leaves
 * @param[out]    pStepSize    len step sizes; all 0 where learning is not worth the while
 * @param[out]    pLearning    the normalised step, 0 to 1
 * @param[out]    pDoubleTalk  1 while somebody talks at the near end, else 0
 * @param[in,out] pState       initialised state
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsBadArgErr   len < 1
 */
VspStatus vspsFullbandControllerUpdate_EC_32f(const Vsp32f* pRef, const Vsp32f* pNear, const Vsp32f* pErr, Vsp32s len,
                                              const Vsp32f* pTaps, Vsp32s cancelling, Vsp32f* pStepSize, Vsp32f* pLearning,
                                              Vsp32s* pDoubleTalk, VspFullbandControllerState_EC_32f* pState);

/**
 * Size of the state of the fixed-point full-band controller: 96 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsFullbandControllerGetSize_EC_16s(Vsp32s* pSize);

/**
 * Formats a state of the fixed-point full-band controller: nothing is known of the echo path yet.
 *
 * @param[out] pState     memory of the size that vspsFullbandControllerGetSize_EC_16s gives
 * @param[in]  numTaps    taps of the filter, 1 or more
 * @param[in]  frameSize  samples of a block, 1 to rate
 * @param[in]  rate       sampling rate, 8000 or 16000 Hz
 * @retval vspStsNullPtrErr  pState is null
 * @retval vspStsBadArgErr   numTaps, frameSize or rate is outside its range
 */
VspStatus vspsFullbandControllerInit_EC_16s(VspFullbandControllerState_EC_16s* pState, Vsp32s numTaps, Vsp32s frameSize,
                                            Vsp32s rate);

/**
 * Tells that the taps have moved, because the bulk delay before the filter has changed: a share of them is unknown again.
 * With shift >= the number of taps nothing is known any more.
 *
 * @param[in,out] pState  initialised state of the fixed-point full-band controller
 * @param[in]     shift   number of taps, of either sign
 * @retval vspStsNullPtrErr  pState is null
 */
VspStatus vspsFullbandControllerReset_EC_16s(VspFullbandControllerState_EC_16s* pState, Vsp32s shift);

/**
 * Gives the step sizes of a block for vspsNLMS_EC_16s, from what vspsFIR_EC_16s leaves of it with the taps as they are.
 *
 * @param[in]     pRef         len samples of the reference with numTaps samples of history, as the filters take them
 * @param[in]     pNear        len samples of the near end
 * @param[in]     pErr         what vspsFIR_EC_16s left of them
 * @param[in]     len          number of samples; frameSize, for the time constants to hold
 * @param[in]     pTaps        taps of the filter
 * @param[in]     cancelling   not 0: the canceller has been seen to remove echo; double talk is then told by what it leaves
 * @param[out]    pStepSize    len step sizes; all 0 where learning is not worth the while
 * @param[out]    pLearning    the normalised step, 0 to 1
 * @param[out]    pDoubleTalk  1 while somebody talks at the near end, else 0
 * @param[in,out] pState       initialised state
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsBadArgErr   len < 1
 */
VspStatus vspsFullbandControllerUpdate_EC_16s(const Vsp16s* pRef, const Vsp16s* pNear, const Vsp16s* pErr, Vsp32s len,
                                              const Vsp16s* pTaps, Vsp32s cancelling, Vsp32s* pStepSize, Vsp32f* pLearning,
                                              Vsp32s* pDoubleTalk, VspFullbandControllerState_EC_16s* pState);

#ifdef __cplusplus
}
#endif

#endif
