// Sums of products for eight outputs at a time, exact in 64 bits.
#pragma once

#include "g728/block_float.h"
#include "vector/eight_32s.h"

namespace vsp::VSP_LEVEL::g728 {

constexpr int kOutputs = 8;  // of which a vector of samples needs the first five

// x[i] and x[i - 1] as a pair for i = 1 .. 8.
VSP_INLINE void storePairs(const Vsp16s* x, Vsp32s* pairs) {
    const S16_128 later = S16_128::load(x + 1), earlier = S16_128::load(x);
    zipLo(later, earlier).store(pairs + 1);
    zipHi(later, earlier).store(pairs + 5);
}

// Sums of 32-bit values by their upper halves and modulo 2^32, which gives the lower halves as well.
class ExactSums {
  public:
    [[gnu::always_inline]] void add(Eight32s x) {
        low_ = VSP_LEVEL::add(low_, x);
        high_ = VSP_LEVEL::add(high_, shr(x, 16));
    }
    // Two products of any 16-bit values: 2 * (-32768)^2 fits as well with 2^16 taken off.
    [[gnu::always_inline]] void addProducts(Eight32s x) {
        add(VSP_LEVEL::add(x, Eight32s::splat(-0x10000)));
        taken_++;
    }
    [[gnu::always_inline]] void store(Vsp64s* sums) const {
        alignas(32) Vsp32s low[kOutputs], high[kOutputs];
        low_.store(low);
        high_.store(high);
        for (int n = 0; n < kVector; n++) {
            const Vsp64s upper = Vsp64s(high[n]) * 0x10000;
            sums[n] = upper + Vsp32u(low[n] - upper) + taken_ * 0x10000LL;
        }
    }

  private:
    Eight32s low_ = Eight32s::splat(0), high_ = Eight32s::splat(0);
    int taken_ = 0;
};

// a[i] and b[i] as pairs.
#if defined(__AVX2__)
VSP_INLINE Eight32s pairsOf(S16_128 a, S16_128 b) { return {_mm256_set_m128i(zipHi(a, b).v, zipLo(a, b).v)}; }
#else
VSP_INLINE Eight32s pairsOf(S16_128 a, S16_128 b) { return {zipLo(a, b), zipHi(a, b)}; }
#endif

// Eight elements from place `at` of sixteen on, zeros behind them.
template <int at>
VSP_INLINE S16_128 elementsFrom(S16_128 first, S16_128 second) {
    if constexpr (at > 8)
        return elementsFrom<at - 8>(second, S16_128::splat(0));
    else
        return {_mm_alignr_epi8(second.v, first.v, 2 * at)};
}

// Products of the coefficients i and i + 1 with the samples before each output; the first of the sixteen is ten before.
template <int i>
VSP_INLINE void addTwoTaps(ExactSums& total, const Vsp16s* c, S16_128 first, S16_128 second) {
    const S16_128 later = elementsFrom<9 - i>(first, second), earlier = elementsFrom<8 - i>(first, second);
    total.addProducts(dotPairs(pairsOf(later, earlier), c + i));
}

// A filter of order 10 on a vector: sums[n] = sum of c[i] * x[n - 1 - i]. Ten samples lie before x, and any six behind.
VSP_INLINE void sumsOfTen(const Vsp16s* c, const Vsp16s* x, Vsp64s* sums) {
    constexpr int kOrder = 10;
    const S16_128 first = S16_128::load(x - kOrder), second = S16_128::load(x - kOrder + kOutputs);
    ExactSums total;
    addTwoTaps<0>(total, c, first, second);
    addTwoTaps<2>(total, c, first, second);
    addTwoTaps<4>(total, c, first, second);
    addTwoTaps<6>(total, c, first, second);
    addTwoTaps<8>(total, c, first, second);
    total.store(sums);
}

}  // namespace vsp::VSP_LEVEL::g728
