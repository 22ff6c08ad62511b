/**
 * @file
 * An echo canceller: removes from a near-end signal what it contains of the far-end signal.
 *
 * @code
 *     far  ------+----------------> loudspeaker, hybrid --+
 *                v                                        | echo
 *          adaptive filter                                v
 *                | estimate        near = echo + near-end speech + noise
 *     out <------(-)--------------------------------------+
 * @endcode
 *
 * It finds the pure delay before the echo path by itself, keeps its filters while both ends talk, makes no line without an
 * echo louder, and steps aside for a modem. The output lags behind the near end, see vspvEchoCancellerLatency.
 *
 * Whatever the signals, the output is never more than 1 dB louder than the near end over any 100 ms, but for the rounding
 * of samples. There is one exception: two voices that cancel each other are together quieter than one of them alone. So in
 * sub-bands, the output may be up to 4 dB louder while the filters have had nothing to learn for seconds and still quiet
 * more bands than they make louder. Where an estimate would make the output louder than that, less of it is subtracted;
 * then the output is turned down.
 */
#ifndef VSPSVOICE_ECHO_CANCELLER_H
#define VSPSVOICE_ECHO_CANCELLER_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** How the echo is estimated. */
enum {
    vspvEchoSubband = 0, /**< complex sub-bands, a short filter in each: long paths at little cost, late by 110 ms */
    vspvEchoFullband = 1 /**< one long adaptive filter of the signal, late by 20 ms */
};

/** With which functions of vspsc.h. */
enum {
    vspvEchoFloat = 0, /**< the floating-point ones */
    vspvEchoFixed = 1  /**< the fixed-point ones, on samples rounded and clipped to 16 bits */
};

/** What a canceller is to be. */
typedef struct {
    Vsp32s samplingRate;   /**< Hz: 8000 or 16000 */
    Vsp32s engine;         /**< vspvEchoSubband or vspvEchoFullband */
    Vsp32s arithmetic;     /**< vspvEchoFloat or vspvEchoFixed */
    Vsp32s toneDisabling;  /**< 1: stop at a modem's answer tone (2100 Hz with phase reversals), ITU-T G.168; 0: do not */
    Vsp32s suppression;    /**< 1: suppress what the filters leave of the echo, with comfort noise in its place, sub-bands
                              only;    0: do not */
    Vsp64f tailMs;         /**< longest echo path that can be cancelled, without its bulk delay: 1 to 500 ms */
    Vsp64f maxBulkDelayMs; /**< the pure delay before the path is searched up to here: 0, taken to be none, to 1000 ms */
} VspvEchoSettings;

/** What a canceller was doing at the end of the last block. */
typedef struct {
    Vsp32s echoFound;    /**< 1: some echo has been removed so far; without it, the bulk delay means nothing */
    Vsp32s farActive;    /**< 1: there is a far-end signal to cancel */
    Vsp32s doubleTalk;   /**< 1: near-end speech while the far end is active, at this moment: 0 between syllables */
    Vsp32s toneDisabled; /**< 1: stopped by a modem's tone, neither adapts nor cancels: out is near, delayed */
    Vsp64f bulkDelayMs;  /**< found between far end and near end, compensated before the adaptive filter */
    Vsp64f stepSize;     /**< how fast the filter adapts: 0 not at all, 1 as fast as an NLMS filter can */
    Vsp64f erle;         /**< echo return loss enhancement, dB: power of the near end over that of the output, smoothed over
                              0.5 s; tells what is removed of an echo while there is echo alone */
} VspvEchoStatus;

/** Object of an echo canceller; the memory must be aligned to 8 bytes. It points into itself, so it must not be moved. */
typedef struct VspvEchoCanceller VspvEchoCanceller;

/**
 * The usual settings: sub-bands, floating point, a tail of 128 ms, search of the bulk delay up to 1000 ms, tone disabling,
 * no suppression.
 *
 * @param[in]  samplingRate  8000 or 16000 Hz
 * @param[out] pSettings     to be changed as needed
 * @retval vspStsNullPtrErr  pSettings is null
 * @retval vspStsRangeErr    samplingRate is neither
 */
VspStatus vspvEchoCancellerDefaults(Vsp32s samplingRate, VspvEchoSettings* pSettings);

/**
 * Size of a canceller.
 *
 * @param[in]  pSettings  what it is to be
 * @param[out] pSize      bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSettings or pSize is null
 * @retval vspStsRangeErr    samplingRate, tailMs or maxBulkDelayMs is outside its range
 * @retval vspStsBadArgErr   engine, arithmetic, toneDisabling or suppression is none of its values, or there is suppression
 * in the full band
 */
VspStatus vspvEchoCancellerGetSize(const VspvEchoSettings* pSettings, Vsp32s* pSize);

/**
 * Formats or resets a canceller.
 *
 * @param[out] pCanceller  memory of the size that vspvEchoCancellerGetSize gives for these settings
 * @param[in]  pSettings   what it is to be
 * @retval vspStsNullPtrErr  pCanceller or pSettings is null
 * @retval vspStsRangeErr    samplingRate, tailMs or maxBulkDelayMs is outside its range
 * @retval vspStsBadArgErr   engine, arithmetic, toneDisabling or suppression is none of its values, or there is suppression
 * in the full band
 */
VspStatus vspvEchoCancellerInit(VspvEchoCanceller* pCanceller, const VspvEchoSettings* pSettings);

/**
 * Cancels the echo in a block of 16-bit samples. Any split of the signals into blocks gives the same output.
 *
 * @param[in,out] pCanceller  initialised canceller
 * @param[in]     pFar        len samples of the far end, as they go to the loudspeaker
 * @param[in]     pNear       len samples of the near end, taken at the same time
 * @param[out]    pOut        len samples of the near end without echo, late by the latency; may be pFar or pNear
 * @param[in]     len         number of samples, 1 or more
 * @retval vspStsNullPtrErr  pCanceller, pFar, pNear or pOut is null
 * @retval vspStsSizeErr     len < 1
 */
VspStatus vspvEchoCancellerProcess_16s(VspvEchoCanceller* pCanceller, const Vsp16s* pFar, const Vsp16s* pNear, Vsp16s* pOut,
                                       Vsp32s len);

/**
 * Cancels the echo in a block of floating-point samples on the scale of 16-bit ones: full scale is 32768. Any split of the
 * signals into blocks gives the same output, and blocks of either type may follow each other.
 *
 * Samples may exceed full scale; what exceeds twice full scale is clipped. NaN counts as silence.
 *
 * @param[in,out] pCanceller  initialised canceller
 * @param[in]     pFar        len samples of the far end, as they go to the loudspeaker
 * @param[in]     pNear       len samples of the near end, taken at the same time
 * @param[out]    pOut        len samples of the near end without echo, late by the latency; may be pFar or pNear
 * @param[in]     len         number of samples, 1 or more
 * @retval vspStsNullPtrErr  pCanceller, pFar, pNear or pOut is null
 * @retval vspStsSizeErr     len < 1
 */
VspStatus vspvEchoCancellerProcess_32f(VspvEchoCanceller* pCanceller, const Vsp32f* pFar, const Vsp32f* pNear, Vsp32f* pOut,
                                       Vsp32s len);

/**
 * By how much the output lags: sample n of the output belongs to sample n - latency of the near end.
 *
 * @param[in]  pCanceller  initialised canceller
 * @param[out] pLatency    number of samples
 * @retval vspStsNullPtrErr  pCanceller or pLatency is null
 */
VspStatus vspvEchoCancellerLatency(const VspvEchoCanceller* pCanceller, Vsp32s* pLatency);

/**
 * What the canceller is doing.
 *
 * @param[in]  pCanceller  initialised canceller
 * @param[out] pStatus     state at the end of the last block of its own that is complete: 14 ms in sub-bands, else 5 ms
 * @retval vspStsNullPtrErr  pCanceller or pStatus is null
 */
VspStatus vspvEchoCancellerStatus(const VspvEchoCanceller* pCanceller, VspvEchoStatus* pStatus);

#ifdef __cplusplus
}
#endif

#endif
