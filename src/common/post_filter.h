// What the post-filters of G.729 and GSM-AMR share, and products of signals with gains, in vectors of eight samples.
#pragma once

#include "arithmetic/standard_ops.h"
#include "common/lengths.h"
#include "vector/dot.h"
#include "vector/eight_32s.h"

namespace vsp::VSP_LEVEL {

VSP_INLINE Vsp32s doubledEnergy(const Vsp16s* a, int len) { return Cnvrt_64s32s(2 * energy(a, len)); }

// Correlation of neighbouring samples, doubled, each partial sum saturated. None is larger than the energy.
VSP_INLINE Vsp32s neighbourCorrelation(const Vsp16s* x, int len, Vsp32s doubledEnergy) {
    return doubledEnergy < kMax32 ? Vsp32s(2 * dot(x, x + 1, len - 1)) : dotSaturating(x, x + 1, len - 1);
}

// Four sums that add up to that of the products of a subframe, of which both sides are shifted right by two, in 32 bits
// that wrap.
template <class V = Sliding16>
VSP_INLINE S32_128 quarterProducts(const Vsp16s* a, const Vsp16s* b) {
    const auto products = [=]<class N>(N, int n) { return dot2(shr(N::load(a + n), 2), shr(N::load(b + n), 2)); };
    Wide<V> total = products(V{}, 0);
    int n = V::width;
    for (; n + V::width <= kL_subfr; n += V::width) total = add(total, products(V{}, n));
    if constexpr (V::width == S16_128::width)
        return total;
    else
        return add(foldSum(total), products(S16_128{}, n));
}

// The energy of a subframe shifted right by two, and its double, saturated.
VSP_INLINE Vsp32u quarterEnergy(const Vsp16s* x) { return Vsp32u(sum(quarterProducts(x, x))); }
VSP_INLINE Vsp32s saturatedDouble(Vsp32u a) { return a < 1u << 30 ? Vsp32s(2 * a) : kMax32; }

constexpr int kTiltResponse = 22, kTiltRoom = 25;

// The factor of the tilt compensation: the first reflection coefficient of a response of the short-term filter, times 0.8.
// h: kTiltResponse samples and zeros behind them.
VSP_INLINE Vsp16s responseTilt(const Vsp16s (&h)[kTiltRoom]) {
    constexpr Vsp16u kLargest = 6986;  // with which no doubled sum leaves 32 bits
    static_assert(2LL * kTiltResponse * kLargest * kLargest <= kMax32);
    S16_128 largest = S16_128::splat(0);
    S32_128 sums[2] = {S32_128::splat(0), S32_128::splat(0)};
    for (int n = 0; n < kTiltResponse; n += S16_128::width) {
        const S16_128 x = S16_128::load(h + n);
        largest = maxU(largest, magnitude(x));
        sums[0] = add(sums[0], dot2(x, x));
        sums[1] = add(sums[1], dot2(x, S16_128::load(h + n + 1)));
    }
    Vsp32s r0 = Vsp32s(2 * Vsp32u(sum(sums[0]))), r1 = Vsp32s(2 * Vsp32u(sum(sums[1])));  // wrong if a sample is larger
    if (largestU(largest) > kLargest) [[unlikely]] {
        r0 = doubledEnergy(h, kTiltResponse);
        r1 = neighbourCorrelation(h, kTiltResponse, r0);
    }
    const Vsp16s a0 = high_32s(r0), a1 = high_32s(r1);
    return a1 <= 0 ? Vsp16s(0) : Div_16s(Mul_16s(a1, 26214), a0);
}

// dst[n] = x[n] - factor * x[n - 1].
VSP_INLINE void compensateTilt(Vsp16s factor, const Vsp16s* x, Vsp16s* dst) {
    const S16_128 factors = S16_128::splat(factor);
    for (int n = 0; n < kL_subfr; n += S16_128::width)
        subSat(S16_128::load(x + n), mulShift15Sat(S16_128::load(x + n - 1), factors)).store(dst + n);
}

// a * b, shifted right by Shift, rounded or not, saturated.
template <int Shift, bool Rounded>
VSP_INLINE S16_128 product(S16_128 a, S16_128 b) {
    const S32_128 rounding = S32_128::splat(Rounded ? 1 << (Shift - 1) : 0);
    const S16_128 lo = mulLo(a, b), hi = mulHi(a, b);
    return packSat(shr(add(zipLo(lo, hi), rounding), Shift), shr(add(zipHi(lo, hi), rounding), Shift));
}

// output[n] = output[n] * gain[n] as above.
template <int Shift, bool Rounded>
VSP_INLINE void multiplyGains(const Vsp16s* gains, Vsp16s* output) {
    for (int n = 0; n < kL_subfr; n += S16_128::width)
        product<Shift, Rounded>(S16_128::load(gains + n), S16_128::load(output + n)).store(output + n);
}

// Eight gains from that behind number i on, each nine tenths of the one before and the step.
template <int i = 0>
VSP_INLINE void nextGains(S16_128 step, S16_128& current, S16_128& gains) {
    current = add(mulHiU(current, S16_128::splat(Vsp16s(2 * 29491))), step);
    gains = {_mm_blend_epi16(gains.v, current.v, 1 << i)};
    if constexpr (i < 7) nextGains<i + 1>(step, current, gains);
}

// The output times a gain in Q12 that follows the wanted one slowly: nine tenths of it and a step of up to 3276.
VSP_INLINE void followGain(Vsp16s step, Vsp16s& gain, Vsp16s* output) {
    if (gain < 0) [[unlikely]] {
        Vsp16s gains[kL_subfr];
        int current = gain;
        for (Vsp16s& g : gains) {
            current = ((current * 29491) >> 15) + step;
            g = Vsp16s(current);
        }
        gain = Vsp16s(current);
        return multiplyGains<12, false>(gains, output);
    }
    const S16_128 steps = S16_128::splat(step);
    S16_128 current = S16_128::splat(gain);
    for (int n = 0; n < kL_subfr; n += S16_128::width) {
        S16_128 gains = current;
        nextGains(steps, current, gains);
        product<12, false>(gains, S16_128::load(output + n)).store(output + n);
    }
    gain = first(current);
}

}  // namespace vsp::VSP_LEVEL
