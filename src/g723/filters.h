// The filters of the tenth order: predictors of zeros and poles whose sums are kept in 32 bits between them. Every product
// and partial sum of the standard saturates; where bounds show that none does, the sums are formed fast.
#pragma once

#include "g723/operators.h"
#include "vector/correlate.h"
#include "vector/magnitude.h"
#include "vector/map.h"

namespace vsp::VSP_LEVEL {

constexpr int kLpOrder = 10, kL_subfr_G723 = 60;

// A block of samples behind the ten before it, the oldest first.
struct FilterLine {
    static constexpr int kRoom = kL_subfr_G723;
    Vsp16s samples[kLpOrder + kRoom];

    // memory: the newest first
    [[gnu::always_inline]] explicit FilterLine(const Vsp16s* memory) {
        for (int j = 0; j < kLpOrder; j++) samples[kLpOrder - 1 - j] = memory[j];
    }
    Vsp16s* block() { return samples + kLpOrder; }
    const Vsp16s* block() const { return samples + kLpOrder; }
    [[gnu::always_inline]] void keep(Vsp16s* memory, int len) const {
        for (int j = 0; j < kLpOrder; j++) memory[j] = samples[kLpOrder - 1 - j + len];
    }
};

VSP_INLINE Vsp64s sumOfMagnitudes(const Vsp16s* c) {
    Vsp32s sum = 0;
    for (int j = 0; j < kLpOrder; j++) sum += c[j] < 0 ? -c[j] : c[j];
    return sum;
}

VSP_INLINE Vsp64s largestMagnitude(const Vsp32s* x, int len) {
    Vsp32s highest = 0, lowest = 0;
    for (int n = 0; n < len; n++) {
        highest = x[n] > highest ? x[n] : highest;
        lowest = x[n] < lowest ? x[n] : lowest;
    }
    return highest > -Vsp64s(lowest) ? highest : -Vsp64s(lowest);
}

[[gnu::noinline]] static void subtractZerosSaturating(const Vsp16s* c, const Vsp16s* x, Vsp32s* sum, int len) {
    for (int n = 0; n < len; n++)
        for (int j = 0; j < kLpOrder; j++) sum[n] = msu_32s(sum[n], c[j], x[n - 1 - j]);
}

// sum[n] -= 2 * the sum of c[j] * x[n - 1 - j]; len up to FilterLine::kRoom.
VSP_INLINE void subtractZeros(const Vsp16s* c, const FilterLine& line, Vsp32s* sum, int len) {
    const Vsp16s* const x = line.block();
    const Vsp64s largest = maxMagnitude(x - kLpOrder, kLpOrder + len);
    if (largestMagnitude(sum, len) + 2 * sumOfMagnitudes(c) * largest > kMax32) [[unlikely]] {
        subtractZerosSaturating(c, x, sum, len);
        return;
    }
    Vsp16s reversed[kLpOrder];
    for (int j = 0; j < kLpOrder; j++) reversed[kLpOrder - 1 - j] = c[j];
    Vsp32s products[FilterLine::kRoom];
    correlate(reversed, kLpOrder, x - kLpOrder, products, len);
    for (int n = 0; n < len; n++) sum[n] -= 2 * products[n];
}

[[gnu::noinline]] static void addPolesSaturating(const Vsp16s* c, Vsp32s* sum, Vsp16s* y, int len, int scaleFactor) {
    for (int n = 0; n < len; n++) {
        for (int j = 0; j < kLpOrder; j++) sum[n] = mac_32s(sum[n], c[j], y[n - 1 - j]);
        y[n] = round_32s(shl_32s(sum[n], 15 - scaleFactor));
    }
}

// Keeps the compiler from vectors, whose 64-bit products are slow.
VSP_INLINE Vsp64u inRegister(Vsp64u a) {
    asm("" : "+r"(a));
    return a;
}

// The same with sums that wrap. Outputs are made in pairs: one 64-bit product holds what an output contributes to the first
// of a pair in its low half and, a borrow apart, what it contributes to the second in its high half.
VSP_INLINE void addPolesWrapping(const Vsp16s* c, const Vsp32s* src, Vsp32s* sum, Vsp16s* y, int len, int scaleFactor) {
    constexpr int kPairs = kLpOrder / 2;
    Vsp64s taps[kLpOrder + 1];
    for (int j = 1; j <= kLpOrder; j++) taps[j] = c[j - 1] + (j < kLpOrder ? c[j] : 0) * (1LL << 32);
    Vsp64u sums[kPairs] = {};
    for (int p = 0; p < kPairs; p++)
        for (int j = 2 * p + 1; j <= kLpOrder; j++) sums[p] = inRegister(sums[p] + Vsp64u(taps[j] * y[2 * p - j]));
    const Vsp32u rounding = 1u << scaleFactor;
    const auto output = [&](int n, Vsp32u products) {
        const Vsp32u total = Vsp32u(src[n]) + 2 * products;
        sum[n] = Vsp32s(total);
        return y[n] = sat_16s(Vsp32s(total + rounding) >> (scaleFactor + 1));
    };
    for (int n = 0; n < len; n += 2) {
        const Vsp64u sum0 = Vsp64u(Vsp64s(Vsp32s(sums[0]))), sum1 = (sums[0] - sum0) >> 32;
        const Vsp64s y0 = output(n, Vsp32u(sum0));
        if (n + 1 == len) break;
        const Vsp64s y1 = output(n + 1, Vsp32u(sum1) + Vsp32u(c[0] * Vsp32s(y0)));
        for (int p = 0; p < kPairs; p++) {
            const Vsp64u next = p + 1 < kPairs ? sums[p + 1] : 0;
            sums[p] = inRegister(next + Vsp64u(y1 * taps[2 * p + 1]) + Vsp64u(y0 * taps[2 * p + 2]));
        }
    }
}

// sum[n] += 2 * the sum of c[j] * y[n - 1 - j], y[n] = sum[n] * 2^(15 - scaleFactor), rounded to the high half. scaleFactor
// is 0 .. 15, len up to FilterLine::kRoom.
VSP_INLINE void addPoles(const Vsp16s* c, Vsp32s* sum, FilterLine& line, int len, int scaleFactor) {
    Vsp16s* const y = line.block();
    Vsp32s src[FilterLine::kRoom];
    for (int n = 0; n < len; n++) src[n] = sum[n];
    addPolesWrapping(c, src, sum, y, len, scaleFactor);
    // As long as the outputs before one are right and no larger than this, no partial sum of it leaves the range, so that
    // it is right itself.
    const Vsp64s largest = maxMagnitude(y - kLpOrder, kLpOrder + len);
    if (largestMagnitude(src, len) + 2 * sumOfMagnitudes(c) * largest + (1 << scaleFactor) > kMax32) [[unlikely]] {
        for (int n = 0; n < len; n++) sum[n] = src[n];
        addPolesSaturating(c, sum, y, len, scaleFactor);
    }
}

// dst[n] = the rounded high half of base[n] * 2^16 + 2 * factor * delayed[n] with saturation, of a subframe; factor is any
// 16-bit value or the negative of one.
VSP_INLINE void addScaled(const Vsp16s* base, const Vsp16s* delayed, int factor, Vsp16s* dst) {
    if (factor > kMax16 || factor == kMin16) [[unlikely]] {
        for (int n = 0; n < kL_subfr_G723; n++)
            dst[n] = round_32s(factor > kMax16 ? msu_32s(base[n] * 65536, kMin16, delayed[n])
                                               : mac_32s(base[n] * 65536, kMin16, delayed[n]));
        return;
    }
    const Vsp16s f = Vsp16s(factor);
    map(
        kL_subfr_G723, [f](auto a, auto b) { return addSat(a, mulRoundWrap(b, decltype(b)::splat(f))); }, dst, base,
        delayed);
}

}  // namespace vsp::VSP_LEVEL
