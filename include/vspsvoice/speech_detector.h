/**
 * @file
 * Detection of speech in telephone signals: at 8000 Hz as a GSM-AMR encoder detects it (3GPP TS 26.094, either option), at
 * 16000 Hz as an AMR-WB encoder does (3GPP TS 26.194).
 *
 * Every frame of 20 ms gets a decision, bit for bit that of the standard's encoder, at 8000 Hz at 5.9, 6.7, 7.4 and
 * 7.95 kbit/s, at 16000 Hz at 8.85 to 23.85 kbit/s: pre-processing, linear prediction, weighting and open-loop pitch search
 * of such an encoder feed the detector. Bursts of speech are extended by some frames. Option 1 and
 * the detector at 16000 Hz take noise for speech until they have learned its level, which takes option 1 a second or two;
 * option 2 takes what it hears first for noise. As in the encoder of AMR-WB, a frame of nothing but 8 resets the detector
 * at 16000 Hz. One object hears one signal.
 */
#ifndef VSPSVOICE_SPEECH_DETECTOR_H
#define VSPSVOICE_SPEECH_DETECTOR_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Samples of a frame, at 8000 Hz and at 16000 Hz. */
enum { vspvSpeechFrame = 160, vspvSpeechFrameWide = 320 };

/** In place of an option's number: the detector for 16000 Hz. */
enum { vspvSpeechWide = 3 };

/** What a detector says of a frame. */
typedef struct {
    Vsp32s speech;    /**< 1 speech, 0 none */
    Vsp32s reserved;  /**< 0 */
    Vsp64f power;     /**< mean square of the samples */
    Vsp64f snr;       /**< dB: mean ratio of the energies in the detector's bands to its noise estimates; -infinity for
                           silence. Option 2: of the second half of the frame. At 16000 Hz not a number: that detector
                           does not tell */
    Vsp64f reference; /**< dB. Option 1: the ratio above which the frame is taken for speech. Option 2: the long-term ratio,
                           by which it chooses its threshold. At 16000 Hz not a number */
} VspvSpeechDecision;

/** Object of a speech detector; the memory must be aligned to 8 bytes. */
typedef struct VspvSpeechDetector VspvSpeechDetector;

/**
 * Size of a speech detector.
 *
 * @param[in]  option  which detector: at 8000 Hz 1 (nine bands) or 2 (sixteen channels), at 16000 Hz vspvSpeechWide (twelve
 *                     bands)
 * @param[out] pSize   bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 * @retval vspStsBadArgErr   option is none of these
 */
VspStatus vspvSpeechDetectorGetSize(Vsp32s option, Vsp32s* pSize);

/**
 * Formats or resets a speech detector.
 *
 * @param[out] pDetector  memory of the size that vspvSpeechDetectorGetSize gives
 * @param[in]  option     which detector: 1, 2 or vspvSpeechWide
 * @retval vspStsNullPtrErr  pDetector is null
 * @retval vspStsBadArgErr   option is none of these
 */
VspStatus vspvSpeechDetectorInit(VspvSpeechDetector* pDetector, Vsp32s option);

/**
 * Hears the next samples and decides about the frames that they complete. How a signal is split into blocks makes no
 * difference.
 *
 * @param[in,out] pDetector   initialised detector
 * @param[in]     pSrc        len samples
 * @param[in]     len         number of samples
 * @param[out]    pDecisions  decisions about as many frames as *pCount tells, at most (len + 159) / 160, at 16000 Hz
 *                            (len + 319) / 320
 * @param[out]    pCount      number of decisions; may be 0
 * @retval vspStsNullPtrErr  pDetector, pSrc, pDecisions or pCount is null
 * @retval vspStsSizeErr     len < 1
 */
VspStatus vspvSpeechDetectorProcess(VspvSpeechDetector* pDetector, const Vsp16s* pSrc, Vsp32s len,
                                    VspvSpeechDecision* pDecisions, Vsp32s* pCount);

/**
 * At the end of the signal: decides about the frame that has begun. Silence fills it up; power is that of the samples that
 * have come.
 *
 * @param[in,out] pDetector  initialised detector
 * @param[out]    pDecision  the decision, if there is one
 * @param[out]    pCount     1, or 0 if no frame has begun
 * @retval vspStsNullPtrErr  pDetector, pDecision or pCount is null
 */
VspStatus vspvSpeechDetectorFinish(VspvSpeechDetector* pDetector, VspvSpeechDecision* pDecision, Vsp32s* pCount);

#ifdef __cplusplus
}
#endif

#endif
