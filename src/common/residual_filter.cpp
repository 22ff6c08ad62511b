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

// Every product and every partial sum saturates; first: the samples of the first product, from where the next ones are a
// step away.
void filterSaturating(const Vsp16s* first, int step, const Vsp16s* c, int taps, Vsp16s* dst, int len, int scaleFactor) {
    Vsp32s sums[kBlock] = {};
    for (int t = 0; t < taps; t++) {
        const Vsp16s* const x = first + t * step;
        for (int n = 0; n < len; n++) {
            const Vsp32s product = c[t] * x[n];
            sums[n] = addClipping(sums[n], addClipping(product, product));
        }
    }
    for (int n = 0; n < len; n++) dst[n] = round_32s(shl_32s(sums[n], 15 - scaleFactor));
}

// The earliest sample first.
VSP_INLINE void filterExact(const Vsp16s* src, const Vsp16s* c, int taps, Vsp16s* dst, int len, int scaleFactor) {
    Vsp32s sums[kBlock];
    correlate(c, taps, src, sums, len);
    const Vsp32s rounding = roundingConstant(scaleFactor);
    for (int n = 0; n < len; n++) dst[n] = sat_16s((sums[n] + rounding) >> scaleFactor);
}

// A vector of outputs, the first of them at x. pairs: the taps by twos from that of the earliest sample on, the last of an
// odd number alone.
template <int kTaps, class V>
VSP_INLINE V filterVector(const V (&pairs)[kTaps / 2 + 1], const Vsp16s* x, int scaleFactor) {
    OffsetSums<V, 1> sums;
    sums.even[0] = sums.odd[0] = Wide<V>::splat(roundingConstant(scaleFactor));
    for (int t = 0; t < kTaps / 2; t++) addTaps(sums, pairs[t], x - kTaps + 1 + 2 * t);
    addTaps(sums, pairs[kTaps / 2], x - 1);
    return packSatAlternating(shr(sums.even[0], scaleFactor), shr(sums.odd[0], scaleFactor));
}

// The latest sample first, an odd number of taps and at least eight outputs. The last vector may overlap.
template <int kTaps>
VSP_INLINE void filterExact(const Vsp16s* x, const Vsp16s* c, Vsp16s* dst, int len, int scaleFactor) {
    using V = Sliding16;
    V pairs[kTaps / 2 + 1];
    for (int t = 0; t < kTaps / 2; t++) pairs[t] = swapInPairs(splatPair<V>(c + kTaps - 2 - 2 * t));
    pairs[kTaps / 2] = V{Wide<V>::splat(c[0] * 0x10000).v};
    int n = 0;
    for (; n + V::width <= len; n += V::width) filterVector<kTaps>(pairs, x + n, scaleFactor).store(dst + n);
    if (n == len) return;
    S16_128 narrow[kTaps / 2 + 1];
    for (int t = 0; t <= kTaps / 2; t++) narrow[t] = lowest<S16_128>(pairs[t]);
    for (; n + 8 <= len; n += 8) filterVector<kTaps>(narrow, x + n, scaleFactor).store(dst + n);
    if (n < len) filterVector<kTaps>(narrow, x + len - 8, scaleFactor).store(dst + len - 8);
}

VSP_INLINE Vsp64s sumOfMagnitudes(const Vsp16s* c, int taps) {
    Vsp32s sum = 0;
    for (int t = 0; t < taps; t++) sum += c[t] < 0 ? -c[t] : c[t];
    return sum;
}

// Whether a doubled sum may leave 32 bits, or there is no room for the rounding.
VSP_INLINE bool maySaturate(Vsp64s cMagnitude, const Vsp16s* src, int len) {
    return cMagnitude * maxMagnitude(src, len) >= (1 << 30);
}

template <int kOrder>
void residualOfOrder(const Vsp16s* src, const Vsp16s* lpc, Vsp16s* dst, Vsp32s len, int scaleFactor) {
    const Vsp64s magnitude = sumOfMagnitudes(lpc, kOrder + 1);
    forBlocks(len, kBlock, [&](Vsp32s first, Vsp32s count) {
        const Vsp16s* x = src + first;
        if (count < S16_128::width || maySaturate(magnitude, x - kOrder, kOrder + count)) [[unlikely]]
            filterSaturating(x, -1, lpc, kOrder + 1, dst + first, count, scaleFactor);
        else
            filterExact<kOrder + 1>(x, lpc, dst + first, count, scaleFactor);
    });
}

}  // namespace

void ownResidual(const Vsp16s* src, const Vsp16s* lpc, int order, Vsp16s* dst, Vsp32s len, int scaleFactor) {
    if (order == 10) return residualOfOrder<10>(src, lpc, dst, len, scaleFactor);
    if (order == 16) return residualOfOrder<16>(src, lpc, dst, len, scaleFactor);
    const Vsp64s magnitude = sumOfMagnitudes(lpc, order + 1);
    Vsp16s reversed[kMaxLpOrder + 2];
    for (int j = 0; j <= order; j++) reversed[order - j] = lpc[j];
    forBlocks(len, kBlock, [&](Vsp32s first, Vsp32s count) {
        const Vsp16s* x = src + first;
        if (maySaturate(magnitude, x - order, order + count))
            filterSaturating(x, -1, lpc, order + 1, dst + first, count, scaleFactor);
        else
            filterExact(x - order, reversed, order + 1, dst + first, count, scaleFactor);
    });
}

void ownFir(const Vsp16s* src, const Vsp16s* c, int taps, Vsp16s* dst, Vsp32s len) {
    const Vsp64s magnitude = sumOfMagnitudes(c, taps);
    forBlocks(len, kBlock, [&](Vsp32s first, Vsp32s count) {
        const Vsp16s* x = src + first;
        if (maySaturate(magnitude, x, taps - 1 + count))
            filterSaturating(x, 1, c, taps, dst + first, count, 15);
        else
            filterExact(x, c, taps, dst + first, count, 15);
    });
}

}  // namespace vsp::VSP_LEVEL
