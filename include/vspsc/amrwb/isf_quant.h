/**
 * @file
 * AMR-WB: quantisers of the immittance spectral frequencies.
 */
#ifndef VSPSC_AMRWB_ISF_QUANT_H
#define VSPSC_AMRWB_ISF_QUANT_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Quantises the frequencies: predicted from the frame before, split in two vectors with four candidates each, whose errors
 * are split again (3GPP TS 26.190 5.2.5, `Qpisf_2s_46b`, `Qpisf_2s_36b`).
 *
 * @param[in]     pISF    16 values, 16384 for 6400 Hz
 * @param[in]     mode    bit rate
 * @param[in,out] pPast   16 values: quantised error of the prediction, reset 0
 * @param[out]    pQISF   16 quantised values; may be pISF
 * @param[out]    pIndex  at mode 5 5 indices of 8, 8, 7, 7, 6 bits, else 7 of 8, 8, 6, 7, 7, 5, 5
 * @retval vspStsNullPtrErr  pISF, pPast, pQISF or pIndex is null
 * @retval vspStsRangeErr    mode is not a bit rate
 */
VspStatus vspsISFQuant_AMRWB_16s(const Vsp16s* pISF, Vsp32s mode, Vsp16s* pPast, Vsp16s* pQISF, Vsp16s* pIndex);

/**
 * Frequencies of a frame from their indices (`Dpisf_2s_46b`, `Dpisf_2s_36b`).
 *
 * @param[in]     pIndex  at mode 5 5 indices of 8, 8, 7, 7, 6 bits, else 7 of 8, 8, 6, 7, 7, 5, 5
 * @param[in]     mode    bit rate
 * @param[in,out] pPast   16 values: error of the prediction, reset 0
 * @param[in,out] pBuf    3 x 16 values: the last frames, the newest first, before their order was made sure
 * @param[out]    pISF    16 values, 16384 for 6400 Hz
 * @retval vspStsNullPtrErr  pIndex, pPast, pBuf or pISF is null
 * @retval vspStsRangeErr    mode is not a bit rate, or an index has more than its bits
 */
VspStatus vspsISFDecode_AMRWB_16s(const Vsp16s* pIndex, Vsp32s mode, Vsp16s* pPast, Vsp16s* pBuf, Vsp16s* pISF);

/**
 * Frequencies of a lost frame: 0.9 of those of the frame before, 0.1 of the average of the last ones and their mean
 * (`Dpisf_2s_46b`, `Dpisf_2s_36b` of a bad frame).
 *
 * @param[in]     pPrevISF  16 values of the frame before
 * @param[in]     pBuf      3 x 16 values: the last good frames
 * @param[in,out] pPast     16 values: error of the prediction
 * @param[out]    pISF      16 values; may be pPrevISF
 * @retval vspStsNullPtrErr  pPrevISF, pBuf, pPast or pISF is null
 */
VspStatus vspsISFDecodeErased_AMRWB_16s(const Vsp16s* pPrevISF, const Vsp16s* pBuf, Vsp16s* pPast, Vsp16s* pISF);

/**
 * Quantises the frequencies of comfort noise, without prediction (3GPP TS 26.192, `Qisf_ns`).
 *
 * @param[in]  pISF    16 values
 * @param[out] pQISF   16 quantised values; may be pISF
 * @param[out] pIndex  5 indices of 6, 6, 6, 5, 5 bits
 * @retval vspStsNullPtrErr  pISF, pQISF or pIndex is null
 */
VspStatus vspsISFQuantDTX_AMRWB_16s(const Vsp16s* pISF, Vsp16s* pQISF, Vsp16s* pIndex);

/**
 * Frequencies of comfort noise from their indices (`Disf_ns`).
 *
 * @param[in]  pIndex  5 indices of 6, 6, 6, 5, 5 bits
 * @param[out] pISF    16 values
 * @retval vspStsNullPtrErr  pIndex or pISF is null
 * @retval vspStsRangeErr    an index has more than its bits
 */
VspStatus vspsISFDecodeDTX_AMRWB_16s(const Vsp16s* pIndex, Vsp16s* pISF);

#ifdef __cplusplus
}
#endif

#endif
