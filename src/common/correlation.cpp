// Normalised cross-correlation of a target with an impulse response (G.729 Cor_h_X).
#include "arithmetic/basic_ops.h"
#include "common/cross_correlation.h"
#include "common/exports.h"
#include "common/lengths.h"
#include "core/checks.h"
#include "vector/correlate.h"
#include "vector/dot.h"

namespace vsp::VSP_LEVEL {

namespace {

// out[n] = sum of target[n + i] * impulse[i] from output `first` on; target is followed by V::width zeros.
template <class V = Sliding16>
VSP_INLINE void correlateTails(const Vsp16s* target, const Vsp16s* impulse, Vsp32s* out, int first, int len) {
    for (; first + V::width <= len; first += V::width)
        correlateUnits<1, V>(impulse, len - first, target + first, out + first);
    if (first == len) return;
    if constexpr (V::width > 8)
        correlateTails<Half<V>>(target, impulse, out, first, len);
    else
        correlate(impulse, len - first, target + first, out + first, len - first);
}

// The right shift that leaves 13 bits of the largest magnitude.
int shiftTo13Bits(Vsp32s largest) {
    const int headroom = norm_32s_Pos(largest);
    return 18 - (headroom < 16 ? headroom : 16);
}

// For vectors that do not fit the stack: every correlation is formed twice.
void crossCorrLong(const Vsp16s* target, const Vsp16s* impulse, int len, Vsp16s* pDst) {
    Vsp32s largest = 0;
    for (int n = 0; n < len; n++) {
        const Vsp32s a = Abs_32s(dotSaturating(target + n, impulse, len - n));
        largest = a > largest ? a : largest;
    }
    const int shift = shiftTo13Bits(largest);
    for (int n = 0; n < len; n++) pDst[n] = Vsp16s(dotSaturating(target + n, impulse, len - n) >> shift);
}

}  // namespace

void ownCrossCorr_32s(const Vsp16s* target, const Vsp16s* impulse, int len, Vsp32s* sums) {
    if (!doubledSumsFit(energy(target, len), energy(impulse, len))) {
        for (int n = 0; n < len; n++) sums[n] = dotSaturating(target + n, impulse, len - n);
        return;
    }
    Vsp16s padded[kMaxFast + Sliding16::width];
    for (int i = 0; i < len; i++) padded[i] = target[i];
    for (int i = len; i < len + Sliding16::width; i++) padded[i] = 0;
    correlateTails(padded, impulse, sums, 0, len);
    for (int n = 0; n < len; n++) sums[n] *= 2;
}

VspStatus vspsCrossCorr_NormM_16s(const Vsp16s* pSrc1, const Vsp16s* pSrc2, Vsp32s len, Vsp16s* pDst) {
    if (anyNull(pSrc1, pSrc2, pDst)) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    if (len > kMaxFast) {
        crossCorrLong(pSrc1, pSrc2, len, pDst);
        return vspStsNoErr;
    }
    Vsp32s sums[kMaxFast];
    ownCrossCorr_32s(pSrc1, pSrc2, len, sums);
    Vsp32s largest = 0;
    for (int n = 0; n < len; n++) {
        const Vsp32s a = Abs_32s(sums[n]);
        largest = a > largest ? a : largest;
    }
    const int shift = shiftTo13Bits(largest);
    for (int n = 0; n < len; n++) pDst[n] = Vsp16s(sums[n] >> shift);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
