// The correlation scan over lags (G.729 3.4, Lag_max).
#include "common/lag_max.h"

#include "arithmetic/basic_ops.h"
#include "common/exports.h"
#include "core/checks.h"
#include "vector/correlate.h"
#include "vector/dot.h"
#include "vector/magnitude.h"

namespace vsp::VSP_LEVEL {

namespace {

// One vector of lags. Where no sum of some of the products, less than one product away from one that was tracked, comes
// near 32 bits, the sum is exact; the other lags are done again.
template <class V>
VSP_INLINE void lagSumsTracked(const Vsp16s* current, int len, const Vsp16s* delayed, Vsp32s limit, Vsp32s* sums) {
    Vsp32s exact[V::width], largest[V::width];
    correlateTracked<V>(current, len, delayed, exact, largest);
    for (int i = 0; i < V::width; i++)
        sums[i] = largest[i] < limit ? 2 * exact[i] : dotSaturating(current, delayed + i, len);
}

}  // namespace

void ownLagSums(const Vsp16s* pSrc, int len, int lagMin, int lagMax, Vsp32s* sums) {
    const Vsp16s* const history = pSrc - lagMax;
    const int lags = lagMax - lagMin + 1;
    if (doubledSumsFit(energy(pSrc, len), energy(history, lags + len - 1))) {
        correlate(pSrc, len, history, sums, lags);
        for (int i = 0; i < lags; i++) sums[i] *= 2;
        return;
    }
    // A product is below 2^30, so that a sum that was below the limit does not wrap when two are added.
    constexpr int W = Sliding16::width;
    const Vsp64s limit = (1 << 30) - Vsp64s(maxMagnitude(pSrc, len)) * maxMagnitude(history, lags + len - 1);
    const bool tracked = limit > 0 && len % 2 == 0 && lags >= W;
    if (tracked) {
        for (int i = 0; i + W <= lags; i += W) lagSumsTracked<Sliding16>(pSrc, len, history + i, Vsp32s(limit), sums + i);
        if (lags % W != 0) lagSumsTracked<Sliding16>(pSrc, len, history + lags - W, Vsp32s(limit), sums + lags - W);
    } else {
        for (int i = 0; i < lags; i++) sums[i] = dotSaturating(pSrc, history + i, len);
    }
}

int ownLastMax(const Vsp32s* sums, int n) {
    Vsp32s max = kMin32;
    // The analyzer does not see that all n have been written.
    // NOLINTNEXTLINE(clang-analyzer-core.UndefinedBinaryOperatorResult)
    for (int i = 0; i < n; i++) max = sums[i] > max ? sums[i] : max;
    int last = 0;
    for (int i = 0; i < n; i++) last = sums[i] == max ? i : last;
    return last;
}

VspStatus vspsAutoCorrLagMax_Inv_16s(const Vsp16s* pSrc, Vsp32s len, Vsp32s lagMin, Vsp32s lagMax, Vsp32s* pMax,
                                     Vsp32s* pLag) {
    if (anyNull(pSrc, pMax, pLag)) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    if (lagMin < 1 || lagMax < lagMin) return vspStsRangeErr;
    constexpr int kMaxGroup = 128;
    const int group = len <= kMax32 - kMaxGroup ? kMaxGroup : 1;  // the samples that a group needs are counted in 32 bits
    Vsp32s sums[kMaxGroup], max = kMin32;
    int best = lagMax;
    for (int longest = lagMax; longest >= lagMin; longest -= group) {
        const int lags = longest - lagMin < group ? longest - lagMin + 1 : group;
        ownLagSums(pSrc, len, longest - lags + 1, longest, sums);
        const int i = ownLastMax(sums, lags);
        if (sums[i] >= max) {
            max = sums[i];
            best = longest - i;
        }
    }
    *pMax = max;
    *pLag = best;
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
