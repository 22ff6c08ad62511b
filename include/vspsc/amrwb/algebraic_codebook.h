/**
 * @file
 * AMR-WB: algebraic codebook.
 *
 * The codebooks by bit rate (mode), those of the core of AMR-WB+ included: 12 bits at 5 (6.60 kbit/s) and 25 (silence
 * descriptor); 20 at 9 (8.85) and 26 (10.4); 28 at 27 (12.0); 36 at 13 (12.65) and 28 (13.6); 44 at 15 (14.25) and 29
 * (15.2); 52 at 16 (15.85) and 30 (16.8); 64 at 18 (18.25) and 31 (19.2); 72 at 19 (19.85) and 32 (20.8); 88 at 20 (23.05),
 * 21 (23.85, searched less thoroughly) and 22 (24.0). Bit-exact with the fixed-point reference of the standard (3GPP
 * TS 26.173).
 */
#ifndef VSPSC_AMRWB_ALGEBRAIC_CODEBOOK_H
#define VSPSC_AMRWB_ALGEBRAIC_CODEBOOK_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Searches the algebraic codebook for the code whose filtered pulses are most like the target (`ACELP_2t64_fx`,
 * `ACELP_4t64_fx`), 3GPP TS 26.190 5.8.
 *
 * @param[in]  pTarget    64 samples of the target without the adaptive codebook's contribution
 * @param[in]  pResidual  64 samples of it in the domain of the residual
 * @param[in]  pImpulse   64 samples of the impulse response with tilt and pitch sharpening, Q12
 * @param[in]  mode       bit rate
 * @param[out] pCode      64 samples of the code, Q9, without sharpening
 * @param[out] pY         64 samples of the filtered code, Q9; 0 where the input overflows and no code is better than none
 * @param[out] pIndex     indices: 1 word (12 bits), 4 words (20 to 52 bits) or 8 words
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsRangeErr    mode outside its range
 */
VspStatus vspsAlgebraicCodebookSearch_AMRWB_16s(const Vsp16s* pTarget, const Vsp16s* pResidual, const Vsp16s* pImpulse,
                                                Vsp32s mode, Vsp16s* pCode, Vsp16s* pY, Vsp16s* pIndex);

/**
 * Code from its indices (`DEC_ACELP_2t64_fx`, `DEC_ACELP_4t64_fx`), 3GPP TS 26.190 5.8 and 6.1.
 *
 * @param[in]  pIndex  1, 4 or 8 words as of vspsAlgebraicCodebookSearch_AMRWB_16s
 * @param[in]  mode    bit rate
 * @param[out] pCode   64 samples, Q9: pulses of 512 and -512, which add up where they share a position
 * @retval vspStsNullPtrErr  pIndex or pCode is null
 * @retval vspStsRangeErr    mode outside its range, or an index of more than its bits
 */
VspStatus vspsAlgebraicCodebookDecode_AMRWB_16s(const Vsp16s* pIndex, Vsp32s mode, Vsp16s* pCode);

/**
 * Code of a frame that is lost: 64 random numbers of 13 bits.
 *
 * @param[in,out] pSeed  seed; reset 21845
 * @param[out]    pCode  64 samples, Q9
 * @retval vspStsNullPtrErr  pSeed or pCode is null
 */
VspStatus vspsAlgebraicCodebookRandom_AMRWB_16s(Vsp16s* pSeed, Vsp16s* pCode);

#ifdef __cplusplus
}
#endif

#endif
