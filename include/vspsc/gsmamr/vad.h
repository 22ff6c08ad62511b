/**
 * @file
 * GSM-AMR (narrow band): the two voice activity detectors of 3GPP TS 26.094 and their Fourier transform.
 *
 * An encoder picks one detector and calls it once per frame of 20 ms. The detectors are bit-exact with the fixed-point
 * reference of the standard (3GPP TS 26.073) but for two points: option 2 truncates where it rescales the last sample of a
 * half-frame to the right, and option 1 keeps its noise estimate within 40..16000 at both ends.
 *
 * The record of a detector belongs to the application, which resets it by assigning the initialiser below. Any content of a
 * record and any samples are legal.
 */
#ifndef VSPSC_GSMAMR_VAD_H
#define VSPSC_GSMAMR_VAD_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Memory of voice activity detection option 1 (3GPP TS 26.094): 58 words, 116 bytes. */
typedef struct VspGSMAMRVad1State {
    Vsp16s subLevel[9];      /**< per band, level of the last fifth of the previous frame */
    Vsp16s oldLevel[9];      /**< band levels of the previous frame */
    Vsp16s aveLevel[9];      /**< averaged band levels, for the stationarity test */
    Vsp16s bckrEst[9];       /**< background noise estimate per band */
    Vsp16s filterMem5[3][2]; /**< memories of the 5th-order all-pass pairs: first stage, two of the second */
    Vsp16s filterMem3[5];    /**< memories of the 3rd-order all-pass sections */
    Vsp16s burstCount;       /**< consecutive intermediate speech decisions */
    Vsp16s hangCount;        /**< hangover frames still to add */
    Vsp16s statCount;        /**< stationarity counter: 20 not stationary, counts down to 0 */
    Vsp16s vadReg;           /**< intermediate decisions, newest in bit 14 */
    Vsp16s complexHigh;      /**< flags of high correlation, newest in bit 14 */
    Vsp16s complexLow;       /**< flags of moderate correlation, newest in bit 14 */
    Vsp16s complexHangTimer; /**< frames in a row with very high correlation */
    Vsp16s complexHangCount; /**< hangover frames of a complex signal (music) still to add */
    Vsp16s complexWarning;   /**< 1 when the background is a complex signal */
    Vsp16s corrHpFast;       /**< smoothed high-pass normalised correlation, Q15 */
    Vsp16s pitchFlags;       /**< pitch flags, newest in bit 14: the encoder's pitch analysis shifts them in */
} VspGSMAMRVad1State;

/** Reset value of a VspGSMAMRVad1State: VspGSMAMRVad1State state = VSP_GSMAMR_VAD1_STATE_INIT; */
#define VSP_GSMAMR_VAD1_STATE_INIT                                                                        \
    {                                                                                                     \
        {0, 0, 0, 0, 0, 0, 0, 0, 0}, {150, 150, 150, 150, 150, 150, 150, 150, 150},                       \
            {150, 150, 150, 150, 150, 150, 150, 150, 150}, {150, 150, 150, 150, 150, 150, 150, 150, 150}, \
            {{0, 0}, {0, 0}, {0, 0}}, {0, 0, 0, 0, 0}, 0, 0, 0, 0, 0, 0, 0, 0, 0, 13106, 0                \
    }

/** Memory of voice activity detection option 2 (3GPP TS 26.094): 188 bytes. A half-frame has 80 samples. */
typedef struct VspGSMAMRVad2State {
    Vsp32s chEnrg[16];       /**< smoothed channel energies, scaled as shiftState says */
    Vsp32s chNoise[16];      /**< channel noise estimates */
    Vsp16s chEnrgLongDb[16]; /**< long-term channel energies in dB, Q8 */
    Vsp16s preEmphMem;       /**< last sample of the previous half-frame, in the scaling of that half-frame */
    Vsp16s updateCnt;        /**< half-frames that qualified for a forced noise update */
    Vsp16s lastUpdateCnt;    /**< updateCnt of the previous half-frame */
    Vsp16s hysterCnt;        /**< half-frames in a row with an unchanged updateCnt */
    Vsp16s lastNormShift;    /**< normalisation shift of the previous half-frame */
    Vsp16s shiftState;       /**< scaling of chEnrg: 1 for loud signals, any other value for soft ones */
    Vsp16s forcedUpdateFlag; /**< 1 after a forced noise update */
    Vsp16s tsnr;             /**< long-term signal-to-noise ratio in dB, Q8 */
    Vsp16s negSnrVar;        /**< variance of negative signal-to-noise ratios */
    Vsp16s negSnrBias;       /**< what negSnrVar adds to the threshold */
    Vsp16s burstCount;       /**< consecutive speech half-frames */
    Vsp16s hangoverCount;    /**< hangover half-frames left */
    Vsp32s frameCnt;         /**< half-frames processed */
} VspGSMAMRVad2State;

/** Reset value of a VspGSMAMRVad2State: VspGSMAMRVad2State state = VSP_GSMAMR_VAD2_STATE_INIT; */
#define VSP_GSMAMR_VAD2_STATE_INIT                                                                          \
    {                                                                                                       \
        {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, \
            {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0         \
    }

/**
 * Voice activity detection, option 1 (3GPP TS 26.094): is there speech in a frame of 20 ms at 8 kHz?
 *
 * Compares the levels of nine frequency bands with estimates of the background noise, which it updates, and adds hangover
 * to bursts of speech and to complex signals such as music. An encoder detects before its open-loop pitch analysis and
 * passes what the analysis found in the frame before; without such an analysis pass 13106 and 0 and leave
 * pState->pitchFlags alone.
 *
 * @param[in]     pSrc        200 samples: the last 40 of the previous frame, then the frame of 160
 * @param[in,out] pState      record
 * @param[out]    pVadFlag    1 speech, 0 no speech
 * @param[in]     bestCorrHp  best normalised high-pass open-loop correlation, Q15
 * @param[in]     toneFlags   tone flags, newest in bit 14
 * @retval vspStsNullPtrErr  pSrc, pState or pVadFlag is null
 */
VspStatus vspsVAD1_GSMAMR_16s(const Vsp16s* pSrc, VspGSMAMRVad1State* pState, Vsp16s* pVadFlag, Vsp16s bestCorrHp,
                              Vsp16s toneFlags);

/**
 * Voice activity detection, option 2 (3GPP TS 26.094): is there speech in a frame of 20 ms at 8 kHz?
 *
 * Takes the frame in two halves, measures the energies of sixteen channels against estimates of the noise in them, and
 * derives its thresholds and its hangover from the long-term signal-to-noise ratio. The frame is speech if either half is.
 *
 * @param[in]     pSrc      160 samples
 * @param[in,out] pState    record
 * @param[out]    pVadFlag  1 speech, 0 no speech
 * @param[in]     ltpFlag   not 0 if the long-term predictor found strong periodicity in the frame before
 * @retval vspStsNullPtrErr  pSrc, pState or pVadFlag is null
 */
VspStatus vspsVAD2_GSMAMR_16s(const Vsp16s* pSrc, VspGSMAMRVad2State* pState, Vsp16s* pVadFlag, Vsp32s ltpFlag);

/**
 * Discrete Fourier transform of 128 real samples in place, divided by 64 (3GPP TS 26.073, r_fft).
 *
 * With X[k] = sum over n of x[n] * exp(-2*pi*i*k*n/128): words 2k and 2k+1 become the real and the imaginary part of X[k] /
 * 64 for k = 1..63, word 0 becomes X[0] / 64 and word 1 becomes X[64] / 64. Each of six stages rounds its products,
 * saturates its sums and halves them; the words are within about 4 of the exact values where nothing saturates.
 *
 * @param[in,out] pSrcDst  128 words
 * @retval vspStsNullPtrErr  pSrcDst is null
 */
VspStatus vspsFFTFwd_RToPerm_GSMAMR_16s_I(Vsp16s* pSrcDst);

#ifdef __cplusplus
}
#endif

#endif
