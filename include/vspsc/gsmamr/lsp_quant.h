/**
 * @file
 * GSM-AMR (narrow band): quantiser and decoder of the line spectral pairs (3GPP TS 26.090, 5.2.5).
 *
 * The bit rates (mode): 0 = 4.75, 1 = 5.15, 3 = 5.90, 6 = 6.70, 7 = 7.40, 8 = 7.95, 11 = 10.2, 12 = 12.2 kbit/s, 25 =
 * silence descriptor. Bit-exact with the fixed-point reference of the standard (3GPP TS 26.073).
 */
#ifndef VSPSC_GSMAMR_LSP_QUANT_H
#define VSPSC_GSMAMR_LSP_QUANT_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Quantises the LSPs: predicted from the frame before, in three vectors or, at mode 12, five of two frames each
 * (`Q_plsf_3`, `Q_plsf_5`).
 *
 * @param[in]     pLSP      10 values, Q15; at mode 12 20, those of the middle of the frame first
 * @param[in]     mode      bit rate or 25
 * @param[in,out] pPrevRes  10 values: quantised residual of the prediction, reset 0; only written at mode 25
 * @param[out]    pQLSP     10 or 20 quantised values
 * @param[out]    pIndex    3 indices; at mode 12 5; at mode 25 4, the first being that of the prediction
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsRangeErr    mode outside its set
 */
VspStatus vspsLSPQuant_GSMAMR_16s(const Vsp16s* pLSP, Vsp32s mode, Vsp16s* pPrevRes, Vsp16s* pQLSP, Vsp16s* pIndex);

/**
 * LSPs of a frame from their indices (`D_plsf_3`, `D_plsf_5`).
 *
 * @param[in]     pIndex    3 indices; at mode 12 5; at mode 25 4
 * @param[in]     mode      bit rate or 25
 * @param[in,out] pPrevRes  10 values: residual of the prediction, reset 0
 * @param[out]    pPrevLSF  10 values: LSFs of the frame, at mode 12 of its end
 * @param[out]    pLSP      10 values, Q15; at mode 12 20, those of the middle of the frame first
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsRangeErr    mode outside its set, or an index of more than its bits
 */
VspStatus vspsLSFDecode_GSMAMR_16s(const Vsp16s* pIndex, Vsp32s mode, Vsp16s* pPrevRes, Vsp16s* pPrevLSF, Vsp16s* pLSP);

/**
 * LSPs of a lost frame: those of the frame before move towards their mean.
 *
 * @param[in]     mode      bit rate
 * @param[in,out] pPrevRes  10 values: residual of the prediction
 * @param[in,out] pPrevLSF  10 values: LSFs of the frame before, become those of this one
 * @param[out]    pLSP      10 values, Q15; at mode 12 20
 * @retval vspStsNullPtrErr  a pointer is null
 * @retval vspStsRangeErr    mode outside its set
 */
VspStatus vspsLSFDecodeErased_GSMAMR_16s(Vsp32s mode, Vsp16s* pPrevRes, Vsp16s* pPrevLSF, Vsp16s* pLSP);

#ifdef __cplusplus
}
#endif

#endif
