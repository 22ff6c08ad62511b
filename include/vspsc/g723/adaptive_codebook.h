/**
 * @file
 * G.723.1: the adaptive codebook with its five-tap gains, and the taming of its errors (2.14, 2.18, 3.4).
 *
 * Rates: 2 = 5.3 kbit/s, 4 = 6.3 kbit/s. A pair of subframes shares a lag; the subframe itself uses lag - 1 + offset, with
 * offset 1 in subframes 0 and 2. Of the two gain codebooks the one of 85 entries is used at 6.3 kbit/s with lags below 58,
 * else the one of 170. The past excitation has 145 samples, the oldest first; it is reset to 0.
 */
#ifndef VSPSC_G723_ADAPTIVE_CODEBOOK_H
#define VSPSC_G723_ADAPTIVE_CODEBOOK_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Correlations for the search of the adaptive codebook (Find_Acbk up to its normalisation).
 *
 * For each lag the excitation that repeats with it, at five places, filtered: five correlations with the target, five
 * energies, ten correlations of one with another; all of all lags normalised together.
 *
 * @param[in]  pTarget    60 samples
 * @param[in]  pImpulse   60 samples of the impulse response, Q13
 * @param[in]  pPastExc   145 samples
 * @param[in]  lag        subframes 0 and 2: open-loop lag, 19 .. 140; 1 and 3: lag of the pair, 18 .. 141
 * @param[in]  subframe   0 .. 3
 * @param[out] pDst       20 values for each lag from lag - 1 on: 3 lags in subframes 0 and 2, else 4
 * @retval vspStsNullPtrErr  pTarget, pImpulse, pPastExc or pDst is null
 * @retval vspStsRangeErr    subframe or lag outside its range
 */
VspStatus vspsAdaptiveCodebookCorr_G723_16s(const Vsp16s* pTarget, const Vsp16s* pImpulse, const Vsp16s* pPastExc,
                                            Vsp16s lag, Vsp32s subframe, Vsp16s* pDst);

/**
 * How far the gain codebooks may be used without errors of lost frames growing (Test_Err).
 *
 * @param[in]  pExcErr   5 estimates of the error, the newest first
 * @param[in]  lag       as vspsAdaptiveCodebookCorr_G723_16s has it
 * @param[in]  subframe  0 .. 3
 * @param[in]  sine      the state of the sine detector
 * @param[out] pTaming   0, the least, for a sine or a large error, up to 128
 * @retval vspStsNullPtrErr  pExcErr or pTaming is null
 * @retval vspStsRangeErr    subframe or lag outside its range
 */
VspStatus vspsTamingTest_G723_16s(const Vsp32s* pExcErr, Vsp16s lag, Vsp32s subframe, Vsp16s sine, Vsp16s* pTaming);

/**
 * Brings the estimates of the error up to date after a subframe (Update_Err).
 *
 * @param[in]     lag      of the pair, 18 .. 145
 * @param[in]     offset   0 .. 3
 * @param[in]     index    entry of the gain codebook that lag and rate select
 * @param[in]     rate     2 or 4
 * @param[in,out] pExcErr  5 estimates, the newest first; reset to 4
 * @retval vspStsNullPtrErr    pExcErr is null
 * @retval vspStsRangeErr      rate is not 2 or 4
 * @retval vspStsCodeRangeErr  lag, offset or index outside its range
 */
VspStatus vspsTamingUpdate_G723_16s(Vsp16s lag, Vsp16s offset, Vsp16s index, Vsp32s rate, Vsp32s* pExcErr);

/**
 * Lag and gains that bring the filtered adaptive vector nearest to the target (search of Find_Acbk). Of the gain codebook
 * of each lag the first 51 + 4 * taming of 85 or 93 + 8 * taming of 170 entries are tried.
 *
 * @param[in]  pCorr     60 (subframes 0 and 2) or 80 values of vspsAdaptiveCodebookCorr_G723_16s
 * @param[in]  lag       as for these
 * @param[in]  subframe  0 .. 3
 * @param[in]  taming    0 .. 255
 * @param[in]  rate      2 or 4
 * @param[out] pOffset   number of the lag, 0 .. 2 or 0 .. 3
 * @param[out] pIndex    entry of the gain codebook
 * @retval vspStsNullPtrErr  pCorr, pOffset or pIndex is null
 * @retval vspStsBadArgErr   rate is not 2 or 4
 * @retval vspStsRangeErr    subframe, lag or taming outside its range
 */
VspStatus vspsGainQuant_G723_16s(const Vsp16s* pCorr, Vsp16s lag, Vsp32s subframe, Vsp16s taming, Vsp32s rate,
                                 Vsp16s* pOffset, Vsp16s* pIndex);

/**
 * Adaptive vector from its codes: the excitation that repeats with the lag through five taps (Decod_Acbk, Get_Rez).
 *
 * @param[in]  pPastExc  145 samples; what lies before them counts as 0
 * @param[in]  delay     how far the lag of the pair reaches beyond the subframe: lag - 60, -42 .. 85
 * @param[in]  offset    0 .. 3
 * @param[in]  index     entry of the gain codebook that lag and rate select
 * @param[in]  rate      2 or 4
 * @param[out] pDst      60 samples
 * @retval vspStsNullPtrErr    pPastExc or pDst is null
 * @retval vspStsRangeErr      rate is not 2 or 4
 * @retval vspStsCodeRangeErr  delay, offset or index outside its range
 */
VspStatus vspsDecodeAdaptiveVector_G723_16s(const Vsp16s* pPastExc, Vsp16s delay, Vsp16s offset, Vsp16s index, Vsp32s rate,
                                            Vsp16s* pDst);

/**
 * Subtracts the filtered adaptive vector from the target (last loop of Find_Acbk).
 *
 * @param[in]     pAdaptive  60 samples
 * @param[in]     pImpulse   60 samples of the impulse response, Q13
 * @param[in,out] pSrcDst    60 samples: target in, target of the fixed codebook out
 * @retval vspStsNullPtrErr  pAdaptive, pImpulse or pSrcDst is null
 */
VspStatus vspsAdaptiveCodebookContribution_G723_16s_I(const Vsp16s* pAdaptive, const Vsp16s* pImpulse, Vsp16s* pSrcDst);

/**
 * Excitation of a subframe: twice the code plus the adaptive vector, saturated.
 *
 * @param[in]  pAdaptive  60 samples
 * @param[in]  pCode      60 samples
 * @param[out] pDst       60 samples
 * @retval vspStsNullPtrErr  pAdaptive, pCode or pDst is null
 */
VspStatus vspsExcitation_G723_16s(const Vsp16s* pAdaptive, const Vsp16s* pCode, Vsp16s* pDst);

#ifdef __cplusplus
}
#endif

#endif
