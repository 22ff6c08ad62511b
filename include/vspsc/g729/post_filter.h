/**
 * @file
 * G.729: the post-filters of the main coder and its Annexes A, C and E.
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
/** State of the post-filter of Annex E. */
typedef struct VspPostFilterState_G729E_16s VspPostFilterState_G729E_16s;
/** State of the floating-point post-filter of the main body. */
typedef struct VspPostFilterState_G729_32f VspPostFilterState_G729_32f;
/** State of the floating-point post-filter of Annex A. */
typedef struct VspPostFilterState_G729A_32f VspPostFilterState_G729A_32f;

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

/**
 * End of the decoding of a frame (G.729 A.4.1.6, A.4.2): LP synthesis of the second subframe, post-filter and output filter
 * of both.
 *
 * In less time the same as vspsSynthesisFilter_NR_16s_Sfs with the second filter, vspsPostFilter_G729A_16s for one subframe
 * after the other, and vspsHighPassFilter_G729_16s_ISfs with scale factor 13.
 *
 * @param[in]     pExc           excitation of the second subframe, 40 samples
 * @param[in]     pLPC           11 coefficients of the synthesis filter of each subframe, Q12
 * @param[in]     pLag           integer lag of each subframe, 18 .. 145
 * @param[in]     frameType      1 speech; 0 or 2 comfort noise
 * @param[in,out] pSrcDstSpeech  decoded speech after 10 samples of history: 40 samples are read, the next 40 written
 * @param[out]    pDst           filtered speech, 80 samples
 * @param[in,out] pState         state of the post-filter
 * @param[in,out] pHighPassState state of the output filter
 * @retval vspStsNullPtrErr  pExc, pLPC, pLag, pSrcDstSpeech, pDst, pState or pHighPassState is null
 * @retval vspStsRangeErr    a lag outside 18 .. 145, or frameType outside 0 .. 2
 * @retval vspStsOverflow    warning: a step of the LP synthesis saturates; nothing is written
 */
VspStatus vspsSynthesisPostFilter_G729A_16s(const Vsp16s* pExc, const Vsp16s* pLPC, const Vsp16s* pLag, Vsp16s frameType,
                                            Vsp16s* pSrcDstSpeech, Vsp16s* pDst, VspPostFilterState_G729A_16s* pState,
                                            void* pHighPassState);

/**
 * Size of the state of the post-filter, G.729 Annex E: 368 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsPostFilterGetStateSize_G729E_16s(Vsp32s* pSize);

/**
 * Initialises or resets the post-filter of Annex E: signals 0, gain 1.
 *
 * @param[out] pState  state
 * @retval vspStsNullPtrErr  pState is null
 */
VspStatus vspsPostFilterInit_G729E_16s(VspPostFilterState_G729E_16s* pState);

/**
 * Post-filter of a subframe with factors of its own (G.729 Annex E, Poste).
 *
 * With order 10, the factors 22938, 18022 and 16384 and length 20 the result is that of vspsPostFilter_G729_16s.
 *
 * @param[in]     pSyn       decoded speech: the first of the 40 samples; `order` samples of history before it
 * @param[in]     pLPC       order + 1 coefficients of the synthesis filter, Q12
 * @param[in]     order      10 or 30
 * @param[in]     lag        integer lag of the first subframe of the frame, 18 .. 145
 * @param[in]     frameType  1 speech; 0 or 2 comfort noise
 * @param[in]     pGamma     3 factors, Q15: of the denominator, of the numerator, of the delayed signal
 * @param[in]     length     samples of the short-term filter's response that count, 20 or 32
 * @param[out]    pDst       filtered speech, 40 samples
 * @param[out]    pVoicing   delay of the long-term filter, 0 if it is not used
 * @param[in,out] pState     state
 * @retval vspStsNullPtrErr  pSyn, pLPC, pGamma, pDst, pVoicing or pState is null
 * @retval vspStsRangeErr    order neither 10 nor 30, lag outside 18 .. 145, frameType outside 0 .. 2, or length neither 20
 *                           nor 32
 */
VspStatus vspsPostFilter_G729E_16s(const Vsp16s* pSyn, const Vsp16s* pLPC, Vsp32s order, Vsp16s lag, Vsp16s frameType,
                                   const Vsp16s* pGamma, Vsp32s length, Vsp16s* pDst, Vsp16s* pVoicing,
                                   VspPostFilterState_G729E_16s* pState);

/**
 * Size of the state of the floating-point post-filter, main body: 652 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsPostFilterGetStateSize_G729_32f(Vsp32s* pSize);

/**
 * Initialises or resets the floating-point post-filter, main body: signals 0, gain 1.
 *
 * @param[out] pState  state
 * @retval vspStsNullPtrErr  pState is null
 */
VspStatus vspsPostFilterInit_G729_32f(VspPostFilterState_G729_32f* pState);

/**
 * Post-filter of a subframe in floating point (G.729 Annex C), as vspsPostFilter_G729_16s.
 *
 * @param[in]     pSyn       decoded speech in the range of 16-bit samples: the first of the 40 samples; 10 samples of
 *                           history before it
 * @param[in]     pLPC       11 coefficients of the synthesis filter, the first of them 1
 * @param[in]     lag        integer lag of the first subframe of the frame, 18 .. 145
 * @param[in]     frameType  1 speech; 0 or 2 comfort noise, which has no long-term part
 * @param[out]    pDst       filtered speech, 40 samples
 * @param[out]    pVoicing   delay of the long-term filter, 0 if it is not used
 * @param[in,out] pState     state
 * @retval vspStsNullPtrErr  pSyn, pLPC, pDst, pVoicing or pState is null
 * @retval vspStsRangeErr    lag outside 18 .. 145, or frameType outside 0 .. 2
 */
VspStatus vspsPostFilter_G729_32f(const Vsp32f* pSyn, const Vsp32f* pLPC, Vsp32s lag, Vsp32s frameType, Vsp32f* pDst,
                                  Vsp32s* pVoicing, VspPostFilterState_G729_32f* pState);

/**
 * Size of the state of the floating-point post-filter, Annex A: 620 bytes.
 *
 * @param[out] pSize  bytes that the caller must provide
 * @retval vspStsNullPtrErr  pSize is null
 */
VspStatus vspsPostFilterGetStateSize_G729A_32f(Vsp32s* pSize);

/**
 * Initialises or resets the floating-point post-filter, Annex A: signals 0, gain 1.
 *
 * @param[out] pState  state
 * @retval vspStsNullPtrErr  pState is null
 */
VspStatus vspsPostFilterInit_G729A_32f(VspPostFilterState_G729A_32f* pState);

/**
 * Post-filter of a subframe in floating point (G.729 Annex C), as vspsPostFilter_G729A_16s.
 *
 * @param[in]     pSyn       decoded speech in the range of 16-bit samples: the first of the 40 samples; 10 samples of
 *                           history before it
 * @param[in]     pLPC       11 coefficients of the synthesis filter, the first of them 1
 * @param[in]     lag        integer lag of the subframe, 18 .. 145
 * @param[in]     frameType  1 speech; 0 or 2 comfort noise, which has no long-term part
 * @param[out]    pDst       filtered speech, 40 samples
 * @param[in,out] pState     state
 * @retval vspStsNullPtrErr  pSyn, pLPC, pDst or pState is null
 * @retval vspStsRangeErr    lag outside 18 .. 145, or frameType outside 0 .. 2
 */
VspStatus vspsPostFilter_G729A_32f(const Vsp32f* pSyn, const Vsp32f* pLPC, Vsp32s lag, Vsp32s frameType, Vsp32f* pDst,
                                   VspPostFilterState_G729A_32f* pState);

#ifdef __cplusplus
}
#endif

#endif
