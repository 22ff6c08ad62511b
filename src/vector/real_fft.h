// Real FFTs of 2^order points, for the filter bank of the echo canceller. Forward: exp(-j 2 pi k n / N), unscaled, into the
// N/2 + 1 bins from 0 to half the sampling rate, of which the first and the last have an imaginary part of zero. Inverse:
// exp(+j 2 pi k n / N) / N; it takes those two imaginary parts for zero.
//
// GetSize gives bytes for any address, Init puts the specification where it likes within the memory given. Arrays may lie
// at any address and must not overlap. The work buffer holds nothing between calls. Status: 0, or vspStsSizeErr for an
// order that is not supported; nothing is written then.
#pragma once

#include "core/level.h"

namespace vsp::VSP_LEVEL {

struct RealFftSpec_32f;
struct RealFftSpec_16s;

// Single precision, orders 1 to 17. The error of a bin or a sample is of the order of 1e-7 times the norm of the frame.
VspStatus ownRealFftGetSize_32f(Vsp32s order, Vsp32s* pSpecSize, Vsp32s* pInitBufSize, Vsp32s* pWorkBufSize);
VspStatus ownRealFftInit_32f(const RealFftSpec_32f** ppSpec, Vsp32s order, Vsp8u* pSpecMem, Vsp8u* pInitBuf);
VspStatus ownRealFftFwd_32f(const Vsp32f* pSrc, Vsp32fc* pDst, const RealFftSpec_32f* pSpec, Vsp8u* pBuf);
VspStatus ownRealFftInv_32f(const Vsp32fc* pSrc, Vsp32f* pDst, const RealFftSpec_32f* pSpec, Vsp8u* pBuf);

// Fixed point, orders 1 to 17: computed in double precision, divided by 2^scaleFactor (any value; a negative one
// multiplies), rounded once and saturated.
VspStatus ownRealFftGetSize_16s(Vsp32s order, Vsp32s* pSpecSize, Vsp32s* pInitBufSize, Vsp32s* pWorkBufSize);
VspStatus ownRealFftInit_16s(const RealFftSpec_16s** ppSpec, Vsp32s order, Vsp8u* pSpecMem, Vsp8u* pInitBuf);
VspStatus ownRealFftFwd_16s32s_Sfs(const Vsp16s* pSrc, Vsp32sc* pDst, const RealFftSpec_16s* pSpec, Vsp32s scaleFactor,
                                   Vsp8u* pBuf);
VspStatus ownRealFftInv_32s16s_Sfs(const Vsp32sc* pSrc, Vsp16s* pDst, const RealFftSpec_16s* pSpec, Vsp32s scaleFactor,
                                   Vsp8u* pBuf);

}  // namespace vsp::VSP_LEVEL
