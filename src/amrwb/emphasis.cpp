// Pre-emphasis and de-emphasis (3GPP TS 26.190 5.1 and 6.1, `Preemph`, `Deemph` and `Deemph_32`).
#include "amrwb/deemphasis.h"
#include "amrwb/exports.h"
#include "arithmetic/standard_ops.h"
#include "core/checks.h"
#include "vector/for_blocks.h"
#include "vector/map.h"

namespace vsp::VSP_LEVEL {

namespace {

// x * 32768 - before * mu of neighbouring samples, exact: the sum of both products with the signs changed wraps only where
// changing its sign wraps back.
class Differences {
  public:
    explicit Differences(Vsp16s mu) : factors_{S32::splat(mu * 65536 + 0x8000).v} {}

    template <class V>
    [[gnu::always_inline]] Wide<V> lo(V x, V before) const {
        return negated(V{zipLo(x, before).v});
    }
    template <class V>
    [[gnu::always_inline]] Wide<V> hi(V x, V before) const {
        return negated(V{zipHi(x, before).v});
    }

  private:
    template <class V>
    [[gnu::always_inline]] Wide<V> negated(V pairs) const {
        return sub(Wide<V>::splat(0), dot2(pairs, lowest<V>(factors_)));
    }

    S16 factors_;
};

}  // namespace

VspStatus vspsPreemphasize_AMRWB_16s_ISfs(Vsp16s mu, Vsp16s* pSrcDst, Vsp32s len, Vsp32s scaleFactor, Vsp16s* pMem) {
    constexpr int kBlock = 256;
    if (anyNull(pSrcDst, pMem)) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    if (scaleFactor < -8 || scaleFactor > 1) return vspStsScaleRangeErr;
    const Differences differences(mu);
    const auto scaled = [shift = 14 + scaleFactor](auto a) {
        using W = decltype(a);
        return shr(add(shr(a, shift), W::splat(1)), 1);
    };
    forBlocks(len, kBlock, [&](Vsp32s first, Vsp32s count) {
        Vsp16s source[1 + kBlock];
        Vsp16s* const block = pSrcDst + first;
        source[0] = *pMem;
        for (int i = 0; i < count; i++) source[1 + i] = block[i];
        map(
            count,
            [&](auto x, auto before) {
                return packSat(scaled(differences.lo(x, before)), scaled(differences.hi(x, before)));
            },
            block, source + 1, source);
        *pMem = source[count];
    });
    return vspStsNoErr;
}

VspStatus vspsPreemphasizeScale_AMRWB_16s(const Vsp16s* pSrc, Vsp32s len, Vsp16s mu, Vsp16s mem, Vsp16s* pHist,
                                          Vsp16s* pScale) {
    constexpr int kMaxScale = 8;
    if (anyNull(pSrc, pHist, pScale)) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    const auto clipped = [](auto a) { return minU(magnitude(a), decltype(a)::splat(kMax32)); };
    const Differences differences(Vsp16s(mu & ~1));
    using V = Sliding16;
    using W = Wide<V>;
    W largest = W::splat(0);
    const auto take = [&](V x, V before) {
        largest = max(largest, max(clipped(differences.lo(x, before)), clipped(differences.hi(x, before))));
    };
    const Vsp16s start[2] = {mem, pSrc[0]};
    take(V::splat(start[1]), V::splat(start[0]));
    Vsp32s i = 1;
    for (; len - i >= V::width; i += V::width) take(V::load(pSrc + i), V::load(pSrc + i - 1));
    for (; i < len; i++) take(V::splat(pSrc[i]), V::splat(pSrc[i - 1]));
    Vsp32s each[W::width], magnitude = 0;
    largest.store(each);
    for (const Vsp32s m : each) magnitude = m > magnitude ? m : magnitude;

    const Vsp16s high = high_32s(magnitude);
    const int room = norm_16s(high) - 1;
    const Vsp16s scale = Vsp16s(high == 0 || room > kMaxScale ? kMaxScale : room < 0 ? 0 : room);
    Vsp16s least = scale;
    for (int h = 0; h < 2; h++) least = pHist[h] < least ? pHist[h] : least;
    pHist[1] = pHist[0];
    pHist[0] = scale;
    *pScale = least;
    return vspStsNoErr;
}

VspStatus vspsDeemphasize_AMRWB_16s_ISfs(Vsp16s mu, Vsp16s* pSrcDst, Vsp32s len, Vsp32s scaleFactor, Vsp16s* pMem) {
    if (anyNull(pSrcDst, pMem)) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    if (scaleFactor != 0 && scaleFactor != 1) return vspStsRangeErr;
    constexpr Vsp64s kLargest = (1 << 30) - 1;  // L_mult of -1 and -1, halved, which is rounded down for any sum
    const int shift = 15 - scaleFactor;
    deemphasize([=](Vsp32s n) { return Vsp64s(pSrcDst[n]) * (1 << shift) + 0x4000; }, mu, kLargest, len, pMem, pSrcDst);
    return vspStsNoErr;
}

VspStatus vspsDeemphasize_AMRWB_32s16s(const Vsp32s* pSrc, Vsp16s mu, Vsp32s len, Vsp16s* pMem, Vsp16s* pDst) {
    if (anyNull(pSrc, pMem, pDst)) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    const auto addend = [=](Vsp32s n) { return Vsp64s(shl_32s(pSrc[n] & ~15, 3)) + 0x4000; };
    deemphasize(addend, mu & ~1, kMax32, len, pMem, pDst);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
