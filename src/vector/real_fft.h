// Real Fourier transforms of N = 2^order values, in memory of the caller. CCS packing: bins 0 to N/2, the first and the
// last of which are real. Forward exp(-j...) and unscaled, inverse exp(+j...) and divided by N.
#pragma once

#include "core/level.h"

namespace vsp::VSP_LEVEL {

struct RealFftSpec_32f;
struct RealFftSpec_16s;

// Bytes of the specification, of a buffer for Init and of a buffer for each transform. An order that is not supported gives
// an error, and nothing is written; so do the others.
VspStatus ownRealFftGetSize_32f(Vsp32s order, Vsp32s* pSpecSize, Vsp32s* pInitBufSize, Vsp32s* pWorkBufSize);
VspStatus ownRealFftInit_32f(const RealFftSpec_32f** ppSpec, Vsp32s order, Vsp8u* pSpecMem, Vsp8u* pInitBuf);
VspStatus ownRealFftFwd_32f(const Vsp32f* pSrc, Vsp32fc* pDst, const RealFftSpec_32f* pSpec, Vsp8u* pBuf);
VspStatus ownRealFftInv_32f(const Vsp32fc* pSrc, Vsp32f* pDst, const RealFftSpec_32f* pSpec, Vsp8u* pBuf);

// Results are divided by 2^scaleFactor, rounded and saturated.
VspStatus ownRealFftGetSize_16s(Vsp32s order, Vsp32s* pSpecSize, Vsp32s* pInitBufSize, Vsp32s* pWorkBufSize);
VspStatus ownRealFftInit_16s(const RealFftSpec_16s** ppSpec, Vsp32s order, Vsp8u* pSpecMem, Vsp8u* pInitBuf);
VspStatus ownRealFftFwd_16s32s_Sfs(const Vsp16s* pSrc, Vsp32sc* pDst, const RealFftSpec_16s* pSpec, Vsp32s scaleFactor,
                                   Vsp8u* pBuf);
VspStatus ownRealFftInv_32s16s_Sfs(const Vsp32sc* pSrc, Vsp16s* pDst, const RealFftSpec_16s* pSpec, Vsp32s scaleFactor,
                                   Vsp8u* pBuf);

}  // namespace vsp::VSP_LEVEL
