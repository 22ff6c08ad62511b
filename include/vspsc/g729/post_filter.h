/**
 * @file
 * G.729: the post-filters of the main coder and its Annexes A and C.
 *
 * A call filters one subframe of 40 samples. It takes the decoded speech with the samples before it, which must stay
 * unfiltered: the result goes to another buffer. The high-pass filter of the output follows.
 */
#ifndef VSPSC_G729_POST_FILTER_H
#define VSPSC_G729_POST_FILTER_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** State of the post-filter of the main body. */
typedef struct VspPostFilterState_G729_16s VspPostFilterState_G729_16s;
/** State of the post-filter of Annex A. */
typedef struct VspPostFilterState_G729A_16s VspPostFilterState_G729A_16s;

/**
 * Size of the state of the post-filter, G.729 4.2: 328 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsPostFilterGetStateSize_G729_16s(Vsp32s* pSize);

/**
 * Initialises or resets the post-filter: signals 0, gain 1.
 *
 * @param[out] pState  state
 * @retval vspStsNullPtrErr  pState is null
 */
VspStatus vspsPostFilterInit_G729_16s(VspPostFilterState_G729_16s* pState);

/**
 * Post-filter of a subframe (G.729 4.2, Post).
 *
 * Long-term filter on the residual with the fractional delay that correlates best, short-term filter A(z/0.55) / A(z/0.7),
 * tilt compensation and gain control. Frames other than speech have no long-term part.
 *
 * @param[in]     pSyn       decoded speech: the first of the 40 samples; 10 samples of history before it
 * @param[in]     pLPC       11 coefficients of the synthesis filter, Q12
 * @param[in]     lag        integer lag of the first subframe of the frame, 18 .. 145
 * @param[in]     frameType  1 speech; 0 or 2 comfort noise
 * @param[out]    pDst       filtered speech, 40 samples
 * @param[out]    pVoicing   delay of the long-term filter, 0 if it is not used
 * @param[in,out] pState     state
 * @retval vspStsNullPtrErr  pSyn, pLPC, pDst, pVoicing or pState is null
 * @retval vspStsRangeErr    lag outside 18 .. 145, or frameType outside 0 .. 2
 */
VspStatus vspsPostFilter_G729_16s(const Vsp16s* pSyn, const Vsp16s* pLPC, Vsp16s lag, Vsp16s frameType, Vsp16s* pDst,
                                  Vsp16s* pVoicing, VspPostFilterState_G729_16s* pState);

/**
 * Size of the state of the post-filter, G.729 Annex A: 312 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsPostFilterGetStateSize_G729A_16s(Vsp32s* pSize);

/**
 * Initialises or resets the post-filter of Annex A: signals 0, gain 1.
 *
 * @param[out] pState  state
 * @retval vspStsNullPtrErr  pState is null
 */
VspStatus vspsPostFilterInit_G729A_16s(VspPostFilterState_G729A_16s* pState);

/**
 * Post-filter of a subframe (G.729 A.4.2, Post_Filter).
 *
 * As vspsPostFilter_G729_16s with integer delays within 3 of the lag, a tilt compensation that only lowers, before the
 * synthesis filter, and a gain control by energies.
 *
 * @param[in]     pSyn       decoded speech: the first of the 40 samples; 10 samples of history before it
 * @param[in]     pLPC       11 coefficients of the synthesis filter, Q12
 * @param[in]     lag        integer lag of the subframe, 18 .. 145
 * @param[in]     frameType  1 speech; 0 or 2 comfort noise
 * @param[out]    pDst       filtered speech, 40 samples
 * @param[in,out] pState     state
 * @retval vspStsNullPtrErr  pSyn, pLPC, pDst or pState is null
 * @retval vspStsRangeErr    lag outside 18 .. 145, or frameType outside 0 .. 2
 */
VspStatus vspsPostFilter_G729A_16s(const Vsp16s* pSyn, const Vsp16s* pLPC, Vsp16s lag, Vsp16s frameType, Vsp16s* pDst,
                                   VspPostFilterState_G729A_16s* pState);

#ifdef __cplusplus
}
#endif

#endif
