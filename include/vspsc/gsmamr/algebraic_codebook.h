/**
 * @file
 * GSM-AMR (narrow band): the algebraic codebooks (3GPP TS 26.090, 5.7 and 6.1).
 *
 * The bit rates (mode): 0 = 4.75, 1 = 5.15, 3 = 5.90, 6 = 6.70, 7 = 7.40, 8 = 7.95, 11 = 10.2, 12 = 12.2 kbit/s. Bit-exact
 * with the fixed-point reference of the standard (3GPP TS 26.073).
 */
#ifndef VSPSC_GSMAMR_ALGEBRAIC_CODEBOOK_H
#define VSPSC_GSMAMR_ALGEBRAIC_CODEBOOK_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Searches the algebraic codebook for the code whose filtered pulses are most like the target (`cbsearch`).
 *
 * @param[in]  pTarget    40 samples of the target without the adaptive codebook's contribution
 * @param[in]  pResidual  40 samples of the residual without it; used at modes 11 and 12 only, may be null at the others
 * @param[in]  pImpulse   40 samples of the weighted synthesis filter's impulse response, Q12
 * @param[in]  mode       bit rate, or 25 (silence descriptor): no pulses
 * @param[in]  subframe   0..3
 * @param[in]  lag        lag of the adaptive codebook, 17..144
 * @param[in]  sharp      pitch sharpening, Q14: the gain of the subframe before, at most 13017; at mode 12 of this one
 * @param[out] pCode      40 samples with sharpening, Q13, at mode 12 Q12
 * @param[out] pY         40 samples of the filtered code
 * @param[out] pIndex     positions and signs; at mode 11 four signs and three words of positions; at mode 12 ten words. Not
 *                        used at mode 25, and may then be null
 * @retval vspStsNullPtrErr  pTarget, pImpulse, pCode or pY is null; after the checks below, pResidual or pIndex is null
 *                           where it is used
 * @retval vspStsRangeErr    mode, subframe or lag outside its range
 */
VspStatus vspsAlgebraicCodebookSearch_GSMAMR_16s(const Vsp16s* pTarget, const Vsp16s* pResidual, const Vsp16s* pImpulse,
                                                 Vsp32s mode, Vsp32s subframe, Vsp16s lag, Vsp16s sharp, Vsp16s* pCode,
                                                 Vsp16s* pY, Vsp16s* pIndex);

/**
 * Pulses of the algebraic codebook from their indices, with pitch sharpening (`decode_2i40_9bits` to `dec_10i40_35bits`).
 *
 * @param[in]  pIndex    position and signs; at mode 11 four signs and three words of positions; at mode 12 ten words. Not
 * used at mode 25, and may then be null
 * @param[in]  mode      bit rate, or 25 (silence descriptor): no pulses
 * @param[in]  subframe  0..3
 * @param[in]  lag       lag of the adaptive codebook, 17..144
 * @param[in]  sharp     sharpening, Q14
 * @param[out] pCode     40 samples, Q13, at mode 12 Q12
 * @retval vspStsNullPtrErr  pCode is null; after the checks below, pIndex is null where it is used
 * @retval vspStsRangeErr    mode, subframe or lag outside its range; last of all, an index of more than its bits
 */
VspStatus vspsAlgebraicCodebookDecode_GSMAMR_16s(const Vsp16s* pIndex, Vsp32s mode, Vsp32s subframe, Vsp16s lag,
                                                 Vsp16s sharp, Vsp16s* pCode);

#ifdef __cplusplus
}
#endif

#endif
