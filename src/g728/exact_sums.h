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

// A filter of order 10 on a vector: sums[n] = sum of c[i] * x[n - 1 - i]. Ten samples lie before x, and any seven behind.
VSP_INLINE void sumsOfTen(const Vsp16s* c, const Vsp16s* x, Vsp64s* sums) {
    constexpr int kOrder = 10;
    alignas(32) Vsp32s pairs[kOrder + kOutputs];
    storePairs(x - kOrder, pairs);
    storePairs(x - kOrder + kOutputs, pairs + kOutputs);
    ExactSums total;
    for (int i = 0; i < kOrder; i += 2) total.addProducts(dotPairs(Eight32s::load(pairs + kOrder - 1 - i), c + i));
    total.store(sums);
}

}  // namespace vsp::VSP_LEVEL::g728
