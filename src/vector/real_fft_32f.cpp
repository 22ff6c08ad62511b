#include "vector/real_fft.h"
#include "vector/real_fft_kernel.h"
#include "vector/real_fft_spec.h"

namespace vsp::VSP_LEVEL {

// Pairs of samples or bins.
struct Pairs_32f {
    Vsp32f* p;
    template <class V>
    [[gnu::always_inline]] Complex<V> load(int i) const {
        return loadPairs<V>(p + 2 * i);
    }
    template <class V>
    [[gnu::always_inline]] void store(int i, Complex<V> a) const {
        storePairs(a, p + 2 * i);
    }
};
struct ConstPairs_32f {
    const Vsp32f* p;
    template <class V>
    [[gnu::always_inline]] Complex<V> load(int i) const {
        return loadPairs<V>(p + 2 * i);
    }
};

VspStatus ownRealFftGetSize_32f(Vsp32s order, Vsp32s* pSpecSize, Vsp32s* pInitBufSize, Vsp32s* pWorkBufSize) {
    if (order < 1 || order > kMaxFftOrder) return vspStsSizeErr;
    *pSpecSize = specSize<Vsp32f>(order);
    *pInitBufSize = 0;
    *pWorkBufSize = workSize<Vsp32f>(order);
    return vspStsNoErr;
}

VspStatus ownRealFftInit_32f(const RealFftSpec_32f** ppSpec, Vsp32s order, Vsp8u* pSpecMem, Vsp8u*) {
    if (order < 1 || order > kMaxFftOrder) return vspStsSizeErr;
    *ppSpec = initSpec<RealFftSpec_32f, Vsp32f>(order, pSpecMem);
    return vspStsNoErr;
}

VspStatus ownRealFftFwd_32f(const Vsp32f* pSrc, Vsp32fc* pDst, const RealFftSpec_32f* pSpec, Vsp8u* pBuf) {
    realFftForward<Vsp32f>(pSpec->order, ConstPairs_32f{pSrc}, Pairs_32f{reinterpret_cast<Vsp32f*>(pDst)}, pSpec->tables(),
                           pSpec->blocks(), alignedUp<Vsp32f>(pBuf));
    return vspStsNoErr;
}

VspStatus ownRealFftInv_32f(const Vsp32fc* pSrc, Vsp32f* pDst, const RealFftSpec_32f* pSpec, Vsp8u* pBuf) {
    realFftInverse<Vsp32f>(pSpec->order, ConstPairs_32f{reinterpret_cast<const Vsp32f*>(pSrc)}, Pairs_32f{pDst},
                           pSpec->tables(), pSpec->blocks(), alignedUp<Vsp32f>(pBuf), pSpec->oneByN);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
