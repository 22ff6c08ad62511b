/**
 * @file
 * AMR-WB: gains in the decoder (3GPP TS 26.190, 6.1, TS 26.191) and the scale of its excitation.
 *
 * The bit rates (mode): 5 = 6.60, 9 = 8.85, 13 = 12.65, 15 = 14.25, 16 = 15.85, 18 = 18.25, 19 = 19.85, 20 = 23.05, 21
 * = 23.85 kbit/s. Bit-exact with the fixed-point reference of the standard (3GPP TS 26.173).
 */
#ifndef VSPSC_AMRWB_GAIN_DECODE_H
#define VSPSC_AMRWB_GAIN_DECODE_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Both gains of a subframe from their index, or from those before in a bad frame (`D_gain2`).
 *
 * The words of pMem: energies of the predictor, newest first, reset -14336 (4); the last pitch gain, code gain, code gain
 * of a good subframe; five pitch gains, five code gains, five pitch gains of good subframes, newest last. Those without
 * another value are reset to 0.
 *
 * @param[in]     index       6 bits at modes 5 and 9, else 7 bits
 * @param[in]     pCode       64 samples, Q9
 * @param[in]     mode        bit rate
 * @param[in]     bfi         0 good frame, 1 bad frame, 2 unusable frame
 * @param[in]     prevBfi     1 if the frame before was bad, else 0
 * @param[in]     erasures    state of the erasure counter, 0..6
 * @param[in]     vadHist     frames since the last one with speech; above 2 the code gain is not damped
 * @param[in,out] pMem        22 words
 * @param[out]    pGainPitch  Q14
 * @param[out]    pGainCode   Q16
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsRangeErr    mode, bfi, prevBfi or erasures outside its range, or an index of more than its bits
 */
VspStatus vspsGainDecode_AMRWB_16s(Vsp16s index, const Vsp16s* pCode, Vsp32s mode, Vsp16s bfi, Vsp16s prevBfi,
                                   Vsp16s erasures, Vsp16s vadHist, Vsp16s* pMem, Vsp16s* pGainPitch, Vsp32s* pGainCode);

/**
 * Scale of the excitation of a subframe: as far as the code gain and the four subframes before allow, up to 2^8.
 *
 * @param[in]  gain       code gain, Q16
 * @param[in]  pHeadroom  4 words of vspsExcitationHeadroom_AMRWB_16s
 * @param[out] pScale     the excitation is to be scaled by 2^scale, 0..8
 * @param[out] pGainCode  gain * 2^scale, rounded
 * @retval vspStsNullPtrErr  a pointer is null
 */
VspStatus vspsExcitationScale_AMRWB_16s(Vsp32s gain, const Vsp16s* pHeadroom, Vsp16s* pScale, Vsp16s* pGainCode);

/**
 * Remembers how far an excitation could have been scaled.
 *
 * @param[in]     pExc       64 samples of the total excitation
 * @param[in]     scale      they are scaled by 2^scale, 0..8
 * @param[in,out] pHeadroom  4 words, newest first, reset 8
 * @retval vspStsNullPtrErr  pExc or pHeadroom is null
 * @retval vspStsRangeErr    scale outside 0..8
 */
VspStatus vspsExcitationHeadroom_AMRWB_16s(const Vsp16s* pExc, Vsp32s scale, Vsp16s* pHeadroom);

#ifdef __cplusplus
}
#endif

#endif
