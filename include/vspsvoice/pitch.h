/**
 * @file
 * The pitch of speech at 8000 Hz, as a G.729 encoder finds it: open loop in every frame of 10 ms, closed loop in every
 * subframe of 5 ms.
 *
 * The encoder's pre-processing, linear prediction, perceptual weighting and searches run on the signal without its
 * quantisation: the excitation so far is the residual of the prediction. One object hears one signal.
 */
#ifndef VSPSVOICE_PITCH_H
#define VSPSVOICE_PITCH_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Which searches. */
enum {
    vspvPitchMain = 0,   /**< those of the main body of G.729 */
    vspvPitchAnnexA = 1, /**< of Annex A: reduced complexity */
    vspvPitchAnnexD = 2  /**< closed loop of Annex D: 6.4 kbit/s */
};

/** Samples of a frame, and those after it that the prediction sees. */
enum { vspvPitchFrame = 80, vspvPitchLookAhead = 40 };

/** The pitch in a subframe of 40 samples. */
typedef struct {
    Vsp16s openLoopLag;    /**< samples, of the frame */
    Vsp16s lag;            /**< closed loop: the period is lag + fraction / 3 samples */
    Vsp16s fraction;       /**< -1, 0 or 1 */
    Vsp16s voiced;         /**< 1: the past predicts at least half of the energy, with at least half its own amplitude */
    Vsp64f f0;             /**< Hz, of the period */
    Vsp64f power;          /**< mean square of the samples */
    Vsp32f gain;           /**< of the adaptive codebook */
    Vsp32f predictionGain; /**< dB that the adaptive codebook removes from the target */
} VspvPitchPoint;

/** Object of a pitch tracker; the memory must be aligned to 8 bytes. */
typedef struct VspvPitchTracker VspvPitchTracker;

/**
 * Size of a pitch tracker.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspvPitchTrackerGetSize(Vsp32s* pSize);

/**
 * Formats or resets a pitch tracker.
 *
 * @param[out] pTracker  memory of the size that vspvPitchTrackerGetSize gives
 * @param[in]  search    vspvPitchMain ...
 * @retval vspStsNullPtrErr  pTracker is null
 * @retval vspStsBadArgErr   search is none of these
 */
VspStatus vspvPitchTrackerInit(VspvPitchTracker* pTracker, Vsp32s search);

/**
 * Hears the next samples. Two points come of each frame that they and the 40 samples behind it complete. How a signal is
 * split into blocks makes no difference.
 *
 * @param[in,out] pTracker  initialised tracker
 * @param[in]     pSrc      len samples
 * @param[in]     len       number of samples
 * @param[out]    pPoints   as many points as *pCount tells, at most 2 * ((len + 79) / 80)
 * @param[out]    pCount    number of points; may be 0
 * @retval vspStsNullPtrErr  pTracker, pSrc, pPoints or pCount is null
 * @retval vspStsSizeErr     len < 1
 */
VspStatus vspvPitchTrackerProcess(VspvPitchTracker* pTracker, const Vsp16s* pSrc, Vsp32s len, VspvPitchPoint* pPoints,
                                  Vsp32s* pCount);

/**
 * At the end of the signal: the points of the last whole frame, if they are still missing. Silence follows it.
 *
 * @param[in,out] pTracker  initialised tracker; must be initialised again before it hears another signal
 * @param[out]    pPoints   2 points
 * @param[out]    pCount    2, or 0 if no whole frame is left
 * @retval vspStsNullPtrErr  pTracker, pPoints or pCount is null
 */
VspStatus vspvPitchTrackerFinish(VspvPitchTracker* pTracker, VspvPitchPoint* pPoints, Vsp32s* pCount);

#ifdef __cplusplus
}
#endif

#endif
