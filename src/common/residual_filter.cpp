#include "common/residual_filter.h"

#include "arithmetic/split_32.h"
#include "vector/correlate.h"
#include "vector/dot.h"
#include "vector/for_blocks.h"
#include "vector/magnitude.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kBlock = 160;

// The sum with saturation, made of operations that vectors have.
VSP_INLINE Vsp32s addClipping(Vsp32s a, Vsp32s b) {
    const Vsp32s sum = wrapAdd_32s(a, b);
    const bool outside = (~(a ^ b) & (a ^ sum)) < 0;
    return outside ? (a >> 31) ^ kMax32 : sum;
}

// Every product and every partial sum saturates.
void filterSaturating(const Vsp16s* src, const Vsp16s* lpc, int order, Vsp16s* dst, int len, int scaleFactor) {
    Vsp32s sums[kBlock] = {};
    for (int j = 0; j <= order; j++)
        for (int n = 0; n < len; n++) {
            const Vsp32s product = lpc[j] * src[n - j];
            sums[n] = addClipping(sums[n], addClipping(product, product));
        }
    for (int n = 0; n < len; n++) dst[n] = round_32s(shl_32s(sums[n], 15 - scaleFactor));
}

VSP_INLINE void filterExact(const Vsp16s* src, const Vsp16s* lpc, int order, Vsp16s* dst, int len, int scaleFactor) {
    Vsp16s reversed[kMaxLpOrder + 2];
    for (int j = 0; j <= order; j++) reversed[order - j] = lpc[j];
    Vsp32s sums[kBlock];
    correlate(reversed, order + 1, src - order, sums, len);
    const Vsp32s rounding = roundingConstant(scaleFactor);
    for (int n = 0; n < len; n++) dst[n] = sat_16s((sums[n] + rounding) >> scaleFactor);
}

}  // namespace

void ownResidual(const Vsp16s* src, const Vsp16s* lpc, int order, Vsp16s* dst, Vsp32s len, int scaleFactor) {
    Vsp32s lpcMagnitude = 0;
    for (int j = 0; j <= order; j++) lpcMagnitude += lpc[j] < 0 ? -lpc[j] : lpc[j];
    forBlocks(len, kBlock, [&](Vsp32s first, Vsp32s count) {
        const Vsp16s* x = src + first;
        // No doubled sum leaves 32 bits, and there is room for the rounding.
        const Vsp64s largest = Vsp64s(lpcMagnitude) * maxMagnitude(x - order, order + count);
        if (largest >= (1 << 30))
            filterSaturating(x, lpc, order, dst + first, count, scaleFactor);
        else if (order == 10)
            filterExact(x, lpc, 10, dst + first, count, scaleFactor);
        else
            filterExact(x, lpc, order, dst + first, count, scaleFactor);
    });
}

}  // namespace vsp::VSP_LEVEL
