// Autocorrelation and reflection coefficients (GSM 06.10 5.2.4 and 5.2.5).
#include "arithmetic/basic_ops.h"
#include "core/checks.h"
#include "gsmfr/exports.h"
#include "gsmfr/frame.h"
#include "vector/magnitude.h"
#include "vector/map.h"

namespace vsp::VSP_LEVEL {

VspStatus vspsAutoCorr_GSMFR_16s32s(Vsp16s* pSrcDst, Vsp32s* pDst) {
    if (anyNull(pSrcDst, pDst)) return vspStsNullPtrErr;
    const Vsp16u smax = maxMagnitude(pSrcDst, kFrame);
    const int scalauto = smax == 0 ? 0 : 4 - Exp_16s_Pos(smax > kMax16 ? Vsp16u(kMax16) : smax);

    Vsp16s line[kOrder + kFrame] = {};  // zeros before the frame
    Vsp16s* const s = line + kOrder;
    if (scalauto > 0) {
        const Vsp16s factor = Vsp16s(16384 >> (scalauto - 1));
        map(
            kFrame, [factor](auto x) { return mulRoundWrap(x, decltype(x)::splat(factor)); }, s, pSrcDst);
        map(
            kFrame, [scalauto](auto x) { return shl(x, scalauto); }, pSrcDst, s);
    } else {
        __builtin_memcpy(s, pSrcDst, sizeof line - kOrder * sizeof(Vsp16s));
    }

    using V = Sliding16;
    Wide<V> sums[kOrder + 1];
    for (auto& sum : sums) sum = Wide<V>::splat(0);
    for (int i = 0; i < kFrame; i += V::width) {
        const V x = V::load(s + i);
        for (int k = 0; k <= kOrder; k++) sums[k] = add(sums[k], dot2(x, V::load(s + i - k)));
    }
    for (int k = 0; k <= kOrder; k++) pDst[k] = 2 * sum(sums[k]);  // below 2^31: the magnitudes are 2048 at most
    return vspStsNoErr;
}

VspStatus vspsSchur_GSMFR_32s16s(const Vsp32s* pSrc, Vsp16s* pDst) {
    if (anyNull(pSrc, pDst)) return vspStsNullPtrErr;
    Vsp16s acf[kOrder + 1 + 8] = {};
    if (pSrc[0] > 0) {
        const int n = norm_32s_Pos(pSrc[0]);
        for (int i = 0; i <= kOrder; i++) acf[i] = Vsp16s(Vsp32s(Vsp32u(pSrc[i]) << n) >> 16);
    }
    Vsp16s p0 = acf[0], r[kOrder] = {};
    S16_128 p = S16_128::load(acf + 1), k = p;  // P[1..8] and K[1..8], of which one less counts at each step
    for (int n = 0; n < kOrder; n++) {
        const Vsp16s p1 = first(p);
        const Vsp32s magnitude = p1 == kMin16 ? kMax16 : p1 < 0 ? -p1 : p1;
        if (p0 < magnitude || p0 == 0) break;
        const Vsp16s quotient = Vsp16s(div_16s(magnitude, p0));
        r[n] = p1 > 0 ? Vsp16s(-quotient) : quotient;
        p0 = sat_16s(p0 + mulRound_16s(p1, r[n]));
        const S16_128 factor = S16_128::splat(r[n]), next = {_mm_srli_si128(p.v, 2)};
        p = addSat(next, mulRoundWrap(k, factor));
        k = addSat(k, mulRoundWrap(next, factor));
    }
    __builtin_memcpy(pDst, r, sizeof r);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
