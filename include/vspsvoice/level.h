/**
 * @file
 * Automatic level control: brings telephone speech to an even level, in the manner of ITU-T G.169.
 *
 * The gain begins at -30 dB and rises with the first speech, so the first words come out attenuated. One object controls
 * one signal at 8000 Hz.
 */
#ifndef VSPSVOICE_LEVEL_H
#define VSPSVOICE_LEVEL_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** What a level control is to do. */
typedef struct {
    Vsp32f target;    /**< dB below full scale that active speech is brought to, 0 or more; usually 26.1 */
    Vsp32f limit;     /**< dB below full scale that no sample of the result exceeds, 0 or more */
    Vsp32f maxGain;   /**< largest gain in dB, 0 or more; usually 11.6 */
    Vsp32s blockUnit; /**< the number of samples that the length of every block is a multiple of: 8, 4, 2, or 1 for blocks
                         of any length. The result is 8 - blockUnit samples late */
} VspvLevelSettings;

/** Object of a level control; the memory must be aligned to 8 bytes. */
typedef struct VspvLevelControl VspvLevelControl;

/**
 * Size of a level control.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspvLevelControlGetSize(Vsp32s* pSize);

/**
 * Formats or resets a level control.
 *
 * @param[out] pControl   memory of the size that vspvLevelControlGetSize gives
 * @param[in]  pSettings  what it is to do
 * @retval vspStsNullPtrErr  pControl or pSettings is null
 * @retval vspStsRangeErr    target, limit or maxGain is negative or NaN
 * @retval vspStsBadArgErr   blockUnit is not 1, 2, 4 or 8
 */
VspStatus vspvLevelControlInit(VspvLevelControl* pControl, const VspvLevelSettings* pSettings);

/**
 * By how much the result is later than the signal.
 *
 * @param[in]  pControl  initialised level control
 * @param[out] pSamples  8 - blockUnit
 * @retval vspStsNullPtrErr  pControl or pSamples is null
 */
VspStatus vspvLevelControlLatency(const VspvLevelControl* pControl, Vsp32s* pSamples);

/**
 * Controls the level of the next samples. How a signal is split into blocks makes no difference.
 *
 * @param[in,out] pControl  initialised level control
 * @param[in]     pSrc      len samples
 * @param[out]    pDst      len samples, those that came in as many samples earlier as the latency tells; the first are 0;
 *                          may be pSrc
 * @param[in]     len       number of samples
 * @retval vspStsNullPtrErr  pControl, pSrc or pDst is null
 * @retval vspStsSizeErr     len < 1 or not a multiple of blockUnit
 */
VspStatus vspvLevelControlProcess(VspvLevelControl* pControl, const Vsp16s* pSrc, Vsp16s* pDst, Vsp32s len);

#ifdef __cplusplus
}
#endif

#endif
