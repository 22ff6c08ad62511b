/**
 * @file
 * G.729: LP analysis and synthesis filters. That of order 10 in Q(scaleFactor), vspsSynthesisFilter_NR_16s_Sfs, is in
 * common.h.
 */
#ifndef VSPSC_G729_FILTERS_H
#define VSPSC_G729_FILTERS_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * LP analysis filter A(z) of order 10 (G.729 Residu).
 *
 * s = sum over j = 0 .. 10 of 2 * lpc[j] * src[n - j], j ascending; then s * 8 + 0x8000; dst[n] is the high half of that.
 * Every product and every one of these steps saturates to 32 bits.
 *
 * @param[in]  pSrc  the first of len samples; 10 samples of history before it
 * @param[in]  pLPC  11 coefficients, Q12
 * @param[out] pDst  len samples; not in place
 * @param[in]  len   number of samples
 * @retval vspStsNullPtrErr  pSrc, pLPC or pDst is null
 * @retval vspStsSizeErr     len < 1
 */
VspStatus vspsResidualFilter_G729_16s(const Vsp16s* pSrc, const Vsp16s* pLPC, Vsp16s* pDst, Vsp32s len);

/**
 * LP synthesis filters 1/A(z) of order 10 of two signals, each of 40 samples: the same as vspsSynthesisFilter_NR_16s_Sfs
 * with a scale factor of 12 for one after the other, in little more than the time of one. Nothing tells of saturation. The
 * arrays of one signal do not overlap the results of the other.
 *
 * @param[in]  pLPC1  11 coefficients of the first filter, Q12
 * @param[in]  pSrc1  40 samples
 * @param[out] pDst1  40 samples; may be pSrc1
 * @param[in]  pMem1  the 10 outputs before pDst1[0], the newest last
 * @param[in]  pLPC2  likewise of the second one
 * @param[in]  pSrc2  40 samples
 * @param[out] pDst2  40 samples; may be pSrc2
 * @param[in]  pMem2  the 10 outputs before pDst2[0]
 * @retval vspStsNullPtrErr  a pointer is null
 */
VspStatus vspsSynthesisFilterPair_G729_16s(const Vsp16s* pLPC1, const Vsp16s* pSrc1, Vsp16s* pDst1, const Vsp16s* pMem1,
                                           const Vsp16s* pLPC2, const Vsp16s* pSrc2, Vsp16s* pDst2, const Vsp16s* pMem2);

/**
 * LP analysis filter A(z) of any order up to 30 (G.729 Annex E, Residue), as vspsResidualFilter_G729_16s.
 *
 * @param[in]  pSrc   the first of len samples; order samples of history before it
 * @param[in]  pLPC   order + 1 coefficients, Q12
 * @param[out] pDst   len samples; not in place
 * @param[in]  len    number of samples
 * @param[in]  order  1 .. 30
 * @retval vspStsNullPtrErr  pSrc, pLPC or pDst is null
 * @retval vspStsSizeErr     len < 1
 * @retval vspStsRangeErr    order outside 1 .. 30
 */
VspStatus vspsResidualFilter_G729E_16s(const Vsp16s* pSrc, const Vsp16s* pLPC, Vsp16s* pDst, Vsp32s len, Vsp32s order);

/**
 * LP synthesis filter 1/A(z) of any order up to 30 (G.729 Annex E, Syn_filte), as vspsSynthesisFilter_NR_16s_Sfs with a
 * scale factor of 12.
 *
 * @param[in]  pLPC   order + 1 coefficients, Q12
 * @param[in]  pSrc   len samples
 * @param[out] pDst   len samples; may be pSrc
 * @param[in]  len    number of samples
 * @param[in]  order  1 .. 30
 * @param[in]  pMem   the outputs before dst[0], order of them, the newest last
 * @retval vspStsNullPtrErr  pLPC, pSrc, pDst or pMem is null
 * @retval vspStsSizeErr     len < 1
 * @retval vspStsRangeErr    order outside 1 .. 30
 * @retval vspStsOverflow    warning: some step saturated; all outputs are written
 */
VspStatus vspsSynthesisFilter_G729E_16s(const Vsp16s* pLPC, const Vsp16s* pSrc, Vsp16s* pDst, Vsp32s len, Vsp32s order,
                                        const Vsp16s* pMem);

/**
 * LP synthesis filter 1/A(z) of any order up to 30 in place, as vspsSynthesisFilter_G729E_16s.
 *
 * @param[in]     pLPC     order + 1 coefficients, Q12
 * @param[in,out] pSrcDst  len samples
 * @param[in]     len      number of samples
 * @param[in]     order    1 .. 30
 * @param[in]     pMem     the outputs before the first one, order of them, the newest last
 * @retval vspStsNullPtrErr  pLPC, pSrcDst or pMem is null
 * @retval vspStsSizeErr     len < 1
 * @retval vspStsRangeErr    order outside 1 .. 30
 * @retval vspStsOverflow    warning: some step saturated; all outputs are written
 */
VspStatus vspsSynthesisFilter_G729E_16s_I(const Vsp16s* pLPC, Vsp16s* pSrcDst, Vsp32s len, Vsp32s order,
                                          const Vsp16s* pMem);

#ifdef __cplusplus
}
#endif

#endif
