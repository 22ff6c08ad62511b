/**
 * @file
 * Automatic level control for telephone speech in the manner of ITU-T G.169.
 *
 * The control follows the noise floor and the speech level in blocks of 8 samples and moves a gain towards a target level
 * while speech is active. Right after initialisation the gain is 1/32 (-30 dB) and rises only while there is speech, so the
 * first words come out attenuated. Computes in single precision; the bits are the same on every machine.
 */
#ifndef VSPSC_ALC_H
#define VSPSC_ALC_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** State of the level control: 124 bytes of 4-byte alignment that the caller provides. */
typedef struct VspALCState_G169_16s VspALCState_G169_16s;

/**
 * Size of the state of the level control: 124 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsALCGetStateSize_G169_16s(Vsp32s* pSize);

/**
 * Formats a state: target 26.1 dB below full scale, peak limit 32767, maximum gain 11.6 dB, nothing heard yet.
 *
 * @param[out] pState  memory of the size that vspsALCGetStateSize_G169_16s gives
 * @retval vspStsNullPtrErr  pState is null
 */
VspStatus vspsALCInit_G169_16s(VspALCState_G169_16s* pState);

/**
 * Sets the target level and the peak limit: 32768 / 10^(level/20).
 *
 * The linear values are kept within the positive normal single-precision numbers, so a level of thousands of dB or of plus
 * infinity acts as silence.
 *
 * @param[in,out] pState  initialised state
 * @param[in]     target  level that active speech is brought to, dB below full scale, 0 or more
 * @param[in]     limit   largest output magnitude, dB below full scale, 0 or more
 * @retval vspStsNullPtrErr  pState is null
 * @retval vspStsRangeErr    target or limit is negative or NaN
 */
VspStatus vspsALCSetLevel_G169_16s(VspALCState_G169_16s* pState, Vsp32f target, Vsp32f limit);

/**
 * Sets the maximum gain: 10^(gain/20).
 *
 * The linear value is kept within the finite single-precision numbers, so plus infinity lifts the limit.
 *
 * @param[in,out] pState  initialised state
 * @param[in]     gain    maximum gain in dB, 0 or more
 * @retval vspStsNullPtrErr  pState is null
 * @retval vspStsRangeErr    gain is negative or NaN
 */
VspStatus vspsALCSetGain_G169_16s(VspALCState_G169_16s* pState, Vsp32f gain);

/**
 * Controls the level of a signal.
 *
 * Each block of 8 samples updates noise level, speech level and gain (ITU-T G.169), then
 * dst[i] = src[i] * gain, truncated towards zero and saturated. How a signal is split into calls makes no difference.
 *
 * @param[in]     pSrc    len samples
 * @param[out]    pDst    len samples; may be pSrc
 * @param[in]     len     number of samples, a multiple of 8
 * @param[in,out] pState  initialised state
 * @retval vspStsNullPtrErr  pSrc, pDst or pState is null
 * @retval vspStsSizeErr     len < 8 or not a multiple of 8
 */
VspStatus vspsALC_G169_16s(const Vsp16s* pSrc, Vsp16s* pDst, Vsp32s len, VspALCState_G169_16s* pState);

#ifdef __cplusplus
}
#endif

#endif
