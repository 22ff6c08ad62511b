/**
 * @file
 * Detection of the answer tones with which modems and fax machines switch echo cancellers off: 2100 Hz with a phase
 * reversal every 450 ms (ITU-T V.25, G.168).
 *
 * A reversal is reported if the one before it was 413 to 466 ms earlier: the second reversal of a tone is the first that is
 * reported, and a tone without reversals is none. The detector begins anew after 50 ms of constant samples. One object
 * hears one signal.
 */
#ifndef VSPSVOICE_TONE_H
#define VSPSVOICE_TONE_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** In which arithmetic a detector computes. */
enum {
    vspvToneFloat = 0, /**< single precision */
    vspvToneFixed = 1  /**< 16-bit fixed point */
};

/** What a detector reports. */
enum {
    vspvToneNothing = 0,
    vspvToneReversal = 1, /**< a phase reversal of an answer tone; the first one tells that there is such a tone */
    vspvToneEnd = 2       /**< an answer tone has ended */
};

/** An event. Times are in samples from the beginning. */
typedef struct {
    Vsp32s type;      /**< vspvToneNothing ... */
    Vsp32s reversals; /**< of the tone so far, as reported */
    Vsp64s time;      /**< when it is reported, some milliseconds after a reversal and some 40 after the end of a tone */
    Vsp64s start;     /**< of the tone, as far as 2100 Hz prevails, to 10 ms; at its end only, like the next */
    Vsp64s end;       /**< of the tone */
    Vsp64f power;     /**< mean square from start to end */
} VspvToneEvent;

/** Object of a tone detector; the memory must be aligned to 8 bytes. */
typedef struct VspvToneDetector VspvToneDetector;

/**
 * Size of a tone detector.
 *
 * @param[in]  rate        sampling rate, 8000 or 16000 Hz
 * @param[in]  arithmetic  vspvToneFloat or vspvToneFixed
 * @param[out] pSize       bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 * @retval vspStsRangeErr    rate is neither
 * @retval vspStsBadArgErr   arithmetic is neither
 */
VspStatus vspvToneDetectorGetSize(Vsp32s rate, Vsp32s arithmetic, Vsp32s* pSize);

/**
 * Formats or resets a tone detector.
 *
 * @param[out] pDetector   memory of the size that vspvToneDetectorGetSize gives
 * @param[in]  rate        sampling rate, 8000 or 16000 Hz
 * @param[in]  arithmetic  vspvToneFloat or vspvToneFixed
 * @retval vspStsNullPtrErr  pDetector is null
 * @retval vspStsRangeErr    rate is neither
 * @retval vspStsBadArgErr   arithmetic is neither
 */
VspStatus vspvToneDetectorInit(VspvToneDetector* pDetector, Vsp32s rate, Vsp32s arithmetic);

/**
 * Hears the next samples up to the next event. How a signal is split into blocks makes no difference.
 *
 * It returns when all samples have been heard, with vspvToneNothing, or earlier with an event: the caller goes on with the
 * samples that are left. Events fall on whole milliseconds, at most two on one, the second of which comes with the next
 * call before any sample is heard.
 *
 * @param[in,out] pDetector  initialised detector
 * @param[in]     pSrc       len samples
 * @param[in]     len        number of samples
 * @param[out]    pUsed      number of samples that have been heard, 0 .. len
 * @param[out]    pEvent     the event
 * @retval vspStsNullPtrErr  pDetector, pSrc, pUsed or pEvent is null
 * @retval vspStsSizeErr     len < 1
 */
VspStatus vspvToneDetectorProcess(VspvToneDetector* pDetector, const Vsp16s* pSrc, Vsp32s len, Vsp32s* pUsed,
                                  VspvToneEvent* pEvent);

/**
 * At the end of the signal: what there is still to report. To be called until there is nothing; then the detector must be
 * initialised before it hears another signal.
 *
 * @param[in,out] pDetector  initialised detector
 * @param[out]    pEvent     the event
 * @retval vspStsNullPtrErr  pDetector or pEvent is null
 */
VspStatus vspvToneDetectorFinish(VspvToneDetector* pDetector, VspvToneEvent* pEvent);

#ifdef __cplusplus
}
#endif

#endif
